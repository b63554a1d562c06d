#include "foundation/streams/stream.h"
