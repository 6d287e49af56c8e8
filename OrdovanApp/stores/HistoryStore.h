#pragma once

#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/RecordStorage.h"
#include "OrdovanCore/RunHistory.h"

#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

namespace ordovan {

/// The stored list of runs, one for all folders and all processes.
///
/// Any thread. Every change reads the list again and writes it under the lock of the shared records.
class HistoryStore {
public:
    /// What a change led to.
    struct Result {
        OrdovanRunHistory history;              ///< as stored now, and with what could not be stored
        std::vector<OrdovanRunRecord> unsaved;  ///< runs that are in memory only, newest first
        bool saved = false;
        std::uint64_t revision = 0;  ///< of two results of one store, the later one has the higher
    };

    HistoryStore(RecordStorage& storage, StorageLocations locations, LockFunction lockRecords);

    /// The stored list; empty where there is none or it can not be read.
    [[nodiscard]] OrdovanRunHistory load() const;

    /// Puts a run in front of the list, and behind it the runs that could not be stored before (newest first). An
    /// unreadable list is set aside.
    [[nodiscard]] Result add(const OrdovanRunRecord& run, std::span<const OrdovanRunRecord> unsaved, double nowEpoch);

    /// Empties the list.
    [[nodiscard]] Result clear(std::span<const OrdovanRunRecord> unsaved);

private:
    [[nodiscard]] bool write(const OrdovanRunHistory& history);

    RecordStorage& storage_;
    StorageLocations locations_;
    LockFunction lockRecords_;
    std::mutex order_;
    std::uint64_t revision_ = 0;
};

}  // namespace ordovan
