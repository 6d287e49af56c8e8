#include "OrdovanApp/controller/SystemEnvironment.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/testing/FaultyFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/ManualTaskRunner.h"
#include "tests/support/OtherPorts.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

#include <QEventLoop>

#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using ordovan::test::ManualTaskRunner;
using ordovan::test::TempFolder;
using ordovan::testing::FaultyFileSystem;
using ::testing::ElementsAre;
using ::testing::SizeIs;

namespace {

constexpr const char* heldElsewhere = "Another ordovan+ run is working in this folder. Try again when it has finished.";

/// Where two programs meet: one folder, one set of records, one Trash.
struct Place {
    Place() {
        ordovan::testing::buildOnDisk(folder.path("tree"), {"x.pdf = 1", "y.jpg = 2"});
        ::setenv("XDG_DATA_HOME", folder.path("data").c_str(), 1);
    }
    ~Place() { ::unsetenv("XDG_DATA_HOME"); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    [[nodiscard]] ordovan::StorageLocations locations() const {
        return {.recordsFolder = folder.url("data/ordovan"), .settingsFolder = folder.url("config/ordovan")};
    }
    [[nodiscard]] Url root() const { return folder.url("tree"); }

    TempFolder folder;
};

/// One program on the real disk, whose steps a test takes one by one.
class Program {
public:
    explicit Program(const Place& place) : environment_(place.locations()) {
        TidyPorts ports = ordovan::test::withOthers(environment_.ports(), fs, tasks);
        // What acts past the file system under watch.
        ports.makeRunFileSystem = {};
        ports.hashAhead = {};
        ports.contents = nullptr;
        ports.recording = {};
        model = std::make_unique<TidyViewModel>(std::move(ports), TidyViewModel::Options{});
        model->chooseFolder(place.root());
        tasks.finish();
    }

    [[nodiscard]] std::vector<std::string> history() const {
        std::vector<std::string> lines;
        for (const auto& record : model->history().records) lines.push_back(record.summary());
        return lines;
    }
    RuleStore& rules() { return environment_.rules(); }

private:
    SystemEnvironment environment_;
    SystemFileSystem disk_;

public:
    FaultyFileSystem fs{disk_};
    ManualTaskRunner tasks;
    std::unique_ptr<TidyViewModel> model;
};

TEST(TidyProcesses, OneRunAtATimeWorksInAFolder) {
    const Place place;
    Program first(place), second(place);
    bool tried = false;
    first.fs.setBeforeCall([&](const auto& call) {
        if (tried || call.operation != ordovan::testing::Operation::move) return;
        tried = true;
        second.model->organize();
        second.tasks.finish();
        EXPECT_EQ(second.model->runRefusal(), heldElsewhere);
    });
    first.model->organize();
    first.tasks.finish();
    EXPECT_TRUE(tried);
    EXPECT_EQ(first.model->lastReport()->movedCount(), 2u);
    EXPECT_FALSE(second.model->lastReport());

    second.model->preview();
    second.tasks.finish();
    EXPECT_THAT(second.model->recoverableJournal()->entries, SizeIs(2));
    EXPECT_TRUE(second.model->undo());
    second.tasks.finish();
    EXPECT_EQ(second.model->lastReport()->movedCount(), 2u);
    EXPECT_FALSE(second.model->runRefusal());
}

TEST(TidyProcesses, KeepEachOthersRecords) {
    const Place place;
    Program first(place), second(place);
    first.model->setExcluded({first.model->plan()->proposals[0].id()});
    second.model->setExcluded({second.model->plan()->proposals[1].id()});
    first.model->organize();
    first.tasks.finish();
    second.model->organize();
    second.tasks.finish();
    EXPECT_THAT(second.history(), ElementsAre("Organized 1 file in tree", "Organized 1 file in tree"));
    EXPECT_THAT(second.model->recoverableJournal()->entries, SizeIs(2));
    EXPECT_THAT(first.model->recoverableJournal()->entries, SizeIs(1));

    first.model->undo();  // what it knows of
    first.tasks.finish();
    EXPECT_THAT(first.model->recoverableJournal()->entries, SizeIs(1));
    EXPECT_THAT(first.history(),
                ElementsAre("Restored 1 file in tree", "Organized 1 file in tree", "Organized 1 file in tree"));
    EXPECT_EQ(Program(place).history(), first.history());
}

TEST(TidyProcesses, KeepEachOthersTrashRecords) {
    const Place place;
    Program first(place), second(place);
    const auto trash = [&](Program& program, const char* name) {
        EXPECT_TRUE(program.model->trashBigFiles({{place.root().appending(name), 1}}));
        program.tasks.finish();
        EXPECT_EQ(program.model->lastTrashReport()->movedCount(), 1u);
    };
    trash(first, "x.pdf");
    trash(second, "y.jpg");
    EXPECT_THAT(first.model->trashRecord()->entries, SizeIs(1));
    EXPECT_THAT(second.model->trashRecord()->entries, SizeIs(2));
    EXPECT_TRUE(first.model->restore());
    first.tasks.finish();
    EXPECT_EQ(place.folder.read("tree/x.pdf"), "1");
    EXPECT_THAT(first.model->trashRecord()->entries, SizeIs(1));
    EXPECT_EQ(*Program(place).model->trashRecord(), *first.model->trashRecord());

    EXPECT_TRUE(second.model->restore());  // one of the two is back already
    second.tasks.finish();
    EXPECT_EQ(second.model->lastTrashReport()->movedCount(), 1u);
    EXPECT_EQ(place.folder.read("tree/y.jpg"), "2");
    EXPECT_THAT(Program(place).model->trashRecord()->entries, SizeIs(0));
}

TEST(TidyProcesses, OneRunWithTheTrashAtATimeWorksInAFolder) {
    const Place place;
    Program first(place), second(place);
    bool tried = false;
    first.fs.setBeforeCall([&](const auto& call) {
        if (tried || call.operation != ordovan::testing::Operation::trash) return;
        tried = true;
        EXPECT_TRUE(second.model->organize());
        second.tasks.finish();
        EXPECT_EQ(second.model->runRefusal(), heldElsewhere);
        EXPECT_TRUE(second.model->trashBigFiles({{place.root().appending("y.jpg"), 1}}));
        second.tasks.finish();
        EXPECT_EQ(second.model->runRefusal(), heldElsewhere);
    });
    EXPECT_TRUE(first.model->trashBigFiles({{place.root().appending("x.pdf"), 1}}));
    first.tasks.finish();
    EXPECT_TRUE(tried);
    EXPECT_EQ(place.folder.read("tree/y.jpg"), "2");
}

TEST(TidyProcesses, KeepEachOthersRules) {
    const Place place;
    Program first(place), second(place);
    EXPECT_EQ(first.rules().add("dmg", "Apps"), std::nullopt);
    EXPECT_EQ(second.rules().add("iso", "Discs"), std::nullopt);
    EXPECT_THAT(second.rules().ruleSet().rules, SizeIs(2));
    EXPECT_EQ(Program(place).rules().ruleSet(), second.rules().ruleSet());
}

TEST(TidyProcesses, RefuseToRunInTheFolderOfTheirOwnRecords) {
    const Place place;
    SystemEnvironment environment(place.locations());
    EXPECT_EQ(environment.rules().add("dmg", "Apps"), std::nullopt);  // makes the folder
    const auto lock = environment.ports().tryLockFolder(place.locations().recordsFolder);
    ASSERT_FALSE(lock);
    EXPECT_EQ(lock.error(), OrdovanSystemError::posix(EWOULDBLOCK));
    EXPECT_FALSE(environment.ports().tryLockFolder(place.locations().settingsFolder));
    EXPECT_TRUE(environment.ports().tryLockFolder(place.root()));
}

/// The whole program, threads and all.
TEST(TidySystem, OrganizesAndRestoresARealFolder) {
    const Place place;
    const auto before = ordovan::testing::describeTree(place.root().path());
    SystemEnvironment environment(place.locations());
    TidyViewModel model(environment.ports(), {});
    const auto processUntil = [](auto isDone) {
        while (!isDone()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    };
    const auto isReady = [&] { return model.phase().kind == TidyViewModel::Phase::Case::ready && !model.isApplying(); };
    int told = 0;
    QObject::connect(&model, &TidyViewModel::runProgressed, [&] { ++told; });

    model.chooseFolder(place.root());
    processUntil(isReady);
    ASSERT_TRUE(model.organize());
    processUntil(isReady);
    EXPECT_EQ(place.folder.read("tree/ordovan+/Documents/x.pdf"), "1");
    EXPECT_EQ(model.plan()->proposals.size(), 0u);
    EXPECT_GE(told, 1);

    ASSERT_TRUE(model.undo());
    processUntil(isReady);
    auto after = ordovan::testing::describeTree(place.root().path());
    after.erase("ordovan+");
    EXPECT_EQ(after, before);
    EXPECT_FALSE(model.recoverableJournal());
    EXPECT_EQ(place.folder.count("data/ordovan/journals"), 0u);
    EXPECT_THAT(model.history().records, SizeIs(2));
}

TEST(TidySystem, TrashesAndPutsBackTheDuplicatesOfARealFolder) {
    const Place place;
    const std::string large(3'000'000, 'x');
    for (int i = 0; i < 40; ++i) {
        const std::string n = std::to_string(i);
        ordovan::testing::buildOnDisk(place.folder.path("tree"), {"a" + n + " = same " + std::to_string(i % 8),
                                                                  "sub/b" + n + " = " + large + std::to_string(i % 2)});
    }
    const auto before = ordovan::testing::describeTree(place.root().path());
    SystemEnvironment environment(place.locations());
    TidyViewModel model(environment.ports(), {});
    const auto processUntil = [](auto isDone) {
        while (!isDone()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    };
    const auto isReady = [&] {
        return model.phase().kind == TidyViewModel::Phase::Case::ready && !model.isTrashing() &&
               !model.isScanningDuplicates();
    };
    int searchTold = 0, trashTold = 0;
    QObject::connect(&model, &TidyViewModel::duplicateSearchProgressed, [&] { ++searchTold; });
    QObject::connect(&model, &TidyViewModel::trashProgressed, [&] { ++trashTold; });

    model.chooseFolder(place.root());
    processUntil(isReady);
    ASSERT_TRUE(model.findDuplicates());
    model.cancelDuplicateSearch();
    ASSERT_TRUE(model.findDuplicates());
    processUntil(isReady);
    EXPECT_THAT(model.duplicateReport()->groups, SizeIs(10));
    model.autoPick(OrdovanKeepPolicy::shortestPath);
    ASSERT_TRUE(model.trashExtras());
    processUntil(isReady);
    EXPECT_EQ(model.lastTrashReport()->movedCount(), 70u);
    EXPECT_THAT(model.inventory()->files, SizeIs(12));
    EXPECT_THAT(model.duplicateReport()->groups, SizeIs(0));
    EXPECT_GE(searchTold, 1);
    EXPECT_GE(trashTold, 1);

    ASSERT_TRUE(model.restore());
    processUntil(isReady);
    EXPECT_EQ(ordovan::testing::describeTree(place.root().path()), before);
    EXPECT_THAT(model.trashRecord()->entries, SizeIs(0));
    EXPECT_EQ(place.folder.count("data/Trash/files"), 0u);
    EXPECT_EQ(place.folder.count("data/Trash/info"), 0u);
}

TEST(TidySystem, DropsAPreviewThatAnotherFolderSupersedes) {
    const Place place;
    ordovan::testing::buildOnDisk(place.folder.path("other"), {"z.txt = 3"});
    SystemEnvironment environment(place.locations());
    TidyViewModel model(environment.ports(), {});
    for (int i = 0; i < 20; ++i) {
        model.chooseFolder(place.root());
        model.chooseFolder(place.folder.url("other"));
    }
    while (model.phase().kind == TidyViewModel::Phase::Case::scanning || model.recentFolders().empty()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    EXPECT_EQ(model.inventory()->files.at(0).url, place.folder.url("other/z.txt"));
    EXPECT_THAT(model.recentFolders(), SizeIs(1));
}

TEST(TidySystem, SavesTheRecordOfARunThatItsEndInterrupts) {
    const Place place;
    {
        SystemEnvironment environment(place.locations());
        auto model = std::make_unique<TidyViewModel>(environment.ports(), TidyViewModel::Options{});
        model->chooseFolder(place.root());
        while (model->phase().kind != TidyViewModel::Phase::Case::ready) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        model->organize();
        model.reset();
    }
    Program later(place);
    const std::size_t moved = later.model->recoverableJournal() ? later.model->recoverableJournal()->entries.size() : 0;
    EXPECT_EQ(moved + later.model->plan()->proposals.size(), 2u);
    EXPECT_THAT(later.history(), SizeIs(1));
}

}  // namespace
