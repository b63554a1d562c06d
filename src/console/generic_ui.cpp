#include "console/generic_ui.h"

#include "console/input_provider.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/path_size.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

bool isAddress(const char* text)
{
    return strncmp(text, "http://", 7) == 0 || strncmp(text, "https://", 8) == 0
        || strncmp(text, "ftp://", 6) == 0;
}

} // namespace

GenericUI::GenericUI(int uninstallFlag, int ignoreErrorsFlag)
    : input(nullptr)
    , uninstall(uninstallFlag)
    , ignoreErrors(ignoreErrorsFlag)
    , exchange(nullptr)
{
}

GenericUI::~GenericUI()
{
    delete input;
}

void GenericUI::setInput(InputProvider* provider)
{
    delete input;
    input = provider;
}

void GenericUI::init_input(const char* text, bool& automated)
{
    automated = false;
    const char* hint = text ? text : "";
    if (strcmp(hint, "uninstall") == 0) {
        setInput(new User());
        return;
    }
    if (strcmp(hint, "autoUninstall") == 0 || strcmp(hint, "autoInstall") == 0) {
        setInput(new Automated(nullptr, uninstall != 0));
        automated = true;
        return;
    }
    char path[TeskUtils::kPathSize];
    TeskUtils::copyBounded(path, hint, sizeof path);
    if (isAddress(path)) {
        // The file is fetched under a fixed name; its own name means nothing here. A quote in
        // the address is written as '\'' so that it can't end the quoted word.
        char quoted[4 * sizeof path];
        quoted[0] = '\0';
        for (const char* p = path; *p; ++p) {
            char piece[2] = { *p, '\0' };
            TeskUtils::appendBounded(quoted, *p == '\'' ? "'\\''" : piece, sizeof quoted);
        }
        char command[4096];
        snprintf(command, sizeof command, "wget '%s' -O /tmp/%s", quoted, "config.xml");
        int status = system(command);
        TeskUtils::copyBounded(path, status == 0 ? "/tmp/config.xml" : "", sizeof path);
    }
    if (path[0] == '\0') {
        setInput(new User());
        return;
    }
    Automated* provider = new Automated(path, uninstall != 0);
    setInput(provider);
    if (provider->init()) {
        automated = true;
        return;
    }
    setInput(new User());
}

void GenericUI::setErrorMessage(const char* text, const char* title)
{
    (void)text;
    (void)title;
}
