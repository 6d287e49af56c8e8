#include "OrdovanApp/screens/SettingsView.h"

#include "OrdovanApp/screens/ThemeChoice.h"
#include "OrdovanApp/theme/Banner.h"
#include "tests/support/WidgetTestMain.h"
#include "tests/support/WindowWorld.h"

#include <QCheckBox>
#include <QLabel>
#include <QTest>

namespace {

using namespace ordovan::test;
using namespace Qt::StringLiterals;

/// A store that takes nothing.
class FullStore final : public ordovan::KeyValueStore {
public:
    [[nodiscard]] std::optional<QVariant> value(const QString&) const override { return std::nullopt; }
    [[nodiscard]] bool update(const std::function<void(Values&)>&) override { return false; }
    void refresh() override {}
};

class SettingsViews : public WindowWorld {
protected:
    SettingsView view{context()};
    QCheckBox* toggle(const char* name) { return view.findChild<QCheckBox*>(QString::fromLatin1(name)); }
    ThemeChoice* choice(const char* name) {
        return view.findChild<ThemeChoice*>(u"theme-"_s + QString::fromLatin1(name));
    }
};

TEST_F(SettingsViews, ShowsItsTexts) {
    QStringList texts;
    for (const QLabel* label : view.findChildren<QLabel*>()) texts += label->text();
    for (const QString& text :
         {u"Settings only change the preview. Nothing moves until you choose Organize."_s, u"Organizing"_s, u"Theme"_s,
          u"Files go into a dated folder, for example ordovan+/Images/2026-10."_s,
          u"Hidden files (names starting with a dot) are left out by default."_s}) {
        EXPECT_TRUE(texts.contains(text)) << text.toStdString();
    }
    EXPECT_EQ(toggle("setting-groupByMonth")->text(), u"Group files by month"_s);
    EXPECT_EQ(toggle("setting-includeHidden")->text(), u"Include hidden files"_s);
}

TEST_F(SettingsViews, ChangesASettingAtOnce) {
    toggle("setting-groupByMonth")->click();
    EXPECT_TRUE(settings.groupByMonth());
    EXPECT_FALSE(settings.includeHidden());
    toggle("setting-includeHidden")->click();
    EXPECT_TRUE(settings.includeHidden());
    toggle("setting-groupByMonth")->click();
    EXPECT_FALSE(settings.groupByMonth());
}

TEST_F(SettingsViews, FollowsASettingThatChangesElsewhere) {
    settings.setIncludeHidden(true);
    EXPECT_TRUE(toggle("setting-includeHidden")->isChecked());
    settings.setTheme(AppTheme::candy);
    EXPECT_TRUE(choice("candy")->isChecked());
    EXPECT_FALSE(choice("lagoon")->isChecked());
}

TEST_F(SettingsViews, OffersTheThemesByTheirShownNames) {
    QStringList names;
    for (const ThemeChoice* each : view.findChildren<ThemeChoice*>()) names += each->text();
    EXPECT_EQ(names, (QStringList{u"Teal"_s, u"Sunset"_s, u"Grape"_s, u"Forest"_s, u"Candy"_s}));
    EXPECT_TRUE(choice("lagoon")->isChecked());
}

TEST_F(SettingsViews, ChangesTheThemeAtAClickAnywhereOnIt) {
    view.show();
    QTest::mouseClick(choice("forest"), Qt::LeftButton, {}, QPoint(4, 4));
    EXPECT_EQ(settings.theme(), AppTheme::forest);
    EXPECT_FALSE(choice("lagoon")->isChecked());
}

TEST_F(SettingsViews, ClosesAtEsc) {
    view.show();
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_FALSE(view.isVisible());
}

TEST_F(SettingsViews, SaysWhenASettingCouldNotBeSaved) {
    FullStore full;
    AppSettings unsaved(full);
    SettingsView stubborn({*model, unsaved, rules, theme, commands, desktop, announcer});
    stubborn.findChild<QCheckBox*>(u"setting-groupByMonth"_s)->click();
    EXPECT_TRUE(unsaved.groupByMonth());
    EXPECT_FALSE(stubborn.findChild<Banner*>()->isHidden());
}

}  // namespace
