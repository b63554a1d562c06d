#include "foundation/misc/cl_parser.h"

#include <cstring>
#include <strings.h>

namespace {

// The value without one pair of surrounding double quotes.
TeskUtils::CharString unquoted(const char* text)
{
    size_t length = strlen(text);
    if (length >= 2 && text[0] == '"' && text[length - 1] == '"')
        return TeskUtils::CharString(text + 1, static_cast<int>(length - 2));
    return TeskUtils::CharString(text);
}

} // namespace

void CLParser::Parse(int argc, const char* const* argv)
{
    if (!argv)
        return;
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i];
        if (!argument)
            continue;
        CLParam& param = params.append();
        if (argument[0] != '-') {
            param.name = "";
            param.value = unquoted(argument);
            continue;
        }
        const char* name = argument + (argument[1] == '-' ? 2 : 1);
        const char* equals = strchr(name, '=');
        if (equals) {
            param.name = TeskUtils::CharString(name, static_cast<int>(equals - name));
            param.value = unquoted(equals + 1);
            continue;
        }
        param.name = name;
        if (i + 1 < argc && argv[i + 1] && argv[i + 1][0] != '-')
            param.value = unquoted(argv[++i]);
    }
}

const char* CLParser::GetParamName(int index) const
{
    if (index < 0 || index >= params.getCount())
        return nullptr;
    return params[index].name.c_str();
}

const char* CLParser::GetParamValue(int index) const
{
    if (index < 0 || index >= params.getCount())
        return nullptr;
    return params[index].value.data();
}

int CLParser::FindNextParam(const char* name, int after) const
{
    if (!name || after < -1)
        return -1;
    for (int i = after + 1; i < params.getCount(); ++i)
        if (strcasecmp(params[i].name.c_str(), name) == 0)
            return i;
    return -1;
}

int CLParser::FindLastParam(const char* name) const
{
    int last = -1;
    for (int i = FindNextParam(name, -1); i >= 0; i = FindNextParam(name, i))
        last = i;
    return last;
}
