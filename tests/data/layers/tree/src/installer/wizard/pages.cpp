#include "installer/installer.h"
#include "linux/platform.h"
#include "console/screen.h"
