#include "OrdovanApp/stores/TrashRecordStore.h"

#include "OrdovanCore/testing/MemoryFileSystem.h"
#include "tests/support/MemoryRecords.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TrashSentences.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

using ordovan::TrashRecordStore;
using ordovan::test::trashNotRecorded;
using ordovan::test::trashRecordNotUpdated;
using ::testing::ElementsAre;
using ::testing::Gt;
using ::testing::IsEmpty;

namespace {

class TrashRecordStoreTest : public ::testing::Test {
protected:
    using Known = TrashRecordStore::Known;

    /// Entries of these names: "/r/NAME", trashed as "/T/files/NAME".
    static OrdovanTrashRecord record(std::initializer_list<std::string> names) {
        OrdovanTrashRecord result;
        for (const std::string& name : names) {
            result.entries.emplace_back("/r/" + name, "/T/files/" + name, 1, std::string(64, 'a'));
        }
        return result;
    }
    static TrashRecordStore::Record shared(std::initializer_list<std::string> names) {
        return std::make_shared<const OrdovanTrashRecord>(record(names));
    }
    static std::vector<std::string> names(const OrdovanTrashRecord& record) {
        std::vector<std::string> result;
        for (const auto& entry : record.entries) result.emplace_back(entry.original().substr(3));
        return result;
    }
    static std::vector<std::string> names(const TrashRecordStore::Record& record) { return names(*record); }
    std::vector<std::string> stored() { return names(OrdovanTrashRecord::decoded(*memory.read(file)).value()); }
    OrdovanResult<ordovan::HeldLock> lock(const Url& folder) {
        locked.emplace_back(folder.path());
        if (lockError != 0) return std::unexpected(OrdovanSystemError::posix(lockError));
        return ordovan::HeldLock();
    }

    ordovan::testing::MemoryFileSystem memory;
    ordovan::test::MemoryRecords records{memory};
    ordovan::StorageLocations locations{.recordsFolder = Url::file("/records"), .settingsFolder = Url::file("/s")};
    TrashRecordStore store{records, locations, [this](const Url& folder) { return lock(folder); }};
    std::vector<std::string> locked;
    int lockError = 0;
    const std::string file = "/records/trash-record.json";
    const std::string aside = "/records/trash-record.unreadable-7.json";
};

TEST_F(TrashRecordStoreTest, IsEmptyWhereNothingIsStored) {
    EXPECT_THAT(names(store.load({}).record), IsEmpty());
}

TEST_F(TrashRecordStoreTest, PutsWhatIsInMemoryOnlyBehindTheStoredEntries) {
    memory.write(file, record({"a"}).encoded());
    const auto loaded = store.load({shared({"z", "b"}), shared({"b"})});
    EXPECT_THAT(names(loaded.record), ElementsAre("a", "b"));
    EXPECT_THAT(names(loaded.unsaved), ElementsAre("b"));
}

TEST_F(TrashRecordStoreTest, KeepsWhatIsKnownOfARecordThatCanNotBeRead) {
    memory.write(file, "garbage");
    EXPECT_THAT(names(store.load({}).record), IsEmpty());
    EXPECT_THAT(names(store.load({shared({"a"}), shared({})}).record), ElementsAre("a"));
}

TEST_F(TrashRecordStoreTest, AppendsToWhatIsStoredNow) {
    memory.write(file, record({"a", "b"}).encoded());
    const auto saved = store.append(record({"c"}), {}, 7);
    EXPECT_THAT(names(saved.known.record), ElementsAre("a", "b", "c"));
    EXPECT_THAT(names(saved.known.unsaved), IsEmpty());
    EXPECT_FALSE(saved.warning);
    EXPECT_THAT(stored(), ElementsAre("a", "b", "c"));
}

TEST_F(TrashRecordStoreTest, StoresWhatCouldNotBeStoredBeforeInFrontOfTheRun) {
    memory.write(file, record({"a"}).encoded());
    const auto saved = store.append(record({"c"}), {shared({"a", "b"}), shared({"b"})}, 7);
    EXPECT_THAT(names(saved.known.unsaved), IsEmpty());
    EXPECT_THAT(stored(), ElementsAre("a", "b", "c"));
}

TEST_F(TrashRecordStoreTest, SaysWhichPartIsInMemoryOnly) {
    memory.write(file, record({"a"}).encoded());
    records.failAll("write", ENOSPC);
    const auto saved = store.append(record({"c"}), {shared({"a", "b"}), shared({"b"})}, 7);
    EXPECT_THAT(names(saved.known.record), ElementsAre("a", "b", "c"));
    EXPECT_THAT(names(saved.known.unsaved), ElementsAre("b", "c"));
    EXPECT_EQ(saved.warning, trashNotRecorded);
    EXPECT_THAT(stored(), ElementsAre("a"));
}

TEST_F(TrashRecordStoreTest, SetsAnUnreadableRecordAsideAndStoresWhatIsKnownOfIt) {
    memory.write(file, "garbage");
    const auto saved = store.append(record({"b"}), {shared({"a"}), shared({})}, 7.9);
    EXPECT_FALSE(saved.warning);
    EXPECT_EQ(memory.read(aside), "garbage");
    EXPECT_THAT(stored(), ElementsAre("a", "b"));
}

TEST_F(TrashRecordStoreTest, SetsARecordOfAnotherVersionAside) {
    OrdovanTrashRecord later = record({"a"});
    later.version = 2;
    memory.write(file, later.encoded());
    EXPECT_FALSE(store.append(record({"b"}), {}, 7).warning);
    EXPECT_EQ(memory.read(aside), later.encoded());
    EXPECT_THAT(stored(), ElementsAre("b"));
}

TEST_F(TrashRecordStoreTest, WritesNothingOverARecordThatCanBeNeitherReadNorSetAside) {
    memory.write(file, "garbage");
    records.failAll("setAside", EACCES);
    const auto saved = store.append(record({"b"}), {shared({"a"}), shared({})}, 7);
    EXPECT_EQ(saved.warning, trashNotRecorded);
    EXPECT_THAT(names(saved.known.unsaved), ElementsAre("a", "b"));
    EXPECT_EQ(store.removePutBack({}, {shared({"a"}), shared({})}, 7, memory).warning, trashRecordNotUpdated);
    EXPECT_EQ(memory.read(file), "garbage");
}

TEST_F(TrashRecordStoreTest, LeavesARecordThatIsFullAndKeepsTheRunInMemory) {
    const TrashRecordStore small(records, locations, [](const Url&) { return ordovan::HeldLock(); }, 3);
    memory.write(file, record({"a", "b"}).encoded());
    EXPECT_THAT(names(small.append(record({"c"}), {}, 7).known.record), ElementsAre("a", "b", "c"));
    const auto full = small.append(record({"d"}), {}, 7);
    EXPECT_EQ(full.warning, trashNotRecorded);
    EXPECT_THAT(names(full.known.record), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(names(full.known.unsaved), ElementsAre("d"));
    EXPECT_THAT(stored(), ElementsAre("a", "b", "c"));
    EXPECT_FALSE(memory.item(aside));
}

TEST_F(TrashRecordStoreTest, StoresWhatDidNotFitOnceThereIsRoom) {
    const TrashRecordStore small(records, locations, [](const Url&) { return ordovan::HeldLock(); }, 2);
    memory.write(file, record({"a", "b"}).encoded());
    const auto full = small.append(record({"c"}), {}, 7);
    const auto left = small.removePutBack({"/T/files/a"}, full.known, 7, memory);
    EXPECT_FALSE(left.warning);
    EXPECT_THAT(names(left.known.unsaved), IsEmpty());
    EXPECT_THAT(stored(), ElementsAre("b", "c"));
}

TEST_F(TrashRecordStoreTest, LeavesAnUnreadableRecordWhereNothingCouldTakeItsPlace) {
    const TrashRecordStore small(records, locations, [](const Url&) { return ordovan::HeldLock(); }, 1);
    memory.write(file, "garbage");
    EXPECT_EQ(small.append(record({"a", "b"}), {}, 7).warning, trashNotRecorded);
    EXPECT_EQ(memory.read(file), "garbage");
}

TEST_F(TrashRecordStoreTest, NeverWritesMoreThanItCouldReadAgain) {
    const TrashRecordStore small(records, locations, [](const Url&) { return ordovan::HeldLock(); }, 2);
    memory.write(file, record({"a"}).encoded());
    const auto saved = small.append(record({"b", "c", "d"}), {}, 7);
    EXPECT_EQ(saved.warning, trashNotRecorded);
    EXPECT_THAT(names(saved.known.record), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(names(saved.known.unsaved), ElementsAre("b", "c", "d"));
    EXPECT_THAT(stored(), ElementsAre("a"));
}

TEST_F(TrashRecordStoreTest, KeepsInMemoryWhatDoesNotFitWhenSomethingIsPutBack) {
    const TrashRecordStore small(records, locations, [](const Url&) { return ordovan::HeldLock(); }, 2);
    memory.write(file, record({"a", "b"}).encoded());
    const auto saved =
        small.removePutBack({"/T/files/a"}, {shared({"a", "b", "c", "d"}), shared({"c", "d"})}, 7, memory);
    EXPECT_EQ(saved.warning, trashRecordNotUpdated);
    EXPECT_THAT(names(saved.known.record), ElementsAre("b", "c", "d"));
    EXPECT_THAT(names(saved.known.unsaved), ElementsAre("c", "d"));
    EXPECT_THAT(stored(), ElementsAre("b"));
}

TEST_F(TrashRecordStoreTest, TakesEntriesThatWerePutBackOutOfTheRecord) {
    memory.write(file, record({"a", "b", "c"}).encoded());
    const auto saved = store.removePutBack({"/T/files/a"}, {shared({"a", "b"}), shared({})}, 7, memory);
    EXPECT_THAT(names(saved.known.record), ElementsAre("b", "c"));
    EXPECT_THAT(stored(), ElementsAre("b", "c"));
}

TEST_F(TrashRecordStoreTest, KeepsALaterEntryOfAFileThatWasPutBack) {
    OrdovanTrashRecord document;  // another process has trashed a file of the same name since
    document.entries.emplace_back("/r/a", "/T/files/a.2", 1, std::string(64, 'b'));
    memory.write(file, document.encoded());
    const auto saved = store.removePutBack({"/T/files/a"}, {shared({"a"}), shared({})}, 7, memory);
    EXPECT_EQ(*saved.known.record, document);
}

TEST_F(TrashRecordStoreTest, LeavesAnEmptyRecordWhenEverythingIsPutBack) {
    memory.write(file, record({"a"}).encoded());
    EXPECT_FALSE(store.removePutBack({"/T/files/a"}, {shared({"a"}), shared({})}, 7, memory).warning);
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(TrashRecordStoreTest, ForgetsWhatAnotherProcessHasPutBack) {
    memory.write(file, record({"c"}).encoded());
    memory.write("/T/files/b", "still there");
    const auto saved = store.removePutBack({"/T/files/d"}, {shared({"a", "b", "c", "d"}), shared({})}, 7, memory);
    EXPECT_THAT(names(saved.known.record), ElementsAre("c", "b"));
}

TEST_F(TrashRecordStoreTest, StoresWhatOnlyMemoryHeldWhenSomethingIsPutBack) {
    const auto saved = store.removePutBack({"/T/files/a"}, {shared({"a", "b"}), shared({"a", "b"})}, 7, memory);
    EXPECT_THAT(names(saved.known.unsaved), IsEmpty());
    EXPECT_THAT(stored(), ElementsAre("b"));
}

TEST_F(TrashRecordStoreTest, ChangesTheRecordUnderTheLockAndReadsWithoutIt) {
    (void)store.load({});
    EXPECT_THAT(locked, IsEmpty());
    (void)store.append(record({"a"}), {}, 7);
    (void)store.removePutBack({}, {}, 7, memory);
    EXPECT_THAT(locked, ElementsAre("/records", "/records"));
}

TEST_F(TrashRecordStoreTest, IsNotChangedWhileAnotherProcessHasTheLock) {
    EXPECT_FALSE(store.append(record({"a"}), {}, 7).warning);
    const auto before = memory.read(file);
    lockError = EWOULDBLOCK;
    const auto added = store.append(record({"b"}), {shared({"a"}), shared({})}, 7);
    EXPECT_TRUE(added.warning);
    EXPECT_THAT(names(added.known.record), ElementsAre("a", "b"));
    EXPECT_THAT(names(added.known.unsaved), ElementsAre("b"));
    const auto taken = store.removePutBack({"/T/files/a"}, {shared({"a"}), shared({})}, 7, memory);
    EXPECT_TRUE(taken.warning);
    EXPECT_THAT(names(taken.known.record), IsEmpty());
    EXPECT_EQ(memory.read(file), before);
}

TEST_F(TrashRecordStoreTest, TellsWhatWasReadBeforeAChangeEndedFromWhatWasReadAfterIt) {
    memory.write(file, record({"a"}).encoded());
    std::vector<std::uint64_t> changes;
    bool isChanging = false;
    records.observer = [&](const std::string&) {
        if (std::exchange(isChanging, true)) return;
        changes.push_back(store.append(record({"b"}), {}, 1).known.revision);
        changes.push_back(store.removePutBack({"/T/files/b"}, {}, 1, memory).known.revision);
    };
    const Known before = store.load({});
    const Known after = store.load({});
    EXPECT_THAT(changes, ElementsAre(Gt(before.revision), Gt(changes[0])));
    EXPECT_GT(after.revision, changes[1]);
    memory.write(file, "garbage");
    EXPECT_EQ(store.load(after).revision, 0U);
}

}  // namespace
