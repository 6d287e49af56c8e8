#include "OrdovanApp/stores/AppSettings.h"

#include "tests/support/QtTestMain.h"

#include <QObject>

#include <functional>
#include <map>
#include <string>
#include <vector>

using ordovan::MemoryKeyValueStore;

namespace {

/// Counts writes, and refuses them as told.
class CountingStore final : public ordovan::KeyValueStore {
public:
    [[nodiscard]] std::optional<QVariant> value(const QString& key) const override { return inner.value(key); }
    [[nodiscard]] bool update(const std::function<void(Values& values)>& edit) override {
        ++writes;
        return !refuses && inner.update(edit);
    }
    void refresh() override {}

    MemoryKeyValueStore inner;
    int writes = 0;
    bool refuses = false;
};

class AppSettingsTest : public ::testing::Test {
protected:
    void store(const char* name, const QVariant& value) {
        EXPECT_TRUE(values.setValue(QStringLiteral("ordovan.settings.") + QLatin1String(name), value));
    }
    [[nodiscard]] QVariant stored(const char* name) const {
        return values.value(QStringLiteral("ordovan.settings.") + QLatin1String(name)).value_or(QVariant());
    }
    CountingStore values;
};

TEST_F(AppSettingsTest, HoldAtOnceWhatIsStoredInTheBackground) {
    AppSettings settings(values);
    std::vector<std::function<void()>> waiting;
    settings.storeThrough([&](const auto& work, const auto& done) { waiting.insert(waiting.end(), {work, done}); });
    std::vector<bool> saved;
    QObject::connect(&settings, &AppSettings::saved, [&](bool isSaved) { saved.push_back(isSaved); });
    EXPECT_TRUE(settings.setGroupByMonth(true));
    EXPECT_TRUE(settings.setTheme(AppTheme::candy));
    EXPECT_TRUE(settings.groupByMonth());
    EXPECT_EQ(values.writes, 0);
    EXPECT_EQ(waiting.size(), 4U);
    for (const auto& call : waiting) {
        call();
        values.refuses = true;  // all but the first
    }
    EXPECT_EQ(saved, (std::vector{true, false}));
    EXPECT_EQ(stored("groupByMonth"), QVariant(true));
    EXPECT_EQ(stored("theme"), QVariant());
    EXPECT_EQ(settings.theme(), AppTheme::candy);
}

TEST_F(AppSettingsTest, BeginWithTheirDefaults) {
    const AppSettings settings(values);
    EXPECT_FALSE(settings.groupByMonth());
    EXPECT_FALSE(settings.includeHidden());
    EXPECT_EQ(settings.theme(), AppTheme::lagoon);
    EXPECT_EQ(values.writes, 0);
}

TEST_F(AppSettingsTest, AreReadAtTheStart) {
    store("groupByMonth", true);
    store("includeHidden", QStringLiteral("true"));  // as a settings file gives it
    store("theme", QStringLiteral("grape"));
    const AppSettings settings(values);
    EXPECT_TRUE(settings.groupByMonth());
    EXPECT_TRUE(settings.includeHidden());
    EXPECT_EQ(settings.theme(), AppTheme::grape);
}

TEST_F(AppSettingsTest, TakeUnusableValuesForTheDefaults) {
    store("groupByMonth", QStringLiteral("maybe"));
    store("includeHidden", QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    store("theme", QStringLiteral("Lagoon of another kind"));
    const AppSettings settings(values);
    EXPECT_FALSE(settings.groupByMonth());
    EXPECT_FALSE(settings.includeHidden());
    EXPECT_EQ(settings.theme(), AppTheme::lagoon);
}

TEST_F(AppSettingsTest, AreStoredAtEachChange) {
    AppSettings settings(values);
    EXPECT_TRUE(settings.setGroupByMonth(true));
    EXPECT_TRUE(settings.setIncludeHidden(true));
    EXPECT_TRUE(settings.setTheme(AppTheme::candy));
    EXPECT_EQ(stored("groupByMonth"), QVariant(true));
    EXPECT_EQ(stored("includeHidden"), QVariant(true));
    EXPECT_EQ(stored("theme"), QVariant(QStringLiteral("candy")));
    EXPECT_TRUE(settings.setGroupByMonth(false));
    EXPECT_EQ(stored("groupByMonth"), QVariant(false));
}

TEST_F(AppSettingsTest, SetToWhatTheyAreWriteNothingAndSendNoSignal) {
    AppSettings settings(values);
    int signalCount = 0;
    QObject::connect(&settings, &AppSettings::groupByMonthChanged, [&] { ++signalCount; });
    QObject::connect(&settings, &AppSettings::includeHiddenChanged, [&] { ++signalCount; });
    QObject::connect(&settings, &AppSettings::themeChanged, [&] { ++signalCount; });
    EXPECT_TRUE(settings.setGroupByMonth(false));
    EXPECT_TRUE(settings.setIncludeHidden(false));
    EXPECT_TRUE(settings.setTheme(AppTheme::lagoon));
    EXPECT_EQ(values.writes + signalCount, 0);
    settings.setGroupByMonth(true);
    settings.setIncludeHidden(true);
    settings.setTheme(AppTheme::forest);
    EXPECT_EQ(signalCount, 3);
}

TEST_F(AppSettingsTest, HoldUntilTheEndWhenTheyCanNotBeStoredAndSaySo) {
    AppSettings settings(values);
    values.refuses = true;
    EXPECT_FALSE(settings.setGroupByMonth(true));
    EXPECT_FALSE(settings.setTheme(AppTheme::sunset));
    EXPECT_TRUE(settings.groupByMonth());
    EXPECT_EQ(settings.theme(), AppTheme::sunset);
    EXPECT_FALSE(AppSettings(values).groupByMonth());
}

TEST(AppThemeTest, BearsItsStoredName) {
    std::vector<std::string_view> names;
    for (const AppTheme theme : AppThemes::allCases) {
        names.push_back(rawValue(theme));
        EXPECT_EQ(AppThemes::fromRawValue(rawValue(theme)), theme);
    }
    EXPECT_EQ(names, (std::vector<std::string_view>{"lagoon", "sunset", "grape", "forest", "candy"}));
}

TEST(AppThemeTest, IsNotFoundUnderAnotherName) {
    for (const char* const name : {"", "Lagoon", "teal", "lagoon "}) {
        EXPECT_EQ(AppThemes::fromRawValue(name), std::nullopt) << name;
    }
}

}  // namespace
