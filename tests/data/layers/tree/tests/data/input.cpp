#include "console/screen.h"
