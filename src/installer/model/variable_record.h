#pragma once
// The record of the engine's variable store, and the names of its flags.
//
// The store is a plain array of these records in order of first definition; a lookup
// scans it from the last record to the first and compares names without regard to case,
// so that of two records differing only in case the later one answers. Values longer
// than their field are cut silently at 519 characters, names at 1023.
#include <cstddef>
#include <cstdint>

#include "foundation/strings/bounded_copy.h"

// Sizes of the fields, terminator included.
enum {
    VARIABLE_NAME_SIZE = 1024,
    VARIABLE_VALUE_SIZE = 520,
};

// Flags of a record, and the one argument-only mask of SetVarExt.
enum : uint32_t {
    VARFLAG_RECALCULATE = 1, // the value follows its $NAME expression on every recalculation
    VARFLAG_VERBATIM = 2, // exempt from the clean-up of doubled slashes
    VARFLAG_KEEP = 0x10000, // SetVarExt only: leave the flags of an existing record alone
};

struct VariableRecord
{
    uint32_t flags;
    char name[VARIABLE_NAME_SIZE];
    char value[VARIABLE_VALUE_SIZE];
    char expression[VARIABLE_VALUE_SIZE]; // the $NAME expression, or empty
    char defaultValue[VARIABLE_VALUE_SIZE];
};

// What ResetVar does to a record.
enum VariableResetType {
    VARRESET_EXPRESSION = 0, // recompute from the expression, stop recalculating
    VARRESET_RECALCULATE = 1, // recompute from the expression, recalculate from now on
    VARRESET_DEFAULT = 2, // copy the default into the value; flags stay
};

// Copies the first `length` characters of `text` (a name, or a part of one) into `out`, cut
// to the buffer and terminated.
template <size_t N> inline void copyNamePart(char (&out)[N], const char* text, size_t length)
{
    TeskUtils::copyBounded(out, text, length + 1 < N ? length + 1 : N);
}
