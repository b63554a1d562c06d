#include "foundation/xml/doc.h"
#include "paths.h"
