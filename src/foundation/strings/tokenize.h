#pragma once
// Splitting, joining and small in-place edits of texts and paths.
#include <utility>

#include "foundation/strings/char_string.h"
#include "foundation/strings/table.h"

namespace TeskUtils {

// Flags of the tokenizers.
enum TokenizeFlags {
    // Reserve room for all possible tokens up front, exactly.
    TOKENIZE_RESERVE = 1,
    // Keep empty tokens, as null strings.
    TOKENIZE_KEEP_EMPTY = 2,
    // Together with TOKENIZE_KEEP_EMPTY: at the end give every null or empty token in the
    // output table (also those that stood there before) an empty, non-null text.
    TOKENIZE_EMPTY_AS_TEXT = 4,
};

// The core of tokenizePositions on a plain array of `count` positions.
int tokenizePositionArray(const char* text, int length, Table<CharString, 100>& tokens,
    Table<int, 100>* lengths, const int* positions, int count, int flags);

// Cuts text[0..length) at the given delimiter positions (in increasing order) and appends the
// tokens to `tokens` (and their lengths to `lengths`, if given). The text before the first
// position, between positions and behind the last one are the tokens; each is copied up to its
// length, stopping at a NUL. Empty tokens are left out unless TOKENIZE_KEEP_EMPTY is set.
// Returns the number of tokens appended.
template <int STEP>
int tokenizePositions(const char* text, int length, Table<CharString, 100>& tokens, Table<int, 100>* lengths,
    const Table<int, STEP>& positions, int flags)
{
    return tokenizePositionArray(text, length, tokens, lengths, positions.data, positions.count, flags);
}

// Appends the positions in `text` of every character of `set` to `positions`. Returns the
// length of the text scanned, or 0 for a null text or a null or empty set.
int getCharPositionArray(const char* text, const char* set, Table<int, 32>& positions);
template <int STEP> int getCharPositions(const char* text, const char* set, Table<int, STEP>& positions)
{
    Table<int, 32> found;
    int scanned = getCharPositionArray(text, set, found);
    for (int i = 0; i < found.count; ++i)
        positions.append(found[i]);
    return scanned;
}

// Splits `text` at each `delimiter` (a NUL delimiter: not at all) and appends the tokens to
// `tokens`. A null or empty text gives 0. Returns the number of tokens appended.
// With flags 0, "a;;b" gives "a" and "b"; with TOKENIZE_KEEP_EMPTY also a null between them.
int tokenize(const char* text, char delimiter, Table<CharString, 100>& tokens, int flags);
// As above, splitting at any character of `delimiters`. A null or empty set gives no tokens.
int tokenize(const char* text, const char* delimiters, Table<CharString, 100>& tokens, int flags);

// Head and tail of `text` around its first `delimiter`: what stands before it and what stands
// behind it, an empty part being a null string. Without a delimiter the head is the whole text
// and the tail null; a delimiter at the start gives a null head. A null or empty text, or a NUL
// delimiter, gives two null strings.
std::pair<CharString, CharString> splitCharString(const char* text, char delimiter);

// Bit i is set when the i-th name of the `delimiter`-separated `names` is not empty and equals,
// ignoring case, an item of the `delimiter`-separated `list`. Empty names still count in the
// numbering. Any null or empty argument, or a NUL delimiter, gives 0. Names from the 65th on
// are ignored.
unsigned long maskFromStringList(const char* list, const char* names, char delimiter);

// The names whose bit is set in `mask`, joined by `separator`. A zero mask, null names, null
// separator or a count outside 1..64 gives an empty, non-null string.
CharString stringListFromMask(unsigned long mask, const char* const* names, int count, const char* separator);

// A copy of `text` with `escape` put before each `character`; a null text gives "".
CharString escapeCharacter(const char* text, char character, char escape);

// Which neighbours of a character removeNeighbouringCharacters removes.
enum RelativeCharPosition {
    // Those after it, scanning forward from the start.
    AfterCharacter = 0,
    // Those before it, scanning backward from the end; the result is moved to the start.
    BeforeCharacter = 1,
    // Those before it, scanning backward from the end; the result is left where the scan put
    // it, at the end of the buffer: it starts at text + (the number returned).
    BeforeCharacterAtEnd = 2,
};

// For each occurrence of `character` in `text`, removes the neighbouring characters on one side
// (see RelativeCharPosition) that belong to `others`. A null `others` means `character` itself,
// so that runs of it collapse to one. Returns the number of characters removed, or -1 for a
// null or empty text.
int removeNeighbouringCharacters(char* text, char character, const char* others, RelativeCharPosition where);

// Copies what stands between the first `open` and the last `close` of `text` into `out`, at most
// size-1 characters, terminated. A missing `open` counts as the start of the text, a missing
// `close` as its end. Returns 1, or 0 when the start lies behind the end, or for a null text or
// buffer, or a size of 0.
int delimitedSubstring(const char* text, char open, char close, char* out, unsigned int size);

// Removes white space from both ends of `text`, in place. Returns how many characters went.
int trimWhitespace(char* text);

// Reads a decimal int. The text must begin with a digit, '-' or '+' and hold nothing else; a
// value outside the 32-bit range fails. Returns 1, or 0 leaving `value` alone.
int fromString(int& value, const char* text);
// Reads an unsigned int in `base` (0..36, 0 meaning by prefix as strtoul does). A first
// character that is not a digit is allowed only with a base above 10. The whole text must be
// read and the value must fit 32 bits. Returns 1, or 0 leaving `value` alone.
int fromString(unsigned int& value, const char* text, int base);

// Drops each '/' or '\' directly followed by another one, so that a run of slashes collapses to
// its last character.
void removeDoubleSlashes(char* path);
// Cuts all trailing '/' from `path` (looking at most at `size` bytes), keeping at least the
// first character.
void removeSlashesAtEnd(char* path, int size);
// Appends `name` to `folder`, with a '/' between them unless the folder is empty or already ends
// in one; the whole stays within `size` bytes.
void appendToFolder(char* folder, const char* name, int size);
// Where the file name of `path` starts: behind the last of its characters that is one of
// `separators`. With `keepTrailing` the final character is not looked at, so that a trailing
// separator stays with the name ("a/b/" gives "b/") instead of leaving it empty. A path without
// a separator is all name; a null path gives "", null or empty separators give the whole path.
// The result points into `path` (its offset is also the length of the directory part).
const char* fileNamePart(const char* path, const char* separators = "/\\", bool keepTrailing = false);
// 1 when `path` names a directory (following links), else 0.
int isDirectory(const char* path);

} // namespace TeskUtils
