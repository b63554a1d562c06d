#include "console/screen.h"
#include "linux/platform.h"
#include "launcher/start.h"
