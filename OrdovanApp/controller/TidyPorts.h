#pragma once

#include "OrdovanApp/controller/Clock.h"
#include "OrdovanApp/controller/TaskRunner.h"
#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanApp/stores/HistoryStore.h"
#include "OrdovanApp/stores/JournalStore.h"
#include "OrdovanApp/stores/RecentFoldersStore.h"
#include "OrdovanApp/stores/RunRecordStore.h"
#include "OrdovanApp/stores/TrashRecordStore.h"
#include "OrdovanCore/ContentReading.h"
#include "OrdovanCore/FileFacts.h"
#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/Reconcile.h"
#include "OrdovanCore/Text.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

class AppSettings;
class RuleStore;

/// What the records of runs that are going on need, so that a run that is interrupted can be brought to an end.
struct RecordingPorts {
    /// Where these records are kept; null: none are, and nothing below is used.
    const ordovan::RunRecordStore* runRecords = nullptr;
    /// `ordovan::factsOf`, or a stand-in.
    ordovan::FactsFunction facts = {};
    /// `ordovan::factsOfMany`, or a stand-in: looks at the files of one run before it begins. Each function that it
    /// makes is used by one thread; there may be two. Empty: `facts` does.
    std::function<ordovan::FactsFunction()> makeFacts = {};
    /// `ordovan::findInTrash`, `removeTrashInfo` and `forgetTrashInfo`, or stand-ins.
    std::function<OrdovanResult<std::vector<ordovan::TrashedFile>>(std::span<const Url> originals)> findInTrash = {};
    std::function<OrdovanResult<void>(const ordovan::TrashedFile& orphan)> removeTrashInfo = {};
    std::function<void(const Url& item, const Url& putBackTo)> forgetTrashInfo = {};
    /// `ordovan::syncMoves`, or a stand-in; empty: nothing is flushed, and all counts as if it had been.
    std::function<bool(std::span<const Url> arrivals, std::span<const Url> departures)> syncMoves = {};
    /// `ordovan::canFlush`, or a stand-in; empty: all can.
    std::function<bool(std::span<const Url> folders)> canFlush = {};
    /// `ordovan::keepsInodes` and `keepsIdentities`, or stand-ins; asked about one file of each device in a run, at
    /// times on two threads at once. Empty: all do.
    std::function<bool(const Url& item)> keepsInodes = {};
    std::function<bool(const Url& item)> keepsIdentities = {};
};

/// Everything the controller uses of the world around it. A set of references: what it refers to outlives both the
/// controller and the tasks that it started. Functions are called on background threads unless said otherwise.
struct TidyPorts {
    OrdovanFileSystem& fileSystem;
    /// A port for one run in the folder `root`, used by one thread, that sees the files of `fileSystem`; empty: the run
    /// uses `fileSystem`.
    std::function<std::unique_ptr<OrdovanFileSystem>(const Url& root)> makeRunFileSystem;
    /// A port over `fs` for one run that may hash these files ahead of it, in this order, as far as `mayRead` (called
    /// on other threads) lets it; empty for none.
    std::function<std::unique_ptr<OrdovanFileSystem>(OrdovanFileSystem& fs, std::span<const Url> toBeHashed,
                                                     std::function<bool(const Url& file)> mayRead)>
        hashAhead;
    /// Reads files for the search for duplicates, and for hashes that can be given up in the middle of a file. It sees
    /// the files of `fileSystem`. Null: every hash is `fileSystem`'s.
    OrdovanContentReading* contents = nullptr;
    /// A reader for one scan.
    std::function<std::unique_ptr<OrdovanDirectoryReading>()> makeDirectoryReader;
    /// Whether names in a folder differ by case; nothing when that can not be told.
    std::function<std::optional<bool>(const Url& folder)> supportsCaseSensitiveNames;
    /// `OrdovanFolderCleanup::removeEmptyFolders`, or a stand-in over another file system.
    std::function<std::size_t(std::span<const Url> thatHeld, const Url& within)> removeEmptyFolders;
    /// `ordovan::writeDocument`, or a stand-in.
    std::function<OrdovanResult<void>(const Url& file, std::string_view content)> writeDocument;
    /// `OrdovanProposalPlanner::resolveExisting`, or a stand-in.
    std::function<Url(const Url&)> resolveExisting;
    /// The program's own folders and the home Trash, which no preview looks into. Called on background threads.
    std::function<std::vector<Url>()> ownFolders;
    /// Takes the lock of an organized folder or fails at once, with EWOULDBLOCK when another run holds it.
    ordovan::LockFunction tryLockFolder;
    /// Any thread.
    ordovan::Clock clock;
    /// The zone in which files are grouped by month. Any thread.
    std::function<ordovan::text::TimeZone()> timeZone;
    ordovan::TaskRunner& tasks;
    ordovan::JournalStore& journals;
    ordovan::HistoryStore& history;
    ordovan::TrashRecordStore& trashRecords;
    ordovan::RecentFoldersStore& recentFolders;
    AppSettings& settings;
    RuleStore& rules;
    RecordingPorts recording = {};
};
