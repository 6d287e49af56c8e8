#include "tests/cli/CommandLine.h"
#include "tests/support/SecondVolume.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace ordovan::test;
using ordovan::testing::describeTree;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

constexpr const char* nothingToRestore = "There is nothing to put back from the Trash in this folder.";

/// A home whose files "a.txt", "b.txt" and "c.txt" are in the Trash, "k.txt" being the copy kept.
struct Trashed : Home {
    Trashed() {
        for (const char* name : {"a.txt", "b.txt", "c.txt"}) write(name, std::string("content of ") + name);
        Arguments arguments = {"big", "--yes"};
        for (const char* name : {"a.txt", "b.txt", "c.txt"}) {
            arguments.insert(arguments.end(), {"--trash", download(name)});
        }
        if (run(arguments).status != 0) throw std::runtime_error("nothing trashed");
    }
    [[nodiscard]] std::string inTrash(std::string_view name) const {
        return folder.path(".local/share/Trash/files/" + std::string(name));
    }
};

}  // namespace

TEST(RestoreCommand, PutsEverythingBackByteForByte) {
    const Home home;
    for (const char* name : {"a b.pdf", "-rf", "line\nend.txt", "sub/\"quoted\".png", "e\xcc\x81.pdf", "\xc3\xa9.txt",
                             "deep/er/still/x.zip", "100%.txt", "no extension"}) {
        home.write(name, "one content");
    }
    home.write(std::string(255, 'n'), "one content");
    home.write("empty", "");
    home.write("void", "");
    ::chmod(home.download("-rf").c_str(), 0400);
    const auto before = home.tree();
    ASSERT_EQ(home.run({"duplicates", "--trash", "--yes"}).status, 0);
    EXPECT_EQ(home.tree().size(), before.size() - 10);
    const Finished run = home.run({"restore", "--yes"});
    EXPECT_EQ(run.out, "Put back 10 files from the Trash in Downloads\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(home.tree() == before);
    EXPECT_EQ(home.folder.count(".local/share/Trash/files"), 0U);
    EXPECT_EQ(home.folder.count(".local/share/Trash/info"), 0U);
    EXPECT_EQ(home.run({"restore", "--yes"}).status, 3);
}

TEST(RestoreCommand, PutsBackOnAnotherVolumeAsWell) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume volume(8 << 20);
    const Home home;
    for (const char* name : {"X/a.txt", "X/sub/b.txt", "X/line\nend.txt"}) volume.root().write(name, "one content");
    const std::string folder = volume.path("X");
    const auto before = describeTree(folder);
    const Finished trashed = home.run({"duplicates", folder, "--trash", "--yes", "--json"});
    ASSERT_EQ(trashed.status, 0);
    for (const std::string& place : column(trashed.json().at("outcomes"), "destination")) {
        EXPECT_THAT(place, ::testing::StartsWith(volume.path("") + ".Trash-"));
    }
    const auto recorded = home.run({"recovery", "--json", folder}).json();
    EXPECT_EQ(recorded.at("trashed").as_array().size(), 2U);
    EXPECT_EQ(home.run({"restore", folder, "--yes"}).status, 0);
    EXPECT_TRUE(describeTree(folder) == before);
}

TEST(RestoreCommand, WithNothingTrashedIsImpossible) {
    const Home home;
    const Finished run = home.run({"restore", "--yes"});
    EXPECT_EQ(run.err, std::string("error: ") + nothingToRestore + "\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(home.run({"restore", "--yes", "--json"}).out,
              std::string("{\"schema\": 1, \"error\": \"") + nothingToRestore + "\"}\n");
}

TEST(RestoreCommand, TakesOnlyTheFilesOfItsFolder) {
    const Trashed home;
    home.folder.write("Other/x.txt", "other");
    const std::string other = home.folder.path("Other");
    ASSERT_EQ(home.run({"big", other, "--yes", "--trash", other + "/x.txt"}).status, 0);
    EXPECT_THAT(column(home.run({"recovery", "--json", other}).json().at("trashed"), "original"),
                ElementsAre(other + "/x.txt"));
    ASSERT_EQ(home.run({"restore", "--yes"}).status, 0);
    EXPECT_TRUE(home.has("a.txt"));
    EXPECT_FALSE(home.folder.has("Other/x.txt"));
    ASSERT_EQ(home.run({"restore", other, "--yes"}).status, 0);
    EXPECT_EQ(home.folder.read("Other/x.txt"), "other");
}

TEST(RestoreCommand, PutsSingleFilesBack) {
    Trashed home;
    home.workingFolder = home.downloads();
    const Finished run = home.run({"restore", "--yes", "--entry", "a.txt", "--entry", home.download("c.txt")});
    EXPECT_EQ(run.out, "Put back 2 files from the Trash in Downloads\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(home.read("a.txt"), "content of a.txt");
    EXPECT_EQ(home.read("c.txt"), "content of c.txt");
    EXPECT_FALSE(home.has("b.txt"));
    EXPECT_THAT(column(home.run({"recovery", "--json"}).json().at("trashed"), "original"),
                ElementsAre(home.download("b.txt")));
}

TEST(RestoreCommand, RefusesAnEntryThatIsNotRecorded) {
    const Trashed home;
    const Finished run =
        home.run({"restore", "--yes", "--entry", home.download("a.txt"), "--entry", home.download("x.txt")});
    EXPECT_EQ(run.err, "error: No trashed file is recorded at \"" + home.download("x.txt") + "\".\n");
    EXPECT_EQ(run.status, 2);
    EXPECT_FALSE(home.has("a.txt"));
    EXPECT_EQ(home.run({"restore", "--yes", "--entry="}).status, 2);
}

TEST(RestoreCommand, RefusesWithoutYesWhenNobodyCanBeAsked) {
    const Trashed home;
    const Finished run = home.run({"restore"});
    EXPECT_EQ(run.err, "error: There is nobody to ask here; say --yes to put files back without a question.\n");
    EXPECT_EQ(run.status, 2);
    EXPECT_FALSE(home.has("a.txt"));
}

TEST(RestoreCommand, PrintsTheReportOfTheContractAsJson) {
    const Trashed home;
    const Finished run = home.run({"restore", "--yes", "--json", "--entry", home.download("b.txt")});
    EXPECT_EQ(run.out, "{\"schema\": 1, \"outcomes\": [\n{\"source\": \"" + home.inTrash("b.txt") +
                           "\", \"destination\": \"" + home.download("b.txt") +
                           "\", \"status\": \"moved\", \"message\": \"Put back.\"}\n], \"moved\": 1, \"skipped\": 0, "
                           "\"failed\": 0, \"warning\": null}\n");
    EXPECT_EQ(run.status, 0);
}

TEST(RestoreCommand, LeavesWhatCanNotGoBackAndSaysWhy) {
    const Trashed home;
    home.write("a.txt", "new");
    std::filesystem::remove(home.inTrash("b.txt"));
    home.folder.write(".local/share/Trash/files/c.txt", "content of C.txt");
    const Finished run = home.run({"restore", "--yes"});
    EXPECT_EQ(run.out,
              "Put back 0 files from the Trash in Downloads\n"
              "Not put back  3 files\n"
              "  c.txt: The trashed file changed; restore skipped.\n"
              "  b.txt: No longer in the Trash (emptied or moved).\n"
              "  a.txt: Something now occupies the original location; restore skipped.\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(home.read("a.txt"), "new");
    EXPECT_EQ(home.run({"recovery", "--json"}).json().at("trashed").as_array().size(), 3U);
}

TEST(RestoreCommand, MakesTheOriginalFolderAnew) {
    const Home home;
    home.write("sub/deep/a.txt", "1");
    ASSERT_EQ(home.run({"big", "--yes", "--trash", home.download("sub/deep/a.txt")}).status, 0);
    std::filesystem::remove_all(home.download("sub"));
    EXPECT_EQ(home.run({"restore", "--yes"}).status, 0);
    EXPECT_EQ(home.read("sub/deep/a.txt"), "1");
}

TEST(RestoreCommand, RefusesAFolderThatAnotherRunHolds) {
    const Trashed home;
    const Held held(home.downloads());
    EXPECT_EQ(home.run({"restore", "--yes"}).status, 3);
    EXPECT_FALSE(home.has("a.txt"));
}

TEST(RestoreCommand, TwoAtOncePutEachFileBackOnce) {
    const Home home;
    for (int number = 0; number < 200; ++number) home.write(std::to_string(number) + ".txt", "same");
    const auto before = home.tree();
    ASSERT_EQ(home.run({"duplicates", "--trash", "--yes"}).status, 0);
    const auto silent = [] {
        const int nothing = ::open("/dev/null", O_RDWR);
        for (const int descriptor : {0, 1, 2}) ::dup2(nothing, descriptor);
    };
    const ::pid_t first = home.start({"restore", "--yes"}, silent);
    const ::pid_t second = home.start({"restore", "--yes"}, silent);
    const int statuses[] = {Home::await(first), Home::await(second)};
    for (const int status : statuses) EXPECT_THAT(status, ::testing::AnyOf(0, 1, 3));
    EXPECT_THAT(statuses, ::testing::Contains(0));
    EXPECT_TRUE(home.tree() == before);
    EXPECT_THAT(home.run({"recovery", "--json"}).json().at("trashed").as_array(), IsEmpty());
}

TEST(RestoreTerminal, ListsTheFilesAndAsks) {
    const Trashed home;
    Terminal no(home, {"restore", "--entry", home.download("a.txt")});
    ASSERT_TRUE(no.waitFor("[y/N] "));
    no.type("\n");
    const Finished refused = no.finish();
    EXPECT_THAT(refused.out, HasSubstr("1 file in the Trash can be put back (from Duplicates or Big Files).\r\n  " +
                                       home.inTrash("a.txt") + " → a.txt\r\nPut these files back? [y/N] "));
    EXPECT_THAT(refused.out, EndsWith("Nothing was changed.\r\n"));
    EXPECT_EQ(refused.status, 0);
    EXPECT_FALSE(home.has("a.txt"));
    Terminal yes(home, {"restore"});
    ASSERT_TRUE(yes.waitFor("[y/N] "));
    yes.type("y\n");
    EXPECT_EQ(yes.finish().status, 0);
    EXPECT_EQ(home.read("a.txt"), "content of a.txt");
}

TEST(RestoreTerminal, StopsBetweenFilesAndKeepsTheRecord) {
    const Trashed home;
    // The last one trashed comes back first, and the one before it is so large that it takes seconds to examine.
    std::filesystem::resize_file(home.inTrash("b.txt"), 8ULL << 30);
    std::string record = home.folder.read(".local/share/ordovan/trash-record.json");
    const std::size_t second = record.find("byteSize", record.find("byteSize") + 1);
    record.replace(record.find("16", second), 2, std::to_string(8ULL << 30));
    home.folder.write(".local/share/ordovan/trash-record.json", record);
    Terminal terminal(home, {"restore", "--yes"});
    ASSERT_TRUE(terminal.waitFor("1 of 3 files"));
    terminal.signal(SIGTERM);
    EXPECT_EQ(terminal.finish().status, 130);
    EXPECT_EQ(home.read("c.txt"), "content of c.txt");
    EXPECT_FALSE(home.has("a.txt"));
    EXPECT_FALSE(home.has("b.txt"));
    EXPECT_THAT(column(home.run({"recovery", "--json"}).json().at("trashed"), "original"),
                ElementsAre(home.download("a.txt"), home.download("b.txt")));
}

TEST(RecoveryOfTheTrash, TellsWhatCanGoBackAndWhatIsMissing) {
    const Trashed home;
    std::filesystem::remove(home.inTrash("b.txt"));
    const Finished text = home.run({"recovery"});
    EXPECT_EQ(text.out, "2 files in the Trash can be put back (from Duplicates or Big Files).\n  " +
                            home.inTrash("a.txt") + " → a.txt\n  " + home.inTrash("b.txt") +
                            " → b.txt\n"
                            "    No longer in the Trash (emptied or moved), so it can't be put back from here.\n  " +
                            home.inTrash("c.txt") + " → c.txt\n");
    EXPECT_EQ(text.status, 0);
    const Finished json = home.run({"recovery", "--json"});
    const auto record = [&](const char* name, const char* present) {
        return "{\"original\": \"" + home.download(name) + "\", \"trashed\": \"" + home.inTrash(name) +
               "\", \"present\": " + present + "}";
    };
    EXPECT_EQ(json.out, "{\"schema\": 1, \"organized\": [], \"trashed\": [\n" + record("a.txt", "true") + ",\n" +
                            record("b.txt", "false") + ",\n" + record("c.txt", "true") + "\n]}\n");
}

TEST(RecoveryOfTheTrash, StandsBesideTheOrganizedFiles) {
    const Trashed home;
    home.write("d.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    EXPECT_THAT(home.run({"recovery"}).out,
                ::testing::StartsWith("1 organized file can go back to where they came from.\n"
                                      "  ordovan+/Documents/d.pdf → d.pdf\n\n3 files in the Trash can be put back"));
    const auto object = home.run({"recovery", "--json"}).json();
    EXPECT_EQ(object.at("organized").as_array().size(), 1U);
    EXPECT_EQ(object.at("trashed").as_array().size(), 3U);
}

TEST(RecoveryOfTheTrash, TellsWhatRestoreWillRefuse) {
    const Trashed home;
    home.folder.write("elsewhere.txt", "content of a.txt");
    std::string record = home.folder.read(".local/share/ordovan/trash-record.json");
    const std::string place = home.inTrash("a.txt");
    record.replace(record.find(place), place.size(), home.folder.path("elsewhere.txt"));
    home.folder.write(".local/share/ordovan/trash-record.json", record);
    EXPECT_THAT(
        home.run({"recovery"}).out,
        HasSubstr("/elsewhere.txt → a.txt\n"
                  "    The record names a place that is in no Trash or behind a link. Restore will refuse it.\n"));
    EXPECT_EQ(home.run({"recovery", "--json"}).json().at("trashed").at(0).at("present"), false);
    EXPECT_EQ(home.run({"restore", "--yes", "--entry", home.download("a.txt")}).status, 1);
    EXPECT_TRUE(home.folder.has("elsewhere.txt"));
}
