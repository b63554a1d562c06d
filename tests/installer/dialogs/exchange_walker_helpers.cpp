#include "exchange_walker_helpers.h"

#include <cstring>

#include "installer/wizard/install_exchange_info.h"

namespace quilbtest {

namespace {

// Touches every text of a record, so that a bad pointer or a missing terminator shows.
size_t textLength(const char* text)
{
    return text ? strlen(text) : 0;
}

std::string describe(InstallExchangeInfo& exchange, int dlg, int sub)
{
    const DLGINFO* info = exchange.GetDialogInfo(dlg, sub);
    if (!info)
        return "missing\n";
    size_t texts = textLength(info->name) + textLength(info->condition) +
                   textLength(info->autoCondition.c_str());

    int controls = exchange.GetDlgItemCount(dlg, sub);
    for (int i = 0; i < controls; ++i) {
        const UICTRL* ctrl = exchange.GetDlgItem(dlg, i, sub);
        if (!ctrl)
            return "null control\n";
        texts += textLength(ctrl->name) + textLength(ctrl->text) + textLength(ctrl->details) +
                 textLength(ctrl->condition);
    }
    int fields = exchange.GetFieldCount(dlg, sub);
    for (int i = 0; i < fields; ++i) {
        const FIELDINFO* field = exchange.GetField(dlg, i, sub);
        if (!field)
            return "null field\n";
        texts += textLength(field->label) + textLength(field->variable) +
                 textLength(field->content) + textLength(field->tooltip.c_str());
    }
    int buttons = exchange.GetDlgButtonCount(dlg, sub);
    for (int i = 0; i < buttons; ++i) {
        const BUTTONINFO* button = exchange.GetDlgButton(dlg, i, sub);
        if (!button)
            return "null button\n";
        texts += textLength(button->label) + textLength(button->action);
    }
    bool pastTheEnd = exchange.GetDlgItem(dlg, controls, sub) || exchange.GetField(dlg, fields, sub) ||
                      exchange.GetDlgButton(dlg, buttons, sub);

    std::string line = std::string(sub >= 0 ? "  " : "") + info->name + " c" +
                       std::to_string(controls) + " f" + std::to_string(fields) + " b" +
                       std::to_string(buttons);
    if (sub < 0) {
        int tasks = exchange.GetTaskInfoCount(dlg);
        for (int i = 0; i < tasks; ++i) {
            const TASKINFO* task = exchange.GetTaskInfo(dlg, i);
            if (!task)
                return "null task\n";
            texts += textLength(task->name) + textLength(task->currentLabel);
        }
        pastTheEnd = pastTheEnd || exchange.GetTaskInfo(dlg, tasks);
        line += " t" + std::to_string(tasks) + " " + std::to_string(exchange.GetDialogWidth(dlg)) +
                "x" + std::to_string(exchange.GetDialogHeight(dlg));
    }
    if (pastTheEnd)
        line += " (answers past the end)";
    return line + (texts ? "" : " (no text)") + "\n";
}

} // namespace

std::string describeWizard(InstallExchangeInfo& exchange)
{
    std::string out;
    int dialogs = exchange.GetDialogsCount();
    for (int dlg = 0; dlg < dialogs; ++dlg) {
        out += describe(exchange, dlg, -1);
        int subs = exchange.GetSubDialogsCount(dlg);
        for (int sub = 0; sub < subs; ++sub)
            out += describe(exchange, dlg, sub);
        if (exchange.GetDialogInfo(dlg, subs))
            out += "  sub-dialog past the end\n";
    }
    if (exchange.GetDialogInfo(dialogs, -1) || exchange.GetDialogInfo(-1, -1))
        out += "dialog past the end\n";
    return out;
}

} // namespace quilbtest
