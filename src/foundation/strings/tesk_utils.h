#pragma once
// The whole base library in one include.
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/char_string.h"
#include "foundation/strings/error_code.h"
#include "foundation/strings/exceptions.h"
#include "foundation/strings/find_data.h"
#include "foundation/strings/hash_map.h"
#include "foundation/strings/portable.h"
#include "foundation/strings/ptr_array.h"
#include "foundation/strings/quick_sort.h"
#include "foundation/strings/string_builder.h"
#include "foundation/strings/table.h"
#include "foundation/strings/tokenize.h"
