// Fuzz target of the variable store and its two expansion languages. The head of the input
// defines variables (see fuzz_engine.h), the rest is expanded as a template text, used as a
// $NAME expression, looked up as a name with modifiers and parsed as an assignment. Checks:
// measuring agrees with expanding, a small buffer holds the start of the full text, results
// are terminated within their buffers, and the fields of every record stay terminated.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "foundation/strings/char_string.h"
#include "fuzz_engine.h"

namespace {

void check(bool condition, const char* what)
{
    fuzzCheck(condition, "expand_string_fuzz", what);
}

void checkRecords(FuzzEngine& engine)
{
    for (const VariableRecord& record : engine.variables) {
        check(memchr(record.name, 0, sizeof(record.name)) != nullptr, "name unterminated");
        check(memchr(record.value, 0, sizeof(record.value)) != nullptr, "value unterminated");
        check(memchr(record.expression, 0, sizeof(record.expression)) != nullptr, "expression unterminated");
        check(memchr(record.defaultValue, 0, sizeof(record.defaultValue)) != nullptr, "default unterminated");
    }
}

void checkExpansion(FuzzEngine& engine, const char* text, bool strict)
{
    int measured = engine.ExpandString(text, nullptr, 0, strict);
    check(measured >= 0, "negative measure");

    std::string full(static_cast<size_t>(measured) + 1, '#');
    int result = engine.ExpandString(text, &full[0], static_cast<int>(full.size()), strict);
    check(result == measured, "measure and expansion differ");
    if (result == 0) {
        check(full[0] == '\0', "failed expansion not emptied");
        return;
    }
    check(strlen(full.c_str()) == static_cast<size_t>(result) - 1, "expansion length is not the count");

    char small[5];
    memset(small, '#', sizeof(small));
    check(
        engine.ExpandString(text, small, sizeof(small), strict) == result, "small buffer changes the count");
    check(memchr(small, 0, sizeof(small)) != nullptr, "small buffer unterminated");
    check(strncmp(small, full.c_str(), sizeof(small) - 1) == 0, "small buffer is not the start");

    TeskUtils::CharString out("before");
    check(engine.ExpandCharString(text, out, strict) == result, "string expansion differs");
    check(strcmp(out.c_str(), full.c_str()) == 0, "string expansion text differs");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 8192)
        return 0;
    FuzzEngine engine;
    std::string text = engine.load(data, size);
    checkRecords(engine);

    checkExpansion(engine, text.c_str(), false);
    checkExpansion(engine, text.c_str(), true);

    // The same text as a recalculation expression, into buffers of several sizes.
    for (int limit : { 1, 7, 520, 1024 }) {
        std::string out(static_cast<size_t>(limit) + 1, '#');
        out[static_cast<size_t>(limit)] = '@';
        int ok = engine.expandVariables(text.c_str(), &out[0], limit);
        check(out[static_cast<size_t>(limit)] == '@', "expression written past its limit");
        if (ok)
            check(memchr(out.data(), 0, static_cast<size_t>(limit)) != nullptr, "expression unterminated");
    }

    // As a name with modifiers, unless it would touch the environment.
    if (text.empty() || text[0] != '$') {
        char value[16];
        int found = engine.GetVar(text.c_str(), value, sizeof(value));
        check(found >= -2 && found < engine.variables.count, "lookup result out of range");
        if (found != -1)
            check(memchr(value, 0, sizeof(value)) != nullptr, "lookup unterminated");
        char dflt[600];
        engine.GetVarDefaultValue(text.c_str(), dflt, sizeof(dflt));
        engine.ResetVar(text.c_str(), static_cast<VariableResetType>(text.size() % 3));
    }

    // As an assignment, then a recalculation of everything.
    const char* open = strchr(text.c_str(), '[');
    if (*(open ? open + 1 : text.c_str()) != '$')
        engine.SetVar(text.c_str());
    engine.recalcVariables(-1);
    checkRecords(engine);
    return 0;
}
