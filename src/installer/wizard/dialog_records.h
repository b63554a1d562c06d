#pragma once
// The dialog records: what the dialog reader makes of the template's Dialogs (or
// UninstallDialogs) section, once, before any variable is read. Front ends read them
// through InstallExchangeInfo and never change them; the engine changes only the condition
// object of a dialog and the status of a task afterwards. Every text is kept raw, as it
// stands in the template: expansion happens where a text is used.
//
// Fixed text fields are cut silently at their size-1.
#include <cstdint>

#include "foundation/strings/tesk_utils.h"
#include "installer/model/colour_theme.h"
#include "installer/wizard/exchange_enums.h"

class DlgCondition;

// Bits of DLGINFO::flags, from the ';'-list of the attribute Special.
enum DLGTYPE {
    DLG_BAD_FINISH = 1, // "BadFinish" or "1": a failure end
    DLG_HAS_SUBDIALOGS = 2, // "HasSubDialogs": a frame with a task list and sub-dialogs
    DLG_AUTO_NEXT = 4, // "AutoNext": leaves by itself after its stage work
    DLG_FINISH = 8, // "Finish": the wizard ends when leaving it
    DLG_WEAK_CONDITION = 16, // "WeakCondition": a failing condition object doesn't hold
    DLG_BUSY = 32, // "Busy"
    DLG_AUTOMATED = 64, // "Automated": the console polls its condition
    DLG_NO_CAPTION = 128, // "NoCaption"
};

// Control types (UICTRL::type), by tag name without regard to case.
enum UICTRLTYPE {
    CTRL_TEXT = 10,
    CTRL_IMAGE = 11,
    CTRL_HLINE = 12,
    CTRL_RICH_EDIT_TEXT = 13,
    CTRL_PROGRESS = 14,
    CTRL_LIST = 15,
    CTRL_TASK_LB = 16,
    CTRL_BORDER = 17,
    CTRL_SLIDE_SHOW = 18,
    CTRL_HTML_EDIT_TEXT = 19,
    CTRL_PLAIN_EDIT_TEXT = 20,
};

// Alignments, shared by all elements; 0 when absent or unknown.
enum UIALIGN {
    ALIGN_NONE = 0,
    ALIGN_LEFT = 20,
    ALIGN_TOP = 21,
    ALIGN_CENTER = 22,
    ALIGN_RIGHT = 23,
    ALIGN_BOTTOM = 24,
};

// Field types (FIELDINFO::type), from the attribute Type without regard to case.
enum FIELDTYPE {
    FIELD_DIRECTORY = 30,
    FIELD_CHECKBOX = 31,
    FIELD_RADIO_BUTTONS = 32,
    FIELD_INSTALL_PARAMETER = 34,
    FIELD_EDIT_BOX = 36,
    FIELD_PASSWORD = 37,
};

// Bits of BUTTONINFO::flags.
enum BUTTONFLAGS {
    BUTTON_HAS_SHIFT = 1,
    BUTTON_HAS_ACTION = 2,
    BUTTON_LINK_STYLE = 4,
    BUTTON_DISABLEABLE = 8,
    BUTTON_DEFAULT = 16,
};

// Trigger types (TRIGGER_INFO::type), from the attribute Type.
enum TRIGGERTYPE {
    TRIGGER_VAR_CHANGE = 0,
    TRIGGER_RUN_ACTIONS = 1,
    TRIGGER_VAR_RESET = 2,
    TRIGGER_VAR_RECALCULATION = 3,
    TRIGGER_FILE_CHECK = 4,
    TRIGGER_UI = 5,
    TRIGGER_FREE_MEMORY = 6,
    TRIGGER_DEBUG_EXPRESSION = 7,
};

// One control of a dialog.
struct UICTRL
{
    char name[200]; // Name
    int type; // UICTRLTYPE
    int x, y, w, h;
    char condition[512]; // Condition
    char details[512]; // Details
    // The element's text, owned (new[]), with each two-character sequence backslash-n
    // replaced by CR LF; null without text.
    char* text;
    int hAlign, vAlign; // UIALIGN
    uint64_t background; // BkgColour
    uint64_t foreground; // FgColour

    UICTRL();
    UICTRL(const UICTRL& other);
    UICTRL& operator=(const UICTRL& other);
    ~UICTRL();
    // Replaces the text by a copy of `value` (null clears it).
    void setText(const char* value);
};

// One input field of a dialog.
struct FIELDINFO
{
    char label[200] = {}; // Label
    char variable[200] = {}; // the element's text
    int type = 0; // FIELDTYPE
    int x = -1, y = -1; // -1 when absent
    char content[512] = {}; // Content
    char condition[512] = {}; // Condition
    int w = -1, h = -1; // -1 when absent
    char description[512] = {}; // Description
    char enableCondition[512] = {}; // Enable
    char validationVariable[512] = {}; // ValidationVariable
    int hAlign = 0, vAlign = 0;
    uint64_t labelColour = COLOUR_NOT_SET; // LabelColour
    uint64_t background = COLOUR_NOT_SET; // set by the theme only
    uint64_t inputBackground = COLOUR_NOT_SET; // InputBkgColour
    uint64_t inputForeground = COLOUR_NOT_SET; // InputFgColour
    uint64_t buttonBackground = COLOUR_NOT_SET; // ButtonBkgColour
    uint64_t buttonForeground = COLOUR_NOT_SET; // ButtonFgColour
    uint64_t invalidBackground = COLOUR_NOT_SET; // InvalidBkgColour
    uint64_t invalidForeground = COLOUR_NOT_SET; // InvalidFgColour
    TeskUtils::CharString tooltip; // Tooltip
    TeskUtils::CharString style; // Style
};

// One button of a dialog.
struct BUTTONINFO
{
    char label[200] = {}; // the element's text
    char action[512] = {}; // Action, or the preset of Name
    char condition[512] = {}; // Condition
    char enableCondition[512] = {}; // EnableCondition
    int shift = 0; // DialogShift, or the preset of Name
    int flags = 0; // BUTTONFLAGS
    int x = 0, y = 0, w = 0, h = 0;
    int hAlign = 0, vAlign = 0;
    uint64_t background = COLOUR_NOT_SET; // BkgColour
    uint64_t foreground = COLOUR_NOT_SET; // FgColour
    uint64_t activeBackground = COLOUR_NOT_SET; // ActiveBkgColour
    uint64_t activeForeground = COLOUR_NOT_SET; // ActiveFgColour
};

// One task of the task list of a dialog with sub-dialogs; its index is the index of its
// sub-dialog.
struct TASKINFO
{
    TASKSTATUS status = TASK_NOT_REACHED;
    char name[200] = {}; // the tag name
    char currentLabel[512] = {}; // CurrentLabel
    char finishLabel[512] = {}; // FinishLabel
    char unreachedLabel[512] = {}; // UnreachedLabel
    char showCondition[512] = {}; // ShowCondition
    char enableCondition[512] = {}; // EnableCondition
};

// One trigger of a dialog.
struct TRIGGER_INFO
{
    int evaluation = 0; // TRIGGER_EVALUATION bits, from EvaluateOn
    int type = 0; // TRIGGERTYPE
    char variable[1024] = {}; // Variable
    char value[1024] = {}; // Value
    char condition[512] = {}; // Condition
    TeskUtils::CharString text; // the element's text
    int updateMask = 0; // UPDATETYPE bits, from UpdateList
};

// One dialog or sub-dialog. Copying a DLGINFO copies all its tables; the condition object
// is shared and released with its last holder.
struct DLGINFO
{
    char name[200]; // the tag name, which the stage dispatch compares
    int node; // the tag's node in the template
    int width, height; // w, h: 760 by 520 when absent
    uint64_t background; // BkgColour
    uint64_t foreground; // FgColour
    int flags; // DLGTYPE bits
    DlgCondition* conditionObject; // set by the stage work; null at first
    int* conditionRefs; // holders of conditionObject, shared among them
    char condition[512]; // Condition
    TeskUtils::CharString autoCondition; // AutoCondition
    TeskUtils::Table<FIELDINFO, 16> fields;
    TeskUtils::Table<UICTRL, 16> controls;
    TeskUtils::Table<BUTTONINFO, 16> buttons;
    TeskUtils::Table<TASKINFO, 16> tasks; // only with DLG_HAS_SUBDIALOGS
    TeskUtils::Table<DLGINFO, 16> subDialogs; // only with DLG_HAS_SUBDIALOGS
    TeskUtils::Table<TRIGGER_INFO, 16> triggers;
    TeskUtils::Table<TeskUtils::CharString, 100> retained; // Retain

    DLGINFO();
    DLGINFO(const DLGINFO& other);
    DLGINFO& operator=(const DLGINFO& other);
    ~DLGINFO();

    // Makes `object` this dialog's condition object, releasing the one held before.
    // With `sharedRefs` null this dialog becomes the object's first holder and takes
    // ownership; otherwise the object is already held elsewhere under that count, which
    // rises by one. The object is deleted when its last holder lets go of it.
    void setConditionObject(DlgCondition* object, int* sharedRefs);
    // Lets go of the condition object.
    void releaseConditionObject();
};
