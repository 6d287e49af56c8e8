#include "tests/cli/CommandLine.h"

#include <gmock/gmock.h>

using namespace ordovan::test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

namespace {

constexpr const char* trashRecord = ".local/share/ordovan/trash-record.json";
constexpr const char* settingsFile = ".config/ordovan/ordovan.conf";

/// The documents of a folder that were set aside.
std::vector<std::string> setAside(const std::string& folder) {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().native().contains("unreadable")) found.push_back(entry.path());
    }
    return found;
}

}  // namespace

TEST(DamagedTrashRecord, IsNoEmptyOne) {
    const Home home;
    home.folder.write(trashRecord, "garbage");
    const Finished restore = home.run({"restore", "--yes"});
    EXPECT_EQ(restore.err, "error: The record of what was moved to the Trash couldn't be read.\n");
    EXPECT_EQ(restore.status, 3);
    const Finished recovery = home.run({"recovery", "--json"});
    EXPECT_EQ(recovery.out, "{\"schema\": 1, \"organized\": [], \"trashed\": []}\n");
    EXPECT_EQ(recovery.err, "warning: The record of what was moved to the Trash couldn't be read.\n");
    EXPECT_EQ(recovery.status, 1);
    EXPECT_EQ(home.folder.read(trashRecord), "garbage");
}

TEST(DamagedTrashRecord, IsSetAsideUnderANameThatIsTold) {
    const Home home;
    home.folder.write(trashRecord, "garbage");
    home.write("a.bin", "1");
    const Finished run = home.run({"big", "--yes", "--trash", home.download("a.bin")});
    EXPECT_THAT(run.err, MatchesRegex("warning: \"" + home.folder.path(trashRecord) +
                                      "\" couldn't be read. It was set aside as \"[^/\"]+unreadable[^/\"]+\".\n"));
    EXPECT_EQ(run.status, 1);
    const auto found = setAside(home.records());
    ASSERT_EQ(found.size(), 1U);
    EXPECT_THAT(run.err, HasSubstr(found.front().substr(home.records().size() + 1)));
    EXPECT_EQ(home.run({"restore", "--yes"}).status, 0);
}

TEST(DamagedHistory, IsNoEmptyOne) {
    const Home home;
    home.folder.write(".local/share/ordovan/history.json", "garbage");
    const Finished run = home.run({"history", "--json"});
    EXPECT_EQ(run.out, "{\"schema\": 1, \"records\": []}\n");
    EXPECT_EQ(run.err, "warning: The history couldn't be read.\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(home.run({"history", "--clear", "--yes"}).status, 0);
    EXPECT_EQ(home.run({"history"}).status, 0);
}

TEST(DamagedSettings, AreToldAndSetAsideUnderANameThatIsTold) {
    const Home home;
    home.write("a.pdf", "1");
    home.folder.write(settingsFile, "[unclosed\n=\n%garbage");
    for (const char* command : {"rules", "settings"}) {
        const Finished run = home.run({command});
        EXPECT_THAT(run.err, StartsWith("warning: The settings couldn't be read; without them there are no rules.\n"));
        EXPECT_EQ(run.status, 1) << command;
    }
    const Finished preview = home.run({"preview"});
    EXPECT_THAT(preview.err, MatchesRegex("warning: The settings couldn't be read; [^\n]+\n"
                                          "warning: \"" +
                                          home.folder.path(settingsFile) +
                                          "\" couldn't be read. It was set aside as \"[^\n]+\".\n"));
    EXPECT_EQ(preview.status, 1);
    EXPECT_EQ(setAside(home.folder.path(".config/ordovan")).size(), 1U);
    EXPECT_EQ(home.run({"preview"}).status, 0);
}

TEST(DamagedRules, AreTold) {
    const Home home;
    home.folder.write(settingsFile, "[General]\nordovan.rules.v1=garbage\n");
    const Finished run = home.run({"rules", "--json"});
    EXPECT_EQ(run.out, "{\"schema\": 1, \"rules\": []}\n");
    EXPECT_EQ(run.err,
              "warning: Not all of your rules could be read.\n"
              "No rules. Files use the built-in folders (Documents, Images…).\n");
    EXPECT_EQ(run.status, 1);
}

TEST(DamagedUndoRecord, IsSetAsideByTheNextRunUnderANameThatIsTold) {
    const Home home;
    home.write("a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    const std::string journal = home.journal();
    std::filesystem::resize_file(journal, 20);
    home.write("b.pdf", "1");
    const Finished run = home.run({"organize", "--yes"});
    EXPECT_THAT(run.err, MatchesRegex("warning: The undo record of this folder couldn't be read.\n"
                                      "warning: \"" +
                                      journal + "\" couldn't be read. It was set aside as \"[^/\"]+\".\n"));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(setAside(home.records() + "/journals").size(), 1U);
    EXPECT_THAT(column(home.run({"recovery", "--json"}).json().at("organized"), "source"),
                ElementsAre(home.download("b.pdf")));
}

TEST(RecordsThatCanNotBeReached, AreNotTakenForNone) {
    const Home home;
    home.folder.makeLink(".local", "/nowhere/at/all");
    const std::string sentence = "The folder of the records, \"" + home.records() + "\", can't be reached.\n";
    for (const char* command : {"undo", "restore"}) {
        const Finished run = home.run({command, "--yes"});
        EXPECT_EQ(run.err, "error: " + sentence);
        EXPECT_EQ(run.status, 3);
    }
    for (const char* command : {"recovery", "history"}) {
        const Finished run = home.run({command});
        EXPECT_EQ(run.err, "warning: " + sentence) << command;
        EXPECT_EQ(run.status, 1);
    }
}
