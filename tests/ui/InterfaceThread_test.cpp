// That the window answers however long a disk takes: no port is ever called on the thread of the interface.
#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/SerialTasks.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/screens/ContentView.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/screens/OrdovanWindow.h"
#include "OrdovanApp/screens/SectionScreens.h"
#include "OrdovanApp/theme/Sheet.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/TempFolder.h"
#include "tests/support/WatchedPorts.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QEventLoop>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <cstdlib>
#include <semaphore>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::SizeIs;
using Case = TidyViewModel::Phase::Case;

namespace {

class PresetDesktop final : public Desktop {
public:
    void chooseFolder(QWidget*, std::function<void(const Url&)> chosen) override { chosen(folder); }
    void choosePlanFile(QWidget*, const QString&, const QString&,
                        std::function<void(const Url&, OrdovanPlanExportFormat)> chosen) override {
        chosen(planFile, OrdovanPlanExportFormat::markdown);
    }
    void reveal(const Url&) override {}
    void showTrash(const Url&) override {}
    bool openAddress(const QString&) override { return true; }
    [[nodiscard]] std::optional<Url> downloads() const override { return std::nullopt; }

    Url folder;
    Url planFile;
};

/// The whole window over the real disk and real threads.
class InterfaceThread : public ::testing::Test {
protected:
    InterfaceThread() {
        ::setenv("XDG_DATA_HOME", place_.path("data").c_str(), 1);
        window_.appear();
    }
    ~InterfaceThread() override { ::unsetenv("XDG_DATA_HOME"); }

    Url tree(const std::string& name, std::initializer_list<std::string_view> items) {
        ordovan::testing::buildOnDisk(place_.path(name), items);
        return place_.url(name);
    }
    void choose(const Url& folder) {
        desktop_.folder = folder;
        commands_.post(Commands::chooseFolder);
    }
    /// Lets events happen until a signal of the controller comes with `done`.
    template <class Signal, class Done>
    void wait(Signal signal, Done done) {
        QEventLoop loop;
        QObject::connect(&model_, signal, &loop, [&] {
            if (done()) loop.quit();
        });
        if (!done()) loop.exec();
    }
    void waitForPreview() {
        wait(&TidyViewModel::phaseChanged, [this] { return model_.phase().kind != Case::scanning; });
    }
    void waitForRun() {
        wait(&TidyViewModel::isApplyingChanged, [this] { return !model_.isApplying(); });
        waitForPreview();
    }
    void waitForTrash() {
        wait(&TidyViewModel::isTrashingChanged, [this] { return !model_.isTrashing(); });
        waitForPreview();
    }
    /// Until what was started in the background has arrived.
    void settle() {
        EXPECT_TRUE(ports_.tasks().waitForWork(std::chrono::minutes(5)));
        QCoreApplication::processEvents();
    }
    void visit(Section section) { window_.findChild<ContentView*>()->showSection(section); }
    std::vector<std::string> proposed() {
        std::vector<std::string> names;
        for (const auto& proposal : model_.plan()->proposals) names.emplace_back(proposal.source.lastPathComponent());
        return names;
    }

    TempFolder place_;
    WatchedPorts ports_{{.recordsFolder = place_.url("data/ordovan"), .settingsFolder = place_.url("config/ordovan")}};
    TidyViewModel model_{ports_.ports(), {.loadsInBackground = true, .indexesPlans = true}};
    ThemeEnvironment theme_{AppTheme::lagoon};
    CommandCenter commands_;
    PresetDesktop desktop_;
    ordovan::MemoryKeyValueStore values_;
    OrdovanWindow window_{{.model = model_,
                           .settings = ports_.settings(),
                           .rules = ports_.rules(),
                           .theme = theme_,
                           .commands = commands_,
                           .desktop = desktop_,
                           .values = values_,
                           .documentation = {}},
                          Sections::screens()};
};

TEST_F(InterfaceThread, CallsNoPortWhateverIsDone) {
    choose(tree("tree", {"a.pdf = one", "copies/b.pdf = one", "c.jpg = two"}));
    waitForPreview();
    for (const Section section : Sections::sidebarOrder) visit(section);
    desktop_.planFile = place_.url("plan.md");
    commands_.post(Commands::exportPlan);
    wait(&TidyViewModel::planExported, [this] { return place_.has("plan.md"); });

    commands_.post(Commands::organize);
    QTest::mouseClick(window_.findChild<Sheet*>(u"organizeSheet"_s)->confirmButton(), Qt::LeftButton);
    waitForRun();
    EXPECT_EQ(model_.lastReport()->movedCount(), 3U);
    visit(Section::recovery);
    settle();
    commands_.post(Commands::undoOrganize);
    waitForRun();
    EXPECT_TRUE(place_.has("tree/a.pdf"));

    commands_.post(Commands::findDuplicates);
    wait(&TidyViewModel::isScanningDuplicatesChanged, [this] { return !model_.isScanningDuplicates(); });
    EXPECT_THAT(model_.duplicateReport()->groups, SizeIs(1));
    EXPECT_TRUE(model_.trashExtras());
    waitForTrash();
    EXPECT_FALSE(place_.has("tree/copies/b.pdf"));
    EXPECT_TRUE(model_.restore());
    waitForTrash();
    EXPECT_TRUE(place_.has("tree/copies/b.pdf"));

    model_.looks().look(place_.url("tree/a.pdf"), 100, [](const FileBeginning&) {}, [] {});
    model_.refreshRecords();
    model_.clearHistory();
    settle();
    EXPECT_THAT(ports_.watch.here(), IsEmpty());
    EXPECT_THAT(ports_.watch.elsewhere(),
                IsSupersetOf({"children",     "contentHash",  "exists",     "facts",    "lock",    "move",
                              "open",         "openNotes",    "ownFolders", "read",     "refresh", "removeEmptyFolders",
                              "removeRecord", "resolve",      "syncMoves",  "timeZone", "trash",   "update",
                              "write",        "writeDocument"}));
}

TEST_F(InterfaceThread, StoresSettingsAndRulesElsewhere) {
    ordovan::SerialTasks changes(ports_.tasks());
    const ordovan::BackgroundWork background = [&](const auto& work, const auto& done) { changes.run(work, done); };
    ports_.settings().storeThrough(background);
    ports_.rules().storeThrough(background);
    ports_.settings().setGroupByMonth(true);
    visit(Section::rules);
    window_.findChild<QLineEdit*>(u"extensions"_s)->setText(u"dmg"_s);
    window_.findChild<QLineEdit*>(u"folderName"_s)->setText(u"Apps"_s);
    QTest::mouseClick(window_.findChild<QPushButton*>(u"addRule"_s), Qt::LeftButton);
    settle();
    EXPECT_EQ(ports_.rules().ruleSet().rules.at(0).folderName, "Apps");
    EXPECT_EQ(window_.findChild<QLineEdit*>(u"extensions"_s)->text(), QString());
    EXPECT_THAT(ports_.watch.elsewhere(), Contains("update"));
    EXPECT_THAT(ports_.watch.here(), IsEmpty());
}

TEST_F(InterfaceThread, AnswersWhileAPortDoesNot) {
    const Url slow = tree("slow", {"never.pdf = 1"});
    const Url quick = tree("quick", {"shown.pdf = 2"});
    std::binary_semaphore answer{0};
    QEventLoop untilAsked;
    ports_.listing = [&](const Url& folder) {
        if (folder != slow) return;
        QMetaObject::invokeMethod(&untilAsked, &QEventLoop::quit, Qt::QueuedConnection);
        answer.acquire();
    };
    choose(slow);
    untilAsked.exec();

    EXPECT_EQ(model_.phase().kind, Case::scanning);
    EXPECT_TRUE(window_.findChild<QWidget*>(u"scanningPage"_s)->isVisible());
    visit(Section::rules);
    auto* field = window_.findChild<QLineEdit*>();
    QTest::keyClicks(field, u"dmg"_s);
    EXPECT_EQ(field->text(), u"dmg"_s);
    choose(quick);
    waitForPreview();
    EXPECT_THAT(proposed(), ElementsAre("shown.pdf"));

    answer.release();
    settle();
    EXPECT_EQ(model_.rootURL(), quick);
    EXPECT_THAT(proposed(), ElementsAre("shown.pdf"));
    EXPECT_THAT(ports_.watch.here(), IsEmpty());
}

}  // namespace
