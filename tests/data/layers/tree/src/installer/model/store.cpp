#include "installer/installer.h"
#include "installer/model/store.h"
#include "installer/wizard/installer_ui.h"
#include "installer/transaction/run.h"
