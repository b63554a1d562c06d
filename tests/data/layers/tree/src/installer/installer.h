#include "installer/model/store.h"
#include "installer/wizard/pages.h"
#include "package/container.h"
