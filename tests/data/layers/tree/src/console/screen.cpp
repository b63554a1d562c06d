#include "console/screen.h"
#include "../launcher/start.h"
#include "missing/nowhere.h"
