#include "console/input_provider.h"

#include "console/input/converse.h"

using quilbtest::converse;

namespace {

TEST(UserInput, QuestionOffersTheDefaultAndAsksAgainUntilOneAnswerMatches)
{
    struct Case
    {
        const char* name;
        const char* input;
        int def;
        bool caseSensitive;
        bool prefix;
        int expected;
        const char* output;
    } const cases[] = {
        { "empty line takes the default", "\n", 1, false, true, 1, "Install? (no or [yes]): " },
        { "first default is marked", "\n", 0, false, true, 0, "Install? ([no] or yes): " },
        { "case is ignored", "YES\n", -1, false, true, 1, "Install? (no or yes): " },
        { "no default asks again on empty", "\nmaybe\nno\n", -1, false, false, 0,
            "Install? (no or yes): Please, answer with no or yes: Please, answer with no or yes: " },
        { "case-sensitive prefix", "y\n", -1, true, true, 1, "Install? (no or yes): " },
        { "case-sensitive refuses other case", "Y\nyes\n", -1, true, false, 1,
            "Install? (no or yes): Please, answer with no or yes: " },
        { "an empty prefix matches both: asked again", "\nn\n", -1, true, true, 0,
            "Install? (no or yes): Please, answer with no or yes: " },
    };
    for (const Case& c : cases) {
        User user;
        int answer = -2;
        std::string output = converse(c.input,
            [&] { answer = user.question("Install?", c.def, "no", "yes", c.caseSensitive, c.prefix); });
        EXPECT_EQ(answer, c.expected) << c.name;
        EXPECT_EQ(output, c.output) << c.name;
    }
}

TEST(UserInput, MultipleChoiceRefusesDisabledAndInvalidNumbers)
{
    const char* choices[] = { "Standard", "Full", "Trial" };
    const bool enabled[] = { true, false, true };
    User user;
    int answer = -2;
    std::string output
        = converse("2\nx\n\n3\n", [&] { answer = user.multiplechoice("Edition", 7, choices, 3, enabled); });
    EXPECT_EQ(answer, 2);
    EXPECT_EQ(output,
        "Edition\n\x1b[0m  1) Standard\n\x1b[31m  2) Full\n\x1b[0m  3) Trial\n\x1b[0m"
        "Enter your choice [1-3]: Choice 2 is disabled, choose something else!\n"
        "Enter your choice [1-3]: Please, answer with a number (1 to 3)\n"
        "Enter your choice [1-3]: Please, answer with a number (1 to 3)\n"
        "Enter your choice [1-3]: ");
}

TEST(UserInput, GetLineOffersCurrentThenDefault)
{
    struct Case
    {
        const char* name;
        const char* input;
        const char* current;
        const char* def;
        const char* answer;
        const char* prompt;
    } const cases[] = {
        { "typed answer", "/srv/app\n", "/opt/app", "/usr/app", "/srv/app", "Folder [/opt/app]:" },
        { "empty takes current", "\n", "/opt/app", "/usr/app", "/opt/app", "Folder [/opt/app]:" },
        { "empty takes default", "\n", "", "/usr/app", "/usr/app", "Folder [/usr/app]:" },
        { "nothing offered", "\n", nullptr, nullptr, "", "Folder:" },
        { "end of input keeps the offer", "", "/opt/app", nullptr, "/opt/app", "Folder [/opt/app]:" },
    };
    for (const Case& c : cases) {
        User user;
        char buffer[520] = "garbage";
        std::string output = converse(
            c.input, [&] { user.get_line("Folder", buffer, sizeof buffer, c.current, c.def, true); });
        EXPECT_STREQ(buffer, c.answer) << c.name;
        EXPECT_EQ(output, c.prompt) << c.name;
    }
}

TEST(AutomatedInput, AnswersWithoutAsking)
{
    Automated automated(nullptr, false);
    EXPECT_TRUE(automated.init());
    char buffer[16];
    EXPECT_TRUE(
        automated.get_line("Folder", buffer, sizeof buffer, "/opt/a-long-current-value", "/usr", true));
    EXPECT_STREQ(buffer, "/opt/a-long-cur");
    EXPECT_EQ(automated.question("q", 1, "no", "yes", false, false), 1);
    const char* choices[] = { "a", "b" };
    EXPECT_EQ(automated.multiplechoice("m", 0, choices, 2, nullptr), 0);
}

TEST(AutomatedInput, FinishNamesInstallOrUninstall)
{
    struct Case
    {
        bool uninstall;
        bool error;
        const char* output;
    } const cases[] = {
        { false, false, "Automatic installation was successful!\n" },
        { true, false, "Automatic uninstallation was successful!\n" },
        { false, true, "The automatic installer has encountered an ERROR!\n" },
        { true, true, "The automatic uninstaller has encountered an ERROR!\n" },
    };
    for (const Case& c : cases) {
        Automated automated(nullptr, c.uninstall);
        testing::internal::CaptureStdout();
        automated.finish(c.error);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), c.output);
    }
}

} // namespace
