#include "OrdovanApp/controller/SystemEnvironment.h"

#include "OrdovanApp/stores/SettingsFileStore.h"
#include "OrdovanCore/platform/HashAhead.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TempFolder.h"

#include <QCoreApplication>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace {

class SystemEnvironmentTest : public ::testing::Test {
protected:
    ordovan::test::TempFolder place;
    const ordovan::StorageLocations locations{.recordsFolder = place.url("data"),
                                              .settingsFolder = place.url("config")};
};

TEST_F(SystemEnvironmentTest, StoresInTheBackgroundInOrder) {
    SystemEnvironment environment(locations);
    environment.storeInBackground();
    for (const bool on : {true, false, true}) environment.settings().setGroupByMonth(on);
    bool isAdded = false;
    environment.rules().add("pdf", "Papers", [&](const std::optional<std::string>& refusal) { isAdded = !refusal; });
    EXPECT_FALSE(isAdded);
    EXPECT_TRUE(environment.waitForWork(5min));
    QCoreApplication::processEvents();
    EXPECT_TRUE(isAdded);
    EXPECT_EQ(environment.rules().ruleSet().rules.size(), 1U);
    ordovan::SettingsFileStore stored(locations.settingsFile());
    EXPECT_TRUE(AppSettings(stored).groupByMonth());
    EXPECT_EQ(RuleStore(stored).ruleSet(), environment.rules().ruleSet());
}

TEST_F(SystemEnvironmentTest, HasStoredEverythingBeforeItIsGone) {
    {
        SystemEnvironment environment(locations);
        environment.storeInBackground();
        environment.settings().setTheme(AppTheme::grape);
        environment.rules().add("pdf", "Papers", [](const auto&) {});
        environment.background()(
            [&values = environment.values()] { EXPECT_TRUE(values.setValue(QStringLiteral("place"), 7)); }, [] {});
    }
    ordovan::SettingsFileStore stored(locations.settingsFile());
    EXPECT_EQ(AppSettings(stored).theme(), AppTheme::grape);
    EXPECT_EQ(RuleStore(stored).ruleSet().rules.size(), 1U);
    EXPECT_EQ(stored.value(QStringLiteral("place"))->toInt(), 7);
}

/// What is hashed ahead of a run counts as hashed by its disk.
TEST_F(SystemEnvironmentTest, LetsTheDiskOfARunVouchForWhatIsHashedAhead) {
    SystemEnvironment environment(locations);
    const TidyPorts ports = environment.ports();
    std::vector<Url> files;
    for (int i = 0; i < 100; ++i) files.push_back(place.write("files/" + std::to_string(i), "content"));
    // Time stamps that are too young are not relied upon.
    for (const double start = ports.clock(); ports.clock() - start < 0.2;) std::this_thread::yield();
    const auto disk = ports.makeRunFileSystem(place.url());
    const auto port = ports.hashAhead(*disk, files, [](const Url&) { return true; });
    auto& ahead = dynamic_cast<ordovan::HashAheadFileSystem&>(*port);
    std::optional<Url> handedOut;
    for (const Url& file : files) {
        for (int i = 0; i < 2000; ++i) std::this_thread::yield();
        const std::size_t before = ahead.handedOut();
        ASSERT_TRUE(ahead.contentHash(file));
        if (ahead.handedOut() > before) handedOut = file;
    }
    ASSERT_TRUE(handedOut);
    place.write("other", "another");
    std::filesystem::rename(place.path("other"), handedOut->path());
    EXPECT_EQ(ahead.move(*handedOut, place.url("moved")).error(), OrdovanSystemError::posix(EBUSY));
}

}  // namespace
