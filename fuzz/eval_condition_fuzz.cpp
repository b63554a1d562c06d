// Fuzz target of condition evaluation. The head of the input defines variables (see
// fuzz_engine.h), the rest is evaluated as a condition, and its raw text is also walked by
// the parser's functions directly. Checks: results are -1, 0 or 1, deterministic, parse
// positions never run past the text, and the condition buffer covers what was expanded.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_engine.h"
#include "installer/model/condition_parser.h"

namespace {

void check(bool condition, const char* what)
{
    fuzzCheck(condition, "eval_condition_fuzz", what);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 8192)
        return 0;
    FuzzEngine engine;
    std::string text = engine.load(data, size);
    const char* condition = text.c_str();
    const int length = static_cast<int>(strlen(condition));

    int result = engine.EvalCondition(condition);
    check(result >= -1 && result <= 1, "result out of range");
    check(engine.EvalCondition(condition) == result, "evaluation is not repeatable");
    check(engine.conditionBuffer.capacity % ConditionBuffer::STEP == 0, "buffer not in steps");
    check(engine.ExpandString(condition, nullptr, 0, false) <= engine.conditionBuffer.capacity,
        "buffer smaller than the expansion");

    int pos = 0;
    int top = ConditionParser::alternatives(condition, pos);
    check(top >= -1 && top <= 1, "alternatives out of range");
    check(pos >= 0 && pos <= length, "alternatives ran past the text");

    char operand[ConditionParser::OPERAND_SIZE];
    for (int start = 0; start < length && start < 64; ++start) {
        pos = start;
        int value = ConditionParser::getString(condition, pos, operand, sizeof(operand));
        check(pos >= start && pos <= length, "operand ran past the text");
        if (value == -2)
            check(memchr(operand, 0, sizeof(operand)) != nullptr, "string operand unterminated");
        pos = start;
        int clause = ConditionParser::compare_clause(condition, pos);
        check(pos >= start && pos <= length, "clause ran past the text");
        (void)clause;
    }
    // A tiny operand buffer cuts strings and leaves the position inside them.
    char tiny[2];
    pos = 0;
    if (ConditionParser::getString(condition, pos, tiny, sizeof(tiny)) == -2)
        check(strlen(tiny) <= 1, "tiny operand overflowed");
    return 0;
}
