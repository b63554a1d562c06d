// The action language of buttons: a ';'-separated list of words, taken in order.
#include <cstring>
#include <strings.h>

#include "foundation/streams/pconsole.h"
#include "foundation/strings/tokenize.h"
#include "installer/installer.h"

namespace {

bool startsWith(const char* text, const char* word)
{
    return strncasecmp(text, word, strlen(word)) == 0;
}

} // namespace

void Installer::PerformButtonAction(InstallerUI* ui, const char* action)
{
    if (!action)
        return;
    TeskUtils::Table<TeskUtils::CharString, 100> tokens;
    TeskUtils::tokenize(action, ';', tokens, 0);
    for (const TeskUtils::CharString& token : tokens) {
        const char* word = token.c_str();
        if (startsWith(word, "Cancel")) {
            EvCancel(ui);
            return; // nothing after a cancel runs
        }
        if (startsWith(word, "Help")) {
            EvHelp(ui);
        } else if (startsWith(word, "Run:")) {
            // The sequence's name is all of the action behind its first ':', so "Run:"
            // stands alone in an action.
            const char* name = strchr(action, ':') + 1;
            if (!*name) {
                if (debugConsole)
                    debugConsole->Dump("WARNING: Empty action tag in a button!");
            } else {
                RunFiles(ui, name);
            }
        } else if (startsWith(word, "EvalTriggers")) {
            evaluateTriggers(ui, TRIGGER_ON_BUTTON, currentDlg, currentSubDlg);
        } else {
            SetVar(word);
        }
    }
}
