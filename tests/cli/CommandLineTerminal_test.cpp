#include "tests/cli/CommandLine.h"

#include <gmock/gmock.h>

using namespace ordovan::test;
using ::testing::EndsWith;
using ::testing::HasSubstr;

namespace {

/// An undo record as an older version left it in the output folder. The preview that finds it takes it over, under the
/// lock of the records.
void leaveOlderRecord(const Home& home) {
    home.write("ordovan+/Documents/old.pdf", "old");
    home.folder.write("Downloads/ordovan+/.ordovan-journal.json",
                      R"({"createdAtEpoch": 1, "entries": [{"byteSize": 3, "contentHash": "0", "destination": ")" +
                          home.organized("Documents/old.pdf") + R"(", "fileID": "", "sameVolume": true, "source": ")" +
                          home.download("old.pdf") + R"("}], "version": 1})");
}

/// Waits until a process that runs the program has opened a folder. False when it has ended without.
bool waitUntilOpen(::pid_t process, const std::string& folder) {
    const std::filesystem::path program = std::filesystem::canonical(ORDOVAN_CLI);
    const std::string descriptors = "/proc/" + std::to_string(process) + "/fd";
    std::error_code ended;
    while (!ended) {
        std::error_code unknown;
        if (std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", unknown) != program) {
            ended = unknown;
            continue;
        }
        for (std::filesystem::directory_iterator each(descriptors, ended), end; !ended && each != end;
             each.increment(ended)) {
            std::error_code closed;
            if (std::filesystem::read_symlink(each->path(), closed) == folder) return true;
        }
    }
    return false;
}

std::size_t countIn(const std::string& folder) {
    namespace fs = std::filesystem;
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

}  // namespace

TEST(TerminalPrompt, OrganizesAfterAYes) {
    const Home home;
    home.write("a.pdf", "1");
    Terminal terminal(home, {"organize", "--no-color"});
    ASSERT_TRUE(terminal.waitFor("  a.pdf\r\n\r\n1 proposed · 0 need review\r\n"));
    ASSERT_TRUE(terminal.waitFor(
        "Files move into the ordovan+ folder inside this folder. Nothing is copied or deleted, and you "
        "can undo this with \"ordovan-cli undo\".\r\n"));
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

TEST(TerminalPrompt, NamesTheFolderInItsAdvice) {
    Home home;
    home.folder.write("My files/a.pdf", "1");
    home.workingFolder = home.folder.path();
    Terminal terminal(home, {"organize", "My files"});
    ASSERT_TRUE(
        terminal.waitFor("can undo this with \"ordovan-cli undo '" + home.folder.path("My files") + "'\".\r\n"));
    ASSERT_TRUE(terminal.waitFor("[y/N] "));
    terminal.type("n\n");
    EXPECT_EQ(terminal.finish().status, 0);
}

TEST(TerminalPrompt, IsNotAskedWhereNobodySeesIt) {
    Home home;
    home.write("a.pdf", "1");
    const std::string log = home.folder.path("log");
    home.prepare = [&] { ::dup2(::open(log.c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO); };
    EXPECT_EQ(Terminal(home, {"organize"}).finish().status, 2);
    EXPECT_EQ(home.folder.read("log"),
              "error: There is nobody to ask here; say --yes to organize without a question.\n");
    EXPECT_TRUE(home.has("a.pdf"));
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
                                                "\"failed\": 0, \"warning\": null, \"needReview\": 0, "
                                                "\"notEvaluated\": 0, \"partialScan\": false, "
                                                "\"foldersLeftOut\": 0}\r\n"));
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
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        Home home;
        home.write("a.pdf", "1");
        leaveOlderRecord(home);
        std::filesystem::create_directories(home.records());
        const Held held(home.records());  // so that the preview can not be over
        home.prepare = [&] { held.forget(); };
        Terminal terminal(home, {"organize"});
        ASSERT_TRUE(waitUntilOpen(terminal.process(), home.records()));
        terminal.signal(signal);
        const Finished run = terminal.finish();
        EXPECT_THAT(run.out, EndsWith("Interrupted; nothing was changed.\r\n"));
        EXPECT_THAT(run.out, Not(HasSubstr("[y/N]")));
        EXPECT_EQ(run.status, 130);
        EXPECT_TRUE(home.has("a.pdf"));
        EXPECT_TRUE(home.has("ordovan+/.ordovan-journal.json"));
    }
}

TEST(TerminalInterrupt, StopsARunBetweenFilesAndKeepsItsRecord) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const Home home;
        // Each file but the first takes a while to read, and all of them together far longer than a signal.
        constexpr std::size_t count = 64;
        for (std::size_t number = 0; number < count; ++number) {
            home.write(std::to_string(100 + number) + ".pdf", "1");
            if (number > 0)
                std::filesystem::resize_file(home.download(std::to_string(100 + number) + ".pdf"), 128 << 20);
        }
        Terminal terminal(home, {"organize", "--yes"});
        ASSERT_TRUE(terminal.waitFor("Organizing… 1 of 64"));
        terminal.signal(signal);
        const Finished run = terminal.finish();
        EXPECT_THAT(run.out, HasSubstr("Stopping after the file in work.\r\n"));
        EXPECT_EQ(run.status, 130);
        const std::size_t moved = countIn(home.organized("Documents"));
        EXPECT_LT(moved, count);
        EXPECT_EQ(countIn(home.downloads()), count - moved + 1);
        EXPECT_EQ(home.run({"recovery", "--json"}).json().at("organized").as_array().size(), moved);
        ASSERT_EQ(home.run({"undo", "--yes"}).status, 0);
        EXPECT_EQ(countIn(home.downloads()), count + 1);
        EXPECT_EQ(home.read("100.pdf"), "1");
    }
}

TEST(TerminalInterrupt, EndsWritingToAReaderThatDoesNotRead) {
    const Home home;
    for (int number = 0; number < 1000; ++number) home.write(std::to_string(number) + ".pdf", "1");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        int out[2];
        Home::makePipe(out);
        const ::pid_t child = home.start({"preview", "--json"}, [&] { ::dup2(out[1], STDOUT_FILENO); });
        ::close(out[1]);
        ::pollfd written{out[0], POLLIN, 0};
        ASSERT_EQ(::poll(&written, 1, -1), 1);
        ::kill(child, signal);
        EXPECT_EQ(Home::await(child), 130);
        ::close(out[0]);
    }
}

TEST(TerminalInterrupt, EndsTheWaitForTheRecordsBeforeARun) {
    for (const int signal : {SIGINT, SIGTERM}) {
        Home home;
        home.write("a.pdf", "1");
        std::filesystem::create_directories(home.records());
        const Held held(home.records());
        home.prepare = [&] { held.forget(); };
        Terminal terminal(home, {"organize", "--yes"});
        ASSERT_TRUE(waitUntilOpen(terminal.process(), home.records()));
        terminal.signal(signal);
        const Finished run = terminal.finish();
        EXPECT_THAT(run.out, EndsWith("Interrupted; nothing was changed.\r\n"));
        EXPECT_EQ(run.status, 130);
        EXPECT_TRUE(home.has("a.pdf"));
    }
}

TEST(TerminalInterrupt, EndsAWaitForALock) {
    Home home;
    home.write("a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    struct Case {
        Home::Arguments arguments;
        std::string folder;
    };
    for (const auto& [arguments, folder] : {Case{{"rules", "add", "dmg", "Apps"}, home.folder.path(".config/ordovan")},
                                            Case{{"history", "--clear", "--yes"}, home.records()}}) {
        const Held held(folder);
        home.prepare = [&] { held.forget(); };
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            Terminal terminal(home, arguments);
            ASSERT_TRUE(waitUntilOpen(terminal.process(), folder));
            terminal.signal(signal);
            EXPECT_EQ(terminal.finish().status, 130);
        }
    }
    home.prepare = [] {};
    EXPECT_EQ(home.run({"rules", "--json"}).out, "{\"schema\": 1, \"rules\": []}\n");
    EXPECT_EQ(home.run({"history", "--json"}).json().at("records").as_array().size(), 1U);
}

TEST(TerminalLook, ColorsHeadsUnlessToldNotTo) {
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
