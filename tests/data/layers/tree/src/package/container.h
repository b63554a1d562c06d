#include "foundation/misc/paths.h"
#include "installer/installer.h"
