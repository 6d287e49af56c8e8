// How files stand when a run begins, as the record of the run tells it.

#include "OrdovanApp/controller/FolderRun.h"
#include "OrdovanApp/controller/SystemEnvironment.h"
#include "OrdovanCore/platform/FileFacts.h"
#include "OrdovanCore/platform/StableIdentity.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TempFolder.h"
#include "tests/support/ThreadLimit.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

using ordovan::RunRecordStore;
using ordovan::test::canMakeThreads;
using ordovan::test::TempFolder;
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
    ~ManyFilesLookedAt() override { canMakeThreads = true; }

    /// Begins a run with all files, and expects each to be recorded as it stands.
    void expectAllRecorded() {
        SystemEnvironment environment({.recordsFolder = place.url("data"), .settingsFolder = place.url("config")});
        const TidyPorts ports = environment.ports();
        {
            FolderRun::Record record(ports, Kind::organize, root, 100);
            for (const Url& file : files) record.add(file, root.appending("new").appending(file.lastPathComponent()));
            (void)record.begin(ports.fileSystem, nullptr);
        }
        const RunRecordStore::Found found = ports.recording.runRecords->read(root, 1);
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
    std::vector<Url> files;
};

TEST_F(ManyFilesLookedAt, InManyFoldersAreAllRecordedAsTheyStand) {
    expectAllRecorded();
}

TEST_F(ManyFilesLookedAt, AreAllRecordedWhereThereAreNoMoreThreads) {
    canMakeThreads = false;
    expectAllRecorded();
}

}  // namespace
