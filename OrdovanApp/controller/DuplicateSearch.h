#pragma once

#include "OrdovanApp/controller/CancelFlag.h"
#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/Inventory.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace DuplicateSearch {

/// What a search came to.
struct Found {
    OrdovanDuplicateReport report;
    /// The files that were left out as `WatchedContents::unread` says; none where the ports have no content reader.
    std::vector<Url> unread;
};

/// Finds the duplicates among an inventory's files; nothing once the flag is set. `progressed` (may be empty) is told
/// as `OrdovanDuplicateSearchControl::progressed` is, where the ports have a content reader. Runs on a background
/// thread.
[[nodiscard]] std::optional<Found> run(const TidyPorts& ports, const OrdovanInventory& inventory,
                                       const std::shared_ptr<const CancelFlag>& flag,
                                       const std::function<void(const OrdovanDuplicateProgress&)>& progressed);

/// What a later inventory leaves of a search: neither files that are not there any more, nor copies that have another
/// size, nor groups of fewer than two files. Any thread.
[[nodiscard]] Found remaining(const OrdovanDuplicateReport& report, const std::vector<Url>& unread,
                              const OrdovanInventory& inventory);

}  // namespace DuplicateSearch
