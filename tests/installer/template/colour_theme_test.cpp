// The colour theme: conditional and custom colours, references (and so parsing) and defaults.
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "installer/template/template_helpers.h"

using quilbtest::LoadedTemplate;

namespace {

// Loads theme.xml with DARK set as given and reads theme and dialogs.
void loadTheme(LoadedTemplate& t, const char* dark)
{
    ASSERT_TRUE(t.loadFile("theme.xml"));
    t.installer->SetVar("DARK", dark);
    ASSERT_EQ(0, t.installer->ExtractColourThemeInfo());
    ASSERT_EQ(0, t.installer->ExtractDialogsInfo(0));
}

TEST(ColourTheme, SectionColoursConditionsAndGroups)
{
    LoadedTemplate light;
    loadTheme(light, "0");
    Installer& engine = *light.installer;
    EXPECT_TRUE(engine.CustomThemedGUI());
    EXPECT_EQ(0x332211u, engine.GetThemeColour(TC_DIALOG_BACKGROUND));
    EXPECT_EQ(0x2a2a2au, engine.GetThemeColour(TC_DIALOG_FOREGROUND));
    EXPECT_EQ(COLOUR_NOT_SET, engine.GetThemeColour(TC_INVALID_FIELD_BACKGROUND));
    EXPECT_EQ(COLOUR_NOT_SET, engine.GetThemeColour(TC_HIGHLIGHTED_TEXT));
    EXPECT_EQ(COLOUR_NOT_SET, engine.GetThemeColour(TC_COUNT));
    EXPECT_EQ(COLOUR_NOT_SET, engine.GetThemeColour(static_cast<THEMECOLOUR>(-1)));
    EXPECT_EQ(1, light.logCount("WARNING: Theme custom group tag missing a 'Name' attribute!\r\n"));
    EXPECT_EQ(1, light.logCount("WARNING: Colour theme tag is not supported by installer: \"Sparkle\"\r\n"));

    // A later tag of the same name wins when its condition holds.
    LoadedTemplate dark;
    loadTheme(dark, "1");
    EXPECT_EQ(0u, dark.installer->GetThemeColour(TC_DIALOG_BACKGROUND));

    struct Reference
    {
        const char* value;
        uint64_t colour;
    } references[] = {
        { "Group:Accent", 0x0000ff },
        { "GROUP:Accent", 0x0000ff },
        { "Group:accent", COLOUR_NOT_SET },
        { "Group:Nothing", COLOUR_NOT_SET },
        { "0x123456", 0x563412 },
        { "112233", 0x332211 },
        { "0xff", 0xff0000 },
        { "0x2a2a2a", 0x2a2a2a },
        { "", COLOUR_NOT_SET },
        { nullptr, COLOUR_NOT_SET },
    };
    for (const Reference& r : references) {
        SCOPED_TRACE(r.value ? r.value : "(null)");
        EXPECT_EQ(r.colour, engine.getColourReference(r.value));
    }
}

TEST(ColourTheme, DefaultsFillWhatTheTemplateLeftUnset)
{
    LoadedTemplate t;
    loadTheme(t, "0");
    Installer& engine = *t.installer;
    const uint64_t dialogBackground = 0x332211, dialogForeground = 0x2a2a2a;
    const uint64_t activeText = 0xff0000, unset = COLOUR_NOT_SET;

    uint64_t background = 0, foreground = 0;
    ASSERT_EQ(0, engine.GetDlgColour(0, -1, background, foreground));
    EXPECT_EQ(dialogBackground, background);
    EXPECT_EQ(dialogForeground, foreground);
    EXPECT_EQ(-1, engine.GetDlgColour(9, -1, background, foreground));
    EXPECT_EQ(unset, background);

    struct ControlCase
    {
        int index;
        int type;
        uint64_t foreground;
        uint64_t background;
    } controls[] = {
        { 0, CTRL_TEXT, activeText, dialogBackground },
        { 1, CTRL_TEXT, 0x0000ff, 0x010000 }, // set by the template, kept
        { 2, CTRL_HLINE, 0xefcdab, unset },
        { 3, CTRL_PROGRESS, 0x00ff00, unset }, // no ProgressBarBackground in the theme
        { 4, CTRL_LIST, activeText, 0x030201 },
        { 5, CTRL_IMAGE, unset, dialogBackground },
    };
    for (const ControlCase& c : controls) {
        SCOPED_TRACE(c.index);
        const UICTRL* ctrl = engine.GetDlgItem(0, c.index, -1);
        ASSERT_NE(nullptr, ctrl);
        EXPECT_EQ(c.type, ctrl->type);
        EXPECT_EQ(c.foreground, ctrl->foreground);
        EXPECT_EQ(c.background, ctrl->background);
    }

    // FieldForeground is set, so the label takes the dialog's foreground; no FieldBackground.
    const FIELDINFO& field = *engine.GetField(0, 0, -1);
    EXPECT_EQ((std::vector<uint64_t> {
                  dialogForeground, dialogBackground, 0x0f0000, 0x404040, 0x202020, 0x101010, unset, unset }),
        (std::vector<uint64_t> { field.labelColour, field.background, field.inputBackground,
            field.inputForeground, field.buttonBackground, field.buttonForeground, field.invalidBackground,
            field.invalidForeground }));
    // Foreground, background, active foreground (no ActiveButtonsText: its own), active background.
    const BUTTONINFO& next = *engine.GetDlgButton(0, 0, -1);
    const BUTTONINFO& link = *engine.GetDlgButton(0, 1, -1);
    EXPECT_EQ((std::vector<uint64_t> { 0x101010, 0x202020, 0x101010, 0x303030 }),
        (std::vector<uint64_t> {
            next.foreground, next.background, next.activeForeground, next.activeBackground }));
    EXPECT_EQ((std::vector<uint64_t> { 0x0c0b0a, 0x202020, 0x777777, 0x303030 }),
        (std::vector<uint64_t> {
            link.foreground, link.background, link.activeForeground, link.activeBackground }));

    // An unknown group gives an unset colour, which the theme then fills.
    ASSERT_EQ(0, engine.GetDlgColour(1, -1, background, foreground));
    EXPECT_EQ(dialogBackground, background);
    EXPECT_EQ(0x0000ffu, foreground);
    EXPECT_EQ(dialogBackground, engine.GetDlgItem(1, 0, -1)->background);
}

TEST(ColourTheme, UnthemedTemplates)
{
    struct Case
    {
        const char* label;
        const char* dialogs;
        bool themed;
    } cases[] = {
        { "no colours", "<Welcome><Text x='1' y='1'>a</Text></Welcome>", false },
        { "a dialog's own colour", "<A/><B BkgColour='0x010101'><Text x='1' y='1'>a</Text></B>", true },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        LoadedTemplate t;
        t.loadText(std::string("<QuilbGroupInstallation><Dialogs>") + c.dialogs
            + "</Dialogs></QuilbGroupInstallation>");
        EXPECT_EQ(-1, t.installer->ExtractColourThemeInfo());
        ASSERT_EQ(0, t.installer->ExtractDialogsInfo(0));
        // A graphical front end's start fills the theme in once more, which changes nothing.
        t.installer->SetDlgThemeColours();
        EXPECT_EQ(c.themed, t.installer->CustomThemedGUI());
        // Nothing is filled in without a theme section.
        const UICTRL* text = t.installer->GetDlgItem(t.installer->GetDialogsCount() - 1, 0, -1);
        ASSERT_NE(nullptr, text);
        EXPECT_EQ(COLOUR_NOT_SET, text->foreground);
        EXPECT_EQ(COLOUR_NOT_SET, text->background);
    }
}

} // namespace
