// How files stand when a run begins, as the record of the run tells it.

#include "OrdovanApp/controller/FolderRun.h"
#include "OrdovanApp/controller/SystemEnvironment.h"
#include "OrdovanCore/platform/FileFacts.h"
#include "OrdovanCore/platform/StableIdentity.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/RefusedCall.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TidyWorld.h"
#include "tests/support/Unprivileged.h"

#include <gmock/gmock.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

using ordovan::RunRecordStore;
using ordovan::test::giveToUnprivileged;
using ordovan::test::refuseCall;
using ordovan::test::TempFolder;
using ordovan::test::unprivileged;
using ::testing::ElementsAre;
using Kind = OrdovanRunRecord::Kind;

namespace {

using FilesLookedAt = ordovan::test::TidyWorld;

TEST_F(FilesLookedAt, AreThoseOfTheFolderAndOfTheTrashAlone) {
    const std::string trashed = std::string(memory.homeTrashPath) + "/files/c";
    tree({"a = 1", "../outside/b = 2"});
    memory.write(trashed, "3");
    std::vector<std::string> asked;
    TidyPorts all = ports();
    all.recording.facts = [&asked, facts = all.recording.facts](const Url& file) {
        asked.emplace_back(file.path());
        return facts(file);
    };
    FolderRun::Record record(all, Kind::undo, Url::file("/r"), 100);
    for (const std::string& file : {std::string("/r/a"), std::string("/outside/b"), trashed}) {
        record.add(Url::file(file), Url::file("/r/back").appending(ordovan::lastPathComponent(file)));
    }
    record.lookAtAll();
    EXPECT_THAT(asked, ElementsAre("/r", "/r/a", trashed));
}

class ManyFilesLookedAt : public ::testing::Test {
protected:
    ManyFilesLookedAt() {
        for (int i = 0; i < 2500; ++i) {
            const std::string name = "files/" + std::to_string(i * i % 7) + "/" + std::to_string(i);
            files.push_back(place.write(name, std::string(static_cast<std::size_t>(i % 100), 'x')));
            if (i % 50 == 0) std::filesystem::create_hard_link(place.path(name), place.path(name + " too"));
        }
    }

    /// Begins a run with all files and leaves its record behind. False when none was stored.
    [[nodiscard]] bool begin() const {
        SystemEnvironment environment(locations);
        const TidyPorts ports = environment.ports();
        FolderRun::Record record(ports, Kind::organize, root, 100);
        for (const Url& file : files) record.add(file, root.appending("new").appending(file.lastPathComponent()));
        (void)record.begin(ports.fileSystem, nullptr);
        return record.isStored();
    }

    void expectEachRecordedAsItStands() const {
        SystemEnvironment environment(locations);
        const RunRecordStore::Found found = environment.ports().recording.runRecords->read(root, 1);
        ASSERT_EQ(found.state, RunRecordStore::Found::State::readable);
        const std::vector<OrdovanRunItem>& items = found.run.intent.items;
        ASSERT_EQ(items.size(), files.size());
        for (std::size_t i = 0; i < files.size(); ++i) expectAsItStands(items[i], files[i]);
    }

    static void expectAsItStands(const OrdovanRunItem& item, const Url& file) {
        const auto facts = ordovan::factsOf(file);
        ASSERT_TRUE(facts) << file;
        EXPECT_EQ(item.source, file.path());
        EXPECT_EQ(item.byteSize, facts->byteSize) << file;
        EXPECT_EQ(item.modifiedNs, facts->modifiedNs) << file;
        EXPECT_EQ(item.names, facts->names) << file;
        EXPECT_EQ(item.identity, ordovan::keepsInodes(file) ? facts->identity : "") << file;
    }

    const TempFolder place;
    const Url root = place.url("files");
    const ordovan::StorageLocations locations{.recordsFolder = place.url("data"),
                                              .settingsFolder = place.url("config")};
    std::vector<Url> files;
};

TEST_F(ManyFilesLookedAt, InManyFoldersAreEachRecordedAsItStands) {
    ASSERT_TRUE(begin());
    expectEachRecordedAsItStands();
}

/// Whether this user has no more threads.
bool hasNoMoreThreads() {
    try {
        std::thread([] {}).join();
        return false;
    } catch (const std::system_error&) {
        return true;
    }
}

TEST_F(ManyFilesLookedAt, AreEachRecordedWhereThereAreNoMoreThreads) {
    giveToUnprivileged(place.path());
    ASSERT_TRUE(unprivileged([this] {
        return refuseCall(SYS_clone3, EAGAIN) && refuseCall(SYS_clone, EAGAIN) && hasNoMoreThreads() && begin();
    }));
    expectEachRecordedAsItStands();
}

}  // namespace
