#include "OrdovanApp/controller/SystemEnvironment.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TempFolder.h"

#include <QEventLoop>

#include <filesystem>
#include <latch>
#include <mutex>

using ordovan::test::TempFolder;

namespace {

/// Leaves the record of a run that was cut off behind its only move.
void interruptARun(const RecordingPorts& recording, const Url& root) {
    const Url source = root.appending("x.pdf");
    const Url output = root.appending("ordovan+");
    const Url destination = output.appending("Documents").appending("x.pdf");
    const auto facts = recording.facts(source);
    ASSERT_TRUE(facts);
    OrdovanRunIntent intent;
    intent.id = ordovan::Uuid::random();
    intent.root = root;
    intent.outputRoots = {output};
    intent.items = {{.source = source.sharedPath(),
                     .destination = destination.sharedPath(),
                     .byteSize = facts->byteSize,
                     .modifiedNs = facts->modifiedNs,
                     .identity = facts->identity,
                     .contentHash = {}}};
    ASSERT_TRUE(recording.runRecords->begin(intent));
    std::filesystem::create_directories(destination.deletingLastPathComponent().path());
    std::filesystem::rename(source.path(), destination.path());
}

TEST(TidyThreads, APreviewBegunAnewWaitsForWhatTheOneBeforeItPutsInOrder) {
    const TempFolder folder;
    ordovan::testing::buildOnDisk(folder.path("tree"), {"x.pdf = 1", "y.pdf = 2"});
    const Url root = folder.url("tree");
    SystemEnvironment environment({.recordsFolder = folder.url("data"), .settingsFolder = folder.url("config")});
    TidyPorts ports = environment.ports();
    interruptARun(ports.recording, root);
    std::latch isUnderWay(1), mayGoOn(1);
    std::once_flag first;
    ports.recording.facts = [&, look = ports.recording.facts](const Url& item) {
        std::call_once(first, [&] {
            isUnderWay.count_down();
            mayGoOn.wait();
        });
        return look(item);
    };
    TidyViewModel model(ports, {});
    model.chooseFolder(root);
    isUnderWay.wait();
    model.preview();
    mayGoOn.count_down();
    while (model.phase().kind != TidyViewModel::Phase::Case::ready) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    ASSERT_TRUE(model.recoverableJournal());
    EXPECT_EQ(model.recoverableJournal()->entries.size(), 1U);
    EXPECT_TRUE(model.interruptedRun());
    EXPECT_EQ(model.plan()->proposals.size(), 1U);
    EXPECT_FALSE(ports.recording.runRecords->mayStand(root));
}

}  // namespace
