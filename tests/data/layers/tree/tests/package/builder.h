#include "package/container.h"
#include "installer/installer.h"
