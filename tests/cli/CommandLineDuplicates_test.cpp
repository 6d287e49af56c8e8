#include "tests/cli/CommandLine.h"

#include <gmock/gmock.h>

using namespace ordovan::test;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace {

const std::string hashOfOne = "6b86b273ff34fce19d6b804eff5a3f5747ada4eaa22f1d49c01e52ddb7875b4b";
const std::string emptyReport =
    "{\"schema\": 1, \"outcomes\": [], \"moved\": 0, \"skipped\": 0, \"failed\": 0, \"warning\": null, "
    "\"partialScan\": false, \"foldersLeftOut\": 0, \"filesNotRead\": 0}\n";

/// The path that the first group of a result keeps.
std::string kept(const Home& home, const Home::Arguments& options) {
    Home::Arguments arguments = {"duplicates", "--json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return text(home.run(arguments).json().at("groups").at(0).at("keep"));
}

/// The sentences told about the files, by their paths.
std::map<std::string, std::string> messages(const boost::json::object& report) {
    std::map<std::string, std::string> all;
    for (const auto& outcome : report.at("outcomes").as_array()) {
        all[text(outcome.at("source"))] = text(outcome.at("message"));
    }
    return all;
}

}  // namespace

TEST(DuplicatesCommand, ShowsGroupsAndMarksTheCopyToKeep) {
    const Home home;
    home.write("b/a.txt", "12345");
    home.write("a.txt", "12345", 1'600'000'060);
    home.write("c.txt", "12345");
    home.write("other.txt", "54321");
    home.write("x.pdf", "1");
    home.write("y.pdf", "1");
    const auto before = home.tree();
    const Finished run = home.run({"duplicates"});
    EXPECT_EQ(run.out,
              "3 identical copies · 5 bytes\n"
              "  keep   2020-09-13 12:27  a.txt\n"
              "  extra  2020-09-13 12:26  b/a.txt\n"
              "  extra  2020-09-13 12:26  c.txt\n"
              "\n"
              "2 identical copies · 1 byte\n"
              "  keep   2020-09-13 12:26  x.pdf\n"
              "  extra  2020-09-13 12:26  y.pdf\n"
              "\n"
              "2 duplicate groups · 5 files · 11 bytes in extra copies\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(home.tree() == before);
}

TEST(DuplicatesCommand, PrintsTheGroupsOfTheContractAsJson) {
    const Home home;
    home.write("a9.txt", "1");
    home.write("a10.txt", "1");
    home.write("b.txt", "2");
    const Finished run = home.run({"duplicates", "--json"});
    EXPECT_EQ(run.out, "{\"schema\": 1, \"groups\": [\n{\"id\": \"" + hashOfOne + ":1\", \"contentHash\": \"" +
                           hashOfOne + "\", \"byteSize\": 1, \"files\": [\"" + home.download("a9.txt") + "\", \"" +
                           home.download("a10.txt") + "\"], \"keep\": \"" + home.download("a9.txt") +
                           "\", \"reclaimableBytes\": 1}\n], \"reclaimableBytes\": 1, \"duplicateFileCount\": 2, "
                           "\"partialScan\": false, \"scan\": {\"files\": 3, \"directories\": 0, "
                           "\"totalByteSize\": 3, \"skipped\": []}, \"filesNotRead\": []}\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST(DuplicatesCommand, TellsWhatItCouldNotRead) {
    Home home;
    for (const char* name : {"a.txt", "b.txt", "closed/c.txt"}) home.write(name, "1");
    home.write("alone.txt", "no other file has this size");
    ::mkfifo(home.download("fifo").c_str(), 0644);
    ::mkfifo(home.download("second fifo").c_str(), 0644);
    giveToUnprivileged(home.folder.path());
    for (const char* name : {"b.txt", "alone.txt", "closed"}) ::chmod(home.download(name).c_str(), 0);
    home.runsUnprivileged = true;
    const Finished text = home.run({"duplicates"});
    EXPECT_EQ(text.out, "No exact duplicates among what could be read\n");
    EXPECT_EQ(text.err,
              "warning: 1 folder left out:\n  closed: could not be read\n"
              "warning: 1 file couldn't be read and compared with others:\n  b.txt\n");
    EXPECT_EQ(text.status, 1);
    const Finished json = home.run({"duplicates", "--json"});
    EXPECT_THAT(column(json.json().at("filesNotRead"), "path"), ElementsAre(home.download("b.txt")));
    EXPECT_THAT(column(json.json().at("scan").at("skipped"), "reason"), ElementsAre("unreadableDirectory"));
    EXPECT_EQ(json.status, 1);
    const Finished trash = home.run({"duplicates", "--trash", "--yes", "--json"});
    EXPECT_EQ(trash.json().at("foldersLeftOut"), 1);
    EXPECT_EQ(trash.json().at("filesNotRead"), 1);
    EXPECT_EQ(trash.status, 1);
}

TEST(DuplicatesCommand, WithoutDuplicatesSaysSo) {
    const Home home;
    home.write("a.txt", "1");
    home.write("b.txt", "2");
    const Finished text = home.run({"duplicates"});
    EXPECT_EQ(text.out, "No exact duplicates\nEvery file in this folder is unique by content.\n");
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(home.run({"duplicates", "--json"}).out,
              "{\"schema\": 1, \"groups\": [], \"reclaimableBytes\": 0, \"duplicateFileCount\": 0, "
              "\"partialScan\": false, \"scan\": {\"files\": 2, \"directories\": 0, \"totalByteSize\": 2, "
              "\"skipped\": []}, \"filesNotRead\": []}\n");
    const Finished trash = home.run({"duplicates", "--trash", "--yes"});
    EXPECT_EQ(trash.out, text.out);
    EXPECT_EQ(trash.status, 0);
    EXPECT_EQ(home.run({"duplicates", "--trash", "--yes", "--json"}).out, emptyReport);
}

TEST(DuplicatesCommand, KeepsByEachPolicy) {
    const Home home;
    home.write("b/deep/er/copy.txt", "1", 1'600'000'100);
    home.write("b/old.txt", "1", 1'500'000'000);
    home.write("z.txt", "1", 1'600'000'000);
    home.write("b/c/new.txt", "1", 1'700'000'000);
    EXPECT_EQ(kept(home, {}), home.download("b/c/new.txt"));
    EXPECT_EQ(kept(home, {"--keep", "oldest"}), home.download("b/old.txt"));
    EXPECT_EQ(kept(home, {"--keep=newest"}), home.download("b/c/new.txt"));
    EXPECT_EQ(kept(home, {"--keep", "shortest"}), home.download("z.txt"));
    EXPECT_EQ(kept(home, {"--keep", "deepest"}), home.download("b/deep/er/copy.txt"));
}

TEST(DuplicatesCommand, LooksAtHiddenFilesWhenTold) {
    const Home home;
    home.write(".a.txt", "1");
    home.write("a.txt", "1");
    EXPECT_THAT(home.run({"duplicates", "--json"}).json().at("groups").as_array(), IsEmpty());
    EXPECT_EQ(home.run({"duplicates", "--json", "--include-hidden"}).json().at("duplicateFileCount"), 2);
}

TEST(DuplicatesCommand, NamesPathsThatAreNotUtf8) {
    const Home home;
    home.write("a.txt", "1");
    home.write("caf\xe9.txt", "1");
    const auto group = home.run({"duplicates", "--json"}).json().at("groups").at(0).as_object();
    EXPECT_THAT(keys(group),
                ElementsAre("id", "contentHash", "byteSize", "files", "pathBase64", "keep", "reclaimableBytes"));
    EXPECT_EQ(text(group.at("files").at(1)), home.download("caf\xef\xbf\xbd.txt"));
    EXPECT_TRUE(group.at("pathBase64").at(0).is_null());
    EXPECT_THAT(text(group.at("pathBase64").at(1)), Not(IsEmpty()));
}

TEST(DuplicatesCommand, SaysExactlyWhichFileIsKeptWhenItIsNotUtf8) {
    const Home home;
    home.write("d/a.txt", "1", 1'600'000'100);
    home.write("\xff", "1", 1'500'000'000);
    const auto group = home.run({"duplicates", "--json", "--keep=oldest"}).json().at("groups").at(0).as_object();
    EXPECT_THAT(keys(group), ElementsAre("id", "contentHash", "byteSize", "files", "pathBase64", "keep", "keepBase64",
                                         "reclaimableBytes"));
    EXPECT_EQ(group.at("keepBase64"), group.at("pathBase64").at(1));
}

TEST(DuplicatesTrash, RefusesWithoutYesWhenNobodyCanBeAsked) {
    const Home home;
    home.write("a.txt", "1");
    home.write("b.txt", "1");
    const Finished run = home.run({"duplicates", "--trash"});
    EXPECT_EQ(run.err,
              "error: There is nobody to ask here; say --yes to move files to the Trash without a question.\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(home.has("a.txt"));
    EXPECT_TRUE(home.has("b.txt"));
}

TEST(DuplicatesTrash, MovesEveryCopyButTheKeptOne) {
    const Home home;
    for (const char* name : {"a.txt", "b.txt", "sub/c.txt"}) home.write(name, "12345");
    home.write("d.txt", "other");
    const Finished run = home.run({"duplicates", "--trash", "--yes"});
    EXPECT_EQ(run.out, "2 files moved to the Trash · 10 bytes\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(home.read("a.txt"), "12345");
    EXPECT_EQ(home.read("d.txt"), "other");
    EXPECT_FALSE(home.has("b.txt"));
    EXPECT_FALSE(home.has("sub/c.txt"));
    EXPECT_EQ(home.folder.read(".local/share/Trash/files/b.txt"), "12345");
    EXPECT_TRUE(home.folder.has(".local/share/Trash/info/c.txt.trashinfo"));
}

TEST(DuplicatesTrash, PrintsTheReportOfTheContractAsJson) {
    const Home home;
    home.write("a.txt", "1");
    home.write("b.txt", "1");
    const Finished run = home.run({"duplicates", "--trash", "--yes", "--json", "--keep", "oldest"});
    EXPECT_EQ(run.out, "{\"schema\": 1, \"outcomes\": [\n{\"source\": \"" + home.download("b.txt") +
                           "\", \"destination\": \"" + home.folder.path(".local/share/Trash/files/b.txt") +
                           "\", \"status\": \"moved\", \"message\": \"Moved to the Trash.\"}\n], \"moved\": 1, "
                           "\"skipped\": 0, \"failed\": 0, \"warning\": null, \"partialScan\": false, "
                           "\"foldersLeftOut\": 0, \"filesNotRead\": 0}\n");
    EXPECT_EQ(run.status, 0);
}

TEST(DuplicatesTrash, KeepsWhatThePolicySays) {
    const Home home;
    home.write("a.txt", "1", 1'700'000'000);
    home.write("b/b.txt", "1", 1'600'000'000);
    ASSERT_EQ(home.run({"duplicates", "--trash", "--yes", "--keep=oldest"}).status, 0);
    EXPECT_FALSE(home.has("a.txt"));
    EXPECT_EQ(home.read("b/b.txt"), "1");
}

TEST(DuplicatesTrash, LeavesHardLinksToTheKeptCopyAndSaysWhy) {
    const Home home;
    home.write("a.txt", "1");
    ASSERT_EQ(::link(home.download("a.txt").c_str(), home.download("b.txt").c_str()), 0);
    const Finished run = home.run({"duplicates", "--trash", "--yes"});
    EXPECT_EQ(run.out,
              "0 files moved to the Trash · 0 bytes\n"
              "Not moved to the Trash  1 file\n"
              "  b.txt: This is the same file as the one you're keeping; left untouched.\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(home.has("a.txt"));
    EXPECT_TRUE(home.has("b.txt"));
}

TEST(DuplicatesTrash, TakesNoLinkForACopy) {
    const Home home;
    home.write("a.txt", "1");
    home.folder.makeLink("Downloads/b.txt", "a.txt");
    home.folder.makeLink("Downloads/folder", ".");
    EXPECT_EQ(home.run({"duplicates", "--trash", "--yes"}).out,
              "No exact duplicates\nEvery file in this folder is unique by content.\n");
    EXPECT_TRUE(home.has("b.txt"));
}

TEST(DuplicatesTrash, LeavesANameThatNoRecordCanHold) {
    const Home home;
    home.write("a.txt", "1");
    home.write("bad\xff.txt", "1");
    const auto report = home.run({"duplicates", "--trash", "--yes", "--json"}).json();
    EXPECT_EQ(report.at("moved"), 0);
    EXPECT_THAT(keys(report.at("outcomes").at(0).as_object()),
                ElementsAre("source", "pathBase64", "destination", "destinationBase64", "status", "message"));
    EXPECT_TRUE(home.has("bad\xff.txt"));
}

TEST(DuplicatesTrash, RefusesAFolderThatAnotherRunHolds) {
    const Home home;
    home.write("a.txt", "1");
    home.write("b.txt", "1");
    const Held held(home.downloads());
    const Finished run = home.run({"duplicates", "--trash", "--yes", "--json"});
    EXPECT_THAT(keys(run.json()), ElementsAre("schema", "error"));
    EXPECT_THAT(run.err, ::testing::MatchesRegex("error: [A-Z][^\n]*\\.\n"));
    EXPECT_EQ(run.status, 3);
    EXPECT_TRUE(home.has("a.txt"));
    EXPECT_TRUE(home.has("b.txt"));
    EXPECT_EQ(home.run({"duplicates", "--json"}).status, 0);
}

TEST(DuplicatesTrash, TwoAtOnceNeverTakeTheLastCopy) {
    const Home home;
    for (int number = 0; number < 300; ++number) {
        home.write(std::to_string(number) + ".txt", std::to_string(number / 3));
    }
    const auto before = home.tree();
    const auto silent = [] {
        const int nothing = ::open("/dev/null", O_RDWR);
        for (const int descriptor : {0, 1, 2}) ::dup2(nothing, descriptor);
    };
    const ::pid_t first = home.start({"duplicates", "--trash", "--yes", "--keep=shortest"}, silent);
    const ::pid_t second = home.start({"duplicates", "--trash", "--yes", "--keep=newest"}, silent);
    const int statuses[] = {Home::await(first), Home::await(second)};
    for (const int status : statuses) EXPECT_THAT(status, ::testing::AnyOf(0, 1, 3));
    EXPECT_THAT(statuses, ::testing::Contains(0));
    EXPECT_EQ(home.run({"recovery", "--json"}).json().at("trashed").as_array().size(), 200U);
    EXPECT_EQ(home.tree().size(), 100U);
    ASSERT_EQ(home.run({"restore", "--yes"}).status, 0);
    EXPECT_TRUE(home.tree() == before);
}

TEST(DuplicatesTrash, KilledAtAnyInstantLosesNoFile) {
    const Home home;
    constexpr std::size_t count = 1000;
    for (std::size_t number = 0; number < count; ++number) home.write(std::to_string(number) + ".txt", "same");
    const ::pid_t child = home.start({"duplicates", "--trash", "--yes", "--quiet"}, [] {});
    while (::access(home.download("99.txt").c_str(), F_OK) == 0) {
    }
    ::kill(child, SIGKILL);
    Home::await(child);
    auto trashed = ordovan::testing::describeTree(home.folder.path(".local/share/Trash/files"));
    const auto left = home.tree();
    EXPECT_EQ(left.size() + trashed.size(), count);
    EXPECT_EQ(home.read("0.txt"), "same");
    for (const auto& [name, description] : trashed) {
        EXPECT_TRUE(home.folder.has(".local/share/Trash/info/" + name + ".trashinfo")) << name;
        EXPECT_EQ(description, left.at("0.txt")) << name;
    }
}

TEST(DuplicatesTrash, MovesNothingWhereNoRecordCouldBeSaved) {
    const Home home;
    home.write("a.txt", "1");
    home.write("b.txt", "1");
    home.folder.write(".local/share/ordovan", "a file where the folder should be");
    const Finished run = home.run({"duplicates", "--trash", "--yes"});
    EXPECT_THAT(run.err, StartsWith("error: No record of the run could be saved, so nothing was moved."));
    EXPECT_EQ(run.status, 3);
    EXPECT_TRUE(home.has("b.txt"));
}

TEST(DuplicatesTrash, EndsWithStatus1WhenTheRecordCouldNotBeSavedAllTheSame) {
    Home home;
    for (int number = 0; number < 100; ++number) home.write(std::to_string(number) + ".txt", "1");
    home.prepare = limitFileSize;
    const Finished run = home.run({"duplicates", "--trash", "--yes", "--json"});
    const std::string warning =
        "Files were moved to the Trash, but the restore record couldn't be saved. Restore works until you quit; after "
        "that, use Put Back in the Finder Trash.";
    EXPECT_EQ(run.json().at("warning"), boost::json::value(warning));
    EXPECT_EQ(run.json().at("moved"), 99);
    EXPECT_EQ(run.err, "warning: " + warning + "\n");
    EXPECT_EQ(run.status, 1);
}

TEST(DuplicatesTrash, IsARunOfTheHistory) {
    const Home home;
    home.write("a.txt", "1");
    home.write("b.txt", "1");
    ASSERT_EQ(home.run({"duplicates", "--trash", "--yes"}).status, 0);
    ASSERT_EQ(home.run({"restore", "--yes"}).status, 0);
    EXPECT_THAT(
        column(home.run({"history", "--json"}).json().at("records"), "summary"),
        ElementsAre("Put back 1 file from the Trash in Downloads", "Moved 1 duplicate file to the Trash in Downloads"));
}

TEST(DuplicatesTerminal, AsksBeforeAnythingMoves) {
    const Home home;
    home.write("a.txt", "1");
    home.write("b.txt", "1");
    Terminal no(home, {"duplicates", "--trash", "--no-color"});
    ASSERT_TRUE(no.waitFor("1 duplicate group · 2 files · 1 byte in extra copies\r\n"));
    ASSERT_TRUE(no.waitFor(
        "One copy stays, the one marked \"keep\". Each extra is checked again first, and anything that "
        "changed is left alone. You can put files back with \"ordovan-cli restore\" or from the Trash.\r\n"));
    ASSERT_TRUE(no.waitFor("Move duplicate extras to the Trash? [y/N] "));
    no.type("n\n");
    const Finished refused = no.finish();
    EXPECT_THAT(refused.out, EndsWith("Nothing was changed.\r\n"));
    EXPECT_EQ(refused.status, 0);
    EXPECT_TRUE(home.has("b.txt"));
    Terminal yes(home, {"duplicates", "--trash"});
    ASSERT_TRUE(yes.waitFor("[y/N] "));
    yes.type("y\n");
    EXPECT_THAT(yes.finish().out, EndsWith("1 file moved to the Trash · 1 byte\r\n"));
    EXPECT_FALSE(home.has("b.txt"));
}

TEST(DuplicatesTerminal, WithJsonPrintsOneObjectWhateverTheAnswer) {
    const Home home;
    home.write("a.txt", "1");
    home.write("b.txt", "1");
    Terminal terminal(home, {"duplicates", "--trash", "--json"});
    ASSERT_TRUE(terminal.waitFor("[y/N] "));
    terminal.type("n\n");
    EXPECT_THAT(terminal.finish().out, EndsWith("{\"schema\": 1, \"outcomes\": [], \"moved\": 0, \"skipped\": 0, "
                                                "\"failed\": 0, \"warning\": null, \"partialScan\": false, "
                                                "\"foldersLeftOut\": 0, \"filesNotRead\": 0}\r\n"));
}

TEST(DuplicatesTerminal, FilesThatChangeBeforeTheAnswerAreLeft) {
    const Home home;
    for (const char* name : {"a1.txt", "a2.txt"}) home.write(name, "12345");
    for (const char* name : {"b1.txt", "b2.txt", "b3.txt"}) home.write(name, "1234");
    Terminal terminal(home, {"duplicates", "--trash", "--json"});
    ASSERT_TRUE(terminal.waitFor("[y/N] "));
    home.write("a1.txt", "54321");
    home.write("b2.txt", "4321");
    std::filesystem::remove(home.download("b3.txt"));
    home.folder.makeLink("Downloads/b3.txt", "b1.txt");
    terminal.type("y\n");
    Finished run = terminal.finish();
    run.out.erase(0, run.out.find("{\"schema\""));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(messages(run.json()),
              (std::map<std::string, std::string>{
                  {home.download("a2.txt"), "The copy you chose to keep changed or is missing; nothing was moved."},
                  {home.download("b2.txt"), "No longer identical to the copy you're keeping; left untouched."},
                  {home.download("b3.txt"), "Missing or no longer a regular file; left untouched."}}));
    for (const char* name : {"a1.txt", "a2.txt", "b1.txt", "b2.txt", "b3.txt"}) EXPECT_TRUE(home.has(name)) << name;
}

TEST(DuplicatesTerminal, ShowsHowFarTheSearchIsAndTakesItAwayAgain) {
    const Home home;
    const std::string large(200 << 20, 'x');
    home.write("a.bin", large);
    home.write("b.bin", large);
    const std::string out = Terminal(home, {"duplicates"}).finish().out;
    EXPECT_THAT(out, HasSubstr("\r\x1b[KHashing files to find exact duplicates…"));
    EXPECT_THAT(Terminal(home, {"duplicates", "--quiet"}).finish().out, Not(HasSubstr("Hashing")));
}

TEST(DuplicatesTerminal, EndsTheSearchAtCtrlCWithNothingChanged) {
    const Home home;
    // Sparse, so that making them is quick while hashing them is not.
    for (const char* name : {"a.bin", "b.bin"}) {
        home.write(name, "");
        std::filesystem::resize_file(home.download(name), 8ULL << 30);
    }
    Terminal terminal(home, {"duplicates", "--trash", "--yes"});
    ASSERT_TRUE(terminal.waitFor("Hashing"));
    terminal.type("\x03");
    const Finished run = terminal.finish();
    EXPECT_THAT(run.out, EndsWith("Interrupted; nothing was changed.\r\n"));
    EXPECT_EQ(run.status, 130);
    EXPECT_TRUE(home.has("a.bin"));
    EXPECT_TRUE(home.has("b.bin"));
}
