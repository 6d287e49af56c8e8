#include "OrdovanApp/stores/HistoryStore.h"

#include "OrdovanCore/testing/MemoryFileSystem.h"
#include "tests/support/MemoryRecords.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <string>
#include <vector>

using ordovan::HistoryStore;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

constexpr const char* notAdded = "This run couldn't be added to the history on disk. It is listed until you quit.";

class HistoryStoreTest : public ::testing::Test {
protected:
    static OrdovanRunRecord run(std::string folder) {
        return {ordovan::Uuid::random(), OrdovanRunRecord::Kind::organize, 1, std::move(folder), 1, 0, 0};
    }
    static std::vector<std::string> folders(const OrdovanRunHistory& history) {
        std::vector<std::string> names;
        for (const auto& record : history.records) names.push_back(record.folderName);
        return names;
    }
    static OrdovanResult<ordovan::HeldLock> lock(const Url&) { return ordovan::HeldLock(); }
    /// A store that does not get its lock.
    HistoryStore refused(int errnoValue) {
        return {records, locations, [=](const Url&) -> OrdovanResult<ordovan::HeldLock> {
                    return std::unexpected(OrdovanSystemError::posix(errnoValue));
                }};
    }

    ordovan::testing::MemoryFileSystem memory;
    ordovan::test::MemoryRecords records{memory};
    ordovan::StorageLocations locations{.recordsFolder = Url::file("/records"), .settingsFolder = Url::file("/s")};
    HistoryStore store{records, locations, lock};
    const std::string file = "/records/history.json";
    const std::string aside = "/records/history.unreadable-7.json";
};

TEST_F(HistoryStoreTest, IsEmptyWhereNothingIsStored) {
    EXPECT_THAT(store.load().records, IsEmpty());
}

TEST_F(HistoryStoreTest, PutsARunInFrontOfTheStoredOnes) {
    EXPECT_TRUE(store.add(run("a"), {}, 7).saved);
    HistoryStore other(records, locations, lock);
    EXPECT_TRUE(other.add(run("b"), {}, 7).saved);
    const auto result = store.add(run("c"), {}, 7);
    EXPECT_THAT(folders(result.history), ElementsAre("c", "b", "a"));
    EXPECT_EQ(store.load(), result.history);
}

TEST_F(HistoryStoreTest, StoresEarlierRunsBehindTheLatest) {
    EXPECT_TRUE(store.add(run("a"), {}, 7).saved);
    EXPECT_THAT(folders(store.add(run("d"), std::vector{run("c"), run("b")}, 7).history),
                ElementsAre("d", "c", "b", "a"));
}

TEST_F(HistoryStoreTest, KeepsTwoHundredRuns) {
    for (int i = 0; i < 201; ++i) EXPECT_TRUE(store.add(run(std::to_string(i)), {}, 7).saved);
    EXPECT_THAT(store.load().records, SizeIs(200));
    EXPECT_EQ(store.load().records.back().folderName, "1");
}

TEST_F(HistoryStoreTest, SetsAnUnreadableListAside) {
    memory.write(file, "garbage");
    EXPECT_THAT(store.load().records, IsEmpty());
    EXPECT_TRUE(store.add(run("a"), {}, 7.9).saved);
    EXPECT_EQ(memory.read(aside), "garbage");
    EXPECT_THAT(folders(store.load()), ElementsAre("a"));
}

TEST_F(HistoryStoreTest, WritesNothingOverAListThatCanBeNeitherReadNorSetAside) {
    memory.write(file, "garbage");
    records.failAll("setAside", EACCES);
    EXPECT_FALSE(store.add(run("a"), {}, 7).saved);
    EXPECT_EQ(memory.read(file), "garbage");
}

TEST_F(HistoryStoreTest, DoesNotReadADocumentOfUnreasonableSize) {
    memory.write(file, R"({"records":[]})" + std::string(17 << 20, ' '));
    EXPECT_TRUE(store.add(run("a"), {}, 7).saved);
    EXPECT_TRUE(memory.exists(Url::file(aside)));
}

TEST_F(HistoryStoreTest, SaysWhenItCanNotWrite) {
    EXPECT_TRUE(store.add(run("a"), {}, 7).saved);
    records.failAll("write", ENOSPC);
    const auto added = store.add(run("b"), {}, 7);
    EXPECT_FALSE(added.saved);
    EXPECT_EQ(added.warning, notAdded);
    const auto cleared = store.clear();
    EXPECT_FALSE(cleared.saved);
    EXPECT_EQ(cleared.warning, "The history couldn't be cleared.");
    EXPECT_THAT(folders(store.load()), ElementsAre("a"));
}

TEST_F(HistoryStoreTest, WritesNothingWithoutTheLock) {
    EXPECT_TRUE(store.add(run("a"), {}, 7).saved);
    for (const int refusal : {EWOULDBLOCK, EINTR, EACCES}) {
        HistoryStore waiting = refused(refusal);
        EXPECT_EQ(waiting.add(run("b"), {}, 7).warning, notAdded);
        const auto cleared = waiting.clear();
        EXPECT_FALSE(cleared.saved);
        EXPECT_EQ(cleared.warning, refusal == EACCES
                                       ? "The history couldn't be cleared."
                                       : "Another ordovan+ is saving its records. Try again in a moment.");
    }
    EXPECT_THAT(folders(store.load()), ElementsAre("a"));
}

TEST_F(HistoryStoreTest, TellsAnAbsentListFromOneThatCanNotBeRead) {
    EXPECT_EQ(store.loadReadable(), OrdovanRunHistory());
    memory.write(file, "garbage");
    EXPECT_EQ(store.loadReadable(), std::nullopt);
}

TEST_F(HistoryStoreTest, IsEmptyOnceCleared) {
    EXPECT_TRUE(store.add(run("a"), {}, 7).saved);
    const auto result = store.clear();
    EXPECT_TRUE(result.saved);
    EXPECT_THAT(result.history.records, IsEmpty());
    EXPECT_EQ(memory.read(file), OrdovanRunHistory().encoded());
}

TEST_F(HistoryStoreTest, NumbersItsChanges) {
    const auto first = store.add(run("a"), {}, 7).revision;
    const auto second = store.clear().revision;
    EXPECT_LT(first, second);
    EXPECT_LT(second, store.add(run("b"), {}, 7).revision);
}

}  // namespace
