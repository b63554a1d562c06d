#pragma once
// ConsoleUI: the wizard on a terminal, and unattended. A dialog is shown as its texts and
// licences, its fields are asked, and the wizard goes on; there is no Back and no button.
#include "console/generic_ui.h"
#include "foundation/strings/string_builder.h"

class ConsoleUI : public GenericUI
{
public:
    ConsoleUI(int uninstall, int ignoreErrors, int quiet);

    int StartUI() override;
    int EndUI() override;
    void SetDlg(int dlg) override;
    void SetSubDlg(int dlg, int sub) override;
    bool MessageBox(const char* text, int type) override;
    bool ConfirmCancel() override;
    int EndDecompress(const char* text, bool close) override;
    void SetDestination(const char* text) override;
    void ProgressStart() override;
    void SetCurrentProgress(int percent) override;
    void ProgressEnd() override;
    bool IsGUIInstaller() override { return false; }

    // Shows a long text page by page, each page the terminal's height less 2 lines.
    void DisplayEULA(const char* text);
    // Shows a text of the product's Markdown dialect as wrapped plain text.
    void DisplayMarkdown(const char* text);
    // Asks the fields of (dlg, sub).
    void InitDialogFields(int dlg, int sub);

    // The terminal's size; false when standard output is no terminal.
    static bool getTerminalSize(int& columns, int& rows);

private:
    bool cancelled();
    // Takes a progress line off the screen: CR, 78 blanks, CR, newline.
    void clearLine();
    // Shows the packed file of a RichEditText or PlainEditText control.
    void showDocument(const char* alias, const char* details, bool markdownOnly);

    bool progressLine;
    int quiet;
    int lastPercent;
    char destination[520];
    TeskUtils::StringBuilder pageBuffer;
    // The (dlg, sub) shown last and how many of its controls were shown.
    int shownDlg;
    int shownSub;
    int shownCount;
};
