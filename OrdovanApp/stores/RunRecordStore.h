#pragma once

#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/RecordStorage.h"
#include "OrdovanCore/RunNotes.h"
#include "OrdovanCore/RunRecord.h"

#include <memory>

namespace ordovan {

/// The stored records of runs that have not come to their end: at most one for each folder.
///
/// Any thread. Whoever calls for a folder holds that folder's lock, so that no two work on one record.
class RunRecordStore {
public:
    /// A stored record as it was found.
    struct Found {
        enum class State {
            none,
            readable,
            unreadable,  ///< what stands there can not be used
            unknown,     ///< it could not be read this time
        };
        State state = State::none;
        OrdovanUnfinishedRun run = {};  ///< only when readable
    };

    RunRecordStore(RecordStorage& storage, StorageLocations locations);

    /// Stores what a run is about to do, in place of whatever stands there. It is on disk when this returns; notes can
    /// then be added. On an error no record is left of this run, but for a disk that refuses that as well. EFBIG for
    /// more items than a record may have.
    [[nodiscard]] OrdovanResult<std::unique_ptr<RunNotes>> begin(const OrdovanRunIntent& intent) const;

    /// False when certainly none stands for a folder.
    [[nodiscard]] bool mayStand(const Url& root) const;

    /// The record that stands for a folder.
    [[nodiscard]] Found read(const Url& root) const;

    /// Removes it; none there is no error. False when it still stands.
    [[nodiscard]] bool remove(const Url& root) const;

    /// Renames it, so that it is not read again and not lost either. False when that is not possible.
    [[nodiscard]] bool setAside(const Url& root, double nowEpoch) const;

private:
    RecordStorage& storage_;
    StorageLocations locations_;
};

}  // namespace ordovan
