#include "installer/installer.h"

#include "foundation/misc/installer_file_utils.h"
#include "installer/wizard/installer_ui.h"

namespace {

// Shows the outcome of a directory removal on the front end, as a line of its list.
void reportDirDelete(InstallerUI* ui, LogCollector* collector, const char* message, int failed)
{
    ui->StartDecompress();
    // A failed removal also belongs among the errors shown at the end of a run.
    if (collector && failed)
        collector->AddEntry(message);
    ui->EndDecompress(message, false);
}

} // namespace

Installer::Installer()
{
    InstallerFileUtils::setDirDeleteReport(reportDirDelete);
}

Installer::~Installer() = default;
