#pragma once
// Colours of a themed installer: the template's ColourTheme section, colour references
// of dialog elements, and the table of named colours that a graphical front end paints
// with. A colour is stored as 0x00BBGGRR; the value with all bits set (-1) means "not set",
// which a front end takes as "use your own".
#include <cstdint>

#include "foundation/strings/hash_map.h"

// The named colours of a theme, with the tag that sets each in ColourTheme.
enum THEMECOLOUR {
    TC_DIALOG_BACKGROUND = 0, // DialogBackground
    TC_DIALOG_FOREGROUND = 1, // DialogForeground
    TC_LIST_BACKGROUND = 2, // ListBackground
    TC_INPUT_BOX_BACKGROUND = 3, // InputBoxBackground
    TC_INPUT_BOX_TEXT = 4, // InputBoxText
    TC_LINK_BUTTONS = 5, // LinkButtons
    TC_BUTTONS_BACKGROUND = 6, // ButtonsBackground
    TC_BUTTONS_TEXT = 7, // ButtonsText
    TC_ACTIVE_BUTTONS_BACKGROUND = 8, // ActiveButtonsBackground
    TC_ACTIVE_BUTTONS_TEXT = 9, // ActiveButtonsText
    TC_ACTIVE_TEXT = 10, // ActiveText
    TC_INACTIVE_TEXT = 11, // InactiveText
    TC_HIGHLIGHTED_TEXT = 12, // HighlightedText
    TC_PROGRESS_BAR_FOREGROUND = 13, // ProgressBarForeground
    TC_PROGRESS_BAR_BACKGROUND = 14, // ProgressBarBackground
    TC_FIELD_FOREGROUND = 15, // FieldForeground
    TC_FIELD_BACKGROUND = 16, // FieldBackground
    TC_INVALID_FIELD_FOREGROUND = 17, // InvalidFieldForeground
    TC_INVALID_FIELD_BACKGROUND = 18, // InvalidFieldBackground
    TC_STATIC_ELEMENTS = 19, // StaticElements
    TC_COUNT = 20,
    TC_CUSTOM_GROUP = 21, // a custom group, addressed by its name
};

// A colour that was never set.
constexpr uint64_t COLOUR_NOT_SET = ~uint64_t(0);

// The tag name of a THEMECOLOUR, or null for a value outside 0..19.
const char* themeColourTag(int colour);
// The THEMECOLOUR whose tag equals `tag` without regard to case, or -1.
int themeColourFromTag(const char* tag);

// Parses a colour written 0xRRGGBB (base 16, a "0x" prefix allowed) and gives it as
// 0x00BBGGRR. A null or empty text gives COLOUR_NOT_SET.
uint64_t parseThemeColour(const char* text);

// The colours of one run: twenty named colours, all unset at first, and custom groups
// by name.
class InstallerTheme
{
public:
    InstallerTheme();

    // Stores `colour` under the named colour `index` (0..19), or, for TC_CUSTOM_GROUP,
    // under the group `name` (compared exactly). Other indices, and a custom group without
    // a name, are ignored.
    void setColour(uint64_t colour, int index, const char* name);
    // The colour stored under `index`, or under the group `name` for TC_CUSTOM_GROUP.
    // Anything not stored gives COLOUR_NOT_SET.
    uint64_t getColour(int index, const char* name) const;

    // Forgets every colour.
    void clear();

private:
    uint64_t colours[TC_COUNT];
    TeskUtils::HashMap<unsigned long, 1, 13, 0, 1000> groups; // 13 buckets, chained
};
