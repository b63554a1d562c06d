// The dialog reader: turns the template's Dialogs (or UninstallDialogs) section into the
// table of DLGINFO once, before any variable is read. Conditions and texts are stored raw
// and evaluated where they are used. A malformed element costs at most a warning: it is
// dropped, or read with its defaults.
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "foundation/streams/pconsole.h"
#include "foundation/strings/tokenize.h"
#include "installer/installer.h"
#include "installer/wizard/dialog_conditions.h"

// ---- Records ------------------------------------------------------------------------------

UICTRL::UICTRL()
    : name()
    , type(0)
    , x(0)
    , y(0)
    , w(0)
    , h(0)
    , condition()
    , details()
    , text(nullptr)
    , hAlign(0)
    , vAlign(0)
    , background(COLOUR_NOT_SET)
    , foreground(COLOUR_NOT_SET)
{
}

UICTRL::UICTRL(const UICTRL& other)
    : text(nullptr)
{
    *this = other;
}

UICTRL& UICTRL::operator=(const UICTRL& other)
{
    if (this == &other)
        return *this;
    memcpy(name, other.name, sizeof(name));
    type = other.type;
    x = other.x;
    y = other.y;
    w = other.w;
    h = other.h;
    memcpy(condition, other.condition, sizeof(condition));
    memcpy(details, other.details, sizeof(details));
    setText(other.text);
    hAlign = other.hAlign;
    vAlign = other.vAlign;
    background = other.background;
    foreground = other.foreground;
    return *this;
}

UICTRL::~UICTRL()
{
    delete[] text;
}

void UICTRL::setText(const char* value)
{
    char* copy = nullptr;
    if (value) {
        size_t length = strlen(value);
        copy = new char[length + 1];
        memcpy(copy, value, length + 1);
    }
    delete[] text;
    text = copy;
}

DLGINFO::DLGINFO()
    : name()
    , node(-1)
    , width(760)
    , height(520)
    , background(COLOUR_NOT_SET)
    , foreground(COLOUR_NOT_SET)
    , flags(0)
    , conditionObject(nullptr)
    , conditionRefs(nullptr)
    , condition()
{
}

DLGINFO::DLGINFO(const DLGINFO& other)
    : conditionObject(nullptr)
    , conditionRefs(nullptr)
{
    *this = other;
}

DLGINFO& DLGINFO::operator=(const DLGINFO& other)
{
    if (this == &other)
        return *this;
    memcpy(name, other.name, sizeof(name));
    node = other.node;
    width = other.width;
    height = other.height;
    background = other.background;
    foreground = other.foreground;
    flags = other.flags;
    if (other.conditionObject)
        setConditionObject(other.conditionObject, other.conditionRefs);
    else
        releaseConditionObject();
    memcpy(condition, other.condition, sizeof(condition));
    autoCondition = other.autoCondition;
    fields = other.fields;
    controls = other.controls;
    buttons = other.buttons;
    tasks = other.tasks;
    subDialogs = other.subDialogs;
    triggers = other.triggers;
    retained = other.retained;
    return *this;
}

DLGINFO::~DLGINFO()
{
    releaseConditionObject();
}

void DLGINFO::setConditionObject(DlgCondition* object, int* sharedRefs)
{
    if (object && object == conditionObject)
        return;
    int* refs = sharedRefs;
    if (object) {
        if (refs)
            ++*refs;
        else
            refs = new int(1);
    }
    releaseConditionObject();
    conditionObject = object;
    conditionRefs = object ? refs : nullptr;
}

void DLGINFO::releaseConditionObject()
{
    if (conditionRefs && --*conditionRefs == 0) {
        delete conditionObject;
        delete conditionRefs;
    }
    conditionObject = nullptr;
    conditionRefs = nullptr;
}

// ---- Attribute readers --------------------------------------------------------------------

namespace {

struct NamedValue
{
    const char* word;
    int value;
};

const NamedValue kSpecialWords[] = {
    { "BadFinish", DLG_BAD_FINISH },
    { "1", DLG_BAD_FINISH },
    { "HasSubDialogs", DLG_HAS_SUBDIALOGS },
    { "AutoNext", DLG_AUTO_NEXT },
    { "Finish", DLG_FINISH },
    { "WeakCondition", DLG_WEAK_CONDITION },
    { "Busy", DLG_BUSY },
    { "Automated", DLG_AUTOMATED },
    { "NoCaption", DLG_NO_CAPTION },
};

const NamedValue kControlTypes[] = {
    { "Text", CTRL_TEXT },
    { "Image", CTRL_IMAGE },
    { "HLine", CTRL_HLINE },
    { "RichEditText", CTRL_RICH_EDIT_TEXT },
    { "Progress", CTRL_PROGRESS },
    { "List", CTRL_LIST },
    { "TaskLB", CTRL_TASK_LB },
    { "Border", CTRL_BORDER },
    { "SlideShow", CTRL_SLIDE_SHOW },
    { "HtmlEditText", CTRL_HTML_EDIT_TEXT },
    { "PlainEditText", CTRL_PLAIN_EDIT_TEXT },
};

const NamedValue kFieldTypes[] = {
    { "Directory", FIELD_DIRECTORY },
    { "CheckBox", FIELD_CHECKBOX },
    { "RadioButtons", FIELD_RADIO_BUTTONS },
    { "InstallParameter", FIELD_INSTALL_PARAMETER },
    { "EditBox", FIELD_EDIT_BOX },
    { "Password", FIELD_PASSWORD },
};

const NamedValue kHorizontalAlignments[]
    = { { "left", ALIGN_LEFT }, { "center", ALIGN_CENTER }, { "right", ALIGN_RIGHT } };
const NamedValue kVerticalAlignments[]
    = { { "top", ALIGN_TOP }, { "center", ALIGN_CENTER }, { "bottom", ALIGN_BOTTOM } };
// Buttons sit at an edge: no centring.
const NamedValue kButtonHorizontalAlignments[] = { { "left", ALIGN_LEFT }, { "right", ALIGN_RIGHT } };
const NamedValue kButtonVerticalAlignments[] = { { "top", ALIGN_TOP }, { "bottom", ALIGN_BOTTOM } };

const NamedValue kEvaluationWords[] = {
    { "Start", TRIGGER_ON_SET },
    { "Set", TRIGGER_ON_SET },
    { "Dynamic", TRIGGER_ON_DYNAMIC },
    { "End", TRIGGER_ON_END },
    { "DlgEval", TRIGGER_ON_DLG_EVAL },
    { "EvalDlg", TRIGGER_ON_DLG_EVAL },
    { "Button", TRIGGER_ON_BUTTON },
};

const NamedValue kTriggerTypes[] = {
    { "VarChange", TRIGGER_VAR_CHANGE },
    { "RunActions", TRIGGER_RUN_ACTIONS },
    { "VarReset", TRIGGER_VAR_RESET },
    { "VarRecalculation", TRIGGER_VAR_RECALCULATION },
    { "FileCheck", TRIGGER_FILE_CHECK },
    { "UI", TRIGGER_UI },
    { "FreeMemory", TRIGGER_FREE_MEMORY },
    { "DebugExpression", TRIGGER_DEBUG_EXPRESSION },
};

// The value of `word` in `table`, compared without regard to case; -1 when it isn't there.
template <size_t N> int lookupWord(const NamedValue (&table)[N], const char* word)
{
    if (!word)
        return -1;
    for (const NamedValue& entry : table)
        if (strcasecmp(entry.word, word) == 0)
            return entry.value;
    return -1;
}

template <size_t N>
int alignment(const PXML& xml, int node, const char* attribute, const NamedValue (&table)[N])
{
    int value = lookupWord(table, xml.ParVal(node, attribute));
    return value < 0 ? ALIGN_NONE : value;
}

// An integer attribute by atoi, or `fallback` when the attribute is absent.
int intAttribute(const PXML& xml, int node, const char* attribute, int fallback)
{
    const char* value = xml.ParVal(node, attribute);
    return value ? atoi(value) : fallback;
}

// Copies an attribute into a fixed field, cut at the field's size-1; absent gives "".
template <size_t N> void copyAttribute(char (&field)[N], const PXML& xml, int node, const char* attribute)
{
    TeskUtils::copyBounded(field, xml.ParVal(node, attribute), N);
}

// Replaces each two-character sequence backslash-n by CR LF, in place.
void replaceNewlineEscapes(char* text)
{
    for (char* c = text; c && c[0] && c[1]; ++c) {
        if (c[0] == '\\' && c[1] == 'n') {
            c[0] = '\r';
            c[1] = '\n';
            ++c;
        }
    }
}

// What a button's Name presets: flags added, action and shift (0: left as read).
struct ButtonPreset
{
    const char* name;
    int flags;
    const char* action;
    int shift;
};

const ButtonPreset kButtonPresets[] = {
    { "Next", BUTTON_HAS_SHIFT | BUTTON_DEFAULT, nullptr, 1 },
    { "Back", BUTTON_HAS_SHIFT, nullptr, -1 },
    { "Cancel", BUTTON_HAS_ACTION, "Cancel", 0 },
    { "Help", BUTTON_HAS_ACTION, "Help", 0 },
    { "Customize", BUTTON_HAS_SHIFT | BUTTON_HAS_ACTION, "[CUSTOMIZE]='1'", 1 },
    { "Express", BUTTON_HAS_SHIFT | BUTTON_HAS_ACTION, "[CUSTOMIZE]='0'", -1 },
};

const ButtonPreset* findButtonPreset(const char* name)
{
    if (!name)
        return nullptr;
    for (const ButtonPreset& preset : kButtonPresets)
        if (strcasecmp(preset.name, name) == 0)
            return &preset;
    return nullptr;
}

bool isWelcomeOrFinish(const char* name)
{
    return strcasecmp(name, "Welcome") == 0 || strcasecmp(name, "Finish") == 0
        || strcasecmp(name, "BadFinish") == 0;
}

BUTTONINFO dressButton(const char* label, int flags, int shift, const char* action, int x, int hAlign)
{
    BUTTONINFO button;
    TeskUtils::copyBounded(button.label, label, sizeof(button.label));
    TeskUtils::copyBounded(button.action, action, sizeof(button.action));
    button.flags = flags;
    button.shift = shift;
    button.x = x;
    button.y = 50;
    button.w = 80;
    button.h = 30;
    button.hAlign = hAlign;
    button.vAlign = ALIGN_BOTTOM;
    return button;
}

// The dress of a dialog that has no button anywhere: a line above the buttons, Next,
// Cancel and, except on a first or last page, Back.
void applyDefaultDress(DLGINFO& dlg)
{
    dlg.width = 500;
    dlg.height = 390;

    UICTRL& line = dlg.controls.append();
    line.type = CTRL_HLINE;
    line.x = 1;
    line.y = 70;
    line.w = -1;
    line.h = 1;
    line.hAlign = ALIGN_LEFT;
    line.vAlign = ALIGN_BOTTOM;

    dlg.buttons.append(dressButton("&Next", BUTTON_HAS_SHIFT, 1, nullptr, 100, ALIGN_RIGHT));
    dlg.buttons.append(dressButton("&Cancel", BUTTON_HAS_ACTION, 0, "Cancel", 20, ALIGN_LEFT));
    if (!isWelcomeOrFinish(dlg.name))
        dlg.buttons.append(dressButton("&Back", BUTTON_HAS_SHIFT, -1, nullptr, 190, ALIGN_RIGHT));
}

// A dialog or sub-dialog with its own attributes, Retain list, fields, controls, buttons
// and triggers; `buttons` receives the number of its buttons.
DLGINFO readDialog(Installer& engine, int node, int& buttons)
{
    DLGINFO dlg = engine.ExtractDialogInfo(node);
    TeskUtils::tokenize(engine.templateXml.ParVal(node, "Retain"), ';', dlg.retained, 0);
    engine.ExtractFieldsInfo(dlg);
    engine.ExtractControlsInfo(dlg);
    buttons = engine.ExtractButtonsInfo(dlg);
    engine.ExtractTriggersInfo(dlg);
    return dlg;
}

} // namespace

// ---- The reader ---------------------------------------------------------------------------

int Installer::ExtractDialogsInfo(int uninstall)
{
    dialogs.freeData();
    int section = templateXml.FindTag(uninstall ? "UninstallDialogs" : "Dialogs", -1);
    if (section < 0)
        return -1;

    PList<int> children;
    templateXml.GetChildren(section, &children);
    for (int i = 0; i < children.Count(); ++i) {
        int buttons = 0;
        DLGINFO dlg = readDialog(*this, children[i], buttons);
        if (dlg.flags & DLG_HAS_SUBDIALOGS) {
            int subButtons = ExtractSubDialogsInfo(dlg);
            if (subButtons < 0)
                return -1;
            buttons += subButtons;
        }
        if (buttons == 0)
            applyDefaultDress(dlg);
        dialogs.append(dlg);
    }
    SetDlgThemeColours();
    return 0;
}

DLGINFO Installer::ExtractDialogInfo(int node)
{
    DLGINFO dlg;
    if (!templateXml.IsValid(node))
        return dlg;
    dlg.node = node;
    TeskUtils::copyBounded(dlg.name, templateXml.GetName(node), sizeof(dlg.name));

    TeskUtils::Table<TeskUtils::CharString, 100> words;
    TeskUtils::tokenize(templateXml.ParVal(node, "Special"), ';', words, 0);
    for (const TeskUtils::CharString& word : words) {
        int bit = lookupWord(kSpecialWords, word.c_str());
        if (bit < 0) {
            if (debugConsole)
                debugConsole->Dump("WARNING: Unknown dialog special attribute encontered: %s", word.c_str());
            continue;
        }
        dlg.flags |= bit;
    }

    copyAttribute(dlg.condition, templateXml, node, "Condition");
    dlg.autoCondition = TeskUtils::CharString(templateXml.ParVal(node, "AutoCondition"));
    dlg.width = intAttribute(templateXml, node, "w", 760);
    dlg.height = intAttribute(templateXml, node, "h", 520);
    dlg.background = getColourReference(templateXml.ParVal(node, "BkgColour"));
    dlg.foreground = getColourReference(templateXml.ParVal(node, "FgColour"));
    return dlg;
}

int Installer::ExtractFieldsInfo(DLGINFO& dlg)
{
    int added = 0;
    // A field without a known Type takes the type of the field before it.
    int lastType = 0;
    for (int node = templateXml.FindChild(dlg.node, "Field", -1); node >= 0;
         node = templateXml.FindChild(dlg.node, "Field", node)) {
        FIELDINFO field;
        copyAttribute(field.label, templateXml, node, "Label");
        TeskUtils::copyBounded(field.variable, templateXml.GetData(node), sizeof(field.variable));
        int type = lookupWord(kFieldTypes, templateXml.ParVal(node, "Type"));
        if (type >= 0)
            lastType = type;
        field.type = lastType;
        field.x = intAttribute(templateXml, node, "x", -1);
        field.y = intAttribute(templateXml, node, "y", -1);
        field.w = intAttribute(templateXml, node, "w", -1);
        field.h = intAttribute(templateXml, node, "h", -1);
        copyAttribute(field.content, templateXml, node, "Content");
        copyAttribute(field.condition, templateXml, node, "Condition");
        copyAttribute(field.description, templateXml, node, "Description");
        copyAttribute(field.enableCondition, templateXml, node, "Enable");
        copyAttribute(field.validationVariable, templateXml, node, "ValidationVariable");
        field.hAlign = alignment(templateXml, node, "HAlign", kHorizontalAlignments);
        field.vAlign = alignment(templateXml, node, "VAlign", kVerticalAlignments);
        field.labelColour = getColourReference(templateXml.ParVal(node, "LabelColour"));
        field.inputBackground = getColourReference(templateXml.ParVal(node, "InputBkgColour"));
        field.inputForeground = getColourReference(templateXml.ParVal(node, "InputFgColour"));
        field.buttonBackground = getColourReference(templateXml.ParVal(node, "ButtonBkgColour"));
        field.buttonForeground = getColourReference(templateXml.ParVal(node, "ButtonFgColour"));
        field.invalidBackground = getColourReference(templateXml.ParVal(node, "InvalidBkgColour"));
        field.invalidForeground = getColourReference(templateXml.ParVal(node, "InvalidFgColour"));
        field.tooltip = TeskUtils::CharString(templateXml.ParVal(node, "Tooltip"));
        field.style = TeskUtils::CharString(templateXml.ParVal(node, "Style"));
        dlg.fields.append(field);
        ++added;
    }
    return added;
}

int Installer::ExtractControlsInfo(DLGINFO& dlg)
{
    PList<int> children;
    templateXml.GetChildren(dlg.node, &children);
    int added = 0;
    for (int i = 0; i < children.Count(); ++i) {
        int node = children[i];
        int type = lookupWord(kControlTypes, templateXml.GetName(node));
        if (type < 0)
            continue; // a field, button, trigger or something else
        const char* x = templateXml.ParVal(node, "x");
        const char* y = templateXml.ParVal(node, "y");
        if (!x || !y)
            continue;

        UICTRL& ctrl = dlg.controls.append();
        copyAttribute(ctrl.name, templateXml, node, "Name");
        ctrl.type = type;
        ctrl.x = atoi(x);
        ctrl.y = atoi(y);
        ctrl.w = intAttribute(templateXml, node, "w", 0);
        ctrl.h = intAttribute(templateXml, node, "h", 0);
        copyAttribute(ctrl.condition, templateXml, node, "Condition");
        copyAttribute(ctrl.details, templateXml, node, "Details");
        ctrl.setText(templateXml.GetData(node));
        replaceNewlineEscapes(ctrl.text);
        ctrl.hAlign = alignment(templateXml, node, "HAlign", kHorizontalAlignments);
        ctrl.vAlign = alignment(templateXml, node, "VAlign", kVerticalAlignments);
        ctrl.background = getColourReference(templateXml.ParVal(node, "BkgColour"));
        ctrl.foreground = getColourReference(templateXml.ParVal(node, "FgColour"));
        ++added;
    }
    return added;
}

int Installer::ExtractButtonsInfo(DLGINFO& dlg)
{
    int added = 0;
    for (int node = templateXml.FindChild(dlg.node, "Button", -1); node >= 0;
         node = templateXml.FindChild(dlg.node, "Button", node)) {
        const char* label = templateXml.GetData(node);
        const char* x = templateXml.ParVal(node, "x");
        const char* y = templateXml.ParVal(node, "y");
        if (!label || !*label || !x || !y)
            continue;

        BUTTONINFO button;
        TeskUtils::copyBounded(button.label, label, sizeof(button.label));
        button.x = atoi(x);
        button.y = atoi(y);
        button.w = intAttribute(templateXml, node, "w", 80);
        button.h = intAttribute(templateXml, node, "h", 30);
        button.hAlign = alignment(templateXml, node, "HAlign", kButtonHorizontalAlignments);
        button.vAlign = alignment(templateXml, node, "VAlign", kButtonVerticalAlignments);
        copyAttribute(button.condition, templateXml, node, "Condition");
        copyAttribute(button.enableCondition, templateXml, node, "EnableCondition");
        button.background = getColourReference(templateXml.ParVal(node, "BkgColour"));
        button.foreground = getColourReference(templateXml.ParVal(node, "FgColour"));
        button.activeBackground = getColourReference(templateXml.ParVal(node, "ActiveBkgColour"));
        button.activeForeground = getColourReference(templateXml.ParVal(node, "ActiveFgColour"));

        const char* action = templateXml.ParVal(node, "Action");
        if (action) {
            TeskUtils::copyBounded(button.action, action, sizeof(button.action));
            button.flags |= BUTTON_HAS_ACTION;
        }
        button.shift = intAttribute(templateXml, node, "DialogShift", 0);
        if (button.shift != 0)
            button.flags |= BUTTON_HAS_SHIFT;
        if (intAttribute(templateXml, node, "Disableable", 0) == 1)
            button.flags |= BUTTON_DISABLEABLE;
        if (intAttribute(templateXml, node, "LinkStyle", 0) == 1)
            button.flags |= BUTTON_LINK_STYLE;
        if (intAttribute(templateXml, node, "Default", 0) == 1)
            button.flags |= BUTTON_DEFAULT;

        // The well-known buttons preset themselves by name.
        const ButtonPreset* preset = findButtonPreset(templateXml.ParVal(node, "Name"));
        if (preset) {
            button.flags |= preset->flags;
            if (preset->action)
                TeskUtils::copyBounded(button.action, preset->action, sizeof(button.action));
            if (preset->shift)
                button.shift = preset->shift;
        }

        dlg.buttons.append(button);
        ++added;
    }
    return added;
}

int Installer::ExtractTriggersInfo(DLGINFO& dlg)
{
    int added = 0;
    for (int node = templateXml.FindChild(dlg.node, "Trigger", -1); node >= 0;
         node = templateXml.FindChild(dlg.node, "Trigger", node)) {
        TRIGGER_INFO trigger;
        TeskUtils::Table<TeskUtils::CharString, 100> words;
        TeskUtils::tokenize(templateXml.ParVal(node, "EvaluateOn"), ';', words, 0);
        for (const TeskUtils::CharString& word : words) {
            int bit = lookupWord(kEvaluationWords, word.c_str());
            if (bit < 0) {
                if (debugConsole)
                    debugConsole->Dump("WARNING: Unrecognized trigger evaluation: %s (Parent dlg name: %s)",
                        word.c_str(), dlg.name);
                continue;
            }
            trigger.evaluation |= bit;
        }

        const char* type = templateXml.ParVal(node, "Type");
        if (type) {
            trigger.type = lookupWord(kTriggerTypes, type);
            if (trigger.type < 0) {
                if (debugConsole)
                    debugConsole->Dump(
                        "WARNING: Unrecognized trigger type = %s (Parent dlg name: %s)", type, dlg.name);
                trigger.type = TRIGGER_VAR_CHANGE;
            }
        }

        const char* value = templateXml.ParVal(node, "Value");
        copyAttribute(trigger.variable, templateXml, node, "Variable");
        TeskUtils::copyBounded(trigger.value, value, sizeof(trigger.value));
        copyAttribute(trigger.condition, templateXml, node, "Condition");
        trigger.text = TeskUtils::CharString(templateXml.GetData(node));
        trigger.updateMask = static_cast<int>(TeskUtils::maskFromStringList(
            templateXml.ParVal(node, "UpdateList"), "Controls;Fields;Tasks;Buttons", ';'));

        bool needsValue = trigger.type == TRIGGER_VAR_CHANGE || trigger.type == TRIGGER_RUN_ACTIONS
            || trigger.type == TRIGGER_FILE_CHECK || trigger.type == TRIGGER_UI
            || trigger.type == TRIGGER_DEBUG_EXPRESSION;
        if (trigger.evaluation == 0 || (needsValue && !value)) {
            if (debugConsole)
                debugConsole->Dump(
                    "WARNING: Extracted a trigger with no type nor specified value (Parent dlg name: %s)",
                    dlg.name);
            continue;
        }
        dlg.triggers.append(trigger);
        ++added;
    }
    return added;
}

int Installer::ExtractTaskListInfo(DLGINFO& dlg)
{
    int list = templateXml.FindChild(dlg.node, "TaskList", -1);
    if (list < 0) {
        if (debugConsole)
            debugConsole->Dump("ERROR: Could NOT find <TaskList> tag! (parent: %s)", dlg.name);
        return -1;
    }
    PList<int> children;
    templateXml.GetChildren(list, &children);
    for (int i = 0; i < children.Count(); ++i) {
        int node = children[i];
        TASKINFO& task = dlg.tasks.append();
        TeskUtils::copyBounded(task.name, templateXml.GetName(node), sizeof(task.name));
        copyAttribute(task.currentLabel, templateXml, node, "CurrentLabel");
        copyAttribute(task.finishLabel, templateXml, node, "FinishLabel");
        copyAttribute(task.unreachedLabel, templateXml, node, "UnreachedLabel");
        copyAttribute(task.showCondition, templateXml, node, "ShowCondition");
        copyAttribute(task.enableCondition, templateXml, node, "EnableCondition");
    }
    return 0;
}

int Installer::ExtractSubDialogsInfo(DLGINFO& dlg)
{
    if (ExtractTaskListInfo(dlg) < 0)
        return -1;
    int section = templateXml.FindChild(dlg.node, "SubDialogs", -1);
    if (section < 0) {
        if (debugConsole)
            debugConsole->Dump("ERROR: Could NOT find <SubDialogs> tag! (parent: %s)", dlg.name);
        return -1;
    }

    // A sub-dialog has the index of its task; a task without a sub-dialog adds nothing,
    // and from there on the two indices part.
    int buttons = 0;
    for (const TASKINFO& task : dlg.tasks) {
        int node = templateXml.FindChild(section, task.name, -1);
        if (node < 0)
            continue;
        int subButtons = 0;
        dlg.subDialogs.append(readDialog(*this, node, subButtons));
        buttons += subButtons;
    }
    return buttons;
}
