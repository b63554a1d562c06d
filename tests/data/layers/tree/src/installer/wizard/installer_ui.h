#include "installer/wizard/exchange_enums.h"
#include "package/container.h"
