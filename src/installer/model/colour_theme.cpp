// The colour theme: the table of named colours, the template's ColourTheme section,
// colour references in dialogs, and the theme's defaults for every element left unset.
#include "installer/model/colour_theme.h"

#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "foundation/streams/pconsole.h"
#include "installer/installer.h"

namespace {

const char* const kThemeColourTags[TC_COUNT] = {
    "DialogBackground",
    "DialogForeground",
    "ListBackground",
    "InputBoxBackground",
    "InputBoxText",
    "LinkButtons",
    "ButtonsBackground",
    "ButtonsText",
    "ActiveButtonsBackground",
    "ActiveButtonsText",
    "ActiveText",
    "InactiveText",
    "HighlightedText",
    "ProgressBarForeground",
    "ProgressBarBackground",
    "FieldForeground",
    "FieldBackground",
    "InvalidFieldForeground",
    "InvalidFieldBackground",
    "StaticElements",
};

inline bool isUnset(uint64_t colour)
{
    return colour == COLOUR_NOT_SET;
}

// Gives `colour` the value `fallback` when it is still unset.
inline void fillUnset(uint64_t& colour, uint64_t fallback)
{
    if (isUnset(colour))
        colour = fallback;
}

} // namespace

const char* themeColourTag(int colour)
{
    if (colour < 0 || colour >= TC_COUNT)
        return nullptr;
    return kThemeColourTags[colour];
}

int themeColourFromTag(const char* tag)
{
    if (!tag)
        return -1;
    for (int i = 0; i < TC_COUNT; ++i)
        if (strcasecmp(tag, kThemeColourTags[i]) == 0)
            return i;
    return -1;
}

uint64_t parseThemeColour(const char* text)
{
    if (!text || !*text)
        return COLOUR_NOT_SET;
    // Written 0xRRGGBB, stored 0x00BBGGRR: red and blue trade places, the rest stays.
    uint64_t value = strtoul(text, nullptr, 16);
    uint64_t red = (value >> 16) & 0xFF;
    uint64_t blue = value & 0xFF;
    return (value & ~uint64_t(0xFF00FF)) | (blue << 16) | red;
}

InstallerTheme::InstallerTheme()
{
    for (uint64_t& colour : colours)
        colour = COLOUR_NOT_SET;
}

void InstallerTheme::setColour(uint64_t colour, int index, const char* name)
{
    if (index == TC_CUSTOM_GROUP) {
        if (name)
            groups[name] = colour;
        return;
    }
    if (index >= 0 && index < TC_COUNT)
        colours[index] = colour;
}

uint64_t InstallerTheme::getColour(int index, const char* name) const
{
    if (index == TC_CUSTOM_GROUP) {
        const unsigned long* found = name ? groups.find(name) : nullptr;
        return found ? *found : COLOUR_NOT_SET;
    }
    if (index >= 0 && index < TC_COUNT)
        return colours[index];
    return COLOUR_NOT_SET;
}

void InstallerTheme::clear()
{
    for (uint64_t& colour : colours)
        colour = COLOUR_NOT_SET;
    groups.clear();
}

int Installer::ExtractColourThemeInfo()
{
    int section = templateXml.FindTag("ColourTheme", -1);
    if (section <= 0)
        return -1;
    customThemed = true;
    themeSectionRead = true;

    PList<int> children;
    templateXml.GetChildren(section, &children);
    for (int i = 0; i < children.Count(); ++i) {
        int child = children[i];
        // A later tag of the same name overrides an earlier one; a false condition leaves
        // the earlier value.
        if (EvalCondition(templateXml.ParVal(child, "Condition")) == 0)
            continue;
        const char* tag = templateXml.GetName(child);
        uint64_t colour = parseThemeColour(templateXml.GetData(child));

        if (tag && strcasecmp(tag, "CustomGroup") == 0) {
            const char* name = templateXml.ParVal(child, "Name");
            if (!name || !*name) {
                if (debugConsole)
                    debugConsole->Dump("WARNING: Theme custom group tag missing a 'Name' attribute!");
                continue;
            }
            theme.setColour(colour, TC_CUSTOM_GROUP, name);
            continue;
        }

        int index = themeColourFromTag(tag);
        if (index < 0) {
            if (debugConsole)
                debugConsole->Dump(
                    "WARNING: Colour theme tag is not supported by installer: \"%s\"", tag ? tag : "");
            continue;
        }
        theme.setColour(colour, index, nullptr);
    }
    return 0;
}

uint64_t Installer::getColourReference(const char* value) const
{
    if (!value)
        return COLOUR_NOT_SET;
    if (strncasecmp(value, "Group:", 6) == 0)
        return theme.getColour(TC_CUSTOM_GROUP, value + 6);
    return parseThemeColour(value);
}

namespace {

// Fills the unset colours of one dialog and, before it, of its sub-dialogs.
void applyThemeDefaults(DLGINFO& dlg, const InstallerTheme& theme)
{
    for (DLGINFO& sub : dlg.subDialogs)
        applyThemeDefaults(sub, theme);

    auto themed = [&theme](THEMECOLOUR colour) { return theme.getColour(colour, nullptr); };

    fillUnset(dlg.background, themed(TC_DIALOG_BACKGROUND));
    fillUnset(dlg.foreground, themed(TC_DIALOG_FOREGROUND));

    for (UICTRL& ctrl : dlg.controls) {
        switch (ctrl.type) {
        case CTRL_TEXT:
            fillUnset(ctrl.foreground, themed(TC_ACTIVE_TEXT));
            fillUnset(ctrl.background, dlg.background);
            break;
        case CTRL_IMAGE:
        case CTRL_SLIDE_SHOW:
            fillUnset(ctrl.background, dlg.background);
            break;
        case CTRL_HLINE:
        case CTRL_BORDER:
            fillUnset(ctrl.foreground, themed(TC_STATIC_ELEMENTS));
            break;
        case CTRL_RICH_EDIT_TEXT:
        case CTRL_TASK_LB:
        case CTRL_HTML_EDIT_TEXT:
        case CTRL_PLAIN_EDIT_TEXT:
            fillUnset(ctrl.background, themed(TC_LIST_BACKGROUND));
            break;
        case CTRL_PROGRESS:
            fillUnset(ctrl.foreground, themed(TC_PROGRESS_BAR_FOREGROUND));
            fillUnset(ctrl.background, themed(TC_PROGRESS_BAR_BACKGROUND));
            break;
        case CTRL_LIST:
            fillUnset(ctrl.background, themed(TC_LIST_BACKGROUND));
            fillUnset(ctrl.foreground, themed(TC_ACTIVE_TEXT));
            break;
        default:
            break;
        }
    }

    for (FIELDINFO& field : dlg.fields) {
        // A set FieldForeground only switches the label to the dialog's foreground; its
        // own value is not used.
        fillUnset(field.labelColour,
            isUnset(themed(TC_FIELD_FOREGROUND)) ? themed(TC_ACTIVE_TEXT) : dlg.foreground);
        uint64_t fieldBackground = themed(TC_FIELD_BACKGROUND);
        fillUnset(field.background, isUnset(fieldBackground) ? dlg.background : fieldBackground);
        fillUnset(field.inputBackground, themed(TC_INPUT_BOX_BACKGROUND));
        fillUnset(field.inputForeground, themed(TC_INPUT_BOX_TEXT));
        fillUnset(field.buttonBackground, themed(TC_BUTTONS_BACKGROUND));
        fillUnset(field.buttonForeground, themed(TC_BUTTONS_TEXT));
        fillUnset(field.invalidBackground, themed(TC_INVALID_FIELD_BACKGROUND));
        fillUnset(field.invalidForeground, themed(TC_INVALID_FIELD_FOREGROUND));
    }

    for (BUTTONINFO& button : dlg.buttons) {
        fillUnset(button.foreground,
            (button.flags & BUTTON_LINK_STYLE) ? themed(TC_LINK_BUTTONS) : themed(TC_BUTTONS_TEXT));
        fillUnset(button.background, themed(TC_BUTTONS_BACKGROUND));
        uint64_t activeText = themed(TC_ACTIVE_BUTTONS_TEXT);
        fillUnset(button.activeForeground, isUnset(activeText) ? button.foreground : activeText);
        uint64_t activeBackground = themed(TC_ACTIVE_BUTTONS_BACKGROUND);
        fillUnset(button.activeBackground, isUnset(activeBackground) ? button.background : activeBackground);
    }
}

bool setsOwnColours(const DLGINFO& dlg)
{
    if (!isUnset(dlg.background) || !isUnset(dlg.foreground))
        return true;
    for (const DLGINFO& sub : dlg.subDialogs)
        if (setsOwnColours(sub))
            return true;
    return false;
}

} // namespace

void Installer::SetDlgThemeColours()
{
    // Decided by the section, not by customThemed, which the unthemed pass may have set:
    // a second call then changes nothing.
    if (!themeSectionRead) {
        for (const DLGINFO& dlg : dialogs)
            if (setsOwnColours(dlg)) {
                customThemed = true;
                break;
            }
        return;
    }
    for (DLGINFO& dlg : dialogs)
        applyThemeDefaults(dlg, theme);
}

bool Installer::CustomThemedGUI()
{
    return customThemed;
}

uint64_t Installer::GetThemeColour(THEMECOLOUR colour)
{
    if (colour < 0 || colour >= TC_COUNT)
        return COLOUR_NOT_SET;
    return theme.getColour(colour, nullptr);
}

int Installer::GetDlgColour(int dlg, int sub, uint64_t& background, uint64_t& foreground)
{
    background = COLOUR_NOT_SET;
    foreground = COLOUR_NOT_SET;
    const DLGINFO* info = GetDialogInfo(dlg, sub);
    if (!info)
        return -1;
    background = info->background;
    foreground = info->foreground;
    return 0;
}
