#pragma once

#include "OrdovanApp/controller/RunRecovery.h"
#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/RunHistory.h"
#include "OrdovanCore/TrashRecord.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

/// How far a run with the Trash is.
struct TrashProgress {
    std::uint64_t filesDone = 0;
    std::uint64_t filesTotal = 0;
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0;
};

/// What every run with the Trash works from; nothing else is looked at while it runs.
struct TrashInputs {
    Url root;  ///< the only folder from which anything is trashed and to which anything is put back
    double nowEpoch = 0;
    RecordsInMemory memory;
    RecoveryControl recovery;                              ///< its flag stops the run as well
    std::function<void(const TrashProgress&)> progressed;  ///< told after each file, on the running thread
};

/// What a run with the Trash did.
struct TrashResult {
    bool refused = false;  ///< another run holds the folder: nothing was done, and nothing below has a meaning
    std::vector<RecoveredRun> recovered;  ///< earlier ones, that were found interrupted
    bool keepsRecord = false;             ///< the record of this run still stands
    std::shared_ptr<const OrdovanTrashReport> report;
    std::optional<ordovan::TrashRecordStore::Saved> record;  ///< nothing where there was nothing to record
    OrdovanRunRecord run{};
    ordovan::HistoryStore::Result history;
};

/// A group of duplicates and the one of its files that stays.
struct KeptDuplicate {
    OrdovanDuplicateGroup group;
    Url keeper;
};

/// The runs that move files to the Trash and back, from the lock on the folder to the record of what was done. They run
/// on a background thread.
namespace TrashFlow {

/// Trashes every file of the groups but those that stay; the report has the outcomes of all groups in their order.
[[nodiscard]] TrashResult trashExtras(const TidyPorts& ports, TrashInputs inputs,
                                      std::span<const KeptDuplicate> groups);

/// Trashes these files.
[[nodiscard]] TrashResult trashBigFiles(const TidyPorts& ports, TrashInputs inputs,
                                        std::span<const OrdovanFileTrasher::Item> items);

/// Puts these entries of the record back.
[[nodiscard]] TrashResult restore(const TidyPorts& ports, TrashInputs inputs, const OrdovanTrashRecord& entries);

}  // namespace TrashFlow
