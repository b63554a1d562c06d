#include "foundation/streams/stream.h"
#include "package/container.h"
