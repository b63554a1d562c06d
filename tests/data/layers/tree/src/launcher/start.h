#include "linux/platform.h"
