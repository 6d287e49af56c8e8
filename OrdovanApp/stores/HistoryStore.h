#pragma once

#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/RecordStorage.h"
#include "OrdovanCore/RunHistory.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>

namespace ordovan {

/// The stored list of runs, one for all folders and all processes.
///
/// Any thread. Every change reads the list again and writes it under the lock of the shared records.
class HistoryStore {
public:
    /// What a change led to.
    struct Result {
        bool saved = false;
        std::optional<std::string> warning;  ///< a sentence for the user when it was not
        OrdovanRunHistory history;           ///< as stored now; only when it was saved
        std::uint64_t revision = 0;          ///< of two changes through one store, the later one has the higher
    };

    /// `lockRecords` takes the lock of the shared records. Where that fails, nothing is written.
    HistoryStore(RecordStorage& storage, StorageLocations locations, LockFunction lockRecords);

    /// The stored list; empty where there is none or it can not be read.
    [[nodiscard]] OrdovanRunHistory load() const;
    /// The stored list, empty where there is none; nothing where it can not be read.
    [[nodiscard]] std::optional<OrdovanRunHistory> loadReadable() const;

    /// Puts a run in front of the list, and behind it the runs that could not be stored before (newest first). An
    /// unreadable list is set aside first; where it can not be, nothing is written. A run that stands there already, by
    /// its id, is not added once more.
    [[nodiscard]] Result add(const OrdovanRunRecord& run, std::span<const OrdovanRunRecord> unsaved, double nowEpoch);

    /// Empties the list.
    [[nodiscard]] Result clear();

private:
    struct Stored;
    [[nodiscard]] Stored read() const;
    [[nodiscard]] Result written(OrdovanRunHistory history, const char* failure);
    [[nodiscard]] Result refused(const char* warning);

    RecordStorage& storage_;
    StorageLocations locations_;
    LockFunction lockRecords_;
    std::mutex order_;
    std::uint64_t revision_ = 0;
};

}  // namespace ordovan
