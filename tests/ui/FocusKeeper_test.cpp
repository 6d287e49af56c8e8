// Where the keyboard is once what had it is gone: on something that has a name and can be used.
#include "OrdovanApp/screens/FocusKeeper.h"

#include "OrdovanApp/models/RulesModel.h"
#include "OrdovanApp/screens/ContentView.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "tests/support/ScreenWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <QAccessible>
#include <QStackedLayout>

using namespace ordovan::test;
using namespace Qt::StringLiterals;

namespace {

/// The window's content with the application's own screens.
class FocusKeepers : public ScreenWorld {
protected:
    void SetUp() override {
        view_.resize(1280, 800);
        view_.show();
        view_.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&view_));
    }
    /// Shows a section of "/r" with these files.
    void preview(Section section, std::initializer_list<std::string_view> items) {
        tree(items);
        view_.previewFolder(Url::file("/r"));
        finish();
        view_.showSection(section);
        finish();
    }
    void finish() {
        tasks.finish();
        QCoreApplication::sendPostedEvents();
    }
    QWidget& screen() { return *view_.findChild<QStackedLayout*>()->currentWidget(); }
    template <class Widget = QPushButton>
    Widget* widget(QStringView name) {
        for (Widget* found : screen().findChildren<Widget*>(name.toString())) {
            if (found->isVisible()) return found;
        }
        return nullptr;
    }
    void press(QStringView name) { press(widget(name)); }
    void press(QWidget* button) {
        button->setFocus();
        QTest::keyClick(button, Qt::Key_Space);
        QCoreApplication::sendPostedEvents();
    }
    /// Says yes to a question.
    void confirm() {
        for (Sheet* sheet : view_.findChildren<Sheet*>()) {
            if (sheet->isVisible()) press(sheet->confirmButton());
        }
    }
    /// What has the focus, as assistive technologies are told.
    static QString focused() {
        QWidget* focus = QApplication::focusWidget();
        return focus == nullptr ? QString() : QAccessible::queryAccessibleInterface(focus)->text(QAccessible::Name);
    }

    ContentView view_{context(), Sections::screens()};
};

TEST_F(FocusKeepers, GoesToTheListWhileFilesAreOrganizedAndToTheSidebarWhenNoneIsLeft) {
    preview(Section::inbox, {"a.pdf", "b.pdf"});
    press(u"organize");
    confirm();
    EXPECT_TRUE(model->isApplying());
    EXPECT_EQ(focused(), u"Proposed file changes"_s);
    finish();
    ASSERT_EQ(focused(), u"Smart Inbox"_s);
}

TEST_F(FocusKeepers, GoesToTheSidebarWhenUndoingLeavesNothingToRecover) {
    preview(Section::inbox, {"a.pdf"});
    ASSERT_TRUE(model->organize());
    finish();
    view_.showSection(Section::recovery);
    finish();
    press(u"undoOrganize");
    confirm();
    finish();
    ASSERT_TRUE(widget<QWidget>(u"nothingPage")->isVisible());
    EXPECT_EQ(focused(), u"Recovery Center"_s);
}

TEST_F(FocusKeepers, StaysOnTheListWhenOneOfItsFilesIsPutBack) {
    preview(Section::inbox, {"a.pdf", "b.pdf"});
    ASSERT_TRUE(model->organize());
    finish();
    view_.showSection(Section::recovery);
    finish();
    auto* list = widget<RowsView>(u"recoveryList");
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Return);
    finish();
    EXPECT_EQ(focused(), u"Organized and trashed files"_s);
    QTest::keyClick(list, Qt::Key_Return);
    finish();
    EXPECT_EQ(focused(), u"Recovery Center"_s);
}

TEST_F(FocusKeepers, GoesFromTheSearchForDuplicatesToWhatItFinds) {
    preview(Section::duplicates, {"a = 1", "b = 1"});
    press(u"findDuplicates");
    EXPECT_EQ(focused(), u"Cancel"_s);
    finish();
    EXPECT_EQ(focused(), u"Groups of identical copies"_s);
    press(u"trash-all-extras");
    confirm();
    EXPECT_EQ(focused(), u"Groups of identical copies"_s);
    finish();
    EXPECT_EQ(focused(), u"Search Again"_s) << "no group is left";
}

TEST_F(FocusKeepers, GoesBackToWhereASearchCanBeStartedWhenItIsCancelled) {
    preview(Section::duplicates, {"a = 1", "b = 1"});
    press(u"findDuplicates");
    press(widget<ProgressStrip>(u"searchProgress")->findChild<QPushButton*>(u"progressCancel"_s));
    finish();
    EXPECT_EQ(focused(), u"Find Duplicates"_s);
}

TEST_F(FocusKeepers, GoesToTheListWhenAScanIsCancelled) {
    preview(Section::inbox, {"a.pdf"});
    model->preview();
    auto* strip = screen().findChild<QWidget*>(u"rescanning"_s);
    strip->show();
    press(strip->findChild<QPushButton*>(u"progressCancel"_s));
    finish();
    EXPECT_EQ(focused(), u"Proposed file changes"_s);
}

TEST_F(FocusKeepers, GoesFromTheScanToTheList) {
    tree({"a.pdf"});
    view_.previewFolder(Url::file("/r"));
    screen().findChild<QWidget*>(u"scanningPage"_s)->findChild<QPushButton*>(u"progressCancel"_s)->setFocus();
    finish();
    EXPECT_EQ(focused(), u"Proposed file changes"_s);
}

TEST_F(FocusKeepers, GoesToTheWelcomeWhenTheFirstScanIsCancelled) {
    tree({"a.pdf"});
    view_.previewFolder(Url::file("/r"));
    press(screen().findChild<QWidget*>(u"scanningPage"_s)->findChild<QPushButton*>(u"progressCancel"_s));
    finish();
    EXPECT_EQ(focused(), u"Choose Folder…"_s);
}

TEST_F(FocusKeepers, GoesToTheListWhenABannerIsClosed) {
    preview(Section::inbox, {"a.pdf", "b.pdf"});
    model->toggle(std::size_t{1});
    ASSERT_TRUE(model->organize());
    finish();
    press(widget<Banner>(u"runSummary")->findChild<QPushButton*>(u"bannerClose"_s));
    EXPECT_EQ(focused(), u"Proposed file changes"_s);
}

TEST_F(FocusKeepers, GoesToTheSidebarWhenTheHistoryIsCleared) {
    preview(Section::inbox, {"a.pdf"});
    ASSERT_TRUE(model->organize());
    finish();
    view_.showSection(Section::history);
    finish();
    press(u"clearHistory");
    confirm();
    finish();
    EXPECT_EQ(focused(), u"History"_s);
}

TEST_F(FocusKeepers, LeavesAChoiceOfTheScreenAlone) {
    preview(Section::rules, {"a.pdf"});
    ASSERT_FALSE(rules.add("pdf", "Papers"));
    finish();
    auto* list = widget<RowsView>(u"rulesList");
    list->setFocus();
    list->setCurrentIndex(list->rows()->index(1));
    Q_EMIT list->actionTriggered(1, RulesModel::deleteRule);
    finish();
    EXPECT_EQ(focused(), u"Extensions, e.g. dmg, pkg"_s);
}

TEST_F(FocusKeepers, GoesToTheListOfASectionThatIsNewAndComesBackToWhatHadItThere) {
    preview(Section::inbox, {"a.pdf"});
    widget<RowsView>(u"planList")->setFocus();
    view_.showSection(Section::bigFiles);
    finish();
    EXPECT_EQ(focused(), u"Largest files, biggest first"_s);
    widget<QWidget>(u"search")->setFocus();
    view_.showSection(Section::duplicates);
    finish();
    EXPECT_EQ(focused(), u"Find Duplicates"_s);
    view_.showSection(Section::bigFiles);
    finish();
    EXPECT_EQ(focused(), u"Search big files"_s);
}

TEST_F(FocusKeepers, IsInTheFirstFieldWhereThereIsNoListYet) {
    preview(Section::inbox, {"a.pdf"});
    widget<RowsView>(u"planList")->setFocus();
    view_.showSection(Section::rules);
    finish();
    EXPECT_EQ(focused(), u"Extensions, e.g. dmg, pkg"_s);
}

TEST_F(FocusKeepers, IsSeenInTheListByWhoUsesTheKeyboard) {
    preview(Section::inbox, {"a.pdf", "b.pdf"});
    EXPECT_FALSE(theme.usesKeyboard());
    press(u"organize");
    confirm();
    EXPECT_TRUE(theme.usesKeyboard());
    EXPECT_TRUE(widget<RowsView>(u"planList")->hasFocus());
}

}  // namespace
