#pragma once

#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/Text.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ordovan {

/// A group of these files (positions in the inventory), by path in standard order; paths that compare as equal in
/// that of the inventory. The sorter belongs to one thread, and so does the call.
OrdovanDuplicateGroup duplicateGroup(std::string contentHash, std::int64_t byteSize,
                                     std::vector<std::uint32_t> positions,
                                     std::span<const OrdovanInventoryEntry> inventory, text::StandardSorter& sorter);

/// The report of these groups: the most reclaimable bytes first, then by hash, then the smaller size first (only
/// files whose size changed since the inventory have one content and two sizes). Any thread.
OrdovanDuplicateReport duplicateReport(std::vector<OrdovanDuplicateGroup> groups);

}  // namespace ordovan
