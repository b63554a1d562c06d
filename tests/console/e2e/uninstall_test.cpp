// The console front end as the uninstaller: started with the action log and the name of
// the application, unattended or answered by a person.
#include "console/e2e/console_e2e_helpers.h"

using namespace quilbtest;

namespace {

TEST(UninstallTest, TheUninstallWizardFromTheActionLog)
{
    QUILB_REQUIRE_SANDBOX();
    const std::string banner = "*******************************\n"
                               "* Quilb Group uninstaller     *\n"
                               "*******************************\n"
                               "Removing Gone Check from /opt/gone.\n";
    // An action log begins with the template's path and the backup's.
    const std::vector<std::pair<std::string, std::string>> actions
        = { { "gone.log", consoleData() + "/gone/install.xml\r\n/nowhere/gone.bak\r\n" } };
    const std::string log = "-log=gone.log", app = "-uninstallApp=Gone Check";
    const std::string success = "Automatic uninstallation was successful!\n";
    checkRuns({
        { "-auto is quiet", { log, app, "-auto" }, 0, success, Match::Whole, "", actions, true },
        { "-auto -quiet=0 shows the uninstaller's banner and texts", { log, app, "-auto", "-quiet=0" }, 0,
            banner + "Gone Check is gone. Keep settings: 1\n" + kClearedLine + success, Match::Whole, "",
            actions, true },
        { "a person answers", { log, app }, 0,
            banner + "Keep settings (no or [yes]): Gone Check is gone. Keep settings: 0\n" + kClearedLine,
            Match::Whole, "no\n", actions, true },
        { "an empty action log names no template", { log, app, "-auto" }, 255, kFailed, Match::Whole, "",
            { { "gone.log", "" } }, true },
        { "a missing action log", { log, app, "-auto" }, 255, kFailed, Match::Whole, "", {}, true },
    });
}

} // namespace
