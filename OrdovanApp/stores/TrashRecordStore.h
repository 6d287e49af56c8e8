#pragma once

#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/RecordStorage.h"
#include "OrdovanCore/TrashRecord.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace ordovan {

/// The stored record of what can be put back from the Trash: one document for all folders and all processes.
///
/// Any thread. Every change reads the document again and writes it under the lock of the shared records, so that what
/// another process has added is kept. Records handed in and out are never null.
class TrashRecordStore {
public:
    using Record = std::shared_ptr<const OrdovanTrashRecord>;

    /// What the program holds in memory.
    struct Known {
        Record record = std::make_shared<const OrdovanTrashRecord>();   ///< everything that can be put back
        Record unsaved = std::make_shared<const OrdovanTrashRecord>();  ///< the part of it that is in memory only
        /// Of two results of one store, one that was read or written later has the higher; 0 where nothing was read.
        std::uint64_t revision = 0;
    };

    /// What a change led to.
    struct Saved {
        Known known;
        std::optional<std::string> warning;  ///< a sentence for the user when it could not be stored
    };

    /// `lockRecords` takes the lock of the shared records. While another has it, nothing is written, and what should
    /// have been stays in memory. Where it can not be had for another reason, the document is written without it: a
    /// record that might collide is better than none. `maxEntries`: a record of more could not be read again.
    TrashRecordStore(RecordStorage& storage, StorageLocations locations, LockFunction lockRecords,
                     std::size_t maxEntries = OrdovanTrashRecord::maxEntries);

    /// The stored record, and behind it what could not be stored. Where it can not be read, what is known already,
    /// with revision 0.
    [[nodiscard]] Known load(const Known& known) const;

    /// Adds what a run has trashed to the stored record, behind what earlier runs could not store. An unreadable
    /// document is set aside first, and then the known record stands in for it. Where that is not possible, or the
    /// record would go beyond its limit, nothing is written, and the run can be put back until the program ends.
    [[nodiscard]] Saved append(const OrdovanTrashRecord& run, const Known& known, double nowEpoch) const;

    /// Takes the entries that a run has put back out of the stored record.
    ///
    /// `putBack`: the places in the Trash that they were put back from. What the document holds beyond the known record
    /// stays. What only memory holds stays as well, unless another process has plainly dealt with it: taken from the
    /// document, and nothing lies at its place in the Trash any more, or a later entry has its original path.
    ///
    /// `isOnDisk`: whether it is certain that what was put back is there after a restart. Where it is not, the entries
    /// stay, and the warning says so.
    [[nodiscard]] Saved removePutBack(const std::unordered_set<std::string_view>& putBack, const Known& known,
                                      double nowEpoch, OrdovanFileSystem& fs, bool isOnDisk = true) const;

private:
    struct Stored;
    [[nodiscard]] Saved appended(const OrdovanResult<HeldLock>& lock, const OrdovanTrashRecord& run, const Known& known,
                                 double nowEpoch) const;
    [[nodiscard]] Saved withoutPutBack(const OrdovanResult<HeldLock>& lock,
                                       const std::unordered_set<std::string_view>& putBack, const Known& known,
                                       double nowEpoch, OrdovanFileSystem& fs) const;
    [[nodiscard]] Stored read() const;
    [[nodiscard]] bool write(const OrdovanTrashRecord& record) const;
    [[nodiscard]] bool setAside(double nowEpoch) const;

    RecordStorage& storage_;
    StorageLocations locations_;
    LockFunction lockRecords_;
    std::size_t maxEntries_;
    mutable std::atomic<std::uint64_t> revision_ = 0;
};

}  // namespace ordovan
