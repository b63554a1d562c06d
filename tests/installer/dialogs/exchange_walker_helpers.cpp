#include "exchange_walker_helpers.h"

#include <cstring>

#include "installer/wizard/install_exchange_info.h"

namespace quilbtest {

namespace {

// "name cN fN b[labels]" for a (sub-)dialog, plus "tN WxH" for a dialog. Every text is
// read with strlen, so that a bad pointer or a missing terminator shows under the
// sanitizers; a getter that answers past its count is reported in the line.
std::string describe(InstallExchangeInfo& exchange, int dlg, int sub)
{
    const DLGINFO* info = exchange.GetDialogInfo(dlg, sub);
    if (!info)
        return "missing\n";
    size_t read = strlen(info->name) + strlen(info->condition);

    int controls = exchange.GetDlgItemCount(dlg, sub);
    for (int i = 0; i < controls; ++i) {
        const UICTRL* ctrl = exchange.GetDlgItem(dlg, i, sub);
        read += strlen(ctrl->name) + (ctrl->text ? strlen(ctrl->text) : 0);
    }
    int fields = exchange.GetFieldCount(dlg, sub);
    for (int i = 0; i < fields; ++i)
        read += strlen(exchange.GetField(dlg, i, sub)->variable);
    std::string labels;
    int buttons = exchange.GetDlgButtonCount(dlg, sub);
    for (int i = 0; i < buttons; ++i)
        labels += std::string(i ? "," : "") + exchange.GetDlgButton(dlg, i, sub)->label;
    bool pastTheEnd = exchange.GetDlgItem(dlg, controls, sub) || exchange.GetField(dlg, fields, sub) ||
                      exchange.GetDlgButton(dlg, buttons, sub);

    std::string line = std::string(sub >= 0 ? "  " : "") + info->name + " c" + std::to_string(controls) +
                       " f" + std::to_string(fields) + " b[" + labels + "]";
    if (sub < 0) {
        int tasks = exchange.GetTaskInfoCount(dlg);
        for (int i = 0; i < tasks; ++i)
            read += strlen(exchange.GetTaskInfo(dlg, i)->name);
        pastTheEnd = pastTheEnd || exchange.GetTaskInfo(dlg, tasks);
        line += " t" + std::to_string(tasks) + " " + std::to_string(exchange.GetDialogWidth(dlg)) + "x" +
                std::to_string(exchange.GetDialogHeight(dlg));
    }
    return line + (pastTheEnd ? " (answers past the end)" : "") + (read ? "\n" : " (no text)\n");
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
