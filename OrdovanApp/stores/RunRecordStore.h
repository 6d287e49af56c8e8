#pragma once

#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/RecordStorage.h"
#include "OrdovanCore/RunNotes.h"
#include "OrdovanCore/RunRecord.h"

#include <cstddef>
#include <memory>

namespace ordovan {

/// The stored records of runs that have not come to their end. A folder has a few places for them, numbered from 1,
/// since the record of an interrupted run may have to stay there while others go on.
///
/// Any thread. Whoever calls for a folder holds that folder's lock. Where that excludes nobody, a record is still its
/// run's alone as long as the run goes on.
class RunRecordStore {
public:
    /// How many records of one folder there may be.
    static constexpr std::size_t places = 4;

    /// The record of a run that begins.
    struct Begun {
        std::size_t place = 0;
        std::unique_ptr<RunNotes> notes;  ///< while it lives, nobody else takes the run for an interrupted one
    };

    /// A stored record as it was found.
    struct Found {
        enum class State {
            none,
            readable,
            unreadable,  ///< what stands there can not be used
            unknown,     ///< it could not be read this time
            inUse,       ///< its run goes on, or somebody else is bringing that to its end
        };
        State state = State::none;
        OrdovanUnfinishedRun run = {};               ///< only when readable
        std::unique_ptr<RunNotes> holder = nullptr;  ///< while it lives, nobody else takes the record up
    };

    RunRecordStore(RecordStorage& storage, StorageLocations locations);

    /// Stores what a run is about to do in the first free place. It is on disk when this returns; notes can then be
    /// added. On an error no record is left of this run, but for a disk that refuses that as well. EFBIG for more items
    /// than a record may have; EEXIST when no place is free.
    [[nodiscard]] OrdovanResult<Begun> begin(const OrdovanRunIntent& intent) const;

    /// False when certainly none stands for a folder.
    [[nodiscard]] bool mayStand(const Url& root) const;

    /// The record that stands in a place.
    [[nodiscard]] Found read(const Url& root, std::size_t place) const;

    /// Stores another record in its place. Returns what holds it, or null where it can not be held. On an error the
    /// former one stands, unless only the flush of their folder failed.
    [[nodiscard]] OrdovanResult<std::unique_ptr<RunNotes>> replace(const Url& root, std::size_t place,
                                                                   const OrdovanUnfinishedRun& run) const;

    /// Removes it; none there is no error. False when it still stands.
    [[nodiscard]] bool remove(const Url& root, std::size_t place) const;

    /// Renames it, so that it is not read again and not lost either. False when that is not possible.
    [[nodiscard]] bool setAside(const Url& root, std::size_t place, double nowEpoch) const;

private:
    [[nodiscard]] bool isFree(const Url& file) const;

    RecordStorage& storage_;
    StorageLocations locations_;
};

}  // namespace ordovan
