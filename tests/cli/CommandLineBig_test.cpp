#include "tests/cli/CommandLine.h"
#include "tests/support/SecondVolume.h"

#include <gmock/gmock.h>

using namespace ordovan::test;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace {

/// The names that "big" lists, in its order.
std::vector<std::string> listed(const Home& home, Home::Arguments options) {
    options.insert(options.begin(), {"big", "--json"});
    std::vector<std::string> names = column(home.run(options).json().at("files"), "path");
    for (std::string& name : names) name = name.substr(name.rfind('/') + 1);
    return names;
}

}  // namespace

TEST(BigCommand, ListsTheLargestFirst) {
    const Home home;
    home.write("small.txt", "123");
    home.write("sub/large.bin", std::string(2'500, 'x'));
    home.write("file10.bin", std::string(1'000, 'x'));
    home.write("file9.bin", std::string(1'000, 'x'));
    const Finished run = home.run({"big"});
    EXPECT_EQ(run.out,
              "Largest files, biggest first\n"
              "     2.5 KB  2020-09-13 12:26  sub/large.bin\n"
              "     1.0 KB  2020-09-13 12:26  file9.bin\n"
              "     1.0 KB  2020-09-13 12:26  file10.bin\n"
              "    3 bytes  2020-09-13 12:26  small.txt\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST(BigCommand, PrintsTheFilesOfTheContractAsJson) {
    const Home home;
    home.write("a.bin", "12345");
    home.write("b.bin", "1");
    const Finished run = home.run({"big", "--json"});
    EXPECT_EQ(run.out, "{\"schema\": 1, \"files\": [\n{\"path\": \"" + home.download("a.bin") +
                           "\", \"byteSize\": 5, \"modifiedEpoch\": 1600000000},\n{\"path\": \"" +
                           home.download("b.bin") +
                           "\", \"byteSize\": 1, \"modifiedEpoch\": 1600000000}\n], "
                           "\"partialScan\": false, \"scan\": {\"files\": 2, \"directories\": 0, "
                           "\"totalByteSize\": 6, \"skipped\": []}}\n");
    EXPECT_EQ(run.status, 0);
}

TEST(BigCommand, TellsWhatItCouldNotRead) {
    Home home;
    home.write("a.bin", "12345");
    home.write("closed/b.bin", "1234567");
    giveToUnprivileged(home.folder.path());
    ::chmod(home.download("closed").c_str(), 0);
    home.runsUnprivileged = true;
    const Finished run = home.run({"big", "--json"});
    EXPECT_EQ(run.err, "warning: 1 folder left out:\n  closed: could not be read\n");
    EXPECT_THAT(column(run.json().at("scan").at("skipped"), "reason"), ElementsAre("unreadableDirectory"));
    EXPECT_EQ(run.status, 1);
}

TEST(BigCommand, ListsFilesOfTheMinimumSizeOrMore) {
    const Home home;
    home.write("999", std::string(999, 'x'));
    home.write("1000", std::string(1'000, 'x'));
    home.write("1500", std::string(1'500, 'x'));
    EXPECT_THAT(listed(home, {"--min-size", "1k"}), ElementsAre("1500", "1000"));
    EXPECT_THAT(listed(home, {"--min-size=1.5KB"}), ElementsAre("1500"));
    EXPECT_THAT(listed(home, {"--min-size", "1000"}), ElementsAre("1500", "1000"));
    EXPECT_THAT(listed(home, {"--min-size", "0.0014991MB"}), ElementsAre("1500"));
    EXPECT_THAT(listed(home, {"--min-size", "1.5000001 kb"}), IsEmpty());
    EXPECT_THAT(listed(home, {"--min-size", "0"}), ElementsAre("1500", "1000", "999"));
}

TEST(BigCommand, ListsAsManyAsTold) {
    const Home home;
    for (int number = 0; number < 60; ++number) home.write(std::to_string(number), "x");
    EXPECT_EQ(listed(home, {}).size(), 50U);
    EXPECT_EQ(listed(home, {"--limit", "55"}).size(), 55U);
    EXPECT_EQ(listed(home, {"--limit", "1000"}).size(), 60U);
    EXPECT_EQ(listed(home, {"--limit=0"}).size(), 0U);
}

TEST(BigCommand, WithNothingOfThisSizeSaysSo) {
    const Home home;
    home.write("a.bin", "1");
    const Finished run = home.run({"big", "--min-size", "10MB"});
    EXPECT_EQ(run.out, "No files this size\nTry a smaller size filter.\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(listed(home, {"--min-size", "10MB"}), IsEmpty());
}

TEST(BigCommand, TellsWhereInstallersBelong) {
    const Home home;
    home.write("app.dmg", "1");
    const std::string sentence =
        "Installers (.dmg, .pkg) are often safe to remove once the app is installed. Organize sends them to "
        "ordovan+/Installers so you can review them in one place.\n";
    EXPECT_EQ(home.run({"big"}).err, sentence);
    EXPECT_EQ(home.run({"big", "--quiet"}).err, "");
    EXPECT_EQ(home.run({"big", "--json"}).err, "");
}

TEST(BigCommand, LeavesFoldersLinksAndPackagesOut) {
    const Home home;
    home.write("a.txt", "1");
    home.write("Thing.app/huge.bin", std::string(5'000, 'x'));
    home.folder.makeLink("Downloads/link.txt", "a.txt");
    EXPECT_THAT(listed(home, {}), ElementsAre("a.txt"));
}

TEST(BigCommand, WarnsWhenTheScanReachedItsLimit) {
    const Home home;
    home.write("a.txt", "1");
    for (int number = 0; number < 50'000; ++number) {
        ASSERT_EQ(::link(home.download("a.txt").c_str(), home.download(std::to_string(number)).c_str()), 0);
    }
    const std::string warning = "warning: Scan reached its limit; results are partial.\n";
    EXPECT_EQ(home.run({"big", "--json", "--limit", "1"}).err, warning);
    EXPECT_EQ(home.run({"duplicates", "--quiet"}).err, warning);
}

TEST(BigCommand, KeepsAHostileNameOnItsLine) {
    const Home home;
    home.write("new\nline\x1b[2J.txt", "1");
    EXPECT_THAT(home.run({"big"}).out, EndsWith("  new\\nline\\x1b[2J.txt\n"));
}

TEST(BigTrash, MovesTheNamedFiles) {
    Home home;
    for (const char* name : {"a.bin", "sub/b.bin", "c.bin"}) home.write(name, "12345");
    home.workingFolder = home.download("sub");
    const Finished run = home.run({"big", "--yes", "--trash", home.download("a.bin"), "--trash", "b.bin"});
    EXPECT_EQ(run.out, "2 files moved to the Trash · 10 bytes\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_FALSE(home.has("a.bin"));
    EXPECT_FALSE(home.has("sub/b.bin"));
    EXPECT_TRUE(home.has("c.bin"));
    EXPECT_EQ(home.folder.read(".local/share/Trash/files/a.bin"), "12345");
}

TEST(BigTrash, PrintsTheReportOfTheContractAsJson) {
    const Home home;
    home.write("a.bin", "1");
    const Finished run = home.run({"big", "--yes", "--json", "--trash=" + home.download("a.bin")});
    EXPECT_EQ(run.out, "{\"schema\": 1, \"outcomes\": [\n{\"source\": \"" + home.download("a.bin") +
                           "\", \"destination\": \"" + home.folder.path(".local/share/Trash/files/a.bin") +
                           "\", \"status\": \"moved\", \"message\": \"Moved to the Trash.\"}\n], \"moved\": 1, "
                           "\"skipped\": 0, \"failed\": 0, \"warning\": null}\n");
    EXPECT_EQ(run.status, 0);
}

TEST(BigTrash, RefusesWithoutYesWhenNobodyCanBeAsked) {
    const Home home;
    home.write("a.bin", "1");
    const Finished run = home.run({"big", "--trash", home.download("a.bin")});
    EXPECT_EQ(run.err,
              "error: There is nobody to ask here; say --yes to move files to the Trash without a question.\n");
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(home.has("a.bin"));
}

TEST(BigTrash, RefusesWhatIsNoFileOfTheFolderBeforeAnythingMoves) {
    const Home home;
    home.write("a.bin", "1");
    home.write("sub/b.bin", "1");
    home.write(".hidden", "1");
    home.folder.write("outside.bin", "1");
    home.folder.makeLink("Downloads/link.bin", "a.bin");
    for (const std::string& path : {home.download("gone.bin"), home.download("sub"), home.download(".hidden"),
                                    home.folder.path("outside.bin"), home.download("link.bin"), home.downloads()}) {
        const Finished run = home.run({"big", "--yes", "--trash", home.download("a.bin"), "--trash", path});
        EXPECT_EQ(run.err, "error: There is no file of this folder at \"" + path + "\".\n");
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.status, 2);
    }
    EXPECT_EQ(home.run({"big", "--yes", "--trash="}).status, 2);
    EXPECT_TRUE(home.has("a.bin"));
}

TEST(BigTrash, TakesAPathThroughALink) {
    const Home home;
    home.write("a.bin", "1");
    home.folder.makeLink("way", "Downloads");
    ASSERT_EQ(home.run({"big", home.folder.path("way"), "--yes", "--trash", home.folder.path("way/a.bin")}).status, 0);
    EXPECT_FALSE(home.has("a.bin"));
}

TEST(BigTrash, MovesAFileNamedTwiceOnce) {
    const Home home;
    home.write("a.bin", "1");
    const std::string path = home.download("a.bin");
    const auto report = home.run({"big", "--yes", "--json", "--trash", path, "--trash", path}).json();
    EXPECT_EQ(report.at("moved"), 1);
    EXPECT_EQ(report.at("outcomes").as_array().size(), 1U);
}

TEST(BigTrash, LeavesAFileThatCanNotBeReadAndSaysWhy) {
    Home home;
    home.write("a.bin", "1");
    home.write("b.bin", "1");
    giveToUnprivileged(home.folder.path());
    ::chmod(home.download("a.bin").c_str(), 0);
    home.runsUnprivileged = true;
    const Finished run =
        home.run({"big", "--yes", "--trash", home.download("a.bin"), "--trash", home.download("b.bin")});
    EXPECT_EQ(run.out,
              "1 file moved to the Trash · 1 byte\n"
              "Not moved to the Trash  1 file\n"
              "  a.bin: Couldn't read the file to record it for Put Back; left untouched.\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(home.has("a.bin"));
    EXPECT_FALSE(home.has("b.bin"));
}

TEST(BigTrash, LeavesAFileWhoseFolderIsReadOnly) {
    Home home;
    home.write("kept/a.bin", "1");
    giveToUnprivileged(home.folder.path());
    ::chmod(home.download("kept").c_str(), 0555);
    home.runsUnprivileged = true;
    const Finished run = home.run({"big", "--yes", "--trash", home.download("kept/a.bin")});
    EXPECT_THAT(run.out, HasSubstr("  kept/a.bin: Couldn't move this file to the Trash; it was left in place. "));
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(home.has("kept/a.bin"));
}

TEST(BigTrash, RefusesAFolderThatAnotherRunHolds) {
    const Home home;
    home.write("a.bin", "1");
    const Held held(home.downloads());
    EXPECT_EQ(home.run({"big", "--yes", "--trash", home.download("a.bin")}).status, 3);
    EXPECT_TRUE(home.has("a.bin"));
}

TEST(BigTrash, LeavesTheFilesOfAVolumeThatTakesNothing) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume volume(1 << 20);
    volume.root().write("X/a.bin", "1");
    volume.makeReadOnly();
    const Home home;
    const auto report =
        home.run({"big", volume.path("X"), "--yes", "--json", "--trash", volume.path("X/a.bin")}).json();
    EXPECT_EQ(report.at("failed"), 1);
    EXPECT_THAT(text(report.at("outcomes").at(0).at("message")),
                StartsWith("Couldn't move this file to the Trash; it was left in place. "));
    EXPECT_EQ(volume.root().read("X/a.bin"), "1");
}

TEST(BigTrash, SaysThatWhatIsOrganizedIsLeftOut) {
    const Home home;
    home.write("ordovan+/Installers/big.iso", "1");
    const std::string name = home.organized("Installers/big.iso");
    const Finished run = home.run({"big", "--yes", "--trash", name});
    EXPECT_EQ(run.err, "error: There is no file of this folder at \"" + name +
                           "\"; what lies in its \"ordovan+\" is left out.\n");
    EXPECT_EQ(run.status, 2);
}

TEST(BigTerminal, AsksBeforeAnythingMoves) {
    const Home home;
    for (const char* name : {"a.bin", "b.bin"}) home.write(name, "1");
    Terminal one(home, {"big", "--trash", home.download("a.bin")});
    ASSERT_TRUE(one.waitFor("  a.bin\r\n"));
    ASSERT_TRUE(one.waitFor(
        "Files go to the Trash and are not deleted. Each file is checked again first; anything that changed "
        "is left alone. You can put files back with \"ordovan-cli restore\" or from the Trash.\r\n"));
    ASSERT_TRUE(one.waitFor("Move 1 file to the Trash? [y/N] "));
    one.type("n\n");
    EXPECT_THAT(one.finish().out, EndsWith("Nothing was changed.\r\n"));
    Terminal two(home, {"big", "--no-color", "--trash", home.download("a.bin"), "--trash", home.download("b.bin")});
    ASSERT_TRUE(two.waitFor("Move 2 files to the Trash? [y/N] "));
    home.write("a.bin", "12");
    two.type("y\n");
    EXPECT_THAT(two.finish().out, EndsWith("1 file moved to the Trash · 1 byte\r\nNot moved to the Trash  1 file\r\n"
                                           "  a.bin: The file changed since you looked at it; left untouched.\r\n"));
    EXPECT_TRUE(home.has("a.bin"));
    EXPECT_FALSE(home.has("b.bin"));
}

TEST(BigTerminal, StopsTrashingBetweenFilesAndKeepsTheRecord) {
    const Home home;
    home.write("a.txt", "content of a.txt");
    home.write("huge.bin", "");
    std::filesystem::resize_file(home.download("huge.bin"), 8ULL << 30);  // takes seconds to examine
    Terminal terminal(home, {"big", "--yes", "--trash", home.download("a.txt"), "--trash", home.download("huge.bin")});
    ASSERT_TRUE(terminal.waitFor("1 of 2 files"));
    terminal.signal(SIGINT);
    const Finished run = terminal.finish();
    EXPECT_THAT(run.out, HasSubstr("Stopping after the file in work.\r\n"));
    EXPECT_EQ(run.status, 130);
    EXPECT_FALSE(home.has("a.txt"));
    EXPECT_TRUE(home.has("huge.bin"));
    EXPECT_THAT(column(home.run({"recovery", "--json"}).json().at("trashed"), "original"),
                ElementsAre(home.download("a.txt")));
    ASSERT_EQ(home.run({"restore", "--yes"}).status, 0);
    EXPECT_EQ(home.read("a.txt"), "content of a.txt");
}
