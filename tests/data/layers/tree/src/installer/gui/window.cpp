#include "installer/installer.h"
