#include "foundation/strings/text.h"
#include "installer/installer.h"
