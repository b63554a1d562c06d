// The console front end at a real terminal: a person answers its prompts, pages through a
// licence, and reads what it shows afterwards.
#include "console/e2e/console_e2e_helpers.h"

#include "support/paths.h"

#include <gtest/gtest.h>

using namespace quilbtest;

namespace {

size_t occurrences(const std::string& text, const std::string& word)
{
    size_t count = 0;
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + word.size()))
        ++count;
    return count;
}

class TerminalTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        QUILB_REQUIRE_SANDBOX();
    }

    std::vector<std::string> withPackage(std::vector<std::string> args) const
    {
        args.insert(args.begin(), "-bin=" + promptsPackage());
        return args;
    }

    TempDir work;
};

// One prompt and what the person types at it. `hidden` waits for the terminal to stop
// echoing first, as a password prompt does.
struct Step {
    std::string prompt;
    std::string answer;
    bool hidden = false;
};

struct Dialogue {
    const char* name;
    std::vector<std::string> args;
    std::vector<Step> steps;
    std::string summary;              // the line the wizard shows at the end
    std::vector<std::string> absent;  // what must not appear anywhere
};

const std::string kLicencePrompt = "Press Enter to continue...";
const std::string kPagePrompt = "Press ENTER for the next page...";

TEST_F(TerminalTest, AnswersLandInTheVariablesTheWizardShowsAfterwards)
{
    const std::vector<Dialogue> dialogues = {
        {"every field answered, wrong answers asked again",
         {},
         {{kLicencePrompt, ""},
          {kPagePrompt, ""},
          {"Target folder [/opt/prompt-check]:", "  /srv//prompt \\data /"},
          {"Owner name [nobody]:", "  Jane Doe  "},
          {"Access code:", "  s3 cr3tt\x7f  ", true},
          {"Make a link in /srv/prompt/data/ ([no] or yes): ", "maybe"},
          {"Please, answer with no or yes: ", "YES"},
          {"Serve others ([no] or yes): ", ""},
          {"Edition\n\x1b[0m  1) Basic: the bare program\n\x1b[0m  2) Full: with examples\n"
           "\x1b[31m  3) Server: for a server\n\x1b[0mEnter your choice [1-3]: ",
           ""},
          {"Please, answer with a number (1 to 3)\nEnter your choice [1-3]: ", "3"},
          {"Choice 3 is disabled, choose something else!\nEnter your choice [1-3]: ", "4"},
          {"Please, answer with a number (1 to 3)\nEnter your choice [1-3]: ", "2"}},
         "Summary: TARGET=/srv/prompt/data/ OWNER=Jane Doe CODE=  s3 cr3t   LINK=1 EDITION=1 PLAN=desk plan",
         {"Never asked", "An extra word"}},
        {"empty answers keep current values, an enabled choice is the default",
         {"-VARIABLE_EDITION=2", "-VARIABLE_SERVER_OK=1", "-VARIABLE_LINK=1", "-VARIABLE_CODE=old"},
         {{kLicencePrompt, ""},
          {kPagePrompt, ""},
          {"Target folder [/opt/prompt-check]:", ""},
          {"Owner name [nobody]:", ""},
          {"Access code [old]:", "", true},
          {"Make a link in /opt/prompt-check (no or [yes]): ", "n"},
          {"Please, answer with no or yes: ", "No"},
          {"Serve others (no or [yes]): ", ""},
          {"\x1b[0m  3) Server: for a server\n\x1b[0mEnter your choice [1-3, default is 3]: ", ""}},
         "Summary: TARGET=/opt/prompt-check OWNER=nobody CODE=old LINK=0 EDITION=2 PLAN=server plan",
         {"Choice 3 is disabled"}},
        {"a check box value out of range offers no default",
         {"-VARIABLE_LINK=5", "-VARIABLE_EDITION=1"},
         {{kLicencePrompt, ""},
          {kPagePrompt, ""},
          {"Target folder [/opt/prompt-check]:", ""},
          {"Owner name [nobody]:", ""},
          {"Access code:", "", true},
          {"Make a link in /opt/prompt-check (no or yes): ", ""},
          {"Please, answer with no or yes: ", "yes"},
          {"Serve others ([no] or yes): ", ""},
          {"Enter your choice [1-3, default is 2]: ", "1"}},
         "Summary: TARGET=/opt/prompt-check OWNER=nobody CODE= LINK=1 EDITION=0 PLAN=desk plan",
         {}},
        {"an answer enables a later choice and runs the dialog's trigger",
         {"-VARIABLE_NOTES=1"},
         {{kLicencePrompt, ""},
          {kPagePrompt, ""},
          {"Target folder [/opt/prompt-check]:", ""},
          {"Owner name [nobody]:", ""},
          {"Access code:", "", true},
          {"Make a link in /opt/prompt-check ([no] or yes): ", ""},
          {"Serve others ([no] or yes): ", "yes"},
          {"\x1b[0m  3) Server: for a server\n\x1b[0mEnter your choice [1-3]: ", "3"},
          {"Some notes.\n" + kLicencePrompt, ""},
          {"  Terms of use.\n  Be nice to others.\n\n" + kPagePrompt, ""},
          {kLicencePrompt, ""},
          {"Plain notes in the dialect.\n\n" + kPagePrompt, ""}},
         "Summary: TARGET=/opt/prompt-check OWNER=nobody CODE= LINK=0 EDITION=2 PLAN=server plan",
         {"Extra notes"}},
        {"quiet at a terminal asks but shows no banner, texts or licence",
         {"-quiet", "-VARIABLE_EDITION=0", "-VARIABLE_EXTRA=1"},
         {{"Target folder [/opt/prompt-check]:", "/tmp/q"},
          {"Owner name [nobody]:", "Q"},
          {"Access code:", "x", true},
          {"Make a link in /tmp/q ([no] or yes): ", "yes"},
          {"Serve others ([no] or yes): ", ""},
          {"Enter your choice [1-3, default is 1]: ", ""}},
         "",
         {"Quilb Group installer", "Welcome", "An extra word", kLicencePrompt, "line 01", "Summary:"}},
    };
    for (const Dialogue& dialogue : dialogues) {
        SCOPED_TRACE(dialogue.name);
        TempDir dir;
        PtySession session(installerConsole(), withPackage(dialogue.args), dir.path(), 24, 80);
        bool ok = true;
        for (const Step& step : dialogue.steps) {
            ok = session.expect(step.prompt);
            EXPECT_TRUE(ok) << "no prompt \"" << step.prompt << "\" in:\n" << session.transcript();
            if (!ok)
                break;
            if (step.hidden) {
                EXPECT_TRUE(session.waitForNoEcho());
            }
            session.send(step.answer);
        }
        if (!ok)
            continue;
        if (!dialogue.summary.empty()) {
            EXPECT_TRUE(session.expect(dialogue.summary + "\n")) << session.transcript();
        }
        EXPECT_EQ(session.finish(), 0) << session.transcript();
        std::string all = session.transcript();
        for (const std::string& text : dialogue.absent)
            EXPECT_EQ(all.find(text), std::string::npos) << "\"" << text << "\" shown in:\n" << all;
        // Nothing is shown twice, and the password is never echoed.
        EXPECT_LE(occurrences(all, "* Quilb Group installer       *"), 1u);
        EXPECT_LE(occurrences(all, "Welcome to Prompt Check 3.\n"), 1u);
        EXPECT_EQ(occurrences(all, "s3 cr3t"), dialogue.summary.find("s3 cr3t") == std::string::npos ? 0u : 1u);
        EXPECT_EQ(all.find("Automatic installation"), std::string::npos);
    }
}

TEST_F(TerminalTest, BannerAndTextsComeOnceInOrder)
{
    PtySession session(installerConsole(), withPackage({"-VARIABLE_EDITION=0", "-VARIABLE_EXTRA=1"}), work.path(),
                       24, 80);
    std::string shown;
    ASSERT_TRUE(session.expect(kLicencePrompt, &shown)) << session.transcript();
    EXPECT_EQ(shown,
              "*******************************\n"
              "* Quilb Group installer       *\n"
              "*******************************\n"
              "Welcome to Prompt Check 3.\n"
              "An extra word for the curious.\n"
              "Please read the licence.\n" +
                  kLicencePrompt);
    for (int i = 0; i < 2; ++i)
        session.send("");
    for (const char* prompt :
         {"Target folder", "Owner name", "Access code", "Make a link", "Serve others", "default is 1]: "}) {
        ASSERT_TRUE(session.expect(prompt)) << session.transcript();
        if (std::string(prompt) == "Access code") {
            ASSERT_TRUE(session.waitForNoEcho());
        }
        session.send("");
    }
    EXPECT_EQ(session.finish(), 0);
    std::string all = session.transcript();
    EXPECT_EQ(occurrences(all, "Tell us how to set things up.\n"), 1u);
    EXPECT_NE(all.find("Summary: TARGET=/opt/prompt-check OWNER=nobody CODE= LINK=0 EDITION=0 PLAN=desk plan\n"
                       "Prompt Check is set up.\n"),
              std::string::npos)
        << all;
}

// The licence of the test product is 20 lines of "- line NN".
struct Paging {
    const char* name;
    int rows;
    int resizedRows;             // the size set while the first page waits; 0 keeps it
    std::vector<int> pages;      // lines on each page
    int prompts;                 // "Press ENTER for the next page..." shown
};

TEST_F(TerminalTest, LicencePagesFollowTheTerminalHeight)
{
    const std::vector<Paging> cases = {
        {"fits on one screen: one prompt at the end", 24, 0, {20}, 1},
        {"three pages, the last one short", 10, 0, {8, 8, 4}, 3},
        {"two full pages: no prompt after the last", 12, 0, {10, 10}, 2},
        {"the terminal shrinks after the first page", 10, 6, {8, 4, 4, 4}, 4},
        {"a terminal of 3 rows pages line by line", 3, 0, std::vector<int>(20, 1), 20},
        {"a terminal too small to page shows it whole", 2, 0, {20}, 0},
        {"a terminal that tells no size shows it whole", 0, 0, {20}, 0},
    };
    for (const Paging& paging : cases) {
        SCOPED_TRACE(paging.name);
        TempDir dir;
        PtySession session(installerConsole(), withPackage({"-VARIABLE_EDITION=0"}), dir.path(), paging.rows, 80);
        ASSERT_TRUE(session.expect(kLicencePrompt)) << session.transcript();
        session.send("");
        std::vector<int> pages;
        int prompts = 0;
        for (;;) {
            std::string page;
            int which = session.expectOneOf({kPagePrompt, "Target folder"}, &page);
            ASSERT_GE(which, 0) << session.transcript();
            int lines = static_cast<int>(occurrences(page, "- line "));
            if (lines > 0)
                pages.push_back(lines);
            if (which == 1)
                break;
            ++prompts;
            if (prompts == 1 && paging.resizedRows)
                session.resize(paging.resizedRows, 80);
            session.send("");
        }
        EXPECT_EQ(pages, paging.pages);
        EXPECT_EQ(prompts, paging.prompts);
        std::string all = session.transcript();
        size_t first = all.find("- line 01");
        size_t last = all.find("- line 20\n");
        ASSERT_NE(first, std::string::npos);
        ASSERT_NE(last, std::string::npos);
        EXPECT_LT(first, last);
    }
}

} // namespace

struct PipedAnswers {
    const char* name;
    std::vector<std::string> args;
    bool severalPackages;  // a.ibin and b.ibin in the working directory, no -bin=
    std::string input;
    std::string summary;
};

TEST_F(TerminalTest, AnswersReadFromAPipeInOrder)
{
    const std::vector<PipedAnswers> cases = {
        {"a password among the answers", withPackage({}), false, "\n/srv/x\nJane\nsecret\nyes\n\n2\n",
         "TARGET=/srv/x OWNER=Jane CODE=secret LINK=1 EDITION=1 PLAN=desk plan"},
        {"the package's number is a line of its own", {}, true, "2\n\n/srv/picked\nJane\n\nno\n\n1\n",
         "TARGET=/srv/picked OWNER=Jane CODE= LINK=0 EDITION=0 PLAN=desk plan"},
        {"the input ends: every field keeps the value it offered",
         withPackage({"-VARIABLE_TARGET=/cli", "-VARIABLE_OWNER=cli", "-VARIABLE_CODE=pw", "-VARIABLE_LINK=1",
                      "-VARIABLE_EDITION=1"}),
         false, "", "TARGET=/cli OWNER=cli CODE=pw LINK=1 EDITION=1 PLAN=desk plan"},
        {"a number with words behind it", {}, true, "1 please\n\n/srv/first\n\n\n\nyes\n3\n",
         "TARGET=/srv/first OWNER=nobody CODE= LINK=0 EDITION=2 PLAN=server plan"},
    };
    for (const PipedAnswers& piped : cases) {
        SCOPED_TRACE(piped.name);
        TempDir dir;
        std::vector<std::string> args = piped.args;
        if (piped.severalPackages) {
            ASSERT_TRUE(writeFile(dir.file("a.ibin"), readFile(promptsPackage())));
            ASSERT_TRUE(writeFile(dir.file("b.ibin"), readFile(promptsPackage())));
        }
        CommandResult result = runSandboxed(installerConsole(), args, dir.path(), piped.input);
        EXPECT_EQ(result.exitCode, 0) << result.output;
        EXPECT_NE(result.output.find("Summary: " + piped.summary + "\n"), std::string::npos) << result.output;
    }
}

TEST_F(TerminalTest, DocumentsAreWrappedToTheTerminalWidth)
{
    // 20 columns leave 18 for the text: the licence's lines fit, both notes must wrap.
    PtySession session(installerConsole(), withPackage({"-VARIABLE_NOTES=1", "-VARIABLE_EDITION=0"}), work.path(),
                       24, 20);
    std::vector<std::string> documents;
    for (;;) {
        std::string shown;
        int which = session.expectOneOf({kLicencePrompt, kPagePrompt, "Target folder", "Summary: "}, &shown);
        ASSERT_GE(which, 0) << session.transcript();
        if (which == 3)
            break;
        if (which == 1)
            documents.push_back(shown.substr(0, shown.size() - kPagePrompt.size()));
        session.send("");
        if (which != 2)
            continue;
        for (const char* prompt : {"Owner name", "Access code", "Make a link", "Serve others", "default is 1]: "}) {
            ASSERT_TRUE(session.expect(prompt)) << session.transcript();
            if (std::string(prompt) == "Access code") {
                ASSERT_TRUE(session.waitForNoEcho());
            }
            session.send("");
        }
    }
    ASSERT_EQ(documents.size(), 3u) << session.transcript();
    EXPECT_NE(documents[1].find("Terms of use."), std::string::npos) << documents[1];
    EXPECT_NE(documents[1].find("others."), std::string::npos) << documents[1];
    EXPECT_NE(documents[2].find("Plain notes"), std::string::npos) << documents[2];
    EXPECT_NE(documents[2].find("dialect."), std::string::npos) << documents[2];
    for (const std::string& document : documents) {
        size_t start = 0;
        for (size_t end; (end = document.find('\n', start)) != std::string::npos; start = end + 1)
            EXPECT_LE(end - start, 18u) << "too wide: \"" << document.substr(start, end - start) << "\"";
    }
    EXPECT_EQ(session.finish(), 0);
}

TEST_F(TerminalTest, ThroughTheSelfExtractingInstallerTheTerminalIsTheFrontEnds)
{
    if (promptsInstaller().empty())
        GTEST_SKIP() << "no launcher was built";
    ASSERT_EQ(runCommand("cp " + shellQuote(promptsInstaller()) + " " + shellQuote(work.file("setup"))).exitCode, 0);
    std::vector<std::string> before = snapshot(work.path());
    PtySession session(work.file("setup"), {"-VARIABLE_OWNER=Launched"}, work.path(), 10, 80);
    ASSERT_TRUE(session.expect("Verifying installer integrity...OK.")) << session.transcript();
    ASSERT_TRUE(session.expect("* Quilb Group installer       *\n")) << session.transcript();
    const std::vector<Step> steps = {
        {kLicencePrompt, ""},
        {kPagePrompt, ""},
        {kPagePrompt, ""},
        {kPagePrompt, ""},
        {"Target folder [/opt/prompt-check]:", "/srv/launched"},
        {"Owner name [Launched]:", ""},
        {"Access code:", "pw", true},
        {"Make a link in /srv/launched ([no] or yes): ", "yes"},
        {"Serve others ([no] or yes): ", ""},
        {"Enter your choice [1-3]: ", "1"},
    };
    for (const Step& step : steps) {
        ASSERT_TRUE(session.expect(step.prompt)) << "no \"" << step.prompt << "\" in:\n" << session.transcript();
        if (step.hidden) {
            ASSERT_TRUE(session.waitForNoEcho());
        }
        session.send(step.answer);
    }
    EXPECT_TRUE(session.expect("Summary: TARGET=/srv/launched OWNER=Launched CODE=pw LINK=1 EDITION=0 PLAN=desk plan\n"))
        << session.transcript();
    EXPECT_TRUE(session.expect("Deleted ")) << session.transcript();
    EXPECT_EQ(session.finish(), 0) << session.transcript();
    EXPECT_EQ(snapshot(work.path()), before) << "the launcher left files behind";
}
