#include "OrdovanApp/theme/Sheet.h"

#include "OrdovanApp/theme/FocusRing.h"
#include "OrdovanApp/theme/Segments.h"
#include "tests/support/WidgetTestMain.h"

#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

/// A window with a field, and what is tested in it.
class InAWindow : public ::testing::Test {
protected:
    void SetUp() override {
        qputenv("ORDOVAN_COLOR_SCHEME", "light");
        theme = std::make_unique<ThemeEnvironment>(AppTheme::lagoon);
        window = std::make_unique<QWidget>();
        window->resize(800, 600);
        layout = new QVBoxLayout(window.get());
        field = new QLineEdit;
        layout->addWidget(field);
    }
    void show() {
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        field->setFocus();
    }
    [[nodiscard]] QWidget* focus() const { return window->focusWidget(); }

    std::unique_ptr<ThemeEnvironment> theme;
    std::unique_ptr<QWidget> window;
    QVBoxLayout* layout = nullptr;
    QLineEdit* field = nullptr;
};

class SheetTest : public InAWindow {
protected:
    void SetUp() override {
        InAWindow::SetUp();
        show();
        sheet = new Sheet(*theme, window.get());
        sheet->setTitle(u"Organize these files?"_s);
        sheet->setMessage(u"Files move into the ordovan+ folder."_s);
        sheet->setConfirm(u"Organize 3 Files"_s);
        confirmed = std::make_unique<QSignalSpy>(sheet, &Sheet::confirmed);
        cancelled = std::make_unique<QSignalSpy>(sheet, &Sheet::cancelled);
    }
    Sheet* sheet = nullptr;
    std::unique_ptr<QSignalSpy> confirmed;
    std::unique_ptr<QSignalSpy> cancelled;
};

TEST_F(SheetTest, IsADialogNamedByItsTitle) {
    sheet->open();
    const QAccessibleInterface* dialog = QAccessible::queryAccessibleInterface(sheet);
    EXPECT_EQ(dialog->role(), QAccessible::Dialog);
    EXPECT_EQ(dialog->text(QAccessible::Name), u"Organize these files?"_s);
}

TEST_F(SheetTest, CoversItsHostAndFollowsItsSize) {
    EXPECT_FALSE(sheet->isVisible());
    sheet->open();
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->geometry(), window->rect());
    window->resize(900, 500);
    EXPECT_EQ(sheet->geometry(), window->rect());
}

TEST_F(SheetTest, KeepsTheFocusInside) {
    sheet->open();
    EXPECT_EQ(focus(), sheet->confirmButton());
    QTest::keyClick(focus(), Qt::Key_Tab);
    EXPECT_EQ(focus(), sheet->cancelButton());
    QTest::keyClick(focus(), Qt::Key_Tab);
    EXPECT_EQ(focus(), sheet->confirmButton());
    QTest::keyClick(focus(), Qt::Key_Backtab);
    EXPECT_EQ(focus(), sheet->cancelButton());
    field->setFocus();
    EXPECT_TRUE(sheet->isAncestorOf(focus()));
}

TEST_F(SheetTest, IsGivenUpByEscapeAndGivesTheFocusBack) {
    sheet->open();
    QTest::keyClick(focus(), Qt::Key_Escape);
    EXPECT_TRUE(sheet->isHidden());
    EXPECT_EQ(cancelled->count(), 1);
    EXPECT_EQ(confirmed->count(), 0);
    EXPECT_EQ(focus(), field);
}

TEST_F(SheetTest, IsConfirmedByReturnAndByItsButton) {
    sheet->open();
    QTest::keyClick(focus(), Qt::Key_Return);
    EXPECT_EQ(confirmed->count(), 1);
    EXPECT_EQ(focus(), field);
    sheet->open();
    QTest::mouseClick(sheet->confirmButton(), Qt::LeftButton);
    EXPECT_EQ(confirmed->count(), 2);
    EXPECT_EQ(cancelled->count(), 0);
}

TEST_F(SheetTest, DoesNotConfirmWithReturnWhatIsDestructive) {
    sheet->setConfirm(u"Move 1 file to Trash"_s, true);
    sheet->open();
    EXPECT_EQ(focus(), sheet->cancelButton());
    QTest::keyClick(focus(), Qt::Key_Return);
    EXPECT_EQ(confirmed->count(), 0);
    EXPECT_EQ(cancelled->count(), 1);
}

TEST_F(SheetTest, AnswersOnce) {
    sheet->open();
    sheet->confirmButton()->click();
    sheet->confirmButton()->click();
    EXPECT_EQ(confirmed->count(), 1);
}

TEST_F(SheetTest, KeepsKeysAndClicksFromWhatItCovers) {
    auto* below = new QPushButton(u"Below"_s);
    layout->addWidget(below);
    QSignalSpy pressed(below, &QPushButton::clicked);
    sheet->open();
    QTest::mouseClick(window->childAt(5, 5), Qt::LeftButton);
    QTest::keyClicks(focus(), u"abc"_s);
    EXPECT_EQ(pressed.count(), 0);
    EXPECT_EQ(field->text(), QString());
    EXPECT_FALSE(sheet->isHidden());
}

TEST_F(SheetTest, ShowsItsPointsUntilTheyAreCleared) {
    sheet->addPoint(Glyph::undo, u"Applying is explicit and reversible"_s);
    const auto shows = [this] {
        for (const QLabel* label : sheet->findChildren<QLabel*>()) {
            if (label->text() == u"Applying is explicit and reversible"_s) return true;
        }
        return false;
    };
    EXPECT_TRUE(shows());
    sheet->clearPoints();
    EXPECT_FALSE(shows());
}

TEST_F(SheetTest, FitsASmallWindow) {
    window->resize(320, 300);
    sheet->open();
    const QWidget* card = sheet->findChild<QWidget*>(u"sheetCard"_s);
    EXPECT_TRUE(sheet->rect().contains(card->geometry()));
}

TEST_F(SheetTest, TakesNoKeyThatIsHeldForAnAnswer) {
    sheet->open();
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
    QApplication::sendEvent(focus(), &held);
    QKeyEvent up(QEvent::KeyRelease, Qt::Key_Return, Qt::NoModifier);
    QKeyEvent down(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    for (QKeyEvent* event : {&up, &down}) event->setTimestamp(5000);
    for (QKeyEvent* event : {&up, &down}) QApplication::sendEvent(focus(), event);
    EXPECT_EQ(confirmed->count(), 0);
    EXPECT_TRUE(sheet->isVisible());
    down.setTimestamp(5100);
    QApplication::sendEvent(focus(), &down);
    EXPECT_EQ(confirmed->count(), 1);
}

class SegmentsTest : public InAWindow {
protected:
    void SetUp() override {
        InAWindow::SetUp();
        segments = new Segments(*theme);
        segments->setSegments({u"All"_s, u"Organize"_s, u"Undo"_s}, {u"Shows all folders"_s});
        layout->addWidget(segments);
        show();
        changed = std::make_unique<QSignalSpy>(segments, &Segments::currentChanged);
    }
    [[nodiscard]] QRadioButton* segment(const QString& text) const {
        for (QRadioButton* button : segments->findChildren<QRadioButton*>()) {
            if (button->accessibleName() == text) return button;
        }
        return nullptr;
    }
    Segments* segments = nullptr;
    std::unique_ptr<QSignalSpy> changed;
};

TEST_F(SegmentsTest, BeginWithTheFirst) {
    EXPECT_EQ(segments->current(), 0);
    EXPECT_TRUE(segment(u"All"_s)->isChecked());
    EXPECT_EQ(segment(u"All"_s)->toolTip(), u"Shows all folders"_s);
}

TEST_F(SegmentsTest, AreChosenByClickAndByName) {
    QTest::mouseClick(segment(u"Undo"_s), Qt::LeftButton);
    EXPECT_EQ(segments->current(), 2);
    EXPECT_EQ(changed->count(), 1);
    QTest::mouseClick(segment(u"Undo"_s), Qt::LeftButton);
    EXPECT_EQ(changed->count(), 1);
    EXPECT_TRUE(segment(u"Undo"_s)->isChecked());
    EXPECT_FALSE(segment(u"All"_s)->isChecked());
}

TEST_F(SegmentsTest, AreRadioButtonsToAssistiveTechnologies) {
    QAccessibleInterface* second = QAccessible::queryAccessibleInterface(segment(u"Organize"_s));
    EXPECT_EQ(second->role(), QAccessible::RadioButton);
    EXPECT_EQ(second->text(QAccessible::Name), u"Organize"_s);
    second->actionInterface()->doAction(second->actionInterface()->actionNames().constFirst());
    EXPECT_EQ(segments->current(), 1);
    EXPECT_TRUE(second->state().checked);
}

TEST_F(SegmentsTest, AreOneTabStopThatTheArrowKeysMove) {
    QTest::keyClick(focus(), Qt::Key_Tab);
    EXPECT_EQ(focus(), segment(u"All"_s));
    QTest::keyClick(focus(), Qt::Key_Right);
    EXPECT_EQ(segments->current(), 1);
    EXPECT_EQ(focus(), segment(u"Organize"_s));
    QTest::keyClick(focus(), Qt::Key_End);
    QTest::keyClick(focus(), Qt::Key_Right);
    EXPECT_EQ(segments->current(), 2);
    QTest::keyClick(focus(), Qt::Key_Left);
    EXPECT_EQ(segments->current(), 1);
    QTest::keyClick(focus(), Qt::Key_Tab);
    EXPECT_EQ(focus(), field);
}

TEST_F(SegmentsTest, AreReachedWhereTheyStandAlsoWhenTheyAreReplaced) {
    auto* after = new QPushButton;
    layout->addWidget(after);
    after->show();
    segments->setSegments({u"All"_s, u"Trash"_s});
    QTest::keyClick(focus(), Qt::Key_Tab);
    EXPECT_EQ(focus(), segment(u"All"_s));
    QTest::keyClick(focus(), Qt::Key_Tab);
    EXPECT_EQ(focus(), after);
}

TEST_F(SegmentsTest, KeepTheChosenTextWhenTheyAreReplaced) {
    segments->setCurrent(2);
    segments->setSegments({u"All"_s, u"Undo"_s});
    EXPECT_EQ(segments->current(), 1);
    segments->setSegments({u"All"_s, u"Trash"_s});
    EXPECT_EQ(segments->current(), 0);
    segments->setCurrent(7);
    EXPECT_EQ(segments->current(), 0);
}

TEST_F(SegmentsTest, ThatFindNoRoomAreInTheMenu) {
    segments->setFixedWidth(segments->sizeHint().width() - 4);
    auto* more = segments->findChild<QPushButton*>(u"moreSegments"_s);
    window->layout()->activate();
    EXPECT_FALSE(more->isHidden());
    EXPECT_TRUE(segment(u"Undo"_s)->isHidden());
    const QList<QAction*> rest = more->menu()->actions();
    ASSERT_FALSE(rest.isEmpty());
    EXPECT_EQ(rest.constLast()->text(), u"Undo"_s);
    rest.constLast()->trigger();
    EXPECT_EQ(segments->current(), 2);
    EXPECT_EQ(more->accessibleName(), u"Undo"_s);
}

TEST_F(InAWindow, TheFocusRingGoesAroundATextFieldAndWhatTheKeyboardReaches) {
    auto* button = new QPushButton(u"Quiet"_s);
    layout->addWidget(button);
    show();
    FocusRing ring(*theme);
    field->clearFocus();
    field->setFocus();
    EXPECT_EQ(ring.target(), field);
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(focus(), button);
    EXPECT_EQ(ring.target(), nullptr);
    QTest::keyClick(button, Qt::Key_Shift);
    EXPECT_EQ(ring.target(), button);
    button->hide();
    EXPECT_NE(ring.target(), button);
    auto* page = new QWidget;
    layout->addWidget(page);
    page->show();
    page->setFocus();
    EXPECT_EQ(focus(), page);
    EXPECT_EQ(ring.target(), nullptr) << "nothing can be done with a page";
}

}  // namespace
