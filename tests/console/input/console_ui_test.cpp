#include "console/console_ui.h"
#include "console/input/converse.h"
#include "console/input_provider.h"
#include "installer/wizard/install_exchange_info.h"

#include <cstring>
#include <vector>

using quilbtest::converse;

namespace {

const std::string kCleared = "\r" + std::string(78, ' ') + "\r\n";

// An engine with one dialog of controls: the condition "yes" holds, every other one fails.
class OneDialog : public InstallExchangeInfo
{
public:
    OneDialog()
    {
        const struct
        {
            int type;
            const char* text;
            const char* condition;
        } controls[] = { { CTRL_TEXT, "Welcome", "" }, { CTRL_TEXT, "Hidden", "no" },
            { CTRL_TEXT, "Shown", "yes" }, { CTRL_IMAGE, "logo", "" } };
        for (const auto& c : controls) {
            UICTRL& control = dialog.controls.append();
            control.type = c.type;
            control.setText(c.text);
            snprintf(control.condition, sizeof control.condition, "%s", c.condition);
        }
    }
    ~OneDialog() override { dialog.conditionObject = nullptr; }

    DLGINFO* GetDialogInfo(int dlg, int sub) override { return dlg == 0 && sub < 0 ? &dialog : nullptr; }
    int GetDlgItemCount(int dlg, int sub) override
    {
        return GetDialogInfo(dlg, sub) ? dialog.controls.count : 0;
    }
    UICTRL* GetDlgItem(int dlg, int i, int sub) override
    {
        return i >= 0 && i < GetDlgItemCount(dlg, sub) ? &dialog.controls[i] : nullptr;
    }
    int EvalCondition(const char* condition) override { return !*condition || strcmp(condition, "yes") == 0; }
    int ExpandString(const char* text, char* buffer, int size, bool) override
    {
        return buffer ? snprintf(buffer, size, "%s", text) + 1 : static_cast<int>(strlen(text)) + 1;
    }
    SETTINGSTATE GetStateSettings() override { return state; }
    // The dialog's condition gives the answers of `evaluations` in turn, then 1.
    int GetDialogConditionEval(InstallerUI*) override
    {
        return asked < static_cast<int>(evaluations.size()) ? evaluations[asked++] : (++asked, 1);
    }
    int EvSetDlg(int, InstallerUI*) override { return 0; }
    int EvNext(InstallerUI*, int) override
    {
        finished = 1;
        return next;
    }
    int GetStateFinish() override { return finished; }

    DLGINFO dialog;
    SETTINGSTATE state = SETTING_IDLE;
    std::vector<int> evaluations;
    int asked = 0;
    int next = 0;
    int finished = 0;
};

// A console on that engine, answered by a person or unattended.
struct Console
{
    explicit Console(int quiet, const char* input = "uninstall")
        : ui(0, 0, quiet)
    {
        ui.setExchange(&engine);
        bool automated = false;
        ui.init_input(input, automated);
    }
    OneDialog engine;
    ConsoleUI ui;
};

TEST(ConsoleDialog, TextsShowByQuietnessAndConditionAndOnlyOnceOnReentry)
{
    struct Case
    {
        const char* name;
        int quiet;
        bool conditionObject; // as a dialog that holds the wizard has
        bool progress; // a progress line is on
        std::string shown;
    } const cases[] = {
        { "texts whose condition holds", 0, false, false, "Welcome\nShown\n" },
        { "a progress line is cleared before each text", 0, false, true,
            kCleared + "Welcome\n" + kCleared + "Shown\n" },
        { "quiet shows nothing", 1, false, false, "" },
        { "quiet shows a holding dialog's texts", 1, true, false, "Welcome\nShown\n" },
    };
    for (const Case& c : cases) {
        Console console(c.quiet);
        int holder = 0;
        if (c.conditionObject)
            console.engine.dialog.conditionObject = reinterpret_cast<DlgCondition*>(&holder);
        if (c.progress)
            console.ui.ProgressStart();
        EXPECT_EQ(converse("", [&] { console.ui.SetSubDlg(0, -1); }), c.shown) << c.name;
        EXPECT_EQ(converse("", [&] { console.ui.SetSubDlg(0, -1); }), "") << c.name << ", entered again";
    }
}

TEST(ConsoleDialog, AnAutomatedDialogIsPolledUntilItsConditionHolds)
{
    struct Case
    {
        const char* name;
        int flags;
        std::vector<int> evaluations;
        int next; // what EvNext gives
        int asked;
        int result;
    } const cases[] = {
        { "polled while it gives 0", DLG_AUTOMATED, { 0, 0, 1 }, 0, 3, 0 },
        { "a dialog without a condition isn't polled", DLG_AUTOMATED, { 2 }, 0, 1, 0 },
        { "only an Automated dialog is polled", 0, { 0 }, 0, 1, 0 },
        { "the result of the step ends the run", DLG_AUTOMATED, { 1 }, -1, 1, -1 },
    };
    for (const Case& c : cases) {
        Console console(0, "autoInstall");
        console.engine.dialog.flags = c.flags;
        console.engine.evaluations = c.evaluations;
        console.engine.next = c.next;
        EXPECT_EQ(console.ui.StartUI(), c.result) << c.name;
        EXPECT_EQ(console.engine.asked, c.asked) << c.name;
    }
}

TEST(ConsoleDialog, MessageBoxAndCancelAskByTypeAndState)
{
    struct Case
    {
        const char* name;
        int quiet;
        int type; // -1: ConfirmCancel in `state`
        SETTINGSTATE state;
        const char* input;
        bool result;
        const char* output;
    } const cases[] = {
        { "quiet asks nothing", 1, 2, SETTING_IDLE, "no\n", true, "" },
        { "a plain message", 0, 1, SETTING_IDLE, "\n", false, "\nDone.\nPress Enter to continue..." },
        { "yes or no, whole words in any case", 0, 2, SETTING_IDLE, "n\nNO\n", false,
            "\nDone. ([yes] or no): Please, answer with yes or no: " },
        { "OK or Cancel, by a prefix in its case", 0, 0, SETTING_IDLE, "c\nC\n", false,
            "\nDone. ([OK] or Cancel): Please, answer with OK or Cancel: " },
        { "OK is the default", 0, 0, SETTING_IDLE, "\n", true, "\nDone. ([OK] or Cancel): " },
        { "no cancel while installing", 0, -1, SETTING_WORKING, "", false,
            "\n[CTRL-C] The installation is running and can not be aborted!\n" },
        { "no cancel while busy", 0, -1, SETTING_BUSY, "", false,
            "\n[CTRL-C] The installer is busy and cannot be interrupted\n" },
        { "cancel while waiting", 0, -1, SETTING_WAITING, "", true, "\n[CTRL-C] Aborting installation...\n" },
    };
    for (const Case& c : cases) {
        Console console(c.quiet);
        console.engine.state = c.state;
        bool result = !c.result;
        std::string output = converse(c.input, [&] {
            result = c.type < 0 ? console.ui.ConfirmCancel() : console.ui.MessageBox("Done.", c.type);
        });
        EXPECT_EQ(result, c.result) << c.name;
        EXPECT_EQ(output, c.output) << c.name;
        // A confirmed cancel stops any question that waits.
        const User* user = dynamic_cast<const User*>(console.ui.getInput());
        EXPECT_EQ(user && user->isInterrupted(), c.type < 0 && c.result) << c.name;
    }
}

TEST(ConsoleDialog, ListLinesAndDocumentsUnlessQuiet)
{
    for (int quiet : { 0, 1 }) {
        Console console(quiet, "autoInstall");
        std::string output = converse("", [&] {
            console.ui.SetDestination("/opt/a\n");
            console.ui.ProgressStart();
            console.ui.SetDestination("/opt/b");
            console.ui.ProgressEnd();
            console.ui.EndDecompress("unpacked", false);
            console.ui.EndDecompress(nullptr, true);
        });
        EXPECT_EQ(output, quiet ? "" : "/opt/a\n" + kCleared + "unpacked\n");
        // A document is shown whole where it can't be paged, and also by a quiet run, which
        // comes here only for a dialog that holds the wizard.
        EXPECT_EQ(converse("", [&] { console.ui.DisplayEULA("one\ntwo\n"); }), "one\ntwo\n") << quiet;
    }
}

} // namespace
