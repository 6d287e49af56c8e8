#pragma once

#include "OrdovanApp/controller/PreviewFlow.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/stores/AppSettings.h"
#include "OrdovanApp/stores/RuleStore.h"
#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/testing/FaultyFileSystem.h"
#include "OrdovanCore/testing/MemoryDirectoryReader.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/ManualTaskRunner.h"
#include "tests/support/MemoryReconcile.h"
#include "tests/support/MemoryRecords.h"

#include <gtest/gtest.h>

#include <QObject>

#include <cerrno>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ordovan::test {

/// The controller over a file system, records, settings, locks, clock and tasks that all live in memory.
///
/// The folder of most tests is "/r"; records are kept in "/records".
class TidyWorld : public ::testing::Test {
public:
    void tree(std::initializer_list<std::string_view> items) { testing::build(memory, "/r", items); }

    /// A controller. It previews again after each run unless told otherwise.
    std::unique_ptr<TidyViewModel> make(TidyViewModel::Options options = {}) {
        return std::make_unique<TidyViewModel>(ports(), options);
    }

    /// A controller that has previewed "/r".
    std::unique_ptr<TidyViewModel> previewed(TidyViewModel::Options options = {}) {
        auto model = make(options);
        model->chooseFolder(Url::file("/r"));
        tasks.finish();
        return model;
    }

    TidyPorts ports() {
        return {.fileSystem = fs,
                .makeRunFileSystem = makeRunFileSystem,
                .hashAhead = hashAhead,
                .contents = contents,
                .makeDirectoryReader =
                    [this] {
                        auto reader = std::make_unique<testing::MemoryDirectoryReader>(memory);
                        for (const std::string& path : unreadable) reader->setUnreadable(path, EACCES);
                        for (const std::string& path : packages) reader->setPackage(path);
                        return reader;
                    },
                .supportsCaseSensitiveNames = [this](const Url&) { return caseSensitive; },
                .removeEmptyFolders = [this](std::span<const Url> held,
                                             const Url& within) { return removeEmptyFolders(held, within); },
                .writeDocument = [this](const Url& file, std::string_view content) { return write(file, content); },
                .resolveExisting = [this](const Url& url) { return resolved(url); },
                .ownFolders = [this] { return std::vector<Url>{locations.recordsFolder}; },
                .tryLockFolder = [this](const Url& folder) { return lock(folder); },
                .clock = [this] { return now += clockStep; },
                .timeZone = text::TimeZone::utc,
                .tasks = tasks,
                .journals = journals,
                .history = history,
                .trashRecords = trashRecords,
                .recentFolders = recentFolders,
                .settings = settings,
                .rules = rules,
                .recording = recording()};
    }

    /// What the records of runs need; those are kept in a storage of their own, so that faults of the other records
    /// do not concern them.
    RecordingPorts recording() {
        const ReconcilePorts stand = reconcilePorts(memory, fs);
        return {.runRecords = recordsRuns ? &runRecords : nullptr,
                .facts = facts ? facts : stand.facts,
                .findInTrash = stand.findInTrash,
                .removeTrashInfo = stand.removeTrashInfo,
                .forgetTrashInfo = stand.forgetTrashInfo,
                .syncMoves = syncMoves,
                .canFlush = canFlush,
                .keepsInodes = keepsInodes,
                .keepsIdentities = keepsIdentities};
    }

    bool recordsRuns = true;
    FactsFunction facts;  ///< empty: those of the files in memory
    decltype(RecordingPorts::syncMoves) syncMoves;
    decltype(RecordingPorts::canFlush) canFlush;
    std::function<bool(const Url&)> keepsInodes;
    std::function<bool(const Url&)> keepsIdentities;

    decltype(TidyPorts::makeRunFileSystem) makeRunFileSystem;
    decltype(TidyPorts::hashAhead) hashAhead;
    OrdovanContentReading* contents = nullptr;

    /// The lock of a folder, as `FolderLock` gives it; taking and releasing it are events.
    OrdovanResult<HeldLock> lock(const Url& folder) {
        const std::string path(folder.path());
        if (heldElsewhere.contains(path)) return std::unexpected(OrdovanSystemError::posix(EWOULDBLOCK));
        if (lockError != 0) return std::unexpected(OrdovanSystemError::posix(lockError));
        events.push_back("lock " + path);
        return HeldLock(this, [this, path](const void*) { events.push_back("unlock " + path); });
    }

    /// The journal stored for "/r"; nothing when none is, or it can not be read.
    std::optional<OrdovanJournal> storedJournal() {
        const auto stored = journals.read(Url::file("/r"));
        if (!stored.journal) return std::nullopt;
        return *stored.journal;
    }
    [[nodiscard]] std::string journalPath() const { return std::string(locations.journal(Url::file("/r")).path()); }

    /// The stored trash record; nothing when none is, or it can not be read.
    std::optional<OrdovanTrashRecord> storedTrash() {
        const auto document = memory.read(locations.trashRecord().path());
        if (!document) return std::nullopt;
        auto record = OrdovanTrashRecord::decoded(*document);
        if (!record) return std::nullopt;
        return std::move(*record);
    }

    /// The original places of every entry, without the folder.
    static std::vector<std::string> originals(const OrdovanTrashRecord& record) {
        std::vector<std::string> result;
        for (const auto& entry : record.entries) result.push_back(local(entry.original()));
        return result;
    }
    /// The sentences of a report, in order.
    static std::vector<std::string> messages(const OrdovanTrashReport& report) {
        std::vector<std::string> result;
        for (const auto& outcome : report.outcomes) result.push_back(outcome.message);
        return result;
    }

    /// "source -> destination" of every entry, without the folder.
    static std::vector<std::string> lines(const OrdovanJournal& journal) {
        std::vector<std::string> result;
        for (const auto& entry : journal.entries) {
            result.push_back(local(entry.source()) + " -> " + local(entry.destination()));
        }
        return result;
    }
    static std::vector<std::string> lines(const std::vector<OrdovanFileProposal>& proposals) {
        std::vector<std::string> result;
        for (const auto& proposal : proposals) {
            result.push_back(local(proposal.source.path()) + " -> " + local(proposal.destination.path()));
        }
        return result;
    }
    static std::vector<std::string> proposed(const TidyViewModel& model) { return lines(model.plan()->proposals); }
    static std::vector<std::string> recoverable(const TidyViewModel& model) {
        return model.recoverableJournal() ? lines(*model.recoverableJournal()) : std::vector<std::string>();
    }
    static std::vector<std::string> messages(const TidyViewModel& model) {
        std::vector<std::string> result;
        for (const auto& outcome : model.lastReport()->outcomes) result.push_back(outcome.message);
        return result;
    }
    static std::string local(std::string_view path) {
        return std::string(path.starts_with("/r/") ? path.substr(3) : path);
    }

    [[nodiscard]] Url resolved(const Url& url) {
        const auto real = memory.realPath(url.path());
        return real ? Url::file(*real) : url;
    }

    /// Writes an exported document, or refuses it with `writeError`.
    OrdovanResult<void> write(const Url& file, std::string_view content) {
        if (writeError != 0) return std::unexpected(OrdovanSystemError::posix(writeError));
        memory.write(file.path(), content);
        return {};
    }

    testing::MemoryFileSystem memory;
    testing::FaultyFileSystem fs{memory};
    MemoryRecords records{memory};
    MemoryRecords runStorage{memory};
    MemoryKeyValueStore values;
    StorageLocations locations{.recordsFolder = Url::file("/records"), .settingsFolder = Url::file("/settings")};
    std::vector<std::string> events;  // locks as they are taken and released
    AppSettings settings{values};
    RuleStore rules{values};
    JournalStore journals{records, locations, [this](const Url& folder) { return lock(folder); }};
    HistoryStore history{records, locations, [this](const Url& folder) { return lock(folder); }};
    TrashRecordStore trashRecords{records, locations, [this](const Url& folder) { return lock(folder); }};
    RunRecordStore runRecords{runStorage, locations};
    RecentFoldersStore recentFolders{values, [this](const Url& folder) { return memory.exists(folder); },
                                     [this](const Url& folder) { return resolved(folder); }};
    ManualTaskRunner tasks;
    double now = 1'700'000'000.5;
    double clockStep = 0;  // between two looks at the clock
    std::optional<bool> caseSensitive = true;
    std::set<std::string> heldElsewhere;
    int lockError = 0;
    int writeError = 0;
    std::set<std::string> unreadable;
    std::set<std::string> packages;

private:
    std::size_t removeEmptyFolders(std::span<const Url> held, const Url& within) {
        std::size_t removed = 0;
        for (const Url& file : held) {
            for (Url folder = file.deletingLastPathComponent();
                 folder != within && folder.path().starts_with(within.path());
                 folder = folder.deletingLastPathComponent()) {
                const auto children = memory.list(folder.path());
                if (!children || !children->empty()) break;
                memory.removeTree(folder.path());
                ++removed;
            }
        }
        return removed;
    }
};

/// Counts how often a signal of an object is sent, from now on.
template <class Object, class Signal>
class SignalCount {
public:
    SignalCount(Object& object, Signal signal)
        : connection_(QObject::connect(&object, signal, &object, [count = count_] { ++*count; })) {}
    ~SignalCount() { QObject::disconnect(connection_); }
    SignalCount(const SignalCount&) = delete;
    SignalCount& operator=(const SignalCount&) = delete;

    operator int() const { return *count_; }

private:
    std::shared_ptr<int> count_ = std::make_shared<int>(0);
    QMetaObject::Connection connection_;
};

}  // namespace ordovan::test
