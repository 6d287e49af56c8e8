#include "OrdovanApp/stores/JournalStore.h"

#include "OrdovanCore/testing/MemoryFileSystem.h"
#include "tests/support/MemoryRecords.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

using ordovan::JournalStore;
using State = JournalStore::Stored::State;
using ::testing::ElementsAre;
using ::testing::Gt;
using ::testing::SizeIs;

namespace {

constexpr const char* notUpdated =
    "The undo record could not be updated. Files that were restored may be listed again; restoring them again is "
    "refused safely.";

class JournalStoreTest : public ::testing::Test {
protected:
    static OrdovanJournal journal(std::initializer_list<const char*> names, double epoch = 0) {
        OrdovanJournal result;
        result.createdAtEpoch = epoch;
        for (const std::string name : names) {
            result.entries.emplace_back("/r/" + name, "/r/ordovan+/" + name, true, 1, "", "");
        }
        return result;
    }
    static JournalStore::Journal shared(OrdovanJournal value) {
        return std::make_shared<const OrdovanJournal>(std::move(value));
    }
    static std::vector<std::string> names(const JournalStore::Journal& value) {
        std::vector<std::string> result;
        if (!value) return result;
        for (const auto& entry : value->entries) result.emplace_back(ordovan::lastPathComponent(entry.source()));
        return result;
    }

    ordovan::testing::MemoryFileSystem memory;
    ordovan::test::MemoryRecords records{memory};
    ordovan::StorageLocations locations{.recordsFolder = Url::file("/records"), .settingsFolder = Url::file("/s")};
    std::vector<std::string> locked;
    int lockError = 0;
    JournalStore store{records, locations, [this](const Url& folder) -> OrdovanResult<ordovan::HeldLock> {
                           locked.emplace_back(folder.path());
                           if (lockError != 0) return std::unexpected(OrdovanSystemError::posix(lockError));
                           return ordovan::HeldLock();
                       }};
    const Url root = Url::file("/r");
    const std::string file = std::string(locations.journal(root).path());
    const std::string aside = "/records/journals/.ordovan-journal.unreadable-7.json";
};

TEST_F(JournalStoreTest, TellsAbsentReadableAndUnreadableApart) {
    EXPECT_EQ(store.read(root).state, State::none);
    memory.write(file, journal({"a"}).encoded());
    EXPECT_EQ(store.read(root).state, State::readable);
    EXPECT_THAT(names(store.read(root).journal), ElementsAre("a"));
    memory.write(file, "garbage");
    EXPECT_EQ(store.read(root).state, State::unreadable);
    EXPECT_FALSE(store.read(root).journal);
    memory.removeTree(file);
    memory.makeDirectory(file);
    EXPECT_EQ(store.read(root).state, State::unreadable);
    memory.removeTree(file);
    records.failAll("read", ENOTDIR);
    EXPECT_EQ(store.read(root).state, State::none);
}

TEST_F(JournalStoreTest, ReadsAJournalCutAtAnyByteAsUnreadable) {
    const std::string whole = journal({"a", "b"}).encoded();
    const std::size_t end = whole.find_last_of('}');
    for (std::size_t length = 0; length <= end; ++length) {
        memory.write(file, whole.substr(0, length));
        EXPECT_EQ(store.read(root).state, State::unreadable) << length;
    }
}

TEST_F(JournalStoreTest, ReplacesAnEntryWithTheSameDestination) {
    memory.write(file, journal({"a", "b"}, 1).encoded());
    const auto saved = store.append(root, journal({"a"}, 2), nullptr, nullptr, 7);
    EXPECT_THAT(names(saved.journal), ElementsAre("b", "a"));
    EXPECT_EQ(saved.journal->createdAtEpoch, 2);
    EXPECT_EQ(*store.read(root).journal, *saved.journal);
}

TEST_F(JournalStoreTest, StoresWhatCouldNotBeStoredBeforeInFrontOfTheRun) {
    memory.write(file, journal({"a"}).encoded());
    const auto saved = store.append(root, journal({"c"}), shared(journal({"a", "b"})), shared(journal({"b"})), 7);
    EXPECT_THAT(names(saved.journal), ElementsAre("a", "b", "c"));
    EXPECT_FALSE(saved.unsaved);
}

TEST_F(JournalStoreTest, SaysWhichPartIsInMemoryOnly) {
    memory.write(file, journal({"a"}).encoded());
    records.failAll("write", ENOSPC);
    const auto saved = store.append(root, journal({"c"}), shared(journal({"a", "b"})), shared(journal({"b"})), 7);
    EXPECT_THAT(names(saved.journal), ElementsAre("a", "b", "c"));
    EXPECT_THAT(names(saved.unsaved), ElementsAre("b", "c"));
}

TEST_F(JournalStoreTest, KeepsEverythingInMemoryBesideARecordThatCanNotBeSetAside) {
    memory.write(file, "garbage");
    records.failAll("setAside", EACCES);
    const auto saved = store.append(root, journal({"b"}), shared(journal({"a"})), nullptr, 7);
    EXPECT_THAT(names(saved.journal), ElementsAre("a", "b"));
    EXPECT_THAT(names(saved.unsaved), ElementsAre("a", "b"));
    EXPECT_EQ(memory.read(file), "garbage");
}

TEST_F(JournalStoreTest, LeavesARecordThatIsFullAndSaysThatTheRunIsNotInIt) {
    JournalStore small(records, locations, [](const Url&) { return ordovan::HeldLock(); }, 3);
    memory.write(file, journal({"a", "b", "c"}).encoded());
    const auto saved = small.append(root, journal({"d"}), nullptr, nullptr, 7);
    EXPECT_EQ(saved.warning,
              "Files were organized, but the undo record could not be saved to disk. Undo is available "
              "until you quit.");
    EXPECT_THAT(names(saved.journal), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(names(saved.unsaved), ElementsAre("d"));
    EXPECT_THAT(names(small.read(root).journal), ElementsAre("a", "b", "c"));
}

TEST_F(JournalStoreTest, NeverWritesMoreThanCanBeReadWhenSomethingIsRestored) {
    JournalStore small(records, locations, [](const Url&) { return ordovan::HeldLock(); }, 3);
    memory.write(file, journal({"a", "b", "c"}).encoded());
    const auto unsaved = shared(journal({"d", "e"}));
    const auto known = shared(journal({"a", "b", "c", "d", "e"}));
    const auto saved = small.removeRestored(root, {"/r/ordovan+/a"}, known, unsaved, 7, memory);
    EXPECT_EQ(saved.warning, notUpdated);
    EXPECT_THAT(names(saved.journal), ElementsAre("b", "c", "d", "e"));
    EXPECT_THAT(names(saved.unsaved), ElementsAre("d", "e"));
    EXPECT_THAT(names(small.read(root).journal), ElementsAre("b", "c"));
}

TEST_F(JournalStoreTest, SetsTwoUnreadableRecordsAsideInOneSecond) {
    memory.write(file, "garbage");
    EXPECT_FALSE(store.append(root, journal({"a"}), nullptr, nullptr, 7).warning);
    memory.write(file, "more garbage");
    EXPECT_FALSE(store.append(root, journal({"b"}), nullptr, nullptr, 7).warning);
    EXPECT_EQ(memory.read(aside), "garbage");
    EXPECT_EQ(memory.read("/records/journals/.ordovan-journal.unreadable-8.json"), "more garbage");
    EXPECT_THAT(names(store.read(root).journal), ElementsAre("b"));
}

TEST_F(JournalStoreTest, TakesRestoredEntriesOutOfTheRecord) {
    memory.write(file, journal({"a", "b", "c"}).encoded());
    const auto known = shared(journal({"a", "b"}));
    const auto saved = store.removeRestored(root, {"/r/ordovan+/a"}, known, nullptr, 7, memory);
    EXPECT_THAT(names(saved.journal), ElementsAre("b", "c"));
    EXPECT_EQ(*store.read(root).journal, *saved.journal);
}

TEST_F(JournalStoreTest, RemovesTheRecordWithItsLastEntry) {
    memory.write(file, journal({"a"}).encoded());
    const auto saved = store.removeRestored(root, {"/r/ordovan+/a"}, shared(journal({"a"})), nullptr, 7, memory);
    EXPECT_FALSE(saved.journal);
    EXPECT_FALSE(saved.warning);
    EXPECT_FALSE(memory.exists(Url::file(file)));
}

TEST_F(JournalStoreTest, StoresWhatOnlyMemoryHeldWhenSomethingIsRestored) {
    const auto known = shared(journal({"a", "b"}));
    const auto saved = store.removeRestored(root, {"/r/ordovan+/a"}, known, known, 7, memory);
    EXPECT_THAT(names(store.read(root).journal), ElementsAre("b"));
    EXPECT_FALSE(saved.unsaved);
}

TEST_F(JournalStoreTest, ChangesRecordsUnderTheLockAndReadsWithoutIt) {
    EXPECT_FALSE(store.load(root, nullptr, 7, memory).journal);
    EXPECT_THAT(locked, SizeIs(0));
    (void)store.append(root, journal({"a"}), nullptr, nullptr, 7);
    (void)store.removeRestored(root, {}, nullptr, nullptr, 7, memory);
    EXPECT_THAT(locked, ElementsAre("/records", "/records"));
}

TEST_F(JournalStoreTest, KeepsARunInMemoryWhileAnotherProcessHasTheLock) {
    for (const int refusal : {EWOULDBLOCK, EINTR}) {
        for (const std::string& document : {journal({"a"}).encoded(), std::string("garbage")}) {
            memory.write(file, document);
            lockError = refusal;
            const auto saved = store.append(root, journal({"b"}), shared(journal({"a"})), nullptr, 7);
            EXPECT_EQ(saved.warning,
                      "Files were organized, but the undo record could not be saved to disk. Undo is "
                      "available until you quit.");
            EXPECT_THAT(names(saved.journal), ElementsAre("a", "b"));
            EXPECT_EQ(memory.read(file), document);
        }
    }
}

TEST_F(JournalStoreTest, LeavesTheRecordAloneWhileAnotherProcessHasTheLock) {
    memory.write(file, journal({"a", "b"}).encoded());
    lockError = EWOULDBLOCK;
    const auto saved = store.removeRestored(root, {"/r/ordovan+/a"}, shared(journal({"a", "b"})), nullptr, 7, memory);
    EXPECT_EQ(saved.warning, notUpdated);
    EXPECT_THAT(names(saved.journal), ElementsAre("b"));
    EXPECT_EQ(memory.read(file), journal({"a", "b"}).encoded());
}

TEST_F(JournalStoreTest, DoesWithoutALockThatNobodyCanHave) {
    lockError = EACCES;
    EXPECT_FALSE(store.append(root, journal({"a"}), nullptr, nullptr, 7).warning);
    EXPECT_FALSE(store.removeRestored(root, {"/r/ordovan+/a"}, shared(journal({"a"})), nullptr, 7, memory).warning);
    EXPECT_FALSE(memory.exists(Url::file(file)));
}

TEST_F(JournalStoreTest, TakesRestoredEntriesOutOfAnOlderRecordThatCouldNotBeMoved) {
    const std::string older = "/r/Organized/.ordovan-journal.json";
    memory.write(older, journal({"a", "b"}).encoded());
    records.failAll("write", ENOSPC);
    const auto loaded = store.load(root, nullptr, 7, memory);
    EXPECT_THAT(names(loaded.unsaved), ElementsAre("a", "b"));
    const auto failed = store.removeRestored(root, {"/r/ordovan+/a"}, loaded.journal, loaded.unsaved, 7, memory);
    EXPECT_EQ(failed.warning, notUpdated);
    records.failAll("", 0);
    const auto saved = store.removeRestored(root, {"/r/ordovan+/a"}, failed.journal, failed.unsaved, 7, memory);
    EXPECT_FALSE(saved.warning);
    EXPECT_EQ(memory.read(older), journal({"b"}).encoded());
    EXPECT_FALSE(store.removeRestored(root, {"/r/ordovan+/b"}, saved.journal, nullptr, 7, memory).warning);
    EXPECT_FALSE(memory.exists(Url::file(older)));
    EXPECT_FALSE(store.load(root, nullptr, 7, memory).journal);
}

TEST_F(JournalStoreTest, ReadsNoOlderRecordThroughALinkedFolder) {
    const std::string theirs = "/elsewhere/.ordovan-journal.json";
    memory.write(theirs, journal({"a"}).encoded());
    for (const char* folder : {"/r/Organized", "/r/ordovan+"}) memory.link(folder, "/elsewhere");
    EXPECT_FALSE(store.load(root, nullptr, 7, memory).journal);
    EXPECT_FALSE(store.removeRestored(root, {"/r/ordovan+/a"}, nullptr, nullptr, 7, memory).warning);
    EXPECT_EQ(memory.read(theirs), journal({"a"}).encoded());
}

TEST_F(JournalStoreTest, WarnsWhenAnOlderRecordStillListsWhatWasRestored) {
    const std::string older = "/r/ordovan+/.ordovan-journal.json";
    memory.write(older, journal({"a"}).encoded());
    records.failAll("write", ENOSPC);
    const auto loaded = store.load(root, nullptr, 7, memory);
    records.failAll("remove", EROFS);
    const auto saved = store.removeRestored(root, {"/r/ordovan+/a"}, loaded.journal, loaded.unsaved, 7, memory);
    EXPECT_EQ(saved.warning, notUpdated);
    EXPECT_FALSE(saved.journal);
    EXPECT_TRUE(memory.exists(Url::file(older)));
}

TEST_F(JournalStoreTest, LeavesAnOlderRecordOfOtherFilesAlone) {
    const std::string older = "/r/ordovan+/.ordovan-journal.json";
    memory.write(file, journal({"a"}).encoded());
    memory.write(older, journal({"z"}).encoded());
    records.failAll("write", ENOSPC);
    EXPECT_FALSE(store.removeRestored(root, {"/r/ordovan+/a"}, nullptr, nullptr, 7, memory).warning);
    EXPECT_EQ(memory.read(older), journal({"z"}).encoded());
}

TEST_F(JournalStoreTest, TriesWhetherRecordsCanBeSavedAndLeavesNothingBehind) {
    EXPECT_TRUE(store.canSave());
    EXPECT_THAT(*memory.list("/records"), SizeIs(1));  // the folder of the journals
    EXPECT_THAT(*memory.list("/records/journals"), SizeIs(0));
    EXPECT_THAT(locked, SizeIs(0));
    for (const std::size_t call : {1, 2, 3, 4}) {
        records.failCall(call, EROFS);
        EXPECT_FALSE(store.canSave()) << call;
    }
}

TEST_F(JournalStoreTest, PutsWhatIsInMemoryOnlyBehindTheStoredEntries) {
    memory.write(file, journal({"a"}).encoded());
    const auto unsaved = shared(journal({"b"}));
    const auto loaded = store.load(root, unsaved, 7, memory);
    EXPECT_THAT(names(loaded.journal), ElementsAre("a", "b"));
    EXPECT_EQ(loaded.unsaved, unsaved);
}

TEST_F(JournalStoreTest, TellsWhatWasReadBeforeAChangeEndedFromWhatWasReadAfterIt) {
    memory.write(file, journal({"a"}).encoded());
    std::vector<std::uint64_t> changes;
    bool isChanging = false;
    records.observer = [&](const std::string&) {
        if (std::exchange(isChanging, true)) return;
        changes.push_back(store.append(root, journal({"b"}), nullptr, nullptr, 1).revision);
        changes.push_back(store.removeRestored(root, {"/r/ordovan+/b"}, nullptr, nullptr, 1, memory).revision);
    };
    const auto before = store.load(root, nullptr, 1, memory);
    const auto after = store.load(root, nullptr, 1, memory);
    EXPECT_THAT(changes, ElementsAre(Gt(before.revision), Gt(changes[0])));
    EXPECT_GT(after.revision, changes[1]);
}

}  // namespace
