#include "OrdovanApp/theme/RowsView.h"

#include "tests/support/ListRows.h"
#include "tests/support/WidgetTestMain.h"

#include <QAccessible>
#include <QSignalSpy>

#include <memory>

using namespace Qt::StringLiterals;
using ordovan::test::ListRows;

namespace {

class RowsAccessibilityTest : public ::testing::Test {
public:
    void show(std::vector<ListRows::Line> lines) {
        model.set(std::move(lines));
        view = std::make_unique<RowsView>(theme, RowsView::Style::sections);
        view->setAccessibleName(u"Proposed file changes"_s);
        view->setColumnWidths({80});
        view->setModel(&model);
        view->resize(800, 300);
        view->show();
        list = QAccessible::queryAccessibleInterface(view.get());
    }
    [[nodiscard]] QAccessibleInterface* row(int index) const { return list->child(index); }
    static QString name(QAccessibleInterface* of) { return of->text(QAccessible::Name); }
    static QStringList childNames(QAccessibleInterface* of) {
        QStringList names;
        for (int i = 0; i < of->childCount(); ++i) names << name(of->child(i));
        return names;
    }
    static bool act(QAccessibleInterface* on, const QString& action) {
        QAccessibleActionInterface* actions = on->actionInterface();
        if (actions == nullptr || !actions->actionNames().contains(action)) return false;
        actions->doAction(action);
        return true;
    }
    static std::vector<ListRows::Line> ticks(int count) {
        std::vector<ListRows::Line> lines{ListRows::head(u"All"_s)};
        for (int i = 0; i < count; ++i) lines.push_back(ListRows::tick(QString::number(i)));
        return lines;
    }

    const QString toggle = QAccessibleActionInterface::toggleAction();
    const QString press = QAccessibleActionInterface::pressAction();
    const QString menu = QAccessibleActionInterface::showMenuAction();
    const QString focus = QAccessibleActionInterface::setFocusAction();
    ThemeEnvironment theme{AppTheme::lagoon};
    ListRows model;
    std::unique_ptr<RowsView> view;
    QAccessibleInterface* list = nullptr;
};

const RowAction put{.id = 7, .text = u"Put Back"_s, .help = u"Put just this file back"_s};
const RowAction refuse{.id = 8, .text = u"Refuse"_s, .enabled = false};
const RowAction later{.id = 9, .text = u"Later"_s, .menuOnly = true};

}  // namespace

TEST_F(RowsAccessibilityTest, IsAListOfItsRows) {
    show({ListRows::head(u"Head"_s), ListRows::tick(u"tick"_s), ListRows::radio(u"radio"_s),
          ListRows::plain(u"plain"_s)});
    EXPECT_EQ(list->role(), QAccessible::List);
    EXPECT_EQ(name(list), u"Proposed file changes"_s);
    EXPECT_EQ(childNames(list), (QStringList{u"Head"_s, u"tick"_s, u"radio"_s, u"plain"_s}));
    EXPECT_EQ(row(0)->role(), QAccessible::Heading);
    EXPECT_EQ(row(1)->role(), QAccessible::CheckBox);
    EXPECT_EQ(row(2)->role(), QAccessible::RadioButton);
    EXPECT_EQ(row(3)->role(), QAccessible::ListItem);
    EXPECT_EQ(row(2)->parent(), list);
    EXPECT_EQ(list->indexOfChild(row(2)), 2);
}

TEST_F(RowsAccessibilityTest, TellsTheTextsAndButtonsOfARow) {
    auto line = ListRows::plain(u"invoice.pdf"_s, {put, later, refuse});
    line.content.detail = u"A file already exists at the destination."_s;
    line.content.chip = {u"Documents"_s, Qt::blue};
    line.content.columns = {u"84 KB"_s};
    line.content.description = u"left untouched"_s;
    show({line});
    EXPECT_EQ(row(0)->text(QAccessible::Description), u"left untouched"_s);
    EXPECT_EQ(childNames(row(0)),
              (QStringList{line.content.detail, u"Documents"_s, u"84 KB"_s, u"Put Back"_s, u"Refuse"_s}));
    EXPECT_EQ(row(0)->child(0)->role(), QAccessible::StaticText);
    EXPECT_FALSE(act(row(0)->child(0), press));
    EXPECT_EQ(row(0)->child(3)->role(), QAccessible::Button);
    EXPECT_EQ(row(0)->child(3)->text(QAccessible::Description), u"Put just this file back"_s);
    EXPECT_TRUE(row(0)->child(4)->state().disabled);
    EXPECT_EQ(row(0)->child(3)->parent(), row(0));
    EXPECT_EQ(row(0)->indexOfChild(row(0)->child(3)), 3);
}

TEST_F(RowsAccessibilityTest, TriggersAButtonUnlessDisabled) {
    show({ListRows::plain(u"a"_s, {put, refuse})});
    QSignalSpy triggered(view.get(), &RowsView::actionTriggered);
    EXPECT_TRUE(act(row(0)->child(0), press));
    act(row(0)->child(1), press);
    ASSERT_EQ(triggered.size(), 1);
    EXPECT_EQ(triggered.first(), (QVariantList{0, 7}));
}

TEST_F(RowsAccessibilityTest, TogglesATickRow) {
    show({ListRows::tick(u"a"_s, false)});
    EXPECT_TRUE(row(0)->state().checkable);
    EXPECT_FALSE(row(0)->state().checked);
    EXPECT_TRUE(act(row(0), toggle));
    EXPECT_TRUE(row(0)->state().checked);
    EXPECT_EQ(model.toggled, std::vector{0});
}

TEST_F(RowsAccessibilityTest, OffersNoChangeOfALockedMark) {
    std::vector<ListRows::Line> lines{ListRows::tick(u"a"_s), ListRows::radio(u"b"_s)};
    for (ListRows::Line& line : lines) line.content.enabled = false;
    show(lines);
    for (const int locked : {0, 1}) {
        EXPECT_TRUE(row(locked)->state().disabled) << locked;
        EXPECT_EQ(row(locked)->actionInterface()->actionNames(), QStringList{focus}) << locked;
    }
    EXPECT_FALSE(act(row(0), toggle));
    EXPECT_FALSE(act(row(1), press));
    EXPECT_TRUE(model.toggled.empty());
}

TEST_F(RowsAccessibilityTest, ChoosesARadioRow) {
    show({ListRows::radio(u"a"_s)});
    EXPECT_TRUE(act(row(0), press));
    EXPECT_EQ(model.toggled, std::vector{0});
}

TEST_F(RowsAccessibilityTest, PressesOnlyRowsThatAPressWouldDoSomethingTo) {
    show({ListRows::plain(u"a"_s), ListRows::plain(u"b"_s, {put}), ListRows::head(u"h"_s)});
    EXPECT_FALSE(act(row(0), press));
    EXPECT_EQ(row(1)->actionInterface()->actionNames(), (QStringList{menu, focus}));
    EXPECT_TRUE(row(2)->actionInterface()->actionNames().isEmpty());
}

TEST_F(RowsAccessibilityTest, DoesWhatIsInTheMenuAlone) {
    show({ListRows::plain(u"a"_s, {later})});
    QSignalSpy triggered(view.get(), &RowsView::actionTriggered);
    EXPECT_TRUE(act(row(0), u"Later"_s));
    ASSERT_EQ(triggered.size(), 1);
    EXPECT_EQ(triggered.first(), (QVariantList{0, 9}));
}

TEST_F(RowsAccessibilityTest, HasTheOpenMenuBelowItsRow) {
    show({ListRows::plain(u"a"_s, {later}), ListRows::plain(u"b"_s, {later})});
    EXPECT_TRUE(act(row(1), menu));
    EXPECT_EQ(row(0)->childCount(), 0);
    ASSERT_EQ(row(1)->childCount(), 1);
    EXPECT_EQ(childNames(row(1)->child(0)), QStringList{u"Later"_s});
    EXPECT_EQ(row(1)->indexOfChild(row(1)->child(0)), 0);
}

TEST_F(RowsAccessibilityTest, TellsWhereItIs) {
    show(ticks(50'000));
    EXPECT_FALSE(row(1)->state().offscreen);
    EXPECT_TRUE(row(400)->state().offscreen);
    EXPECT_TRUE(row(1)->rect().isValid());
    EXPECT_EQ(list->childAt(row(1)->rect().center().x(), row(1)->rect().center().y()), row(1));
    view->hide();
    EXPECT_TRUE(row(1)->state().invisible);
}

TEST_F(RowsAccessibilityTest, HasChildrenOnlyForRowsInSight) {
    auto lines = ticks(50'000);
    for (auto& line : lines) line.content.detail = u"somewhere"_s;
    show(std::move(lines));
    EXPECT_EQ(list->childCount(), 50'001);
    EXPECT_EQ(row(1)->childCount(), 1);
    model.contentCalls = 0;
    int children = 0;
    for (int i = 100; i < list->childCount(); ++i) children += row(i)->childCount();
    EXPECT_EQ(children, 0);
    EXPECT_EQ(model.contentCalls, 0);
    view->scrollTo(model.index(40'000));
    EXPECT_EQ(row(40'000)->childCount(), 1);
}

TEST_F(RowsAccessibilityTest, ForgetsRowsThatGotOtherNumbers) {
    show({ListRows::tick(u"a"_s), ListRows::tick(u"b"_s)});
    const QAccessible::Id first = QAccessible::uniqueId(row(0));
    QAccessibleInterface* const old = row(0);
    model.remove(0);
    EXPECT_FALSE(old->isValid());
    EXPECT_EQ(name(row(0)), u"b"_s);
    EXPECT_NE(QAccessible::uniqueId(row(0)), first);
    EXPECT_EQ(QAccessible::accessibleInterface(first), nullptr);
}

TEST_F(RowsAccessibilityTest, OutlivesNeitherViewNorModel) {
    show(ticks(3));
    const QAccessible::Id first = QAccessible::uniqueId(row(1));
    view->setModel(nullptr);
    EXPECT_EQ(list->childCount(), 0);
    view.reset();
    EXPECT_EQ(QAccessible::accessibleInterface(first), nullptr);
}
