#include "support/helpers.h"
#include "foundation/strings/text.h"
#include "foundation/xml/doc.h"
