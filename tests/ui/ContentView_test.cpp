#include "OrdovanApp/screens/ContentView.h"

#include "OrdovanApp/screens/SidebarItem.h"
#include "OrdovanApp/theme/Banner.h"
#include "OrdovanApp/theme/FilterField.h"
#include "OrdovanApp/theme/Sheet.h"
#include "tests/support/WidgetTestMain.h"
#include "tests/support/WindowWorld.h"

#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDropEvent>
#include <QLabel>
#include <QListView>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <utility>

namespace {

using namespace ordovan::test;
using namespace Qt::StringLiterals;

/// Thrown out of a run where the program shall end.
struct Killed {};

class ContentViews : public WindowWorld {
protected:
    ContentView& view() {
        if (!view_) view_ = std::make_unique<ContentView>(context(), screens());
        return *view_;
    }
    void preview(std::initializer_list<std::string_view> items) {
        tree(items);
        view().previewFolder(Url::file("/r"));
        tasks.finish();
    }
    QString status() { return view().findChild<QLabel*>(u"status"_s)->text(); }
    SidebarItem* item(const char* section) {
        return view().findChild<SidebarItem*>(u"section-"_s + QString::fromLatin1(section));
    }
    QString count(const char* section) { return item(section)->count(); }
    QString description(const char* section) { return item(section)->accessibleDescription(); }
    /// What is said of a folder that was not opened.
    QString notOpened() {
        const auto* banner = view().findChild<Banner*>(u"folderNotOpened"_s);
        return banner->isVisible() ? banner->text() : QString();
    }
    Banner& interrupted() { return *view().findChild<Banner*>(u"interruptedRun"_s); }
    void drag(const QMimeData& data) {
        QDragEnterEvent enter(QPoint(300, 300), Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&view(), &enter);
    }
    void drop(const QMimeData& data) {
        QDropEvent drop(QPointF(300, 300), Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&view(), &drop);
    }

private:
    std::unique_ptr<ContentView> view_;
};

TEST_F(ContentViews, MakesAScreenWhenItIsFirstShown) {
    EXPECT_EQ((view(), made), QStringList{u"inbox"_s});
    view().showSection(Section::rules);
    view().showSection(Section::inbox);
    view().showSection(Section::rules);
    EXPECT_EQ(made, (QStringList{u"inbox"_s, u"rules"_s}));
}

TEST_F(ContentViews, ShowsTheScreenOfTheSection) {
    view().show();
    view().showSection(Section::history);
    EXPECT_TRUE(view().findChild<QWidget*>(u"screen-history"_s)->isVisible());
    EXPECT_FALSE(view().findChild<QWidget*>(u"screen-inbox"_s)->isVisible());
}

TEST_F(ContentViews, GoesToASectionByItsNumber) {
    view().show();
    view().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view()));
    QTest::keyClick(&view(), Qt::Key_4, Qt::ControlModifier);
    EXPECT_EQ(view().section(), Section::recovery);
    QTest::keyClick(&view(), Qt::Key_1, Qt::ControlModifier);
    EXPECT_EQ(view().section(), Section::inbox);
}

TEST_F(ContentViews, HasTheFocusInTheSidebarWhereASectionTakesNone) {
    view().show();
    view().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view()));
    QPushButton button(view().findChild<QWidget*>(u"screen-inbox"_s));
    button.show();
    button.setFocus();
    ASSERT_TRUE(button.hasFocus());
    view().showSection(Section::history);
    QCoreApplication::sendPostedEvents();
    EXPECT_TRUE(item("history")->hasFocus());
}

TEST_F(ContentViews, GoesToTheSearchOfItsSection) {
    view().show();
    FilterField field(theme, u"Search types, e.g. pdf"_s, view().findChild<QWidget*>(u"screen-inbox"_s));
    field.show();
    view().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view()));
    QTest::keyClick(&view(), Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(field.hasFocus());
}

TEST_F(ContentViews, PreviewsTheFolderThatIsChosen) {
    tree({"a.pdf"});
    view().showSection(Section::rules);
    commands.post(Commands::chooseFolder);
    desktop.answer(Url::file("/r"));
    tasks.finish();
    EXPECT_EQ(model->rootURL(), Url::file("/r"));
    EXPECT_EQ(view().section(), Section::inbox);
}

TEST_F(ContentViews, PreviewsDownloads) {
    view();
    commands.post(Commands::previewFolder);
    EXPECT_EQ(model->rootURL(), Url::file("/downloads"));
}

TEST_F(ContentViews, DoesNothingWhereThereAreNoDownloads) {
    view();
    desktop.downloadsFolder.reset();
    commands.post(Commands::previewFolder);
    EXPECT_EQ(model->rootURL(), std::nullopt);
}

TEST_F(ContentViews, PreviewsTheSameFolderAgainAndStaysInItsSection) {
    preview({"a.pdf"});
    view().showSection(Section::bigFiles);
    memory.write("/r/b.pdf", "new");
    commands.post(Commands::previewAgain);
    EXPECT_EQ(status(), u"Previewing…"_s);
    tasks.finish();
    EXPECT_EQ(status(), u"2 proposed · 0 need review"_s);
    EXPECT_EQ(view().section(), Section::bigFiles);
}

TEST_F(ContentViews, PreviewsAgainAFolderThatCouldNotBeRead) {
    unreadable.insert("/r");
    preview({"a.pdf"});
    ASSERT_EQ(status(), u"Preview unavailable"_s);
    unreadable.clear();
    commands.post(Commands::previewAgain);
    tasks.finish();
    EXPECT_EQ(status(), u"1 proposed · 0 need review"_s);
}

TEST_F(ContentViews, AsksTheInboxToOrganizeAndToExport) {
    preview({"a.pdf"});
    view().showSection(Section::history);
    commands.post(Commands::organize);
    commands.post(Commands::exportPlan);
    EXPECT_EQ(requests, (QStringList{u"organize"_s, u"export"_s}));
    EXPECT_EQ(view().section(), Section::inbox);
    EXPECT_FALSE(model->isApplying());
}

TEST_F(ContentViews, DoesNotAskToOrganizeWhenNothingIsTicked) {
    preview({"a.pdf"});
    model->toggle(model->plan()->proposals[0].id());
    commands.post(Commands::organize);
    EXPECT_EQ(requests, QStringList());
}

TEST_F(ContentViews, UndoesWhatWasOrganized) {
    preview({"a.pdf"});
    ASSERT_TRUE(model->organize());
    tasks.finish();
    ASSERT_TRUE(memory.item("/r/ordovan+/Documents/a.pdf"));
    commands.post(Commands::undoOrganize);
    tasks.finish();
    EXPECT_TRUE(memory.item("/r/a.pdf"));
}

TEST_F(ContentViews, SearchesForDuplicatesInTheirSection) {
    preview({"a.pdf"});
    commands.post(Commands::findDuplicates);
    EXPECT_EQ(view().section(), Section::duplicates);
    EXPECT_TRUE(model->isScanningDuplicates());
    tasks.finish();
}

TEST_F(ContentViews, FollowsThePreviewWithItsStatusLine) {
    EXPECT_EQ(status(), u"No folder selected"_s);
    tree({"a.pdf", "b.png"});
    view().previewFolder(Url::file("/r"));
    EXPECT_EQ(status(), u"Previewing…"_s);
    tasks.finish();
    EXPECT_EQ(status(), u"2 proposed · 0 need review"_s);
    EXPECT_EQ(count("inbox"), u"2"_s);
}

TEST_F(ContentViews, SaysWhenAPreviewIsReadyAndWhenItFailed) {
    QSignalSpy said(&announcer, &Announcer::said);
    preview({"a.pdf"});
    EXPECT_EQ(announcer.lastSaid(), u"Preview ready. 1 proposed."_s);
    unreadable.insert("/r");
    model->preview();
    tasks.finish();
    EXPECT_EQ(announcer.lastSaid(), u"Preview unavailable. Check folder permissions and try again."_s);
    EXPECT_EQ(said.count(), 2);
}

TEST_F(ContentViews, CountsWhatCanBeRecoveredAndTheRules) {
    preview({"a.pdf", "b.pdf"});
    ASSERT_TRUE(model->organize());
    tasks.finish();
    EXPECT_EQ(count("recovery"), u"2"_s);
    ASSERT_EQ(rules.add("dmg", "Apps"), std::nullopt);
    EXPECT_EQ(count("rules"), u"1"_s);
    EXPECT_EQ(description("recovery"), u"2 items to recover"_s);
    EXPECT_EQ(description("rules"), u"1 rule"_s);
}

TEST_F(ContentViews, CountsOnlyWhatCanBeRecoveredStill) {
    preview({"a.pdf", "b.pdf"});
    ASSERT_TRUE(model->organize());
    tasks.finish();
    view().show();
    memory.removeTree("/r/ordovan+/Documents/a.pdf");
    QEvent activated(QEvent::WindowActivate);
    QCoreApplication::sendEvent(&view(), &activated);
    EXPECT_EQ(count("recovery"), u"2"_s);
    tasks.finish();
    EXPECT_EQ(count("recovery"), u"1"_s);
    view().previewFolder(Url::file("/other"));
    EXPECT_EQ(count("recovery"), QString());
}

TEST_F(ContentViews, CountsNothingOfTheFolderBefore) {
    preview({"a.pdf", "b.pdf"});
    EXPECT_EQ(count("inbox"), u"2"_s);
    unreadable.insert("/other");
    view().previewFolder(Url::file("/other"));
    EXPECT_EQ(count("inbox"), QString());
    tasks.finish();
    EXPECT_EQ(count("inbox"), QString());
    view().previewFolder(Url::file("/r"));
    tasks.finish();
    EXPECT_EQ(count("inbox"), u"2"_s);
}

TEST_F(ContentViews, PreviewsAgainWhenASettingOrARuleChanges) {
    preview({"a.pdf"});
    settings.setIncludeHidden(true);
    EXPECT_EQ(status(), u"Previewing…"_s);
    tasks.finish();
    ASSERT_EQ(rules.add("pdf", "Papers"), std::nullopt);
    tasks.finish();
    EXPECT_EQ(proposed(*model), std::vector<std::string>{"a.pdf -> ordovan+/Papers/a.pdf"});
}

TEST_F(ContentViews, PreviewsAgainAfterARunThatCouldNotBegin) {
    preview({"a.pdf"});
    heldElsewhere.insert("/r");
    ASSERT_TRUE(model->organize());
    settings.setIncludeHidden(true);
    tasks.finish();
    ASSERT_TRUE(model->runRefusal());
    EXPECT_TRUE(model->includeHidden());
}

TEST_F(ContentViews, AppliesAThemeAtOnce) {
    view();
    settings.setTheme(AppTheme::grape);
    EXPECT_EQ(theme.theme(), AppTheme::grape);
}

TEST_F(ContentViews, HearsNoCommandWhileItAsksAQuestion) {
    preview({"a.pdf"});
    view().show();
    Sheet question(theme, &view());
    question.open();
    commands.post(Commands::organize);
    EXPECT_EQ(requests, QStringList());
    EXPECT_EQ(view().reasonAgainst(Commands::organize), u"Answer the question first."_s);
    question.cancelButton()->click();
    EXPECT_EQ(view().reasonAgainst(Commands::organize), QString());
}

TEST_F(ContentViews, GivesAQuestionUpWhenAnotherFolderIsPreviewed) {
    preview({"a.pdf"});
    view().show();
    Sheet question(theme, &view());
    QSignalSpy cancelled(&question, &Sheet::cancelled);
    question.open();
    view().previewFolder(Url::file("/other"));
    EXPECT_EQ(cancelled.count(), 1);
    EXPECT_EQ(model->rootURL(), Url::file("/other"));
}

TEST_F(ContentViews, TellsInEverySectionOfARunThatWasInterrupted) {
    tree({"a.pdf = 1", "b.pdf = 2"});
    model = previewed();
    fs.setAfterCall([](const ordovan::testing::FaultyFileSystem::Call& call) {
        if (call.operation == ordovan::testing::Operation::move) throw Killed();
    });
    model->organize();
    EXPECT_THROW(tasks.finish(), Killed);
    fs.setAfterCall({});
    model = make();
    preview({});
    view().show();
    const QString sentence = QString::fromStdString(model->interruptedRun()->summary());
    EXPECT_TRUE(sentence.startsWith(u"An earlier run was interrupted."_s));
    EXPECT_EQ(interrupted().text(), sentence);
    EXPECT_EQ(interrupted().findChild<QPushButton*>(u"bannerToggle"_s)->text(), u"Show Files"_s);
    EXPECT_EQ(interrupted().findChild<QListView*>()->model()->rowCount(),
              static_cast<int>(model->interruptedRun()->outcomes.size()));
    for (const Section section : Sections::allCases) {
        view().showSection(section);
        EXPECT_TRUE(interrupted().isVisible());
    }
    view().previewFolder(Url::file("/other"));
    EXPECT_TRUE(interrupted().isVisible());
    EXPECT_EQ(interrupted().text(), sentence + u" It worked in “r”."_s);
    interrupted().findChild<QPushButton*>(u"bannerClose"_s)->click();
    EXPECT_EQ(model->interruptedRun(), nullptr);
    EXPECT_FALSE(interrupted().isVisible());
}

TEST_F(ContentViews, TellsOfOneInterruptedRunAfterTheOther) {
    tree({"a.pdf = 1"});
    ordovan::testing::build(memory, "/s", {"b.pdf = 2"});
    for (const char* folder : {"/r", "/s"}) {
        model = make();
        model->chooseFolder(Url::file(folder));
        tasks.finish();
        fs.setAfterCall([](const ordovan::testing::FaultyFileSystem::Call& call) {
            if (call.operation == ordovan::testing::Operation::move) throw Killed();
        });
        model->organize();
        EXPECT_THROW(tasks.finish(), Killed);
        fs.setAfterCall({});
    }
    model = make();
    view().show();
    for (const char* folder : {"/r", "/s"}) {
        view().previewFolder(Url::file(folder));
        tasks.finish();
    }
    EXPECT_TRUE(interrupted().text().endsWith(u" It worked in “r”."_s)) << interrupted().text().toStdString();
    interrupted().findChild<QPushButton*>(u"bannerClose"_s)->click();
    EXPECT_TRUE(interrupted().isVisible());
    EXPECT_EQ(model->interruptedRun()->root, Url::file("/s"));
    EXPECT_FALSE(interrupted().text().contains(u"It worked in"_s));
    EXPECT_EQ(announcer.lastSaid(), interrupted().text());
    interrupted().findChild<QPushButton*>(u"bannerClose"_s)->click();
    EXPECT_FALSE(interrupted().isVisible());
}

TEST_F(ContentViews, SaysThatTheRecordOfARunCouldNotBeRead) {
    memory.write(locations.runRecord(Url::file("/r")).path(), "garbage");
    view().show();
    preview({"a.pdf"});
    EXPECT_EQ(interrupted().text(),
              u"An earlier run was interrupted, and its record could not be read. It was set aside."_s);
    EXPECT_TRUE(interrupted().findChild<QPushButton*>(u"bannerToggle"_s)->isHidden());
}

TEST_F(ContentViews, OpensNoFolderWhileFilesAreBeingMoved) {
    preview({"a.pdf"});
    desktop.downloadsFolder = Url::file("/downloads");
    view().show();
    commands.post(Commands::chooseFolder);
    const auto chosenDuringTheRun = std::exchange(desktop.answer, {});
    ASSERT_TRUE(model->organize());
    commands.post(Commands::chooseFolder);
    EXPECT_FALSE(desktop.answer);
    commands.post(Commands::previewFolder);
    EXPECT_EQ(notOpened(), QString());
    chosenDuringTheRun(Url::file("/other"));
    EXPECT_EQ(model->rootURL(), Url::file("/r"));
    const QString sentence =
        u"Files are being moved right now. “other” was not opened; choose it again when that has finished."_s;
    EXPECT_EQ(notOpened(), sentence);
    EXPECT_EQ(announcer.lastSaid(), sentence);
    tasks.finish();
    EXPECT_EQ(notOpened(), sentence);
    view().previewFolder(Url::file("/other"));
    EXPECT_EQ(model->rootURL(), Url::file("/other"));
    EXPECT_EQ(notOpened(), QString());
}

TEST_F(ContentViews, SaysWhileSomethingIsDraggedWhyItCanNotBeDropped) {
    preview({"a.pdf"});
    view().show();
    ASSERT_TRUE(model->organize());
    QMimeData data;
    data.setUrls({QUrl(u"file:///other"_s)});
    drag(data);
    EXPECT_EQ(view().findChild<QWidget*>(u"drop-overlay"_s)->findChild<QLabel*>()->text(),
              u"Files are being moved right now."_s);
    drop(data);
    EXPECT_EQ(model->rootURL(), Url::file("/r"));
    EXPECT_TRUE(notOpened().contains(u"“other” was not opened"_s));
    tasks.finish();
    drag(data);
    EXPECT_EQ(view().findChild<QWidget*>(u"drop-overlay"_s)->findChild<QLabel*>()->text(),
              u"Drop a folder to preview it"_s);
}

TEST_F(ContentViews, PreviewsTheFirstFolderThatIsDropped) {
    memory.makeDirectory("/r x");
    QMimeData data;
    data.setUrls({QUrl(u"https://example.org/x"_s), QUrl::fromEncoded("file:///r%20x/"), QUrl(u"file:///b"_s)});
    view().show();
    QDragEnterEvent enter(QPoint(300, 300), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&view(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    EXPECT_EQ(enter.dropAction(), Qt::CopyAction);
    const auto* overlay = view().findChild<QWidget*>(u"drop-overlay"_s);
    EXPECT_TRUE(overlay->isVisible());
    EXPECT_EQ(overlay->findChild<QLabel*>()->text(), u"Drop a folder to preview it"_s);
    QDropEvent drop(QPointF(300, 300), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&view(), &drop);
    EXPECT_FALSE(overlay->isVisible());
    tasks.finish();
    EXPECT_EQ(model->rootURL(), Url::file("/r x"));
}

TEST_F(ContentViews, PreviewsTheFolderThatIsDroppedAmongFiles) {
    preview({"a.pdf", "b.pdf"});
    memory.makeDirectory("/other");
    QMimeData data;
    data.setUrls({QUrl(u"file:///r/a.pdf"_s), QUrl(u"file:///r/b.pdf"_s), QUrl(u"file:///other"_s)});
    drag(data);
    tasks.finish();
    EXPECT_EQ(view().findChild<QWidget*>(u"drop-overlay"_s)->findChild<QLabel*>()->text(),
              u"Drop a folder to preview it"_s);
    drop(data);
    tasks.finish();
    EXPECT_EQ(model->rootURL(), Url::file("/other"));
}

TEST_F(ContentViews, KeepsThePlanWhenAFileIsDropped) {
    preview({"a.pdf"});
    view().show();
    for (const auto* dropped : {u"file:///r/a.pdf", u"file:///r/gone"}) {
        QMimeData data;
        data.setUrls({QUrl(QString::fromUtf16(dropped))});
        drag(data);
        tasks.finish();
        EXPECT_EQ(view().findChild<QWidget*>(u"drop-overlay"_s)->findChild<QLabel*>()->text(),
                  u"Only a folder can be previewed."_s);
        drop(data);
        tasks.finish();
    }
    EXPECT_EQ(notOpened(), u"Only a folder can be previewed. “gone” was not opened."_s);
    EXPECT_EQ(announcer.lastSaid(), notOpened());
    EXPECT_EQ(model->rootURL(), Url::file("/r"));
    EXPECT_EQ(status(), u"1 proposed · 0 need review"_s);
}

TEST_F(ContentViews, PreviewsTheFolderThatIsChosenWhileADropIsExamined) {
    preview({"sub/a.pdf"});
    view().show();
    QMimeData data;
    data.setUrls({QUrl(u"file:///r/sub"_s)});
    drop(data);
    view().previewFolder(Url::file("/other"));
    tasks.finish();
    EXPECT_EQ(model->rootURL(), Url::file("/other"));
}

TEST_F(ContentViews, KeepsItsScreenWhenADragLeaves) {
    QMimeData data;
    data.setUrls({QUrl(u"file:///r"_s)});
    view().show();
    QDragEnterEvent enter(QPoint(300, 300), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&view(), &enter);
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&view(), &leave);
    EXPECT_FALSE(view().findChild<QWidget*>(u"drop-overlay"_s)->isVisible());
    EXPECT_EQ(model->rootURL(), std::nullopt);
}

TEST_F(ContentViews, RefusesADragOfText) {
    QMimeData data;
    data.setText(u"hello"_s);
    QDragEnterEvent enter(QPoint(300, 300), Qt::CopyAction, &data, Qt::LeftButton, {});
    enter.ignore();
    QCoreApplication::sendEvent(&view(), &enter);
    EXPECT_FALSE(enter.isAccepted());
}

}  // namespace
