#include "installer/installer.h"
#include "installer/transaction/run.h"
