#include "tests/cli/CommandLine.h"

#include <gmock/gmock.h>

using namespace ordovan::test;
using ::testing::AnyOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;

TEST(TerminalPrompt, OrganizesAfterAYes) {
    const Home home;
    home.write("a.pdf", "1");
    Terminal terminal(home, {"organize", "--no-color"});
    ASSERT_TRUE(terminal.waitFor("  a.pdf\r\n\r\n1 proposed · 0 need review\r\n"));
    ASSERT_TRUE(terminal.waitFor("Organize these files? [y/N] "));
    terminal.type("y\n");
    const Finished run = terminal.finish();
    EXPECT_THAT(run.out, HasSubstr("Organized 1 file in Downloads\r\n  Documents  1 file\r\n"));
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(home.has("ordovan+/Documents/a.pdf"));
}

TEST(TerminalPrompt, ChangesNothingAfterAnyOtherAnswer) {
    for (const char* answer : {"n\n", "\n", "yesterday\n", "\x04"}) {
        const Home home;
        home.write("a.pdf", "1");
        Terminal terminal(home, {"organize"});
        ASSERT_TRUE(terminal.waitFor("Organize these files? [y/N] "));
        terminal.type(answer);
        const Finished run = terminal.finish();
        EXPECT_THAT(run.out, EndsWith("Nothing was changed.\r\n"));
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(home.has("a.pdf"));
        EXPECT_FALSE(home.has("ordovan+"));
    }
}

TEST(TerminalPrompt, IsNotShownAfterTheFlag) {
    const Home home;
    home.write("a.pdf", "1");
    const Finished run = Terminal(home, {"organize", "--yes"}).finish();
    EXPECT_THAT(run.out, Not(HasSubstr("[y/N]")));
    EXPECT_EQ(run.status, 0);
}

TEST(TerminalPrompt, GuardsUndo) {
    const Home home;
    home.write("a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    Terminal no(home, {"undo"});
    ASSERT_TRUE(no.waitFor("Put these files back? [y/N] "));
    no.type("no\n");
    const Finished refused = no.finish();
    EXPECT_THAT(refused.out, HasSubstr("1 organized file can go back to where they came from.\r\n"
                                       "  ordovan+/Documents/a.pdf → a.pdf\r\n"));
    EXPECT_EQ(refused.status, 0);
    EXPECT_FALSE(home.has("a.pdf"));
    Terminal yes(home, {"undo"});
    ASSERT_TRUE(yes.waitFor("[y/N] "));
    yes.type("YES\n");
    EXPECT_EQ(yes.finish().status, 0);
    EXPECT_TRUE(home.has("a.pdf"));
}

TEST(TerminalPrompt, GuardsTheHistory) {
    const Home home;
    home.write("a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    Terminal terminal(home, {"history", "--clear"});
    ASSERT_TRUE(
        terminal.waitFor("Only this log is cleared. Organized files and Undo stay as they are.\r\n"
                         "Clear the run history? [y/N] "));
    terminal.type("n\n");
    EXPECT_EQ(terminal.finish().status, 0);
    EXPECT_EQ(home.run({"history", "--json"}).json().at("records").as_array().size(), 1U);
}

TEST(TerminalPrompt, WithJsonPrintsOneObjectWhateverTheAnswer) {
    const Home home;
    home.write("a.pdf", "1");
    Terminal terminal(home, {"organize", "--json"});
    ASSERT_TRUE(terminal.waitFor("Organize these files? [y/N] "));
    terminal.type("n\n");
    EXPECT_THAT(terminal.finish().out, EndsWith("{\"schema\": 1, \"outcomes\": [], \"moved\": 0, \"skipped\": 0, "
                                                "\"failed\": 0, \"warning\": null}\r\n"));
}

TEST(TerminalPrompt, FilesThatChangeBeforeTheAnswerAreLeft) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("b.pdf", "2");
    Terminal terminal(home, {"organize"});
    ASSERT_TRUE(terminal.waitFor("[y/N] "));
    std::filesystem::remove(home.download("a.pdf"));
    terminal.type("y\n");
    const Finished run = terminal.finish();
    EXPECT_THAT(run.out, HasSubstr("  a.pdf: Source changed since preview; left untouched.\r\n"));
    EXPECT_EQ(run.status, 1);
}

TEST(TerminalPrompt, EndsAtCtrlCWithNothingChanged) {
    const Home home;
    home.write("a.pdf", "1");
    Terminal terminal(home, {"organize"});
    ASSERT_TRUE(terminal.waitFor("[y/N] "));
    terminal.type("\x03");
    const Finished run = terminal.finish();
    EXPECT_THAT(run.out, EndsWith("Interrupted; nothing was changed.\r\n"));
    EXPECT_EQ(run.status, 130);
    EXPECT_TRUE(home.has("a.pdf"));
}

TEST(TerminalInterrupt, EndsAPreviewWithNothingChanged) {
    const Home home;
    for (int number = 0; number < 2000; ++number) home.write(std::to_string(number) + "/a.pdf", "1");
    Terminal terminal(home, {"organize"});
    ASSERT_TRUE(terminal.waitFor("Previewing"));
    terminal.signal(SIGINT);
    const Finished run = terminal.finish();
    EXPECT_THAT(run.out, EndsWith("Interrupted; nothing was changed.\r\n"));
    EXPECT_EQ(run.status, 130);
    EXPECT_FALSE(home.has("ordovan+"));
}

TEST(TerminalInterrupt, StopsARunBetweenFilesAndKeepsItsRecord) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const Home home;
        constexpr int count = 5000;
        for (int number = 0; number < count; ++number)
            home.write(std::to_string(number) + ".pdf", std::to_string(number));
        const auto before = home.tree();
        Terminal terminal(home, {"organize"});
        ASSERT_TRUE(terminal.waitFor("[y/N] "));
        terminal.type("y\n");
        // The signal comes when the first file has moved, unless the run was quicker.
        while (!home.has("ordovan+/Documents") && ::access(home.download("0.pdf").c_str(), F_OK) == 0) {
        }
        terminal.signal(signal);
        EXPECT_THAT(terminal.finish().status, AnyOf(130, 0));
        const auto after = home.tree();
        const auto recorded = home.run({"recovery", "--json"}).json();
        std::size_t moved = 0;
        for (const auto& item : after) moved += item.first.starts_with("ordovan+/Documents/") ? 1 : 0;
        ASSERT_GT(moved, 0U);
        EXPECT_EQ(recorded.at("organized").as_array().size(), moved);
        ASSERT_EQ(home.run({"undo", "--yes"}).status, 0);
        EXPECT_TRUE(home.tree() == before);
    }
}

TEST(TerminalLook, ColoursHeadsUnlessToldNotTo) {
    Home home;
    home.write("a.pdf", "1");
    const std::string bold = "\x1b[1mDocuments\x1b[0m  1 file";
    EXPECT_THAT(Terminal(home, {"preview"}).finish().out, HasSubstr(bold));
    EXPECT_THAT(Terminal(home, {"preview", "--no-color"}).finish().out, Not(HasSubstr("\x1b[1m")));
    home.environment["TERM"] = "dumb";
    EXPECT_THAT(Terminal(home, {"preview"}).finish().out, Not(HasSubstr("\x1b")));
}

TEST(TerminalLook, ShowsProgressAndTakesItAwayAgain) {
    const Home home;
    home.write("a.pdf", "1");
    const std::string out = Terminal(home, {"preview"}).finish().out;
    const std::size_t shown = out.find("\r\x1b[KPreviewing…");
    ASSERT_NE(shown, std::string::npos);
    EXPECT_NE(out.find("\r\x1b[K", shown + 1), std::string::npos);
    EXPECT_THAT(Terminal(home, {"preview", "--quiet"}).finish().out, Not(HasSubstr("Previewing")));
}
