#include "pack/writer.h"
#include "package/container.h"
#include "console/screen.h"
