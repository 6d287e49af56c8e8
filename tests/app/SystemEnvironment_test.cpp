#include "OrdovanApp/controller/SystemEnvironment.h"

#include "OrdovanApp/stores/SettingsFileStore.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TempFolder.h"

#include <QCoreApplication>

#include <chrono>
#include <optional>
#include <string>

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

}  // namespace
