#include "console/install_rights.h"

#include "foundation/misc/permissions.h"
#include "foundation/streams/pconsole.h"

void ensureInstallRights(bool child, int argc, char** argv, PConsole* log)
{
    (void)argc;
    (void)argv;
    if (have_install_permissions() || child)
        return;
    // Until elevation exists the run goes on with the rights it has; steps that need more
    // report their own failures.
    if (log)
        log->Dump("Priveleges error, trying workaround with root privileges");
}
