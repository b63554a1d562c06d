#pragma once
// Word wrapping of plain text for the terminal.
#include "foundation/strings/string_builder.h"

namespace ConsoleText {

// Appends `text` (one paragraph; newlines inside it count as blanks) to `out`, wrapped
// greedily at `width` columns. The first line starts with `firstPrefix`, every further one
// with `restPrefix`; both count towards the width. A word longer than the room left on an
// empty line is cut hard. Every line, the last included, ends in "\n". An empty paragraph
// appends nothing.
void appendWrapped(TeskUtils::StringBuilder& out, const char* text, int width, const char* firstPrefix,
    const char* restPrefix);

} // namespace ConsoleText
