#pragma once
// GenericUI: what every front end shares beside its toolkit: the engine it talks to, where
// its answers come from, and the flags of the command line.
#include "installer/wizard/installer_ui.h"

class InputProvider;
class InstallExchangeInfo;

class GenericUI : public InstallerUI
{
public:
    GenericUI(int uninstall, int ignoreErrors);
    ~GenericUI() override;

    void setExchange(InstallExchangeInfo* info) { exchange = info; }
    InstallExchangeInfo* getExchange() const { return exchange; }
    const InputProvider* getInput() const { return input; }

    // Non-zero when a failed install step is not to stop the run (-ignoreErrors=n).
    int IgnoreErrors() override { return ignoreErrors; }
    // Chooses the input provider. "uninstall" gives a person at the terminal; "autoInstall"
    // and "autoUninstall" an unattended run without a file; any other non-empty text names a
    // configuration file (an http, https or ftp address is first fetched with wget), which
    // gives an unattended run when it can be read and a person at the terminal otherwise.
    // `automated` receives whether the run asks nothing.
    void init_input(const char* text, bool& automated) override;
    // Fatal errors are shown where the front end has a place for them; the console has none.
    void setErrorMessage(const char* text, const char* title) override;
    void showErrorMessage() override { }

protected:
    // Replaces the input provider, taking ownership.
    void setInput(InputProvider* provider);

    InputProvider* input;
    int uninstall;
    int ignoreErrors;
    InstallExchangeInfo* exchange;
};
