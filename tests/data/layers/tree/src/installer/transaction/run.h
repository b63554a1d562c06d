#include "installer/model/store.h"
