#include "console/console_ui.h"

#include "console/console_fields.h"
#include "console/input_provider.h"
#include "console/text/markdown.h"
#include "console/text/rtf_decoder.h"
#include "foundation/strings/tesk_utils.h"
#include "installer/wizard/install_exchange_info.h"

#include <cstdio>
#include <cstring>
#include <strings.h>
#include <sys/ioctl.h>
#include <unistd.h>

ConsoleUI::ConsoleUI(int uninstallFlag, int ignoreErrorsFlag, int quietFlag)
    : GenericUI(uninstallFlag, ignoreErrorsFlag)
    , progressLine(false)
    , quiet(quietFlag)
    , lastPercent(-1)
    , pageBuffer(4096, 1.618f)
    , shownDlg(-1)
    , shownSub(-2)
    , shownCount(0)
{
    destination[0] = '\0';
}

bool ConsoleUI::getTerminalSize(int& columns, int& rows)
{
    struct winsize size;
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return false;
    columns = size.ws_col;
    rows = size.ws_row;
    return true;
}

bool ConsoleUI::cancelled()
{
    return exchange && exchange->GetStateCancel() != 0;
}

int ConsoleUI::StartUI()
{
    if (!exchange)
        return -1;
    exchange->EvSetDlg(exchange->GetCurDlg(), this);
    int result = 0;
    while (!exchange->GetStateCancel() && !exchange->GetStateFinish() && result == 0) {
        DLGINFO* dialog = exchange->GetDialogInfo(exchange->GetCurDlg(), exchange->GetCurSubDlg());
        if (dialog) {
            result = exchange->GetDialogConditionEval(this);
            if (result != 2 && (dialog->flags & DLG_AUTOMATED)) {
                while (result == 0) {
                    usleep(100000);
                    result = exchange->GetDialogConditionEval(this);
                }
            }
        }
        result = exchange->EvNext(this, 1);
    }
    return result;
}

int ConsoleUI::EndUI()
{
    if (!quiet)
        clearLine();
    if (input)
        input->finish(exchange && exchange->GetStateError() != 0);
    return 0;
}

void ConsoleUI::SetDlg(int dlg)
{
    if (dlg == 0 && !quiet) {
        puts("*******************************");
        puts(uninstall ? "* Quilb Group uninstaller     *" : "* Quilb Group installer       *");
        puts("*******************************");
    }
    SetSubDlg(dlg, -1);
}

void ConsoleUI::SetSubDlg(int dlg, int sub)
{
    if (!exchange)
        return;
    if (dlg != shownDlg || sub != shownSub) {
        shownDlg = dlg;
        shownSub = sub;
        shownCount = 0;
    }
    DLGINFO* dialog = exchange->GetDialogInfo(dlg, sub);
    bool hasCondition = dialog && dialog->conditionObject;
    int count = exchange->GetDlgItemCount(dlg, sub);
    for (int i = shownCount; i < count && !cancelled(); ++i) {
        UICTRL* control = exchange->GetDlgItem(dlg, i, sub);
        if (!control)
            continue;
        bool showTexts = !quiet || hasCondition;
        switch (control->type) {
        case CTRL_TEXT:
            if (showTexts && (!control->condition[0] || exchange->EvalCondition(control->condition))) {
                bool progress = progressLine;
                if (progress)
                    clearLine();
                TeskUtils::CharString text;
                const char* raw = control->text ? control->text : "";
                int needed = exchange->ExpandString(raw, nullptr, 0, false);
                if (needed > 0) {
                    char* buffer = text.splitBuffer(needed + 1, 0);
                    exchange->ExpandString(raw, buffer, needed + 1, false);
                } else {
                    text = raw;
                }
                puts(text.c_str());
                progressLine = progress;
                shownCount = i + 1;
            }
            break;
        case CTRL_RICH_EDIT_TEXT:
        case CTRL_PLAIN_EDIT_TEXT:
            if (showTexts && exchange->EvalCondition(control->condition)) {
                showDocument(control->text, control->details, control->type == CTRL_PLAIN_EDIT_TEXT);
                shownCount = i + 1;
            }
            break;
        default:
            if (!quiet)
                shownCount = i + 1;
            break;
        }
    }
    fflush(stdout);
    if (!cancelled())
        InitDialogFields(dlg, sub);
}

void ConsoleUI::showDocument(const char* alias, const char* details, bool markdownOnly)
{
    bool markdown = details && strcasecmp(details, "QuilbMarkdown") == 0;
    if (markdownOnly && !markdown)
        return;
    if (input)
        input->wait_for_next("Press Enter to continue...");
    if (cancelled())
        return;
    int size = 0;
    TeskUtils::PtrArray<unsigned char> data = exchange->GetAliasData(alias ? alias : "", size);
    if (!data.data)
        return;
    // The content is NUL-terminated behind its size.
    TeskUtils::CharString text(reinterpret_cast<const char*>(data.data), size);
    if (markdown) {
        DisplayMarkdown(text.c_str());
        return;
    }
    int columns = 80;
    int rows = 24;
    getTerminalSize(columns, rows);
    TeskUtils::CharString plain = RTFDecoder::rtf_decode(text.c_str(), 2, columns - 2);
    DisplayEULA(plain.c_str());
}

void ConsoleUI::InitDialogFields(int dlg, int sub)
{
    if (!exchange || !input)
        return;
    int count = exchange->GetFieldCount(dlg, sub);
    for (int i = 0; i < count && !cancelled(); ++i) {
        FIELDINFO* field = exchange->GetField(dlg, i, sub);
        if (!field)
            continue;
        ConsoleInterface::ConsoleField* asker = ConsoleInterface::ConsoleField::create(field->type);
        if (!asker)
            continue;
        bool asked = asker->evaluate(*field, *input, *exchange);
        delete asker;
        if (asked && (exchange->DialogNeedsUpdate(field->variable, dlg, sub) & UPDATE_FIELDS))
            exchange->evaluateTriggers(this, TRIGGER_ON_DYNAMIC, dlg, sub);
    }
}

void ConsoleUI::DisplayEULA(const char* text)
{
    const char* prompt = "\nPress ENTER for the next page...";
    int columns = 0;
    int rows = 0;
    // A quiet run only comes here for a dialog that holds the wizard; it shows the text
    // without stopping at each page.
    if (quiet || !getTerminalSize(columns, rows) || rows < 3) {
        fputs(text ? text : "", stdout);
        fflush(stdout);
        return;
    }
    int pageLines = rows - 2;
    int lines = 0;
    bool closedPage = false;
    pageBuffer.clear();
    for (const char* p = text ? text : ""; *p; ++p) {
        pageBuffer << *p;
        closedPage = false;
        if (*p != '\n' || ++lines < pageLines)
            continue;
        fputs(pageBuffer.c_str(), stdout);
        if (input)
            input->wait_for_next(prompt);
        fputs("\n\n", stdout);
        fflush(stdout);
        pageBuffer.clear();
        lines = 0;
        closedPage = true;
        if (getTerminalSize(columns, rows) && rows >= 3)
            pageLines = rows - 2;
    }
    fputs(pageBuffer.c_str(), stdout);
    if (!closedPage && input)
        input->wait_for_next(prompt);
    fflush(stdout);
}

void ConsoleUI::DisplayMarkdown(const char* text)
{
    int columns = 80;
    int rows = 24;
    getTerminalSize(columns, rows);
    InstallerPlainTextTranslator translator(columns - 2, '-');
    TeskUtils::CharString plain = QuilbMarkDownParser::parse(text, translator);
    DisplayEULA(plain.c_str());
}

bool ConsoleUI::MessageBox(const char* text, int type)
{
    if (quiet || !input)
        return true;
    fputs("\n", stdout);
    if (type == 1) {
        input->showmessage(text);
        return false;
    }
    int answer = type == 2 ? input->question(text, 0, "yes", "no", false, false)
                           : input->question(text, 0, "OK", "Cancel", true, true);
    return answer < 1;
}

bool ConsoleUI::ConfirmCancel()
{
    SETTINGSTATE state = exchange ? exchange->GetStateSettings() : SETTING_IDLE;
    if (state == SETTING_WORKING) {
        puts("\n[CTRL-C] The installation is running and can not be aborted!");
        return false;
    }
    if (state == SETTING_BUSY) {
        puts("\n[CTRL-C] The installer is busy and cannot be interrupted");
        return false;
    }
    puts("\n[CTRL-C] Aborting installation...");
    if (input)
        input->interrupt();
    return true;
}

int ConsoleUI::EndDecompress(const char* text, bool close)
{
    (void)close;
    if (!quiet && text)
        puts(text);
    return 0;
}

void ConsoleUI::SetDestination(const char* text)
{
    if (quiet)
        return;
    TeskUtils::copyBounded(destination, text, sizeof destination);
    size_t length = strlen(destination);
    if (length > 0 && destination[length - 1] == '\n')
        destination[length - 1] = '\0';
    if (!progressLine)
        puts(destination);
}

void ConsoleUI::ProgressStart()
{
    progressLine = true;
}

void ConsoleUI::SetCurrentProgress(int percent)
{
    progressLine = true;
    if (quiet || percent == lastPercent)
        return;
    lastPercent = percent;
    // One line that is rewritten in place: the percentage and the file being worked on.
    // A long path keeps its end, which names the file.
    const char* shown = destination;
    size_t length = strlen(shown);
    const size_t room = 69;
    printf("\r%3d%% %s%-*.*s", percent, length > room ? "..." : "", static_cast<int>(room),
        static_cast<int>(room), length > room ? shown + length - room + 3 : shown);
    fflush(stdout);
}

void ConsoleUI::ProgressEnd()
{
    if (quiet)
        return;
    clearLine();
}

void ConsoleUI::clearLine()
{
    if (quiet)
        return;
    progressLine = false;
    lastPercent = -1;
    printf("\r%78s\r", "");
    fflush(stdout);
    fputs("\n", stdout);
}
