#include "installer/installer.h"
#include "installer/wizard/installer_ui.h"
#include "installer/wizard/pages.h"
