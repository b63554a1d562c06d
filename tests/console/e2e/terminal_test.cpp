// The console front end with a person answering: at a real terminal, where it pages through
// documents and hides a password, and from a pipe.
#include "console/e2e/console_e2e_helpers.h"

using namespace quilbtest;

namespace {

const std::string kLicencePrompt = "Press Enter to continue...";
const std::string kPagePrompt = "Press ENTER for the next page...";

// One prompt and what the person types at it. `hidden` waits for the terminal to stop
// echoing first, as a password prompt does.
struct Step
{
    std::string prompt;
    std::string answer;
    bool hidden = false;
};

TEST(TerminalTest, AnswersLandInTheVariablesTheWizardShowsAfterwards)
{
    QUILB_REQUIRE_SANDBOX();
    const std::string bin = "-bin=" + promptsPackage();
    const struct
    {
        const char* name;
        int rows, columns;
        std::vector<std::string> args;
        std::vector<Step> steps;
        std::vector<std::string> shown; // in this order
        std::vector<std::string> absent; // anywhere
        bool launched = false; // through the self-extracting installer
    } dialogues[] = {
        { "every field answered, by its kind; a check box value out of range offers no default", 24, 80,
            { bin, "-VARIABLE_EXTRA=1", "-VARIABLE_LINK=5" },
            { { kBanner
                      + "Welcome to Prompt Check 3.\nAn extra word for the curious.\nPlease read the "
                        "licence.\n"
                      + kLicencePrompt,
                  "" },
                { kPagePrompt, "" }, { "Target folder [/opt/prompt-check]:", "  /srv//prompt \\data /" },
                { "Owner name [nobody]:", "  Jane Doe  " }, { "Access code:", "  s3 cr3tt\x7f  ", true },
                { "Make a link in /srv/prompt/data/ (no or yes): ", "YES" },
                { "Serve others ([no] or yes): ", "" },
                { "Edition\n\x1b[0m  1) Basic: the bare program\n\x1b[0m  2) Full: with examples\n"
                  "\x1b[31m  3) Server: for a server\n\x1b[0mEnter your choice [1-3]: ",
                    "3" },
                { "Choice 3 is disabled, choose something else!\nEnter your choice [1-3]: ", "2" } },
            { "Summary: TARGET=/srv/prompt/data/ OWNER=Jane Doe CODE=  s3 cr3t   LINK=1 EDITION=1 PLAN=desk "
              "plan\n"
              "Prompt Check is set up.\n" },
            { "Never asked" } },
        { "empty answers keep current values, an enabled choice is the default, a check box wants a whole "
          "word",
            24, 80,
            { bin, "-VARIABLE_EDITION=2", "-VARIABLE_SERVER_OK=1", "-VARIABLE_LINK=1", "-VARIABLE_CODE=old" },
            { { kLicencePrompt, "" }, { kPagePrompt, "" }, { "Target folder [/opt/prompt-check]:", "" },
                { "Owner name [nobody]:", "" }, { "Access code [old]:", "", true },
                { "Make a link in /opt/prompt-check (no or [yes]): ", "n" },
                { "Please, answer with no or yes: ", "No" }, { "Serve others (no or [yes]): ", "" },
                { "\x1b[0m  3) Server: for a server\n\x1b[0mEnter your choice [1-3, default is 3]: ", "" } },
            { "Summary: TARGET=/opt/prompt-check OWNER=nobody CODE=old LINK=0 EDITION=2 PLAN=server plan\n" },
            {} },
        { "an answer enables a later choice and runs the trigger; documents by kind, wrapped to the width",
            24, 20, { bin, "-VARIABLE_NOTES=1" },
            { { kLicencePrompt, "" }, { kPagePrompt, "" }, { "Target folder [/opt/prompt-check]:", "" },
                { "Owner name [nobody]:", "" }, { "Access code:", "", true },
                { "Make a link in /opt/prompt-check ([no] or yes): ", "" },
                { "Serve others ([no] or yes): ", "yes" },
                { "\x1b[0m  3) Server: for a server\n\x1b[0mEnter your choice [1-3]: ", "3" },
                { "Some notes.\n" + kLicencePrompt, "" },
                { "  Terms of use.\n  Be nice to\n  others.\n\n" + kPagePrompt, "" }, { kLicencePrompt, "" },
                { "Plain notes in the\ndialect.\n\n" + kPagePrompt, "" } },
            { "Summary: TARGET=/opt/prompt-check OWNER=nobody CODE= LINK=0 EDITION=2 PLAN=server plan\n" },
            { "Extra notes" } },
        { "quiet at a terminal asks but shows no banner, texts or licence", 24, 80,
            { bin, "-quiet", "-VARIABLE_EDITION=0", "-VARIABLE_EXTRA=1" },
            { { "Target folder [/opt/prompt-check]:", "/tmp/q" }, { "Owner name [nobody]:", "Q" },
                { "Access code:", "x", true }, { "Make a link in /tmp/q ([no] or yes): ", "yes" },
                { "Serve others ([no] or yes): ", "" }, { "Enter your choice [1-3, default is 1]: ", "" } },
            {},
            { "Quilb Group installer", "Welcome", "An extra word", kLicencePrompt, "line 01", "Summary:" } },
        { "through the self-extracting installer, the terminal is the front end's", 10, 80,
            { "-VARIABLE_OWNER=Launched" },
            { { kLicencePrompt, "" }, { kPagePrompt, "" }, { kPagePrompt, "" }, { kPagePrompt, "" },
                { "Target folder [/opt/prompt-check]:", "/srv/launched" }, { "Owner name [Launched]:", "" },
                { "Access code:", "pw", true }, { "Make a link in /srv/launched ([no] or yes): ", "yes" },
                { "Serve others ([no] or yes): ", "" }, { "Enter your choice [1-3]: ", "1" } },
            { "Verifying installer integrity...OK.", kBanner,
                "Summary: TARGET=/srv/launched OWNER=Launched CODE=pw LINK=1 EDITION=0 PLAN=desk plan\n",
                "Deleted " },
            {}, true },
    };
    for (const auto& dialogue : dialogues) {
        SCOPED_TRACE(dialogue.name);
        TempDir work;
        std::string program = dialogue.launched ? promptsInstaller() : installerConsole();
        if (program.empty())
            continue; // no launcher was built
        std::string before = snapshot(work.path());
        PtySession session(program, dialogue.args, work.path(), dialogue.rows, dialogue.columns);
        for (const Step& step : dialogue.steps) {
            ASSERT_TRUE(session.expect(step.prompt) && (!step.hidden || session.waitForNoEcho()))
                << "no prompt \"" << step.prompt << "\" in:\n"
                << session.transcript();
            session.send(step.answer);
        }
        EXPECT_EQ(session.finish(), 0) << session.transcript();
        std::string all = session.transcript();
        EXPECT_TRUE(inOrder(all, dialogue.shown));
        for (const std::string& text : dialogue.absent)
            EXPECT_EQ(all.find(text), std::string::npos) << "\"" << text << "\" shown in:\n" << all;
        // Nothing is shown twice, the password is never echoed, and nothing is left behind.
        for (const char* once : { "* Quilb Group installer       *", "Welcome to Prompt Check 3.\n",
                 "Tell us how to set things up.\n", "s3 cr3t" })
            EXPECT_LE(occurrences(all, once), 1u) << once;
        EXPECT_EQ(all.find("Automatic installation"), std::string::npos);
        EXPECT_EQ(snapshot(work.path()), before);
    }
}

TEST(TerminalTest, LicencePagesFollowTheTerminalHeight)
{
    QUILB_REQUIRE_SANDBOX();
    // The licence of the test product is 20 lines of "- line NN".
    const struct
    {
        const char* name;
        int rows;
        int resizedRows; // the size set while the first page waits; 0 keeps it
        std::vector<int> pages; // lines on each page
        int prompts; // "Press ENTER for the next page..." shown
    } cases[] = {
        { "fits on one screen: one prompt at the end", 24, 0, { 20 }, 1 },
        { "three pages, the last one short", 10, 0, { 8, 8, 4 }, 3 },
        { "two full pages: no prompt after the last", 12, 0, { 10, 10 }, 2 },
        { "the terminal shrinks after the first page", 10, 6, { 8, 4, 4, 4 }, 4 },
        { "a terminal of 3 rows pages line by line", 3, 0, std::vector<int>(20, 1), 20 },
        { "a terminal too small to page shows it whole", 2, 0, { 20 }, 0 },
        { "a terminal that tells no size shows it whole", 0, 0, { 20 }, 0 },
    };
    for (const auto& paging : cases) {
        SCOPED_TRACE(paging.name);
        TempDir work;
        PtySession session(installerConsole(), { "-bin=" + promptsPackage() }, work.path(), paging.rows, 80);
        ASSERT_TRUE(session.expect(kLicencePrompt)) << session.transcript();
        session.send("");
        std::vector<int> pages;
        for (int prompt = 0; prompt <= paging.prompts; ++prompt) {
            std::string page;
            ASSERT_TRUE(session.expect(prompt < paging.prompts ? kPagePrompt : "Target folder", &page))
                << session.transcript();
            if (int lines = static_cast<int>(occurrences(page, "- line ")))
                pages.push_back(lines);
            if (prompt == 0 && paging.resizedRows)
                session.resize(paging.resizedRows, 80);
            session.send("");
        }
        EXPECT_EQ(pages, paging.pages);
    }
}

TEST(TerminalTest, AnswersReadFromAPipeInOrder)
{
    QUILB_REQUIRE_SANDBOX();
    const std::string bin = "-bin=" + promptsPackage();
    const std::string package = readFile(promptsPackage());
    auto ending = [](const std::string& summary) {
        return "Summary: " + summary + "\nPrompt Check is set up.\n" + kClearedLine;
    };
    checkRuns({
        { "a password among the answers", { bin }, 0,
            ending("TARGET=/srv/x OWNER=Jane CODE=secret LINK=1 EDITION=1 PLAN=desk plan"), Match::End,
            "\n/srv/x\nJane\nsecret\nyes\n\n2\n" },
        { "the input ends: every field keeps the value it offered",
            { bin, "-VARIABLE_TARGET=/cli", "-VARIABLE_OWNER=cli", "-VARIABLE_CODE=pw", "-VARIABLE_LINK=1",
                "-VARIABLE_EDITION=1" },
            0, ending("TARGET=/cli OWNER=cli CODE=pw LINK=1 EDITION=1 PLAN=desk plan"), Match::End },
        { "the package's number is read with its line", {}, 0,
            ending("TARGET=/srv/second OWNER=nobody CODE= LINK=0 EDITION=2 PLAN=server plan"), Match::End,
            "2 please\n\n/srv/second\n\n\n\nyes\n3\n",
            { { "a.ibin", readFile(notesPackage()) }, { "b.ibin", package } } },
    });
}

} // namespace
