// The condition language: operands, clauses and alternatives (see condition_parser.h).
#include "installer/model/condition_parser.h"

#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "foundation/strings/bounded_copy.h"

namespace {

const int kError = -1;
const int kString = -2;

void skipBlanks(const char* text, int& pos)
{
    while (text[pos] == ' ' || text[pos] == '\t')
        ++pos;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Numbers are 32-bit ints that wrap without complaint; the arithmetic runs unsigned so that
// the wrap is defined.
int wrap(unsigned int value)
{
    return static_cast<int>(value);
}

int readNumber(const char* text, int& pos)
{
    if (text[pos] != '0') {
        unsigned int value = 0;
        while (isDigit(text[pos]))
            value = value * 10u + static_cast<unsigned int>(text[pos++] - '0');
        return wrap(value);
    }

    ++pos;
    if (text[pos] == 'x' || text[pos] == 'X') {
        ++pos;
        // The first eight digits count; the rest are stepped over.
        int span = 0;
        while (isHexDigit(text[pos + span]))
            ++span;
        char digits[9];
        size_t kept = TeskUtils::copyBounded(digits, text + pos, span < 8 ? span + 1 : sizeof(digits));
        pos += span;
        return kept ? wrap(static_cast<unsigned int>(strtol(digits, nullptr, 16))) : 0;
    }
    // Octal, with 8 and 9 taken as digits all the same.
    unsigned int value = 0;
    while (isDigit(text[pos]))
        value = value * 8u + static_cast<unsigned int>(text[pos++] - '0');
    return wrap(value);
}

enum Operator {
    OP_EQUAL,
    OP_EQUAL_NOCASE,
    OP_NOT_EQUAL,
    OP_NOT_EQUAL_NOCASE,
    OP_LESS,
    OP_LESS_EQUAL,
    OP_GREATER,
    OP_GREATER_EQUAL
};

// Reads the operator at `pos`; false for a '!' or '=' without its second character.
bool readOperator(const char* text, int& pos, Operator& op)
{
    char first = text[pos];
    char second = text[pos + 1];
    if (first == '!' || first == '=') {
        if (second != '=' && second != '~')
            return false;
        if (first == '=')
            op = second == '=' ? OP_EQUAL : OP_EQUAL_NOCASE;
        else
            op = second == '=' ? OP_NOT_EQUAL : OP_NOT_EQUAL_NOCASE;
        pos += 2;
        return true;
    }
    ++pos;
    bool orEqual = second == '=';
    if (orEqual)
        ++pos;
    if (first == '<')
        op = orEqual ? OP_LESS_EQUAL : OP_LESS;
    else
        op = orEqual ? OP_GREATER_EQUAL : OP_GREATER;
    return true;
}

bool holds(Operator op, int order)
{
    switch (op) {
    case OP_EQUAL:
    case OP_EQUAL_NOCASE:
        return order == 0;
    case OP_NOT_EQUAL:
    case OP_NOT_EQUAL_NOCASE:
        return order != 0;
    case OP_LESS:
        return order < 0;
    case OP_LESS_EQUAL:
        return order <= 0;
    case OP_GREATER:
        return order > 0;
    case OP_GREATER_EQUAL:
        return order >= 0;
    }
    return false;
}

} // namespace

int ConditionParser::alternatives(const char* text, int& pos)
{
    int result = 0;
    for (;;) {
        bool allTrue = true;
        for (;;) {
            // Every clause is parsed, whatever the value so far.
            int value = compare_clause(text, pos);
            if (value == kError)
                return kError;
            if (value == 0)
                allTrue = false;
            skipBlanks(text, pos);
            if (text[pos] != ',')
                break;
            ++pos;
        }
        if (allTrue)
            result = 1;
        if (text[pos] != ';')
            return result;
        ++pos;
    }
}

int ConditionParser::compare_clause(const char* text, int& pos)
{
    char left[OPERAND_SIZE];
    int leftValue = getString(text, pos, left, sizeof(left));
    if (leftValue == kError)
        return kError;
    skipBlanks(text, pos);
    if (!text[pos] || !strchr("!<=>", text[pos]))
        return leftValue;

    Operator op;
    if (!readOperator(text, pos, op))
        return kError;
    char right[OPERAND_SIZE];
    int rightValue = getString(text, pos, right, sizeof(right));
    if (rightValue == kError)
        return kError;

    bool ignoreCase = op == OP_EQUAL_NOCASE || op == OP_NOT_EQUAL_NOCASE;
    if (ignoreCase && (leftValue != kString || rightValue != kString))
        return kError;
    if (leftValue == kString && rightValue != kString)
        return kError;

    int order;
    if (leftValue == kString)
        order = ignoreCase ? strcasecmp(left, right) : strcmp(left, right);
    else // a string on the right takes part as its mark, -2
        order = wrap(static_cast<unsigned int>(leftValue) - static_cast<unsigned int>(rightValue));
    return holds(op, order) ? 1 : 0;
}

int ConditionParser::getString(const char* text, int& pos, char* buffer, int size)
{
    skipBlanks(text, pos);
    char c = text[pos];

    if (c == '(') {
        ++pos;
        int value = alternatives(text, pos);
        if (text[pos] == ')')
            ++pos;
        return value;
    }

    if (c == '\'') {
        ++pos;
        // Up to the closing quote, at most size-1 characters; a longer string leaves the
        // position inside it.
        size_t span = strcspn(text + pos, "'");
        size_t room = size > 0 ? static_cast<size_t>(size) : 0;
        pos += static_cast<int>(
            TeskUtils::copyBounded(buffer, text + pos, span + 1 < room ? span + 1 : room));
        if (text[pos] == '\'')
            ++pos;
        return kString;
    }

    if (isDigit(c))
        return readNumber(text, pos);
    return kError;
}
