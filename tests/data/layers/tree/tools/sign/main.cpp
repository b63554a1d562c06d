#include "pack/writer.h"
