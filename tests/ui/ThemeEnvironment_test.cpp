#include "OrdovanApp/theme/ThemeEnvironment.h"

#include "OrdovanApp/theme/DesktopPreferences.h"
#include "OrdovanApp/theme/StyleSheet.h"
#include "tests/support/WidgetTestMain.h"

#include <QPalette>
#include <QSignalSpy>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

class ThemeEnvironmentTest : public ::testing::Test {
protected:
    void SetUp() override { qputenv("ORDOVAN_COLOR_SCHEME", "light"); }
    void TearDown() override { qunsetenv("ORDOVAN_COLOR_SCHEME"); }
};

TEST_F(ThemeEnvironmentTest, TellsOnceWhenTheThemeChanges) {
    ThemeEnvironment theme(AppTheme::lagoon);
    QSignalSpy changed(&theme, &ThemeEnvironment::changed);
    theme.setTheme(AppTheme::grape);
    EXPECT_EQ(changed.count(), 1);
    theme.setTheme(AppTheme::grape);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(theme.colors().accent, ThemeColors::of(AppTheme::grape, false).accent);
}

TEST_F(ThemeEnvironmentTest, TurnsDarkAndBackWithTheDesktop) {
    qunsetenv("ORDOVAN_COLOR_SCHEME");
    QApplication::setPalette(QPalette(Qt::white));
    auto preferences = std::make_unique<DesktopPreferences>();
    DesktopPreferences& desktop = *preferences;
    const ThemeEnvironment theme(AppTheme::forest, std::move(preferences));
    QSignalSpy changed(&theme, &ThemeEnvironment::changed);
    desktop.take(u"org.freedesktop.appearance"_s, u"color-scheme"_s, QVariant(1U));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), ThemeColors::of(AppTheme::forest, true).window);
    desktop.take(u"org.freedesktop.appearance"_s, u"color-scheme"_s, QVariant(0U));
    EXPECT_EQ(changed.count(), 2) << "it has no preference any more";
    EXPECT_FALSE(theme.colors().dark);
}

TEST_F(ThemeEnvironmentTest, StaysLightInADarkDesktopWhereTheEnvironmentSaysSo) {
    auto preferences = std::make_unique<DesktopPreferences>();
    DesktopPreferences& desktop = *preferences;
    const ThemeEnvironment theme(AppTheme::forest, std::move(preferences));
    desktop.take(u"org.freedesktop.appearance"_s, u"color-scheme"_s, QVariant(1U));
    EXPECT_FALSE(theme.colors().dark);
}

TEST_F(ThemeEnvironmentTest, TakesTheSchemeOfTheEnvironment) {
    EXPECT_FALSE(ThemeEnvironment(AppTheme::lagoon).colors().dark);
    qputenv("ORDOVAN_COLOR_SCHEME", "dark");
    EXPECT_TRUE(ThemeEnvironment(AppTheme::lagoon).colors().dark);
}

TEST_F(ThemeEnvironmentTest, TakesThePlatformsLightnessWhereNothingElseIsSaid) {
    qunsetenv("ORDOVAN_COLOR_SCHEME");
    QApplication::setPalette(QPalette(Qt::black));
    EXPECT_TRUE(ThemeEnvironment(AppTheme::lagoon).colors().dark);
    QApplication::setPalette(QPalette(Qt::white));
    EXPECT_FALSE(ThemeEnvironment(AppTheme::lagoon).colors().dark);
}

TEST_F(ThemeEnvironmentTest, LeavesNoPlaceholderInTheStyleSheet) {
    const ThemeEnvironment theme(AppTheme::candy);
    const QString sheet = StyleSheet::of(theme);
    EXPECT_FALSE(sheet.contains(u'@')) << sheet.toStdString();
    EXPECT_FALSE(sheet.contains(u": ;"_s));
    EXPECT_TRUE(sheet.contains(theme.colors().accent.name()));
    EXPECT_EQ(qApp->styleSheet(), sheet);
}

TEST_F(ThemeEnvironmentTest, HasFourSizesOfTypeInOneFace) {
    const ThemeEnvironment theme(AppTheme::lagoon);
    using Type = ThemeEnvironment::Type;
    EXPECT_EQ(theme.font(Type::body).pixelSize(), theme.scaled(13));
    EXPECT_EQ(theme.font(Type::title).pixelSize(), theme.scaled(22));
    EXPECT_GT(theme.font(Type::bodyStrong).weight(), theme.font(Type::body).weight());
    EXPECT_EQ(theme.font(Type::title).family(), theme.font(Type::caption).family());
    EXPECT_EQ(QApplication::font().pixelSize(), theme.scaled(13));
}

TEST(DesktopPreferences, KnowNothingAtFirst) {
    const DesktopPreferences desktop;
    EXPECT_EQ(desktop.dark(), std::nullopt);
    EXPECT_EQ(desktop.textScale(), std::nullopt);
    EXPECT_FALSE(desktop.reducedMotion());
}

TEST(DesktopPreferences, TakeTheColorScheme) {
    DesktopPreferences desktop;
    QSignalSpy changed(&desktop, &DesktopPreferences::changed);
    desktop.take(u"org.freedesktop.appearance"_s, u"color-scheme"_s, QVariant(1U));
    EXPECT_EQ(desktop.dark(), true);
    desktop.take(u"org.freedesktop.appearance"_s, u"color-scheme"_s, QVariant(1U));
    EXPECT_EQ(changed.count(), 1);
    desktop.take(u"org.freedesktop.appearance"_s, u"color-scheme"_s, QVariant(2U));
    EXPECT_EQ(desktop.dark(), false);
    desktop.take(u"org.freedesktop.appearance"_s, u"color-scheme"_s, QVariant(0U));
    EXPECT_EQ(desktop.dark(), std::nullopt);
}

TEST(DesktopPreferences, TakeReducedMotionFromEitherSetting) {
    DesktopPreferences desktop;
    desktop.take(u"org.gnome.desktop.interface"_s, u"enable-animations"_s, false);
    EXPECT_TRUE(desktop.reducedMotion());
    desktop.take(u"org.gnome.desktop.interface"_s, u"enable-animations"_s, true);
    EXPECT_FALSE(desktop.reducedMotion());
    desktop.take(u"org.freedesktop.appearance"_s, u"reduced-motion"_s, QVariant(1U));
    EXPECT_TRUE(desktop.reducedMotion());
}

TEST(DesktopPreferences, PassOverWhatIsNotTheirs) {
    DesktopPreferences desktop;
    QSignalSpy changed(&desktop, &DesktopPreferences::changed);
    desktop.take(u"org.gnome.desktop.interface"_s, u"color-scheme"_s, u"prefer-dark"_s);
    desktop.take(u"org.gnome.desktop.interface"_s, u"text-scaling-factor"_s, -1.0);
    desktop.take(u"org.example"_s, u"color-scheme"_s, QVariant(1U));
    EXPECT_EQ(changed.count(), 0);
}

}  // namespace
