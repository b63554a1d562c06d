// Fuzz target of the dialog reader: reads the input as an install template, extracts the
// install and the uninstall dialogs with a theme in force (so that every colour default
// runs), and reads every record back through the exchange interface the way a front end
// does, checking that each fixed text is terminated within its field and that the getters
// answer null past every end. Copies of the table are made and dropped, as the engine does
// when it appends.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "installer/installer.h"

namespace {

void check(bool condition, const char* what)
{
    if (!condition) {
        fprintf(stderr, "extract_dialogs_fuzz: %s\n", what);
        abort();
    }
}

template <size_t N> void checkTerminated(const char (&field)[N], const char* what)
{
    check(strnlen(field, N) < N, what);
}

void checkDialog(InstallExchangeInfo& exchange, int dlg, int sub)
{
    DLGINFO* info = exchange.GetDialogInfo(dlg, sub);
    check(info != nullptr, "dialog within the count is null");
    checkTerminated(info->name, "dialog name");
    checkTerminated(info->condition, "dialog condition");
    check(info->flags >= 0 && info->flags < 256, "dialog flags beyond the known bits");

    int controls = exchange.GetDlgItemCount(dlg, sub);
    for (int i = 0; i < controls; ++i) {
        UICTRL* ctrl = exchange.GetDlgItem(dlg, i, sub);
        check(ctrl != nullptr, "control within the count is null");
        checkTerminated(ctrl->name, "control name");
        checkTerminated(ctrl->details, "control details");
        check(ctrl->type >= CTRL_TEXT && ctrl->type <= CTRL_PLAIN_EDIT_TEXT, "control type");
        if (ctrl->text)
            (void)strlen(ctrl->text);
    }
    check(exchange.GetDlgItem(dlg, controls, sub) == nullptr, "control past the end");

    int fields = exchange.GetFieldCount(dlg, sub);
    for (int i = 0; i < fields; ++i) {
        FIELDINFO* field = exchange.GetField(dlg, i, sub);
        check(field != nullptr, "field within the count is null");
        checkTerminated(field->label, "field label");
        checkTerminated(field->variable, "field variable");
        checkTerminated(field->content, "field content");
        checkTerminated(field->validationVariable, "field validation variable");
    }
    check(exchange.GetField(dlg, fields, sub) == nullptr, "field past the end");

    int buttons = exchange.GetDlgButtonCount(dlg, sub);
    for (int i = 0; i < buttons; ++i) {
        BUTTONINFO* button = exchange.GetDlgButton(dlg, i, sub);
        check(button != nullptr, "button within the count is null");
        check(button->label[0] != '\0', "button without a label");
        checkTerminated(button->label, "button label");
        checkTerminated(button->action, "button action");
        check(!(button->flags & ~31), "button flags beyond the known bits");
    }
    check(exchange.GetDlgButton(dlg, buttons, sub) == nullptr, "button past the end");

    for (const TRIGGER_INFO& trigger : info->triggers) {
        check(trigger.evaluation != 0, "trigger kept without an evaluation");
        check(trigger.type >= 0 && trigger.type <= 7, "trigger type");
        checkTerminated(trigger.variable, "trigger variable");
        checkTerminated(trigger.value, "trigger value");
    }

    uint64_t background = 0, foreground = 0;
    check(exchange.GetDlgColour(dlg, sub, background, foreground) == 0, "colour of a dialog");
}

void walk(InstallExchangeInfo& exchange)
{
    int dialogs = exchange.GetDialogsCount();
    for (int dlg = 0; dlg < dialogs; ++dlg) {
        checkDialog(exchange, dlg, -1);
        int subs = exchange.GetSubDialogsCount(dlg);
        for (int sub = 0; sub < subs; ++sub)
            checkDialog(exchange, dlg, sub);
        check(exchange.GetDialogInfo(dlg, subs) == nullptr, "sub-dialog past the end");
        int tasks = exchange.GetTaskInfoCount(dlg);
        check(subs <= tasks, "more sub-dialogs than tasks");
        for (int i = 0; i < tasks; ++i) {
            TASKINFO* task = exchange.GetTaskInfo(dlg, i);
            check(task != nullptr, "task within the count is null");
            checkTerminated(task->name, "task name");
        }
        check(exchange.GetTaskInfo(dlg, tasks) == nullptr, "task past the end");
    }
    check(exchange.GetDialogInfo(dialogs, -1) == nullptr, "dialog past the end");
    check(exchange.GetDialogInfo(-1, -1) == nullptr, "dialog before the start");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::vector<char> text(data, data + size);
    text.push_back('\0');

    for (int uninstall = 0; uninstall < 2; ++uninstall) {
        Installer engine;
        engine.templateXml.ParseTag(text.data());
        // A theme in force, with one custom group, so that references and defaults run.
        engine.customThemed = true;
        for (int colour = 0; colour < TC_COUNT; colour += 2)
            engine.theme.setColour(0x10101u * colour, colour, nullptr);
        engine.theme.setColour(0xabcdef, TC_CUSTOM_GROUP, "G");

        int result = engine.ExtractDialogsInfo(uninstall);
        check(result == 0 || result == -1, "result of ExtractDialogsInfo");
        walk(engine);

        TeskUtils::Table<DLGINFO, 16> copy = engine.dialogs;
        check(copy.count == engine.dialogs.count, "copied table");
    }
    return 0;
}
