#include "start.h"
#include "console/screen.h"
