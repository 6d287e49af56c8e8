#include "OrdovanApp/stores/StorageLocations.h"

#include "OrdovanCore/testing/MemoryFileSystem.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <map>
#include <string>

using ordovan::StorageLocations;
using ordovan::testing::digestOf;
using ::testing::ElementsAre;

namespace {

StorageLocations with(const std::map<std::string, std::string>& environment) {
    return StorageLocations::fromEnvironment(
        [&](const char* variable) -> std::optional<std::string> {
            const auto found = environment.find(variable);
            if (found == environment.end()) return std::nullopt;
            return found->second;
        },
        [] { return std::string("/database/home"); });
}

const StorageLocations usual = with({{"HOME", "/home/u"}});

TEST(StorageLocations, AreBelowTheHomeFolder) {
    EXPECT_EQ(usual.recordsFolder, Url::file("/home/u/.local/share/ordovan"));
    EXPECT_EQ(usual.settingsFile(), Url::file("/home/u/.config/ordovan/ordovan.conf"));
    EXPECT_EQ(usual.history(), Url::file("/home/u/.local/share/ordovan/history.json"));
    EXPECT_EQ(usual.trashRecord(), Url::file("/home/u/.local/share/ordovan/trash-record.json"));
}

TEST(StorageLocations, FollowTheXdgVariables) {
    const auto locations = with({{"HOME", "/home/u"}, {"XDG_DATA_HOME", "/d//x/"}, {"XDG_CONFIG_HOME", "/c"}});
    EXPECT_EQ(locations.recordsFolder, Url::file("/d/x/ordovan"));
    EXPECT_EQ(locations.settingsFolder, Url::file("/c/ordovan"));
}

TEST(StorageLocations, IgnoreEmptyAndRelativeXdgVariables) {
    for (const std::string value : {"", "relative/data", "./data", "~/data"}) {
        const auto locations = with({{"HOME", "/home/u"}, {"XDG_DATA_HOME", value}, {"XDG_CONFIG_HOME", value}});
        EXPECT_EQ(locations.recordsFolder, usual.recordsFolder) << value;
        EXPECT_EQ(locations.settingsFolder, usual.settingsFolder) << value;
    }
}

TEST(StorageLocations, TakeTheHomeFolderFromTheUserDatabaseWhereTheEnvironmentHasNone) {
    for (const auto& environment : {std::map<std::string, std::string>(), {{"HOME", ""}}, {{"HOME", "home"}}}) {
        EXPECT_EQ(with(environment).recordsFolder, Url::file("/database/home/.local/share/ordovan"));
    }
}

TEST(StorageLocations, AreFoundWithoutAnyEnvironment) {
    for (const char* const variable : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME"}) ::unsetenv(variable);
    EXPECT_TRUE(StorageLocations::system().recordsFolder.path().ends_with("/.local/share/ordovan"));
    EXPECT_TRUE(StorageLocations::system().recordsFolder.path().starts_with("/"));
}

TEST(StorageLocations, NameAJournalByTheDigestOfTheFoldersPath) {
    EXPECT_EQ(usual.journal(Url::file("/home/u/Downloads")),
              Url::file("/home/u/.local/share/ordovan/journals/" + digestOf("/home/u/Downloads") + ".json"));
    EXPECT_EQ(digestOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(StorageLocations, GiveAFolderTheSameJournalOnEveryVisit) {
    const Url journal = usual.journal(Url::file("/home/u/caf\xc3\xa9"));
    EXPECT_EQ(usual.journal(Url::file("/home//u/./caf\xc3\xa9/")), journal);
    EXPECT_EQ(usual.journal(Url::file("/home/u/cafe\xcc\x81")), journal);
}

TEST(StorageLocations, GiveTwoFoldersTwoJournals) {
    EXPECT_NE(usual.journal(Url::file("/a")), usual.journal(Url::file("/b")));
    EXPECT_NE(usual.journal(Url::file("/a")), usual.journal(Url::file("/A")));
}

TEST(StorageLocations, CutTheFractionOffASetAsideName) {
    EXPECT_EQ(usual.unreadableJournal(1700000000.999),
              Url::file("/home/u/.local/share/ordovan/journals/.ordovan-journal.unreadable-1700000000.json"));
    EXPECT_EQ(usual.unreadableTrashRecord(1700000000.999),
              Url::file("/home/u/.local/share/ordovan/trash-record.unreadable-1700000000.json"));
    EXPECT_EQ(usual.unreadableHistory(1700000000.999),
              Url::file("/home/u/.local/share/ordovan/history.unreadable-1700000000.json"));
}

TEST(StorageLocations, KnowWhereOlderVersionsKeptJournals) {
    EXPECT_THAT(
        StorageLocations::olderJournals(Url::file("/r")),
        ElementsAre(Url::file("/r/Organized/.ordovan-journal.json"), Url::file("/r/ordovan+/.ordovan-journal.json")));
}

TEST(StorageLocations, TryEachFolderThatHoldsRecords) {
    const StorageLocations locations{.recordsFolder = Url::file("/d"), .settingsFolder = Url::file("/c")};
    EXPECT_EQ(locations.probes()[0], Url::file("/d/journals/.ordovan-probe"));
    EXPECT_EQ(locations.probes()[1], Url::file("/d/.ordovan-probe"));
}

TEST(StorageLocations, SetDamagedSettingsAsideBesideTheFile) {
    EXPECT_EQ(StorageLocations::unreadableSettings(Url::file("/c/ordovan.conf"), 7.9),
              Url::file("/c/ordovan.conf.unreadable-7"));
}

}  // namespace
