#include "OrdovanApp/theme/RowsView.h"

#include "tests/support/ListRows.h"
#include "tests/support/WidgetTestMain.h"

#include <QAbstractItemModelTester>
#include <QHelpEvent>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocumentFragment>
#include <QToolTip>

#include <memory>

using namespace Qt::StringLiterals;
using ordovan::test::ListRows;

namespace {

class RowsViewTest : public ::testing::Test {
public:
    void show(std::vector<ListRows::Line> lines, RowsView::Style style = RowsView::Style::sections) {
        model.set(std::move(lines));
        view = std::make_unique<RowsView>(theme, style);
        view->setModel(&model);
        view->setAttribute(Qt::WA_DontShowOnScreen);
        view->resize(800, 400);
        view->show();
        view->grab();
    }
    /// A head, `count` rows with ticks, another head and as many rows again.
    static std::vector<ListRows::Line> twoGroups(int count) {
        std::vector<ListRows::Line> lines;
        for (const auto* title : {u"First", u"Second"}) {
            lines.push_back(ListRows::head(QString::fromUtf16(title)));
            for (int i = 0; i < count; ++i) {
                lines.push_back(ListRows::tick(u"%1 %2"_s.arg(QString::fromUtf16(title)).arg(i)));
            }
        }
        return lines;
    }
    [[nodiscard]] QRect rect(int row) const { return view->visualRect(model.index(row)); }
    [[nodiscard]] QPoint text(int row) const { return rect(row).center(); }
    void click(const QPoint& point) const { QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, point); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const { QTest::keyClick(view.get(), key, modifiers); }
    [[nodiscard]] int current() const { return view->currentIndex().row(); }
    void setCurrent(int row) const { view->setCurrentIndex(model.index(row)); }
    [[nodiscard]] QMenu* menu() const { return view->findChild<QMenu*>(u"rowMenu"_s); }

    ThemeEnvironment theme{AppTheme::lagoon};
    ListRows model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    std::unique_ptr<RowsView> view;
};

using RowsViewMouse = RowsViewTest;
using RowsViewKeys = RowsViewTest;
using RowsViewOrder = RowsViewTest;

const RowAction open{.id = 1, .text = u"Open"_s, .help = u"Opens it"_s};
const RowAction refuse{.id = 2, .text = u"Refuse"_s, .enabled = false};
const RowAction later{.id = 3, .text = u"Later"_s, .menuOnly = true};
const RowAction eraser{.id = 4, .text = u"Erase"_s, .activates = false};

}  // namespace

// Where things are.

TEST_F(RowsViewTest, StandsRowsBelowTheirHead) {
    show(twoGroups(2));
    EXPECT_EQ(rect(0).topLeft(), QPoint(0, 0));
    EXPECT_EQ(rect(0).height(), 36);
    EXPECT_EQ(rect(1), QRect(0, 36, view->viewport()->width(), 54));
    EXPECT_EQ(view->indexAt(text(4)).row(), 4);
    EXPECT_FALSE(view->indexAt({10, 390}).isValid());
}

TEST_F(RowsViewTest, KeepsTheHeadOfTheGroupInSightAtTheTop) {
    show(twoGroups(20));
    view->verticalScrollBar()->setValue(500);
    EXPECT_EQ(rect(0).top(), 0);
    EXPECT_EQ(view->indexAt({10, 10}).row(), 0);
    EXPECT_EQ(view->rowsInSight().front(), 0);
}

TEST_F(RowsViewTest, PushesTheHeadOutByTheNextOne) {
    show(twoGroups(20));
    const int second = 36 + 20 * 54;
    view->verticalScrollBar()->setValue(second - 10);
    EXPECT_EQ(rect(0).top(), 10 - 36);
    EXPECT_EQ(rect(21).top(), 10);
    view->verticalScrollBar()->setValue(second);
    EXPECT_EQ(rect(21).top(), 0);
}

TEST_F(RowsViewTest, AsksOnlyForWhatIsInSight) {
    std::vector<ListRows::Line> lines{ListRows::head(u"All"_s)};
    for (int i = 0; i < 100'000; ++i) lines.push_back(ListRows::tick(QString::number(i)));
    show(std::move(lines));
    model.contentCalls = 0;
    view->grab();
    EXPECT_GT(model.contentCalls, 5);
    EXPECT_LT(model.contentCalls, 30);
    model.contentCalls = 0;
    view->scrollTo(model.index(70'000));
    view->grab();
    EXPECT_TRUE(view->viewport()->rect().contains(rect(70'000)));
    EXPECT_LT(model.contentCalls, 30);
}

TEST_F(RowsViewTest, ScrollsARowFromBehindTheHead) {
    show(twoGroups(20));
    view->verticalScrollBar()->setValue(600);
    view->scrollTo(model.index(3));
    EXPECT_EQ(rect(3).top(), 36);
    view->scrollTo(model.index(15));
    EXPECT_EQ(rect(15).bottom(), view->viewport()->rect().bottom());
}

TEST_F(RowsViewTest, FollowsRowsThatComeAndGo) {
    show(twoGroups(3));
    setCurrent(3);
    model.remove(3);
    EXPECT_EQ(current(), 4) << "not the head that took its place";
    EXPECT_EQ(rect(3).height(), 36);
    model.insert(1, ListRows::tick(u"new"_s));
    EXPECT_EQ(rect(4).height(), 36);
    model.set({});
    view->grab();
    EXPECT_EQ(view->verticalScrollBar()->maximum(), 0);
    EXPECT_FALSE(view->indexAt({10, 10}).isValid());
}

TEST_F(RowsViewTest, IsNoHigherThanItsRowsWhereItFollowsThem) {
    show(twoGroups(2));
    view->setHeightFollowsRows(true);
    EXPECT_EQ(view->maximumHeight(), 2 * 36 + 4 * 54 + 2);
}

TEST_F(RowsViewTest, PutsCardsBesideEachOther) {
    show(twoGroups(2), RowsView::Style::cards);
    view->resize(1000, 400);
    EXPECT_EQ(rect(3).top(), rect(0).top());
    EXPECT_GT(rect(3).left(), rect(0).right());
    press(Qt::Key_Down);
    press(Qt::Key_Right);
    EXPECT_EQ(current(), 4);
    press(Qt::Key_Left);
    EXPECT_EQ(current(), 1);
}

TEST_F(RowsViewTest, LeavesTheScrollBarRoomBesideCards) {
    show(twoGroups(20), RowsView::Style::cards);
    view->resize(500, 2400);
    QCoreApplication::processEvents();
    const int whole = rect(0).width();
    view->resize(500, 400);
    QCoreApplication::processEvents();
    EXPECT_TRUE(view->verticalScrollBar()->isVisible());
    EXPECT_LT(rect(0).width(), whole);
    EXPECT_LT(rect(0).right(), view->viewport()->width());
}

TEST_F(RowsViewTest, GivesEveryRowTheSameColumns) {
    auto line = ListRows::tick(u"A name of some length"_s);
    line.content.columns = {u"1.2 MB"_s, u"12 Nov 2026"_s};
    auto other = line;
    other.content.glyph = Glyph::folder;
    other.content.chip = RowContent::Chip{u"A folder with a long name / 2026-11"_s, Qt::red};
    RowsPainter painter(theme);
    painter.setColumnWidths({84, 96});
    for (int width = 150; width < 900; width += 10) {
        const auto columns = [&](const RowContent& content) {
            return painter.layout(content, {0, 0, width, 54}, RowsPainter::Head::none).columns;
        };
        EXPECT_EQ(columns(line.content), columns(other.content)) << width;
    }
}

TEST_F(RowsViewTest, GivesUpColumnsWhereItIsNarrow) {
    auto line = ListRows::tick(u"A name of some length"_s);
    line.content.columns = {u"1.2 MB"_s, u"12 Nov 2026"_s};
    show({line});
    view->setColumnWidths({84, 96});
    RowsPainter painter(theme);
    painter.setColumnWidths({84, 96});
    EXPECT_EQ(painter.layout(line.content, {0, 0, 800, 54}, RowsPainter::Head::none).columns.size(), 2U);
    EXPECT_EQ(painter.layout(line.content, {0, 0, 360, 54}, RowsPainter::Head::none).columns.size(), 1U);
}

// The pointer.

TEST_F(RowsViewMouse, TicksAtTheMarkAndSelectsElsewhere) {
    show(twoGroups(3));
    click(view->markRect(2).center());
    EXPECT_EQ(model.toggled, std::vector{2});
    EXPECT_FALSE(view->selectionModel()->isSelected(model.index(2)));
    click(text(3));
    EXPECT_EQ(model.toggled, std::vector{2});
    EXPECT_TRUE(view->selectionModel()->isSelected(model.index(3)));
}

TEST_F(RowsViewMouse, TicksTwiceByTwoQuickClicks) {
    show(twoGroups(3));
    const QPoint mark = view->markRect(1).center();
    click(mark);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, mark);
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, mark);
    EXPECT_EQ(model.toggled, (std::vector{1, 1}));
}

TEST_F(RowsViewMouse, LeavesTheMarkAloneWhenReleasedElsewhere) {
    show(twoGroups(3));
    QTest::mousePress(view->viewport(), Qt::LeftButton, {}, view->markRect(1).center());
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, view->markRect(2).center());
    EXPECT_TRUE(model.toggled.empty());
}

TEST_F(RowsViewMouse, LeavesHeadsAlone) {
    show(twoGroups(3));
    QSignalSpy activated(view.get(), &RowsView::actionTriggered);
    click({10, 10});
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, {10, 10});
    EXPECT_TRUE(view->selectionModel()->selectedIndexes().isEmpty());
    EXPECT_TRUE(model.toggled.empty());
    EXPECT_TRUE(activated.isEmpty());
}

TEST_F(RowsViewMouse, ChoosesAmongRadioRowsByAClickAnywhere) {
    show({ListRows::radio(u"a"_s, true), ListRows::radio(u"b"_s)});
    click(text(1));
    EXPECT_EQ(model.toggled, std::vector{1});
    click(text(1));
    EXPECT_EQ(model.toggled, std::vector{1}) << "chosen already";
}

TEST_F(RowsViewMouse, TriggersAButtonOnRelease) {
    show({ListRows::plain(u"a"_s, {open, refuse, later})});
    QSignalSpy triggered(view.get(), &RowsView::actionTriggered);
    QTest::mousePress(view->viewport(), Qt::LeftButton, {}, view->actionRect(0, open.id).center());
    EXPECT_TRUE(triggered.isEmpty());
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, view->actionRect(0, open.id).center());
    ASSERT_EQ(triggered.size(), 1);
    EXPECT_EQ(triggered.first(), (QVariantList{0, open.id}));
}

TEST_F(RowsViewMouse, TriggersNoDisabledButton) {
    show({ListRows::plain(u"a"_s, {open, refuse, later})});
    QSignalSpy triggered(view.get(), &RowsView::actionTriggered);
    click(view->actionRect(0, refuse.id).center());
    EXPECT_TRUE(triggered.isEmpty());
    EXPECT_TRUE(view->actionRect(0, later.id).isEmpty()) << "in the menu alone";
}

TEST_F(RowsViewMouse, ActivatesByADoubleClick) {
    show({ListRows::plain(u"a"_s), ListRows::plain(u"b"_s, {later}), ListRows::plain(u"c"_s, {eraser})});
    QSignalSpy triggered(view.get(), &RowsView::actionTriggered);
    for (int row = 0; row < 3; ++row) QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, text(row));
    ASSERT_EQ(triggered.size(), 1);
    EXPECT_EQ(triggered.first(), (QVariantList{1, later.id}));
}

TEST_F(RowsViewMouse, OpensTheMenuOfARow) {
    show({ListRows::plain(u"a"_s, {open, refuse, later})});
    QSignalSpy triggered(view.get(), &RowsView::actionTriggered);
    QContextMenuEvent event(QContextMenuEvent::Mouse, text(0), view->viewport()->mapToGlobal(text(0)));
    QApplication::sendEvent(view->viewport(), &event);
    ASSERT_TRUE(menu());
    EXPECT_EQ(menu()->accessibleName(), u"a"_s);
    QStringList texts;
    for (const QAction* action : menu()->actions())
        texts << action->text() + (action->isEnabled() ? u""_s : u" (no)"_s);
    EXPECT_EQ(texts, (QStringList{u"Open"_s, u"Refuse (no)"_s, u"Later"_s}));
    menu()->actions().last()->trigger();
    ASSERT_EQ(triggered.size(), 1);
    EXPECT_EQ(triggered.first(), (QVariantList{0, later.id}));
}

// The keyboard.

TEST_F(RowsViewKeys, PassOverHeads) {
    show(twoGroups(2));
    setCurrent(2);
    press(Qt::Key_Down);
    EXPECT_EQ(current(), 4);
    press(Qt::Key_Up);
    EXPECT_EQ(current(), 2);
    press(Qt::Key_End);
    EXPECT_EQ(current(), 5);
    press(Qt::Key_Home);
    EXPECT_EQ(current(), 1);
    press(Qt::Key_Up);
    EXPECT_EQ(current(), 1);
}

TEST_F(RowsViewKeys, GoByPages) {
    show(twoGroups(50));
    setCurrent(1);
    press(Qt::Key_PageDown);
    EXPECT_EQ(current(), 7);
    EXPECT_TRUE(view->viewport()->rect().contains(rect(7)));
    press(Qt::Key_PageUp);
    EXPECT_EQ(current(), 1);
    for (int i = 0; i < 40; ++i) press(Qt::Key_PageDown);
    EXPECT_EQ(current(), 101);
    for (int i = 0; i < 40; ++i) press(Qt::Key_PageUp);
    EXPECT_EQ(current(), 1);
}

TEST_F(RowsViewKeys, TickBySpaceWhereThereIsATick) {
    show({ListRows::tick(u"a"_s), ListRows::plain(u"b"_s)});
    setCurrent(0);
    press(Qt::Key_Space);
    setCurrent(1);
    press(Qt::Key_Space);
    EXPECT_EQ(model.toggled, std::vector{0});
}

TEST_F(RowsViewKeys, TickAllThatIsSelectedBySpaceAndUntickItWhereAllIsTicked) {
    show({ListRows::tick(u"a"_s, false), ListRows::tick(u"b"_s), ListRows::plain(u"c"_s)});
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    setCurrent(0);
    view->selectAll();
    press(Qt::Key_Space);
    EXPECT_EQ(model.toggled, std::vector{0});
    press(Qt::Key_Space);
    EXPECT_EQ(model.toggled, (std::vector{0, 0, 1}));
}

TEST_F(RowsViewKeys, TriggerTheFirstActionByReturn) {
    show({ListRows::plain(u"a"_s, {refuse, eraser, open, later}), ListRows::plain(u"b"_s)});
    QSignalSpy triggered(view.get(), &RowsView::actionTriggered);
    setCurrent(0);
    press(Qt::Key_Return);
    setCurrent(1);
    press(Qt::Key_Enter);
    ASSERT_EQ(triggered.size(), 1);
    EXPECT_EQ(triggered.first(), (QVariantList{0, open.id}));
}

TEST_F(RowsViewKeys, FindARowByTyping) {
    show({ListRows::head(u"beta group"_s), ListRows::plain(u"alpha"_s), ListRows::plain(u"Beta"_s)});
    setCurrent(1);
    QTest::keyClicks(view.get(), u"be"_s);
    EXPECT_EQ(current(), 2);
}

TEST_F(RowsViewKeys, SelectAllRowsButNoHeadWhereSeveralCanBe) {
    show(twoGroups(2));
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(view->selectionModel()->selectedIndexes().isEmpty());
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view->selectionModel()->selectedIndexes().size(), 4);
    click(text(1));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ShiftModifier, text(4));
    EXPECT_EQ(view->selectionModel()->selectedIndexes().size(), 3);
}

TEST_F(RowsViewKeys, OpenTheMenuOfTheCurrentRow) {
    show({ListRows::plain(u"a"_s, {later}), ListRows::plain(u"b"_s)});
    setCurrent(0);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(view->viewport(), &event);
    ASSERT_TRUE(menu());
    EXPECT_EQ(menu()->actions().size(), 1);
    delete menu();
    press(Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_TRUE(menu());
}

// Another order.

TEST_F(RowsViewOrder, AsksToMoveByKeys) {
    show(twoGroups(3));
    QSignalSpy moves(view.get(), &RowsView::moveRequested);
    setCurrent(2);
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_TRUE(moves.isEmpty()) << "not before it is allowed";
    view->setReorderable(true);
    press(Qt::Key_Down, Qt::AltModifier);
    press(Qt::Key_Up, Qt::AltModifier);
    ASSERT_EQ(moves.size(), 2);
    EXPECT_EQ(moves[0], (QVariantList{2, 4}));
    EXPECT_EQ(moves[1], (QVariantList{2, 1}));
    setCurrent(1);
    press(Qt::Key_Up, Qt::AltModifier);
    setCurrent(3);
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(moves.size(), 2) << "only in its group";
}

TEST_F(RowsViewOrder, AsksToMoveByDragging) {
    show(twoGroups(4));
    view->setReorderable(true);
    QSignalSpy moves(view.get(), &RowsView::moveRequested);
    QTest::mousePress(view->viewport(), Qt::LeftButton, {}, text(1));
    QTest::mouseMove(view->viewport(), text(2));
    QTest::mouseMove(view->viewport(), text(3) + QPoint(0, 5));
    view->grab();
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, text(3) + QPoint(0, 5));
    ASSERT_EQ(moves.size(), 1);
    EXPECT_EQ(moves.first(), (QVariantList{1, 4}));
}

TEST_F(RowsViewOrder, GivesADragUpByEscape) {
    show(twoGroups(4));
    view->setReorderable(true);
    QSignalSpy moves(view.get(), &RowsView::moveRequested);
    QTest::mousePress(view->viewport(), Qt::LeftButton, {}, text(1));
    QTest::mouseMove(view->viewport(), text(3));
    press(Qt::Key_Escape);
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, text(3));
    EXPECT_TRUE(moves.isEmpty());
}

// Names that look like something else.

TEST_F(RowsViewTest, ShowsMarkUpInANameAsItIs) {
    ListRows::Line row = ListRows::tick(u"<b>x</b>.txt"_s);
    row.content.toolTip = u"/r/<b>x</b>.txt\nGoes to R&D"_s;
    show({row});
    QHelpEvent help(QEvent::ToolTip, text(0), view->viewport()->mapToGlobal(text(0)));
    QCoreApplication::sendEvent(view->viewport(), &help);
    EXPECT_EQ(QTextDocumentFragment::fromHtml(QToolTip::text()).toPlainText(), u"/r/<b>x</b>.txt\nGoes to R&D"_s);
}

TEST_F(RowsViewTest, TellsOverATickWhatItDoes) {
    ListRows::Line row = ListRows::tick(u"a.mov"_s);
    row.content.toolTip = u"/r/a.mov"_s;
    row.content.markHelp = u"Select for Trash"_s;
    show({row});
    for (const auto& [place, tip] :
         {std::pair(view->markRect(0).center(), row.content.markHelp), std::pair(text(0), row.content.toolTip)}) {
        QHelpEvent help(QEvent::ToolTip, place, view->viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(view->viewport(), &help);
        EXPECT_EQ(QToolTip::text(), tip);
    }
}

TEST_F(RowsViewTest, KeepsAnAmpersandInTheMenuOfARow) {
    ListRows::Line row = ListRows::tick(u"dmg"_s);
    row.content.actions = {RowAction{.id = 1, .text = u"Delete rule for R&D"_s}};
    show({row});
    view->openMenu(0, text(0));
    EXPECT_EQ(menu()->actions().front()->text(), u"Delete rule for R&&D"_s);
}
