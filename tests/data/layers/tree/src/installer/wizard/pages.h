#include "installer/transaction/run.h"
#include "installer/wizard/installer_ui.h"
