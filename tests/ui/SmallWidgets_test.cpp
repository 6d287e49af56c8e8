#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/Banner.h"
#include "OrdovanApp/theme/BottomBar.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/ElidedLabel.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/FilterField.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "OrdovanApp/theme/ScreenHeader.h"
#include "OrdovanApp/theme/StatRow.h"
#include "OrdovanApp/theme/ToolTips.h"
#include "tests/support/WidgetTestMain.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QListView>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocumentFragment>
#include <QToolTip>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

class SmallWidgets : public ::testing::Test {
protected:
    void SetUp() override {
        qputenv("ORDOVAN_COLOR_SCHEME", "light");
        theme = std::make_unique<ThemeEnvironment>(AppTheme::lagoon);
    }
    static QString name(QWidget* widget) {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    }
    static QAccessible::Role role(QWidget* widget) { return QAccessible::queryAccessibleInterface(widget)->role(); }

    std::unique_ptr<ThemeEnvironment> theme;
};

// ToolTips

TEST_F(SmallWidgets, AToolTipShowsANameLetterForLetter) {
    for (const QString& text : {u"R&D"_s, u"old & tired"_s, u"<b>x</b>.txt"_s, u"<img src=a.png>"_s, u"a &lt; b"_s,
                                u"/r/<b>x</b>.txt\nGoes  to R&D"_s}) {
        const QString tip = ToolTips::plain(text);
        const bool isMarkup = Qt::mightBeRichText(tip);
        EXPECT_EQ(isMarkup ? QTextDocumentFragment::fromHtml(tip).toPlainText() : tip, text);
    }
    EXPECT_EQ(ToolTips::plain({}), QString());
}

TEST_F(SmallWidgets, AnElidedLabelShowsItsTextLetterForLetterAsItsToolTip) {
    ElidedLabel label(u"a folder with a long name for R&D"_s);
    label.resize(80, 20);
    label.show();
    QHelpEvent help(QEvent::ToolTip, {5, 5}, label.mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(&label, &help);
    EXPECT_EQ(QToolTip::text(), u"a folder with a long name for R&D"_s);
}

// ElidedLabel

TEST_F(SmallWidgets, AnElidedLabelKeepsItsWholeTextAsItsName) {
    ElidedLabel label(u"/home/me/Downloads/camera/2026/IMG_2031 & more.HEIC"_s);
    label.resize(80, 20);
    EXPECT_EQ(name(&label), u"/home/me/Downloads/camera/2026/IMG_2031 & more.HEIC"_s);
    EXPECT_EQ(role(&label), QAccessible::StaticText);
    label.setText(u"short"_s);
    EXPECT_EQ(name(&label), u"short"_s);
}

TEST_F(SmallWidgets, AnElidedLabelCanBeNarrowerThanItsText) {
    ElidedLabel label(QString(400, u'x'));
    EXPECT_LT(label.minimumSizeHint().width(), 100);
    EXPECT_GT(label.sizeHint().width(), 400);
}

TEST_F(SmallWidgets, AnElidedLabelShowsTheStartAndTheEnd) {
    ElidedLabel label(u"start-"_s + QString(300, u'i') + u"-end"_s);
    label.resize(120, 20);
    const QImage whole = label.grab().toImage();
    label.setElideMode(Qt::ElideRight);
    EXPECT_NE(label.grab().toImage(), whole);
}

// ScreenHeader

TEST_F(SmallWidgets, AHeaderShowsTheFoldersNameAndTellsItsPath) {
    ScreenHeader header(*theme, u"Smart Inbox"_s);
    auto* folder = header.findChild<ElidedLabel*>(u"folderName"_s);
    EXPECT_TRUE(folder->parentWidget()->isHidden());
    header.setFolder(u"/home/me/Downloads"_s);
    EXPECT_FALSE(folder->parentWidget()->isHidden());
    EXPECT_EQ(name(folder), u"Downloads"_s);
    EXPECT_EQ(folder->accessibleDescription(), u"/home/me/Downloads"_s);
    header.setFolder(u"/"_s);
    EXPECT_EQ(name(folder), u"/"_s);
    header.setFolder(std::nullopt);
    EXPECT_TRUE(folder->parentWidget()->isHidden());
}

TEST_F(SmallWidgets, AHeaderHasItsTitleAndItsLineAsNames) {
    ScreenHeader header(*theme, u"Duplicates"_s);
    header.setLede(u"Click a file to keep it."_s);
    EXPECT_EQ(name(header.findChild<QLabel*>(u"screenTitle"_s)), u"Duplicates"_s);
    EXPECT_EQ(name(header.findChild<QLabel*>(u"screenLede"_s)), u"Click a file to keep it."_s);
}

// Buttons

TEST_F(SmallWidgets, ButtonsAreNamedByTheirText) {
    const std::unique_ptr<QPushButton> primary(Buttons::primary(u"Organize 3 Files…"_s));
    EXPECT_EQ(name(primary.get()), u"Organize 3 Files…"_s);
    EXPECT_EQ(role(primary.get()), QAccessible::Button);
    const std::unique_ptr<QPushButton> close(Buttons::glyphOnly(*theme, Glyph::close, u"Close"_s));
    EXPECT_EQ(name(close.get()), u"Close"_s);
    EXPECT_EQ(close->toolTip(), u"Close"_s);
}

TEST_F(SmallWidgets, NoButtonIsADefaultButtonByItself) {
    const std::unique_ptr<QPushButton> button(Buttons::primary(u"Move to Trash…"_s));
    EXPECT_FALSE(button->isDefault());
}

TEST_F(SmallWidgets, AButtonsGlyphGoesWithTheTheme) {
    const std::unique_ptr<QPushButton> button(Buttons::link(u"Export Plan…"_s));
    Buttons::setGlyph(*theme, button.get(), Glyph::exportPlan);
    const QImage before = button->icon().pixmap(16).toImage();
    theme->setTheme(AppTheme::candy);
    EXPECT_NE(button->icon().pixmap(16).toImage(), before);
}

TEST_F(SmallWidgets, AButtonTakesItsMenu) {
    auto menu = std::make_unique<QMenu>();
    menu->addAction(u"Oldest"_s);
    const QPointer<QMenu> watched(menu.get());
    {
        const std::unique_ptr<QPushButton> button(Buttons::quiet(u"Auto-pick the copy to keep"_s));
        Buttons::setMenu(*theme, button.get(), menu.release());
        EXPECT_EQ(button->menu(), watched);
        EXPECT_EQ(role(button.get()), QAccessible::ButtonMenu);
    }
    EXPECT_TRUE(watched.isNull());
}

TEST_F(SmallWidgets, ReturnPressesAButton) {
    const std::unique_ptr<QPushButton> button(Buttons::quiet(u"Find Duplicates"_s));
    const QSignalSpy clicked(button.get(), &QPushButton::clicked);
    QTest::keyClick(button.get(), Qt::Key_Return);
    QTest::keyClick(button.get(), Qt::Key_Space);
    EXPECT_EQ(clicked.count(), 2);
}

TEST_F(SmallWidgets, AnOpenMenuIsFoundInItsButtonThoughThatWasAskedAboutBefore) {
    const std::unique_ptr<QPushButton> button(Buttons::quiet(u"Older than…"_s));
    EXPECT_EQ(role(button.get()), QAccessible::Button);
    auto* menu = new QMenu;
    menu->addAction(u"Older than 7 days"_s);
    Buttons::setMenu(*theme, button.get(), menu);
    auto* told = QAccessible::queryAccessibleInterface(button.get());
    EXPECT_EQ(told->role(), QAccessible::ButtonMenu);
    EXPECT_EQ(told->text(QAccessible::Name), u"Older than…"_s);
    EXPECT_EQ(told->childCount(), 0);
    menu->popup({});
    ASSERT_EQ(told->childCount(), 1);
    EXPECT_EQ(told->child(0)->child(0)->text(QAccessible::Name), u"Older than 7 days"_s);
    menu->close();
    EXPECT_EQ(told->childCount(), 0);
}

TEST_F(SmallWidgets, AMenuIsCalledAsItsButtonIsWhenItOpens) {
    const std::unique_ptr<QPushButton> button(Buttons::quiet(u"Rock && Roll"_s));
    auto* menu = new QMenu;
    Buttons::setMenu(*theme, button.get(), menu);
    EXPECT_EQ(name(menu), u"Rock & Roll"_s);
    button->setAccessibleName(u"Documents"_s);
    menu->popup({});
    EXPECT_EQ(name(menu), u"Documents"_s);
}

// FilterField

TEST_F(SmallWidgets, AFilterFieldIsNamedByItsPlaceholder) {
    FilterField field(*theme, u"Search duplicates"_s);
    EXPECT_EQ(name(&field), u"Search duplicates"_s);
    EXPECT_EQ(role(&field), QAccessible::EditableText);
}

TEST_F(SmallWidgets, AFilterFieldIsClearedByItsButtonAndByEscape) {
    FilterField field(*theme, u"Search"_s);
    auto* clear = field.findChild<QPushButton*>();
    EXPECT_TRUE(clear->isHidden());
    QTest::keyClicks(&field, u"pdf"_s);
    EXPECT_FALSE(clear->isHidden());
    QTest::mouseClick(clear, Qt::LeftButton);
    EXPECT_EQ(field.text(), QString());
    EXPECT_TRUE(clear->isHidden());
    QTest::keyClicks(&field, u"pdf"_s);
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_EQ(field.text(), QString());
}

// StatRow

TEST_F(SmallWidgets, StatsAreUpdatedInPlace) {
    StatRow row(*theme);
    row.setStats({{u"124"_s, u"proposed"_s}, {u"3"_s, u"need review"_s}});
    const QList<QWidget*> before = row.findChildren<QWidget*>(u"statCard"_s);
    row.setStats({{u"125"_s, u"proposed"_s, true}, {u"2"_s, u"need review"_s}});
    EXPECT_EQ(row.findChildren<QWidget*>(u"statCard"_s), before);
    EXPECT_EQ(name(before[0]), u"125 proposed"_s);
    EXPECT_EQ(role(before[0]), QAccessible::Grouping);
    row.setStats({{u"1"_s, u"file"_s}});
    EXPECT_EQ(row.findChildren<QWidget*>(u"statCard"_s), before.first(1));
}

TEST_F(SmallWidgets, StatsOfLongerTextsTakeNoMoreRoom) {
    StatRow row(*theme);
    row.setStats({{u"1"_s, u"file"_s}, {u"2"_s, u"folders"_s}});
    const QSize before = row.minimumSizeHint();
    row.setStats({{u"1,234,567"_s, QString(100, u'w')}, {u"2"_s, u"folders"_s}});
    EXPECT_EQ(row.minimumSizeHint(), before);
}

TEST_F(SmallWidgets, StatsWrapWhatTheyCountWhereItIsNarrow) {
    StatRow row(*theme);
    row.setStats({{u"124"_s, u"proposed, 121 ticked"_s}, {u"9"_s, u"folders"_s}});
    const int oneLine = row.heightForWidth(600);
    EXPECT_GT(row.heightForWidth(240), oneLine);
    EXPECT_EQ(row.heightForWidth(900), oneLine);
}

// EmptyState

TEST_F(SmallWidgets, AnEmptyStateShowsWhatItIsGiven) {
    EmptyState state(*theme, Glyph::inbox);
    state.setTitle(u"Nothing to organize"_s);
    state.setMessage(u"This folder already looks tidy, or has no supported files."_s);
    state.setPoints({{Glyph::eye, u"See"_s}, {Glyph::undo, u"Undo"_s}});
    QPushButton* button = Buttons::primary(u"Choose Folder…"_s);
    state.addButton(button);
    EXPECT_EQ(name(state.findChild<QLabel*>(u"emptyTitle"_s)), u"Nothing to organize"_s);
    EXPECT_TRUE(state.findChild<QLabel*>(u"emptyFootnote"_s)->isHidden());
    EXPECT_TRUE(state.isAncestorOf(button));
    state.setPoints({});
    for (const QLabel* label : state.findChildren<QLabel*>()) EXPECT_NE(label->text(), u"See"_s);
}

// ProgressStrip

TEST_F(SmallWidgets, AProgressStripShowsItsShareAtAnySize) {
    ProgressStrip strip(*theme);
    auto* bar = strip.findChild<QProgressBar*>();
    EXPECT_EQ(bar->maximum(), 0);
    strip.setText(u"Organizing 4 files"_s);
    strip.setProgress(1, 4);
    EXPECT_EQ(bar->value() * 4, bar->maximum());
    strip.setProgress(3'000'000'000'000, 6'000'000'000'000);
    EXPECT_EQ(bar->value() * 2, bar->maximum());
    strip.setProgress(9, 3);
    EXPECT_EQ(bar->value(), bar->maximum());
    strip.setProgress(0, 0);
    EXPECT_EQ(bar->maximum(), 0);
    EXPECT_EQ(name(bar), u"Organizing 4 files"_s);
    EXPECT_EQ(role(bar), QAccessible::ProgressBar);
}

TEST_F(SmallWidgets, AProgressStripIsCancelledOnce) {
    ProgressStrip strip(*theme);
    QSignalSpy cancelled(&strip, &ProgressStrip::cancelled);
    auto* button = strip.findChild<QPushButton*>(u"progressCancel"_s);
    EXPECT_EQ(name(button), u"Cancel"_s);
    button->click();
    button->click();
    EXPECT_EQ(cancelled.count(), 1);
    strip.reset();
    button->click();
    EXPECT_EQ(cancelled.count(), 2);
}

TEST_F(SmallWidgets, AProgressStripKeepsItsHeight) {
    ProgressStrip strip(*theme);
    strip.setText(u"Working"_s);
    const int before = strip.sizeHint().height();
    strip.setDetail(u"/home/me/Downloads/a.pdf"_s);
    EXPECT_EQ(strip.sizeHint().height(), before);
}

// Banner

TEST_F(SmallWidgets, ABannerUnfoldsItsProblems) {
    Banner banner(*theme, Banner::Kind::warning);
    banner.setText(u"Last organize run moved 2 files."_s);
    auto* toggle = banner.findChild<QPushButton*>(u"bannerToggle"_s);
    EXPECT_TRUE(toggle->isHidden());
    banner.setDetails({u"a.pdf: changed"_s, u"b.pdf: gone"_s});
    EXPECT_FALSE(toggle->isHidden());
    EXPECT_EQ(name(toggle), u"Show Problems"_s);
    toggle->click();
    EXPECT_TRUE(banner.detailsShown());
    EXPECT_EQ(name(toggle), u"Hide Problems"_s);
    EXPECT_EQ(banner.findChild<QListView*>()->model()->rowCount(), 2);
    banner.setDetails({});
    EXPECT_FALSE(banner.detailsShown());
    EXPECT_TRUE(toggle->isHidden());
}

TEST_F(SmallWidgets, ABannerShowsItsProblemsWhole) {
    Banner banner(*theme, Banner::Kind::warning);
    const QString sentence = u"The file changed since the preview, or another program has it open; left untouched."_s;
    banner.setDetails({u"a.pdf — "_s + sentence, u"b.pdf — short"_s});
    banner.resize(900, banner.sizeHint().height());
    banner.show();
    banner.setDetailsShown(true);
    const auto* list = banner.findChild<QListView*>();
    const auto heightOf = [list](int row) { return list->visualRect(list->model()->index(row, 0)).height(); };
    EXPECT_EQ(heightOf(0), heightOf(1));
    banner.resize(360, banner.height());
    QCoreApplication::processEvents();
    EXPECT_GT(heightOf(0), heightOf(1));
    EXPECT_GE(list->viewport()->height(), heightOf(0) + heightOf(1));
}

TEST_F(SmallWidgets, ABannerIsANotificationThatCanBeClosed) {
    Banner banner(*theme, Banner::Kind::info);
    banner.setText(u"2 files moved."_s);
    EXPECT_EQ(name(&banner), u"2 files moved."_s);
    EXPECT_EQ(role(&banner), QAccessible::Notification);
    QSignalSpy closed(&banner, &Banner::closed);
    banner.show();
    banner.findChild<QPushButton*>(u"bannerClose"_s)->click();
    EXPECT_TRUE(banner.isHidden());
    EXPECT_EQ(closed.count(), 1);
}

// BottomBar

TEST_F(SmallWidgets, ABottomBarsSummaryIsOneText) {
    BottomBar bar(*theme);
    auto* summary = bar.findChild<QWidget*>(u"summary"_s);
    bar.setSummary(u"121 files"_s, u"· 4.8 GB"_s);
    EXPECT_EQ(name(summary), u"121 files · 4.8 GB"_s);
    EXPECT_EQ(role(summary), QAccessible::StaticText);
    bar.setSummary({}, u"Recent"_s);
    EXPECT_EQ(name(summary), u"Recent"_s);
}

TEST_F(SmallWidgets, ABottomBarGrowsWhereItsSummaryTakesMoreLines) {
    BottomBar bar(*theme);
    bar.addButton(Buttons::primary(u"Move to Trash…"_s));
    bar.setSummary(u"3 files"_s, u"ticked · 1.2 GB"_s);
    const int usual = bar.heightForWidth(800);
    EXPECT_EQ(bar.heightForWidth(360), usual);
    bar.setSummary(
        u"3 files"_s,
        u"ticked · 1.2 GB. Tick files to clean up. Trashed files can be put back from the Recovery Center."_s);
    EXPECT_EQ(bar.heightForWidth(1400), usual);
    EXPECT_GT(bar.heightForWidth(360), usual);
}

// Announcer

TEST_F(SmallWidgets, AnAnnouncementIsANameWithoutFocus) {
    Announcer announcer;
    QSignalSpy said(&announcer, &Announcer::said);
    announcer.say(u"Preview ready. 12 proposed."_s);
    announcer.say({});
    EXPECT_EQ(said.count(), 1);
    EXPECT_EQ(name(&announcer), u"Preview ready. 12 proposed."_s);
    EXPECT_EQ(role(&announcer), QAccessible::Notification);
    EXPECT_EQ(announcer.focusPolicy(), Qt::NoFocus);
}

TEST_F(SmallWidgets, WhatTwoViewsSayOfOneEventIsSaidOnce) {
    Announcer announcer;
    QSignalSpy said(&announcer, &Announcer::said);
    announcer.say(u"1 file moved."_s);
    announcer.say(u"1 file moved."_s);
    EXPECT_EQ(said.count(), 1);
    QCoreApplication::processEvents();
    announcer.say(u"1 file moved."_s);
    EXPECT_EQ(said.count(), 2);
}

}  // namespace
