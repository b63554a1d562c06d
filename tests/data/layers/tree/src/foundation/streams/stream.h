#include "foundation/strings/text.h"
