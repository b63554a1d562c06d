#include "installer/wizard/pages.h"
#include "package/builder.h"
#include "linux/platform.h"
