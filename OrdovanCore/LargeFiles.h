#pragma once

#include "OrdovanCore/Inventory.h"

#include <cstdint>
#include <span>
#include <vector>

namespace OrdovanLargeFiles {

/// The largest files of an inventory, at most `limit` of them (a negative limit is 0), each of `minimumBytes` or more.
/// Larger files first, files of one size by name in standard order, then in the inventory's. Hidden files take part;
/// directories, links and packages never. Time: linear, and the sort of what is returned and of what ties with its
/// last. Any thread.
[[nodiscard]] std::vector<OrdovanInventoryEntry> top(std::span<const OrdovanInventoryEntry> entries, std::int64_t limit,
                                                     std::int64_t minimumBytes);

}  // namespace OrdovanLargeFiles
