#pragma once
// Turns an RTF document (a licence as word processors save it) into wrapped plain text
// for a terminal.
#include "foundation/strings/char_string.h"

class RTFDecoder
{
public:
    // Decodes `rtf` (null counts as empty) and wraps each paragraph at `width` columns, every
    // line behind `margin` blanks (the margin counts towards the width). Paragraphs end at
    // \par, lines at \line; tables of fonts, colours and styles, pictures, document
    // information and every "\*" destination are left out. Characters given as \'hh (code
    // page 1252) or \uN come out in UTF-8. Text outside any group, and a document without
    // the "{\rtf" head, is read all the same.
    static TeskUtils::CharString rtf_decode(const char* rtf, int margin, int width);
};
