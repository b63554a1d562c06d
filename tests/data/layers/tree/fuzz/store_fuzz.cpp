#include "linux/platform.h"
#include "launcher/start.h"
