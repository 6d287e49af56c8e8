#pragma once

#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/RecordStorage.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ordovan {

/// The undo journals: one stored document for each organized folder.
///
/// Any thread. Every change reads the document again and writes it under the lock of the shared records, so that what
/// another process has added is kept.
class JournalStore {
public:
    using Journal = std::shared_ptr<const OrdovanJournal>;

    /// A stored journal as it was found.
    struct Stored {
        enum class State { none, readable, unreadable };
        State state = State::none;
        Journal journal;  ///< only when readable
    };

    /// What a change led to.
    struct Saved {
        Journal journal;                     ///< what can be undone now; null when nothing can
        Journal unsaved;                     ///< the part of it that is in memory only; null when all is stored
        std::optional<std::string> warning;  ///< a sentence for the user when it could not be stored
    };

    /// `lockRecords` takes the lock of the shared records (waiting for it). Where that fails, documents are read and
    /// written without it: a record that might collide is better than none.
    JournalStore(RecordStorage& storage, StorageLocations locations, LockFunction lockRecords);

    /// The stored journal of a folder.
    [[nodiscard]] Stored read(const Url& root) const;

    /// The journal of a folder for a preview. Where none is stored, a journal that an older version left inside the
    /// folder is moved to where it belongs now. `isSymlink` guards that step: nothing is read or removed through a
    /// linked folder. Null where there is none or it can not be read.
    [[nodiscard]] Journal load(const Url& root, double nowEpoch, OrdovanFileSystem& fs) const;

    /// Adds a run to the stored journal. An unreadable document is set aside first, and then `known` (what the program
    /// had read before, may be null) stands in for it. `unsaved`: what earlier runs could not store; it goes first.
    [[nodiscard]] Saved append(const Url& root, const OrdovanJournal& run, const Journal& known, const Journal& unsaved,
                               double nowEpoch) const;

    /// Takes entries that were put back out of the stored journal; the document goes when nothing remains.
    struct Restoration {
        Journal known;                 ///< the journal in memory before the run
        Journal unsaved;               ///< its part that is not stored, or null
        const OrdovanJournal& undone;  ///< the entries that the run was to put back
        const OrdovanJournal& left;    ///< those of them that it did not put back
    };
    [[nodiscard]] Saved removeRestored(const Url& root, const Restoration& run, double nowEpoch,
                                       OrdovanFileSystem& fs) const;

private:
    [[nodiscard]] Stored readDocument(const Url& file) const;
    [[nodiscard]] bool write(const Url& file, const OrdovanJournal& journal) const;

    RecordStorage& storage_;
    StorageLocations locations_;
    LockFunction lockRecords_;
};

}  // namespace ordovan
