#include "OrdovanApp/stores/SettingsFileStore.h"

#include "OrdovanApp/stores/AppSettings.h"
#include "OrdovanApp/stores/RecentFoldersStore.h"
#include "OrdovanApp/stores/RuleStore.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <string>
#include <vector>

using ordovan::HeldLock;
using ordovan::RecentFoldersStore;
using ordovan::SettingsFileStore;
using ordovan::test::TempFolder;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

unsigned modeOf(const std::string& path) {
    struct ::stat facts{};
    EXPECT_EQ(::stat(path.c_str(), &facts), 0) << path;
    return facts.st_mode & 07777;
}

OrdovanResult<HeldLock> noLock() {
    return HeldLock();
}

class SettingsFile : public ::testing::Test {
protected:
    [[nodiscard]] Url file() const { return folder.url("config/ordovan/ordovan.conf"); }
    TempFolder folder;
};

TEST_F(SettingsFile, IsMadeAtTheFirstWriteForTheUserAlone) {
    SettingsFileStore store(file());
    EXPECT_FALSE(folder.has("config"));
    EXPECT_TRUE(store.setValue(QStringLiteral("ordovan.settings.groupByMonth"), true));
    EXPECT_EQ(modeOf(folder.path("config/ordovan/ordovan.conf")), 0600u);
    EXPECT_EQ(modeOf(folder.path("config/ordovan")), 0700u);
}

TEST_F(SettingsFile, ThatIsAFifoHoldsNothingAndKeepsNobodyWaiting) {
    folder.makeFolder("config/ordovan");
    ASSERT_EQ(::mkfifo(folder.path("config/ordovan/ordovan.conf").c_str(), 0600), 0);
    SettingsFileStore store(file());
    EXPECT_FALSE(store.value(QStringLiteral("ordovan.settings.theme")));
    EXPECT_FALSE(store.setValue(QStringLiteral("ordovan.settings.theme"), QStringLiteral("grape")));
}

TEST_F(SettingsFile, BecomesPrivateAgainWhenItWasOpened) {
    folder.write("config/ordovan/ordovan.conf", "[General]\nother=1\n");
    ::chmod(folder.path("config/ordovan/ordovan.conf").c_str(), 0644);
    SettingsFileStore store(file());
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), true));
    EXPECT_EQ(modeOf(folder.path("config/ordovan/ordovan.conf")), 0600u);
    EXPECT_THAT(folder.read("config/ordovan/ordovan.conf"), HasSubstr("other=1"));
}

TEST_F(SettingsFile, HoldsEachSettingAtTopLevelUnderItsName) {
    SettingsFileStore store(file());
    AppSettings settings(store);
    settings.setGroupByMonth(true);
    settings.setIncludeHidden(true);
    settings.setTheme(AppTheme::grape);
    EXPECT_EQ(folder.read("config/ordovan/ordovan.conf"),
              "[General]\nordovan.settings.groupByMonth=true\nordovan.settings.includeHidden=true\n"
              "ordovan.settings.theme=grape\n");
}

TEST_F(SettingsFile, GivesSettingsBack) {
    {
        SettingsFileStore store(file());
        AppSettings settings(store);
        settings.setGroupByMonth(true);
        settings.setTheme(AppTheme::candy);
    }
    SettingsFileStore store(file());
    const AppSettings settings(store);
    EXPECT_TRUE(settings.groupByMonth());
    EXPECT_FALSE(settings.includeHidden());
    EXPECT_EQ(settings.theme(), AppTheme::candy);
}

TEST_F(SettingsFile, GivesRulesBack) {
    SettingsFileStore store(file());
    RuleStore rules(store, noLock);
    rules.add("dmg, pkg", "Установщики \"1\" & co; = %");
    SettingsFileStore again(file());
    EXPECT_EQ(RuleStore(again, noLock).ruleSet(), rules.ruleSet());
    EXPECT_THAT(folder.read("config/ordovan/ordovan.conf"), HasSubstr("ordovan.rules.v1="));
}

TEST_F(SettingsFile, GivesAnyFolderBackByteForByte) {
    const std::vector<std::vector<Url>> lists = {{},
                                                 {Url::file("/plain")},
                                                 {Url::file("/caf\xe9"), Url::file("/a, b; \"c\" = \\ %20 @ \n\t"),
                                                  Url::file("/\xcc\x81 e"), Url::file("/-rf")}};
    for (const auto& list : lists) {
        SettingsFileStore store(file());
        RecentFoldersStore folders(store, [](const Url&) { return true; });
        EXPECT_TRUE(folders.save(list));
        SettingsFileStore again(file());
        EXPECT_EQ(RecentFoldersStore(again, [](const Url&) { return true; }).load(), list);
    }
}

TEST_F(SettingsFile, SeesAnotherProcessesChangesWhenRefreshed) {
    SettingsFileStore store(file());
    EXPECT_TRUE(store.setValue(QStringLiteral("mine"), true));
    folder.write("config/ordovan/ordovan.conf", "[General]\nmine=false\ntheirs=1\n");
    store.refresh();
    EXPECT_EQ(store.value(QStringLiteral("theirs"))->toString(), QStringLiteral("1"));
    EXPECT_EQ(store.value(QStringLiteral("mine"))->toString(), QStringLiteral("false"));
}

TEST_F(SettingsFile, KeepsAnotherProcessesChangesWhenWritten) {
    SettingsFileStore store(file());
    EXPECT_TRUE(store.setValue(QStringLiteral("mine"), true));
    folder.write("config/ordovan/ordovan.conf", "[General]\nmine=true\ntheirs=1\n");
    EXPECT_TRUE(store.setValue(QStringLiteral("mine"), false));
    EXPECT_EQ(folder.read("config/ordovan/ordovan.conf"), "[General]\nmine=false\ntheirs=1\n");
}

TEST_F(SettingsFile, ThatIsDamagedReadsAsDefaults) {
    folder.write("config/ordovan/ordovan.conf", "\x01\x02 no settings [at\nall\n=\n");
    SettingsFileStore store(file());
    const AppSettings settings(store);
    EXPECT_FALSE(settings.groupByMonth());
    EXPECT_THAT(RuleStore(store, noLock).ruleSet().rules, IsEmpty());
}

TEST_F(SettingsFile, SaysWhenItsFolderCanNotBeMade) {
    folder.write("config", "a file");
    SettingsFileStore store(file());
    EXPECT_FALSE(store.setValue(QStringLiteral("k"), true));
    EXPECT_EQ(store.value(QStringLiteral("k")), std::nullopt);
    EXPECT_EQ(folder.read("config"), "a file");
}

TEST_F(SettingsFile, SaysWhenItsFolderIsReadOnly) {
    folder.write("config/ordovan/ordovan.conf", "[General]\nk=1\n");
    ordovan::test::giveToUnprivileged(folder.path());
    ::chmod(folder.path("config/ordovan").c_str(), 0500);
    ::chmod(folder.path("config/ordovan/ordovan.conf").c_str(), 0400);
    const std::string answer = ordovan::test::unprivileged([&]() -> std::string {
        SettingsFileStore store(file());
        const bool stored = store.setValue(QStringLiteral("k"), QStringLiteral("2"));
        return (stored ? "stored " : "refused ") + store.value(QStringLiteral("k"))->toString().toStdString();
    });
    EXPECT_EQ(answer, "refused 1");
    EXPECT_EQ(folder.read("config/ordovan/ordovan.conf"), "[General]\nk=1\n");
}

TEST_F(SettingsFile, WorksAgainAfterAFailure) {
    folder.write("config", "a file");
    SettingsFileStore store(file());
    EXPECT_FALSE(store.setValue(QStringLiteral("k"), true));
    ASSERT_EQ(::unlink(folder.path("config").c_str()), 0);
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), true));
    EXPECT_EQ(folder.read("config/ordovan/ordovan.conf"), "[General]\nk=true\n");
}

TEST_F(SettingsFile, WhosePathIsNotUtf8StoresNothing) {
    SettingsFileStore store(folder.url("caf\xe9/ordovan.conf"));
    EXPECT_FALSE(store.setValue(QStringLiteral("k"), true));
    EXPECT_EQ(store.value(QStringLiteral("k")), std::nullopt);
    EXPECT_EQ(folder.count(), 0u);
}

TEST(RecentFolders, AreFiveAtMostAndAbsolute) {
    ordovan::MemoryKeyValueStore store;
    QVariantList paths;
    for (const char* const path : {"/1", "relative", "", "/2", "/3", "/4", "/5", "/6"}) paths.append(QByteArray(path));
    ASSERT_TRUE(store.setValue(QStringLiteral("ordovan.recentFolders.v2"), paths));
    const RecentFoldersStore folders(store, [](const Url& folder) { return folder != Url::file("/2"); });
    EXPECT_THAT(folders.load(),
                ElementsAre(Url::file("/1"), Url::file("/3"), Url::file("/4"), Url::file("/5"), Url::file("/6")));
}

TEST(RecentFolders, ThatAreGoneAreNotStored) {
    ordovan::MemoryKeyValueStore store;
    RecentFoldersStore folders(store, [](const Url& folder) { return folder != Url::file("/gone"); });
    EXPECT_TRUE(folders.save(std::vector{Url::file("/gone"), Url::file("/here")}));
    EXPECT_THAT(RecentFoldersStore(store, [](const Url&) { return true; }).load(), ElementsAre(Url::file("/here")));
}

TEST(RecentFolders, ReadAsNoneFromAnUnusableValue) {
    ordovan::MemoryKeyValueStore store;
    EXPECT_TRUE(store.setValue(QStringLiteral("ordovan.recentFolders.v2"), 17));
    EXPECT_THAT(RecentFoldersStore(store, [](const Url&) { return true; }).load(), IsEmpty());
}

}  // namespace
