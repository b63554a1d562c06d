#include "installer/wizard/installer_ui.h"
