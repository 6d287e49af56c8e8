#include "OrdovanApp/stores/SettingsFileStore.h"

#include "OrdovanApp/stores/AppSettings.h"
#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanApp/stores/RecentFoldersStore.h"
#include "OrdovanApp/stores/RuleStore.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gmock/gmock.h>

#include <QSettings>

#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <initializer_list>
#include <new>
#include <set>
#include <string>
#include <vector>

using ordovan::RecentFoldersStore;
using ordovan::SettingsFileStore;
using ordovan::test::TempFolder;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

/// How often the program would have slept, and how long: the clock goes on by that.
int sleeps = 0;
std::int64_t sleptNanoseconds = 0;

/// Whether QSettings finds no memory for what it reads.
bool isMemoryShort = false;

}  // namespace

/// Stands before that of Qt, which it calls.
QStringList QSettings::allKeys() const {
    if (isMemoryShort) throw std::bad_alloc();
    using Function = QStringList (*)(const QSettings*);
    static const auto function = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "_ZNK9QSettings7allKeysEv"));
    return function(this);
}

extern "C" int nanosleep(const ::timespec* time, ::timespec*) {
    ++sleeps;
    sleptNanoseconds += time->tv_sec * 1'000'000'000 + time->tv_nsec;
    return 0;
}

extern "C" int clock_gettime(::clockid_t clock, ::timespec* time) noexcept {
    const auto result = static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    const std::int64_t nanoseconds = time->tv_nsec + sleptNanoseconds;
    time->tv_sec += nanoseconds / 1'000'000'000;
    time->tv_nsec = nanoseconds % 1'000'000'000;
    return result;
}

namespace {

unsigned modeOf(const std::string& path) {
    struct ::stat facts{};
    EXPECT_EQ(::stat(path.c_str(), &facts), 0) << path;
    return facts.st_mode & 07777;
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

TEST_F(SettingsFile, ClearsAwayWhatADeadProcessLeftBesideIt) {
    folder.write("config/ordovan/.ordovan-settings-aB3dE6/draft.conf", "half");
    folder.write("config/ordovan/.ordovan-settings-of-mine/kept", "1");
    SettingsFileStore store(file());
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), true));
    EXPECT_FALSE(folder.has("config/ordovan/.ordovan-settings-aB3dE6"));
    EXPECT_TRUE(folder.has("config/ordovan/.ordovan-settings-of-mine/kept"));
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
    RuleStore rules(store);
    rules.add("dmg, pkg", "Установщики \"1\" & co; = %");
    SettingsFileStore again(file());
    EXPECT_EQ(RuleStore(again).ruleSet(), rules.ruleSet());
    EXPECT_THAT(folder.read("config/ordovan/ordovan.conf"), HasSubstr("ordovan.rules.v1="));
}

TEST_F(SettingsFile, GivesAnyFolderBackByteForByte) {
    const auto there = [](const Url&) { return true; };
    const auto same = [](const Url& url) { return url; };
    const std::vector<Url> odd = {Url::file("/caf\xe9"), Url::file("/a, b; \"c\" = \\ %20 @ \n\t"),
                                  Url::file("/\xcc\x81 e"), Url::file("/-rf")};
    SettingsFileStore store(file());
    RecentFoldersStore folders(store, there, same);
    EXPECT_THAT(folders.add(Url::file("/plain"), {}).folders, ElementsAre(Url::file("/plain")));
    SettingsFileStore once(file());
    EXPECT_THAT(RecentFoldersStore(once, there, same).load(), ElementsAre(Url::file("/plain")));
    for (const Url& name : odd) EXPECT_EQ(folders.add(name, {}).folders.front(), name);
    SettingsFileStore again(file());
    EXPECT_THAT(RecentFoldersStore(again, there, same).load(),
                ElementsAre(odd[3], odd[2], odd[1], odd[0], Url::file("/plain")));
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
    EXPECT_THAT(RuleStore(store).ruleSet().rules, IsEmpty());
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

/// Another program that holds the lock of the settings.
TEST_F(SettingsFile, IsNotChangedWhileAnotherProcessHoldsItsLock) {
    SettingsFileStore store(file());
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), 1));
    sleeps = 0;
    {
        const auto lock = ordovan::tryLockFolder(folder.url("config/ordovan"));
        ASSERT_TRUE(lock);
        EXPECT_FALSE(store.setValue(QStringLiteral("k"), 2));
    }
    EXPECT_GT(sleeps, 1);
    EXPECT_LE(sleeps, 100);  // two seconds
    EXPECT_EQ(store.value(QStringLiteral("k")), 1);
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), 2));
}

TEST_F(SettingsFile, IsWrittenBesideALockFileThatSomebodyLeft) {
    folder.makeFolder("config/ordovan");
    folder.write("config/ordovan/ordovan.conf.lock", "");
    SettingsFileStore store(file());
    sleeps = 0;
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), true));
    EXPECT_EQ(sleeps, 0);
    ASSERT_EQ(::unlink(folder.path("config/ordovan/ordovan.conf.lock").c_str()), 0);
    ASSERT_EQ(::mkfifo(folder.path("config/ordovan/ordovan.conf.lock").c_str(), 0600), 0);
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), false));
    ASSERT_EQ(::unlink(folder.path("config/ordovan/ordovan.conf.lock").c_str()), 0);
    folder.makeFolder("config/ordovan/ordovan.conf.lock");
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), true));
    EXPECT_EQ(folder.count("config/ordovan"), 2u);
}

TEST_F(SettingsFile, ThatIsDamagedIsSetAsideBeforeItIsReplaced) {
    const std::string damaged = "[General]\nk=1\nordovan.rules.v1 all of it broken\n";
    folder.write("config/ordovan/ordovan.conf", damaged);
    SettingsFileStore store(file());
    store.refresh();
    EXPECT_TRUE(store.setValue(QStringLiteral("other"), true));
    EXPECT_EQ(folder.read("config/ordovan/ordovan.conf"), "[General]\nk=1\nother=true\n");
    std::vector<std::string> aside;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path("config/ordovan"))) {
        if (entry.path().filename() != "ordovan.conf") aside.push_back(entry.path().filename());
    }
    ASSERT_THAT(aside, ElementsAre(::testing::MatchesRegex("ordovan\\.conf\\.unreadable-[0-9]+")));
    EXPECT_EQ(folder.read("config/ordovan/" + aside.front()), damaged);
    EXPECT_TRUE(store.setValue(QStringLiteral("other"), false));
    EXPECT_EQ(folder.count("config/ordovan"), 2u);
}

TEST_F(SettingsFile, ThatIsFarTooLargeIsSetAsideUnread) {
    folder.write("config/ordovan/ordovan.conf", "[General]\nk=1\n" + std::string(17 << 20, ';'));
    SettingsFileStore store(file());
    EXPECT_FALSE(store.value(QStringLiteral("k")));
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), 2));
    EXPECT_EQ(folder.read("config/ordovan/ordovan.conf"), "[General]\nk=2\n");
    EXPECT_EQ(folder.count("config/ordovan"), 2u);
}

/// Whether these values stand in a file that is read, and not in one that counts as damaged.
bool isRead(const TempFolder& folder, const std::string& values) {
    folder.write("read.conf", "[General]\nk=1\n" + values + "\n");
    const SettingsFileStore store(folder.url("read.conf"));
    return store.isReadable() && store.value(QStringLiteral("k")) == QStringLiteral("1");
}

TEST_F(SettingsFile, WithASerializedValueIsSetAsideUnread) {
    // Two thousand million items: QSettings would ask for the room for them at once.
    const std::string damaged = "[General]\nk=1\nlist=@Variant(\\0\\0\\0\\t\\x7f\\xff\\xff\\xff)\n";
    folder.write("config/ordovan/ordovan.conf", damaged);
    SettingsFileStore store(file());
    EXPECT_FALSE(store.isReadable());
    EXPECT_FALSE(store.value(QStringLiteral("k")));
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), 2));
    EXPECT_TRUE(store.isReadable());
    EXPECT_EQ(folder.read("config/ordovan/ordovan.conf"), "[General]\nk=2\n");
    ASSERT_EQ(folder.count("config/ordovan"), 2u);
    for (const auto& entry : std::filesystem::directory_iterator(folder.path("config/ordovan"))) {
        if (entry.path().filename() == "ordovan.conf") continue;
        EXPECT_EQ(folder.read("config/ordovan/" + entry.path().filename().string()), damaged);
    }
}

TEST_F(SettingsFile, ThatDoesNotFitIntoTheMemoryIsSetAside) {
    folder.write("config/ordovan/ordovan.conf", "[General]\nk=1\n");
    isMemoryShort = true;
    SettingsFileStore store(file());
    isMemoryShort = false;
    EXPECT_FALSE(store.isReadable());
    EXPECT_FALSE(store.value(QStringLiteral("k")));
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), 2));
    EXPECT_EQ(folder.read("config/ordovan/ordovan.conf"), "[General]\nk=2\n");
    EXPECT_EQ(folder.count("config/ordovan"), 2u);
}

TEST_F(SettingsFile, WithASerializedValueIsDamagedHoweverItIsSpelled) {
    // clang-format off: one to a line is long
    const std::vector<std::string> spellings = {
        "a=@Variant(x)", "a=@DateTime(x)", "a=@Rect(1 2 3 4)", "a=@home", "a= \t@Variant(x)", "a=\"@Variant(x)\"",
        "a=\"\" @Variant(x)", "a=b, @Variant(x)", "a=\"b\",@Variant(x)", "a=@@b, @Variant(x)", "a=\\x40Variant(x)",
        "a=\\x0040\\x56ariant(x)", "a=\\x10040Variant(x)", "a=\\100Variant(x)", "a=\\z@Variant(x)",
        "a=\\x@Variant(x)", "a=\\\n@Variant(x)", "a=\\\r\n@Variant(x)", "a=\xef\xbb\xbf@Variant(x)",
        "a=\xc3\\x40\\x56\\x61\\x72iant(x)", "a\\=b=@Variant(x)", "a=b\r@=@Variant(x)", "a=\"b\\\"\", @Variant(x)",
        "a=\"b\n\", @Variant(x)", "\"a=b\"c=@Variant(x)", "a=b;\"\nc=@Variant(x)", ";\"\na=@Variant(x)"};
    // clang-format on
    for (const std::string& spelling : spellings) EXPECT_FALSE(isRead(folder, spelling)) << spelling;
}

TEST_F(SettingsFile, WithAnAtSignThatNamesNoTypeIsRead) {
    // clang-format off: one to a line is long
    const std::vector<std::string> spellings = {
        "a=b@Variant(x)", "a=b @Variant(x)", "a=\xc3\xa9@Variant(x)", "a=\"b, @Variant(x)\"",
        "a=\"b\\\", @Variant(x)\"", "a=\"b\n,@Variant(x)\"", "a=b\\x2c@Variant(x)", "a=\\x4@Variant(x)",
        "a=\\4@Variant(x)", "a=\\n@Variant(x)", "a=@@Variant(x)", "a=b, @@Variant(x), @Invalid()", "a=@Invalid()",
        "a=@ByteArray(@Variant(x)), @ByteArray()", "a=@String(b)", "a=b;@Variant(x)", ";a=@Variant(x)",
        "  ;a=@Variant(x)", "@Variant(x)=b", "[@Variant(x)]"};
    // clang-format on
    for (const std::string& spelling : spellings) EXPECT_TRUE(isRead(folder, spelling)) << spelling;
}

TEST_F(SettingsFile, HoldsOneSerializedValueTheListOfOneByteArray) {
    const std::string head = "a=@Variant(\\0\\0\\0\\t\\0\\0\\0\\x1\\0\\0\\0";
    EXPECT_TRUE(isRead(folder, head + "\\f\\0\\0\\0\\x2/b)"));
    EXPECT_TRUE(isRead(folder, head + "\\f\\0\\0\\0\\0)"));
    EXPECT_FALSE(isRead(folder, head + "\\f\\0\\0\\0\\x2/bc)"));
    EXPECT_FALSE(isRead(folder, head + "\\f\\0\\0\\0\\x2/)"));
    EXPECT_FALSE(isRead(folder, head + "\\f\\xff\\xff\\xff\\xff)"));
    EXPECT_FALSE(isRead(folder, head + "\\f\\0\\0\\0)"));
    EXPECT_FALSE(isRead(folder, head + "\\n\\0\\0\\0\\x2/b)"));
}

TEST_F(SettingsFile, GivesBackRulesThatHoldAtSigns) {
    SettingsFileStore store(file());
    RuleStore rules(store);
    EXPECT_EQ(rules.add("pdf", "Books, @home"), std::nullopt);
    EXPECT_EQ(rules.add("txt", "@Variant(x)"), std::nullopt);
    EXPECT_EQ(rules.add("md", "a\", @Variant(x); = \"@Rect(1 2 3 4)"), std::nullopt);
    SettingsFileStore again(file());
    EXPECT_TRUE(again.isReadable());
    EXPECT_EQ(RuleStore(again).ruleSet(), rules.ruleSet());
    EXPECT_EQ(rules.ruleSet().rules.size(), 3u);
}

TEST_F(SettingsFile, GivesBackWhatItWroteOfEveryKindOfValue) {
    const std::vector<QVariant> kinds = {QStringLiteral("@home"),
                                         QStringLiteral("@Variant(x), @"),
                                         QString(QChar(0)),
                                         QStringLiteral("\u00e9@, \"@"),
                                         QByteArray("@Variant(\xff\0x)", 12),
                                         QStringList{QStringLiteral("@a"), QStringLiteral("@Variant(x)")},
                                         QVariantList{QByteArray("/a, @b")},
                                         QVariantList{QByteArray("@a"), QByteArray("b, @c")}};
    for (const QVariant& kind : kinds) {
        SettingsFileStore store(file());
        EXPECT_TRUE(store.setValue(QStringLiteral("k"), kind));
        const SettingsFileStore again(file());
        EXPECT_TRUE(again.isReadable()) << folder.read("config/ordovan/ordovan.conf");
        EXPECT_EQ(again.value(QStringLiteral("k")), kind) << folder.read("config/ordovan/ordovan.conf");
    }
    SettingsFileStore store(file());
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), QVariantList()));
    EXPECT_TRUE(SettingsFileStore(file()).isReadable());
    EXPECT_EQ(folder.read("config/ordovan/ordovan.conf"), "[General]\nk=@Invalid()\n");
}

TEST_F(SettingsFile, ThatMayNotBeReadIsLeftAlone) {
    folder.write("config/ordovan/ordovan.conf", "[General]\nk=1\n");
    ordovan::test::giveToUnprivileged(folder.path());
    ::chmod(folder.path("config/ordovan/ordovan.conf").c_str(), 0200);
    EXPECT_FALSE(ordovan::test::unprivileged([&] {
        SettingsFileStore store(file());
        return store.setValue(QStringLiteral("k"), 2);
    }));
    EXPECT_TRUE(ordovan::test::unprivileged([&] {
        SettingsFileStore store(file());
        ::chmod(folder.path("config/ordovan/ordovan.conf").c_str(), 0600);
        store.refresh();
        return store.value(QStringLiteral("k")) == QStringLiteral("1");
    }));
    ::chmod(folder.path("config/ordovan/ordovan.conf").c_str(), 0600);
    EXPECT_EQ(folder.read("config/ordovan/ordovan.conf"), "[General]\nk=1\n");
    EXPECT_EQ(folder.count("config/ordovan"), 1u);
}

TEST_F(SettingsFile, IsWrittenWhereALinkLeads) {
    folder.write("dotfiles/settings", "[General]\nk=1\n");
    folder.makeFolder("config/ordovan");
    folder.makeLink("config/ordovan/ordovan.conf", folder.path("dotfiles/settings"));
    SettingsFileStore store(file());
    EXPECT_TRUE(store.setValue(QStringLiteral("k"), 2));
    EXPECT_EQ(folder.read("dotfiles/settings"), "[General]\nk=2\n");
}

TEST_F(SettingsFile, KeepsTheGroupsAndValuesOfOthers) {
    const std::string before =
        "[General]\nlist=a, b\nnumber=7\ntext=\"with; odd = \\\"signs\\\"\"\n\n[group]\nk=@ByteArray(x)\n";
    folder.write("config/ordovan/ordovan.conf", before);
    SettingsFileStore store(file());
    EXPECT_TRUE(store.setValue(QStringLiteral("number"), 8));
    std::string after = before;
    after.replace(after.find('7'), 1, "8");
    EXPECT_EQ(folder.read("config/ordovan/ordovan.conf"), after);
}

TEST_F(SettingsFile, SeesEachOfManyQuickChangesOfOneSize) {
    SettingsFileStore first(file()), second(file());
    for (int i = 100; i < 120; ++i) {
        SettingsFileStore& store = i % 2 == 0 ? first : second;
        EXPECT_TRUE(store.update([&](auto& values) {
            const int last = i == 100 ? 99 : values[QStringLiteral("k")].toInt();
            EXPECT_EQ(last, i - 1);
            values[QStringLiteral("k")] = i;
        }));
    }
}

class RecentFolders : public ::testing::Test {
protected:
    /// A program that knows of the folders "/1" to "/9", and of "/link" to "/1".
    RecentFoldersStore make() {
        return {values, [this](const Url& folder) { return !gone.contains(std::string(folder.path())); },
                [](const Url& folder) { return folder == Url::file("/link") ? Url::file("/1") : folder; }};
    }
    static std::vector<Url> urls(std::initializer_list<const char*> paths) {
        std::vector<Url> result;
        for (const char* const path : paths) result.push_back(Url::file(path));
        return result;
    }
    void store(std::initializer_list<const char*> paths) {
        QVariantList list;
        for (const char* const path : paths) list.append(QByteArray(path));
        ASSERT_TRUE(values.setValue(QStringLiteral("ordovan.recentFolders.v2"), list));
    }

    std::set<std::string> gone;
    ordovan::MemoryKeyValueStore values;
};

TEST_F(RecentFolders, AreFiveAtMostAndAbsolute) {
    store({"/1", "relative", "", "/2", "/3", "/4", "/5", "/6"});
    gone = {"/2"};
    EXPECT_EQ(make().load(), urls({"/1", "/3", "/4", "/5", "/6"}));
}

TEST_F(RecentFolders, ThatAreGoneAreNotStored) {
    store({"/2", "/3"});
    gone = {"/2", "/4"};
    EXPECT_EQ(make().add(Url::file("/1"), urls({"/4"})).folders, urls({"/1", "/3"}));
    gone.clear();
    EXPECT_EQ(make().load(), urls({"/1", "/3"}));
}

TEST_F(RecentFolders, KeepWhatAnotherProcessHasAdded) {
    store({"/2"});
    const auto known = make().load();
    store({"/3", "/2"});
    EXPECT_EQ(make().add(Url::file("/1"), known).folders, urls({"/1", "/3", "/2"}));
    EXPECT_EQ(make().load(), urls({"/1", "/3", "/2"}));
}

TEST_F(RecentFolders, AreListedOnceWhateverTheirPath) {
    store({"/2", "/1"});
    EXPECT_EQ(make().add(Url::file("/link"), urls({"/link"})).folders, urls({"/1", "/2"}));
}

TEST_F(RecentFolders, NumberTheirChanges) {
    RecentFoldersStore folders = make();
    const auto first = folders.add(Url::file("/1"), {}).revision;
    EXPECT_LT(first, folders.reload({}).revision);
}

TEST_F(RecentFolders, ReadAsNoneFromAnUnusableValue) {
    EXPECT_TRUE(values.setValue(QStringLiteral("ordovan.recentFolders.v2"), 17));
    EXPECT_THAT(make().load(), IsEmpty());
}

TEST_F(SettingsFile, ThatCanNotBeWrittenLeavesTheRecentFoldersInMemory) {
    folder.write("config", "a file");
    SettingsFileStore store(file());
    RecentFoldersStore folders(store, [](const Url&) { return true; }, [](const Url& url) { return url; });
    const std::vector<Url> known = {Url::file("/2")};
    const auto listed = folders.add(Url::file("/1"), known).folders;
    EXPECT_THAT(listed, ElementsAre(Url::file("/1"), Url::file("/2")));
    EXPECT_EQ(folders.reload(listed).folders, listed);
}

}  // namespace
