#pragma once
// The command line as a list of named parameters.
//
// "-name=value" and "--name=value" give the name without its dashes and the value. An option
// without '=' takes the next argument as its value when that one doesn't begin with '-'
// ("-log /tmp/x.log"); otherwise it has no value. A value wrapped in one pair of double
// quotes loses them. An argument that belongs to no option is kept as a parameter with an
// empty name. Names keep their spelling; lookups ignore case.
#include "foundation/strings/char_string.h"
#include "foundation/strings/table.h"

struct CLParam
{
    TeskUtils::CharString name;
    // Null when the option came without a value; "" for "-name=".
    TeskUtils::CharString value;
};

class CLParser
{
public:
    CLParser() = default;
    // Parses argv[1] to argv[argc - 1]; argv[0], the program, is not a parameter.
    CLParser(int argc, const char* const* argv) { Parse(argc, argv); }

    // Adds the parameters of argv[1] to argv[argc - 1] behind those already held.
    void Parse(int argc, const char* const* argv);

    int GetParamCount() const { return params.getCount(); }
    // Name and value of the parameter at `index`; null out of range, and the value also
    // null for an option without one.
    const char* GetParamName(int index) const;
    const char* GetParamValue(int index) const;

    // Index of the first parameter behind index `after` whose name equals `name`, ignoring
    // case; -1 when there is none, for a null name, or when `after` + 1 is out of range.
    int FindNextParam(const char* name, int after) const;
    // The first and the last parameter of that name, or -1.
    int FindParam(const char* name) const { return FindNextParam(name, -1); }
    int FindLastParam(const char* name) const;

private:
    TeskUtils::Table<CLParam, 100> params;
};
