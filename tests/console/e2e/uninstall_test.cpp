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
    const std::vector<std::pair<std::string, std::string>> log = {
        {"gone.log", consoleData() + "/gone/install.xml\r\n/nowhere/gone.bak\r\n"}};
    const std::vector<std::string> args = {"-log=gone.log", "-uninstallApp=Gone Check"};
    auto with = [&](std::vector<std::string> more) {
        more.insert(more.begin(), args.begin(), args.end());
        return more;
    };
    const std::string success = "Automatic uninstallation was successful!\n";
    checkRuns({
        {"-auto is quiet", with({"-auto"}), 0, success, Match::Whole, "", log, true},
        {"-auto -quiet=0 shows the uninstaller's banner and texts", with({"-auto", "-quiet=0"}), 0,
         banner + "Gone Check is gone. Keep settings: 1\n" + kClearedLine + success, Match::Whole, "", log, true},
        {"a person answers", args, 0,
         banner + "Keep settings (no or [yes]): Gone Check is gone. Keep settings: 0\n" + kClearedLine,
         Match::Whole, "no\n", log, true},
        {"an empty action log names no template", with({"-auto"}), 255, kFailed, Match::Whole, "",
         {{"gone.log", ""}}, true},
        {"a missing action log", with({"-auto"}), 255, kFailed, Match::Whole, "", {}, true},
    });
}

} // namespace
