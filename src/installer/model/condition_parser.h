#pragma once
// ConditionParser: the boolean and comparison language of template conditions, applied to
// a text whose [NAME] references have already been expanded.
//
//   condition   := alternative { ';' alternative }      ';' is OR
//   alternative := clause { ',' clause }                 ',' is AND and binds tighter
//   clause      := operand [ op operand ]                op: == != =~ !~ < <= > >=
//   operand     := '(' condition [')'] | '\'' text ['\''] | number
//   number      := decimal | '0' octal-digits | '0x' hex-digits | '0'
//
// Blanks (space, tab) are skipped before operands, operators and separators. Parsing stops
// silently at the first character after a clause that is neither ',' nor ';'.
//
// A value inside the parser is an int: -1 marks an error, -2 a string (whose text is in the
// caller's buffer), anything else is a number. Numbers are plain 32-bit ints with no
// overflow test, so a literal whose bit pattern is -1 or -2 (0xFFFFFFFF, 0xFFFFFFFE) reads
// as an error or a string. Octal literals accept the digits 8 and 9 ("09" is 9), and a hex
// literal keeps its first eight digits. There are no negative literals and no bare words.
//
// The functions are stateless; each takes the text and a position that it advances.

class ConditionParser
{
public:
    // Size of the buffer that holds one string operand, terminator included; longer strings
    // are cut.
    enum { OPERAND_SIZE = 1024 };

    // Reads one clause at `pos`: an operand, and when an operator follows, a second operand
    // and the comparison. Returns -1 for an error, -2 for a bare string, otherwise the
    // number (a comparison gives 1 or 0).
    //
    // Two strings compare by strcmp (also for the order operators), =~ and !~ by strcasecmp
    // and only on two strings; two numbers compare by 32-bit subtraction. A string on the
    // left with a number on the right is an error, while a number on the left with a string
    // on the right compares the number with -2, the mark of a string: 5=='x' is false.
    static int compare_clause(const char* text, int& pos);

    // Reads one operand at `pos` into `buffer` (for a string, at most size-1 characters).
    // Returns -1 for an error, -2 for a string (text in the buffer), otherwise the number;
    // a group in parentheses gives 1 or 0. A missing closing quote or parenthesis is no
    // error. A string longer than the buffer leaves `pos` inside the string.
    static int getString(const char* text, int& pos, char* buffer, int size);

    // Reads a sequence of alternatives at `pos` (the rule of a whole condition and of a
    // group). Returns 1 when some alternative held no false clause, 0 when none did, -1 when
    // a clause was an error; `pos` then stands where the error was found.
    static int alternatives(const char* text, int& pos);
};

// The growing text buffer in which the engine expands a condition before parsing it:
// 2048 bytes at first, grown to the next multiple of 2048 that an expansion needs, never
// shrunk. Owned by the engine.
struct ConditionBuffer
{
    enum { STEP = 2048 };

    ConditionBuffer()
        : data(new char[STEP])
        , capacity(STEP)
    {
        data[0] = '\0';
    }
    ~ConditionBuffer() { delete[] data; }
    ConditionBuffer(const ConditionBuffer&) = delete;
    ConditionBuffer& operator=(const ConditionBuffer&) = delete;

    // Makes room for `needed` bytes, dropping the content.
    void grow(int needed)
    {
        if (needed <= capacity)
            return;
        int newCapacity = (needed + STEP - 1) / STEP * STEP;
        delete[] data;
        data = new char[newCapacity];
        data[0] = '\0';
        capacity = newCapacity;
    }

    char* data;
    int capacity;
};
