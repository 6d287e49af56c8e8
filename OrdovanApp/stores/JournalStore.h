#pragma once

#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/RecordStorage.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

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
        std::uint64_t revision = 0;          ///< as that of `Loaded`
    };

    /// `lockRecords` takes the lock of the shared records. While another has it, nothing is written, and what should
    /// have been stays in memory. Where it can not be had for another reason, documents are written without it: a
    /// record that might collide is better than none. `maxEntries`: a journal of more could not be read again, so it is
    /// never written, and what does not fit stays in memory.
    JournalStore(RecordStorage& storage, StorageLocations locations, LockFunction lockRecords,
                 std::size_t maxEntries = OrdovanJournal::maxEntries);

    /// The stored journal of a folder.
    [[nodiscard]] Stored read(const Url& root) const;

    /// What can be undone in a folder.
    struct Loaded {
        Journal journal;  ///< null when nothing can
        Journal unsaved;  ///< the part of it that is in memory only, or null
        /// Of two results of one store for a folder, one that was read or written later has the higher.
        std::uint64_t revision = 0;
    };

    /// The journal of a folder for a preview: the stored one, and behind it what could not be stored (`unsaved`, may
    /// be null). Where none is stored, the journals that older versions left inside the folder are moved to where they
    /// belong now; nothing is read or removed through a linked folder. One that can not be read counts as none.
    [[nodiscard]] Loaded load(const Url& root, const Journal& unsaved, double nowEpoch, OrdovanFileSystem& fs) const;

    /// Adds a run to the stored journal. An unreadable document is set aside first, and then `known` (what the program
    /// had read before, may be null) stands in for it. `unsaved`: what earlier runs could not store; it goes first.
    [[nodiscard]] Saved append(const Url& root, const OrdovanJournal& run, const Journal& known, const Journal& unsaved,
                               double nowEpoch) const;

    /// Takes the entries that a run has put back out of the stored journal; the document goes when nothing remains.
    ///
    /// `restored`: the destinations of the entries that were put back. `known` and `unsaved`: as for `append`. What
    /// the document holds beyond `known` stays. What only memory holds stays as well, unless another process has
    /// plainly dealt with it: taken from the document, and nothing lies at its destination any more. The entries are
    /// taken out of what older versions left inside the folder as well, where that could not be moved before.
    ///
    /// `isOnDisk`: whether it is certain that what was put back is there after a restart. Where it is not, the entries
    /// stay, and the warning says so.
    [[nodiscard]] Saved removeRestored(const Url& root, const std::unordered_set<std::string_view>& restored,
                                       const Journal& known, const Journal& unsaved, double nowEpoch,
                                       OrdovanFileSystem& fs, bool isOnDisk = true) const;

    /// Whether records could be saved now: a small file is written to the folder of the journals and to that of the
    /// other records (which are made), flushed and removed again. No lock is taken.
    [[nodiscard]] bool canSave() const;

private:
    /// A journal that an older version left, and where.
    struct Older {
        Url file;
        Journal journal;
    };
    [[nodiscard]] Saved appended(const OrdovanResult<HeldLock>& lock, const Url& root, const OrdovanJournal& run,
                                 const Journal& known, const Journal& unsaved, double nowEpoch) const;
    [[nodiscard]] Saved withoutRestored(const OrdovanResult<HeldLock>& lock, const Url& root,
                                        const std::unordered_set<std::string_view>& restored, const Journal& known,
                                        const Journal& unsaved, double nowEpoch, OrdovanFileSystem& fs) const;
    [[nodiscard]] std::vector<Older> readOlder(const Url& root, OrdovanFileSystem& fs) const;
    [[nodiscard]] bool takeOutOfOlder(const Url& root, const std::unordered_set<std::string_view>& restored,
                                      OrdovanFileSystem& fs) const;
    [[nodiscard]] Stored readDocument(const Url& file) const;
    [[nodiscard]] bool write(const Url& file, const OrdovanJournal& journal) const;

    RecordStorage& storage_;
    StorageLocations locations_;
    LockFunction lockRecords_;
    std::size_t maxEntries_;
    mutable std::atomic<std::uint64_t> revision_ = 0;
};

}  // namespace ordovan
