#pragma once

#include "OrdovanApp/controller/CancelFlag.h"
#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/Inventory.h"

#include <functional>
#include <memory>
#include <optional>

namespace DuplicateSearch {

/// Finds the duplicates among an inventory's files; nothing once the flag is set. `progressed` (may be empty) is told
/// as `OrdovanDuplicateSearchControl::progressed` is, where the ports have a content reader. Runs on a background
/// thread.
[[nodiscard]] std::optional<OrdovanDuplicateReport> run(
    const TidyPorts& ports, const OrdovanInventory& inventory, const std::shared_ptr<const CancelFlag>& flag,
    const std::function<void(const OrdovanDuplicateProgress&)>& progressed);

/// The groups of a report as a later inventory leaves them: without the files that are not there any more or have
/// another size, and without groups of fewer than two files. Any thread.
[[nodiscard]] OrdovanDuplicateReport remaining(const OrdovanDuplicateReport& report, const OrdovanInventory& inventory);

}  // namespace DuplicateSearch
