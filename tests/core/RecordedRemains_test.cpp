// Runs that move in steps on a volume that turns read-only in the middle of one: what they leave, the next preview puts
// right once the volume can be written to again.

#include "OrdovanCore/Executor.h"
#include "OrdovanCore/FileTrasher.h"
#include "tests/support/ExclusiveMoves.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/ToldRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

using namespace ordovan::test;
using ordovan::RunFileSystem;
using ::testing::ElementsAre;
using ::testing::SizeIs;
using Kind = OrdovanRunRecord::Kind;
using Status = OrdovanExecutionStatus;

namespace {

/// The file "a" of the folder "root", on a disk that knows no exclusive rename.
class RecordedRemains : public testing::Test {
protected:
    RecordedRemains() {
        ::setenv("XDG_DATA_HOME", t.path("data").c_str(), 1);
        t.write("root/a", "content");
        renameRefusal = EINVAL;
    }
    ~RecordedRemains() override {
        atExamination = atRename = nullptr;
        renameRefusal = linkRefusal = 0;
        removal = {};
        isReadOnly = false;
        ::unsetenv("XDG_DATA_HOME");
    }

    /// What becomes of the file when the run puts it into "ordovan+".
    Status organize(const TempFolder& place) {
        const Url root = place.url("root"), output = place.url("root/ordovan+");
        OrdovanFileProposal proposal;
        proposal.source = place.url("root/a");
        proposal.destination = place.url("root/ordovan+/a");
        run.emplace(Kind::organize, root);
        run->addOutputRoot(output);
        run->add(proposal.source, proposal.destination);
        disk.emplace(root);
        return OrdovanExecutor::apply({{proposal}}, root, output, run->begin(*disk), 0).outcomes.at(0).status;
    }
    Status trash() {
        run.emplace(Kind::trash, t.url("root"));
        run->add(t.url("root/a"), Url());
        disk.emplace(t.url("root"));
        const OrdovanFileTrasher::Item item{t.url("root/a"), 7};
        return OrdovanFileTrasher::trash({&item, 1}, t.url("root"), run->begin(*disk)).outcomes.at(0).status;
    }
    /// The run is over, and the volume can be written to again. What the next preview finds.
    std::optional<OrdovanReconciliation> end() {
        isReadOnly = false;
        return run->end();
    }

    /// All files below a folder, by their paths.
    static std::vector<std::string> files(const TempFolder& place) {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(place.path())) {
            if (entry.is_regular_file()) found.push_back(entry.path().native().substr(place.path().size() + 1));
        }
        std::ranges::sort(found);
        return found;
    }
    static void turnReadOnly() { isReadOnly = true; }
    /// What a run leaves at the new place goes when it is put in order.
    void expectToBeTakenAway() {
        EXPECT_EQ(organize(t), Status::failed);
        EXPECT_THAT(files(t), ElementsAre("root/a", "root/ordovan+/a"));
        const auto found = end();
        ASSERT_TRUE(found);
        EXPECT_EQ(found->run.putRight, 1U);
        EXPECT_TRUE(found->isComplete);
        EXPECT_THAT(files(t), ElementsAre("root/a"));
    }

    TempFolder t;
    std::optional<RunFileSystem> disk;
    std::optional<ToldRun> run;
};

TEST_F(RecordedRemains, OfALinkAreTakenAway) {
    atRename = turnReadOnly;
    expectToBeTakenAway();
}

TEST_F(RecordedRemains, OfALinkOnARealVolumeAreTakenAway) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume volume;
    volume.root().write("root/a", "content");
    atRename = [&] { volume.makeReadOnly(); };
    EXPECT_EQ(organize(volume.root()), Status::failed);
    EXPECT_THAT(files(volume.root()), ElementsAre("root/a", "root/ordovan+/a"));
    volume.makeWritable();
    const auto found = end();
    ASSERT_TRUE(found);
    EXPECT_EQ(found->run.putRight, 1U);
    EXPECT_THAT(files(volume.root()), ElementsAre("root/a"));
    disk.reset();
}

TEST_F(RecordedRemains, UnderAHiddenNameAreTakenAway) {
    atRename = [] {
        atExamination = turnReadOnly;
        skip = 0;
    };
    EXPECT_EQ(organize(t), Status::moved);
    EXPECT_EQ(files(t).size(), 2U);
    const auto found = end();
    ASSERT_TRUE(found);
    EXPECT_TRUE(found->isComplete);
    EXPECT_THAT(files(t), ElementsAre("root/ordovan+/a"));
    EXPECT_THAT(found->journal.entries, SizeIs(1)) << "the records tell where it is";
}

TEST_F(RecordedRemains, OfAPlaceholderAreTakenAway) {
    linkRefusal = EPERM;
    atRename = turnReadOnly;
    expectToBeTakenAway();
    EXPECT_EQ(t.read("root/a"), "content");
}

TEST_F(RecordedRemains, InTheTrashAreTakenAwayWithTheirInfoFile) {
    for (const int refusal : {0, EPERM}) {
        linkRefusal = refusal;
        atRename = turnReadOnly;
        EXPECT_EQ(trash(), Status::failed);
        EXPECT_THAT(files(t), ElementsAre("data/Trash/files/a", "data/Trash/info/a.trashinfo", "root/a"));
        const auto found = end();
        ASSERT_TRUE(found);
        EXPECT_EQ(found->run.putRight, 1U);
        EXPECT_TRUE(found->isComplete);
        EXPECT_EQ(t.read("root/a"), "content");
        EXPECT_FALSE(t.has("data/Trash/files/a"));
    }
}

TEST_F(RecordedRemains, InTheTrashKeepTheirInfoFileByWhichTheyAreFound) {
    atRename = [] {
        isReadOnly = true;
        removal = {"a", EIO};
        atExamination = [] { isReadOnly = false; };
        skip = 0;
    };
    EXPECT_EQ(trash(), Status::failed);
    EXPECT_THAT(files(t), ElementsAre("data/Trash/files/a", "data/Trash/info/a.trashinfo", "root/a"));
    removal = {};
    const auto found = end();
    ASSERT_TRUE(found);
    EXPECT_EQ(found->run.putRight, 1U);
    EXPECT_FALSE(t.has("data/Trash/files/a"));
}

TEST_F(RecordedRemains, AreNoneOnAVolumeThatWasReadOnlyBefore) {
    isReadOnly = true;
    EXPECT_EQ(organize(t), Status::failed);
    EXPECT_FALSE(end());
    linkRefusal = EPERM;
    isReadOnly = true;
    EXPECT_EQ(organize(t), Status::failed);
    EXPECT_FALSE(end());
    EXPECT_THAT(files(t), ElementsAre("root/a"));
}

TEST_F(RecordedRemains, AreNoneWhereTheVolumeIsFull) {
    linkRefusal = ENOSPC;
    EXPECT_EQ(organize(t), Status::failed);
    EXPECT_FALSE(end());
}

}  // namespace
