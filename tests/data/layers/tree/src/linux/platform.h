#include "installer/installer.h"
#include "launcher/start.h"
