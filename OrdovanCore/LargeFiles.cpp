#include "OrdovanCore/LargeFiles.h"

#include "OrdovanCore/Text.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string_view>

namespace {

using Positions = std::vector<std::uint32_t>;

/// Drops the positions that can not be among the first `limit` by size.
void keepLargest(Positions& positions, std::size_t limit, std::span<const OrdovanInventoryEntry> entries) {
    if (positions.size() <= limit) return;
    std::vector<std::int64_t> sizes;
    sizes.reserve(positions.size());
    for (const std::uint32_t position : positions) sizes.push_back(entries[position].byteSize);
    const auto last = sizes.begin() + static_cast<std::ptrdiff_t>(limit - 1);
    std::ranges::nth_element(sizes, last, std::greater());
    std::erase_if(positions, [&](std::uint32_t position) { return entries[position].byteSize < *last; });
}

/// Appends the entries of one size by name.
void appendByName(std::span<const std::uint32_t> tied, std::span<const OrdovanInventoryEntry> entries,
                  ordovan::text::StandardSorter& sorter, std::vector<OrdovanInventoryEntry>& to) {
    std::vector<std::string_view> names;
    names.reserve(tied.size());
    for (const std::uint32_t position : tied) names.push_back(entries[position].url.lastPathComponent());
    for (const std::uint32_t place : sorter.order(names)) to.push_back(entries[tied[place]]);
}

}  // namespace

std::vector<OrdovanInventoryEntry> OrdovanLargeFiles::top(std::span<const OrdovanInventoryEntry> entries,
                                                          std::int64_t limit, std::int64_t minimumBytes) {
    if (limit <= 0) return {};
    Positions positions;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].isRegularFile() && entries[i].byteSize >= minimumBytes) {
            positions.push_back(static_cast<std::uint32_t>(i));
        }
    }
    const std::size_t count = std::min(positions.size(), static_cast<std::size_t>(limit));
    keepLargest(positions, count, entries);
    const auto size = [&](std::uint32_t position) { return entries[position].byteSize; };
    std::ranges::stable_sort(positions, std::greater(), size);

    std::vector<OrdovanInventoryEntry> largest;
    largest.reserve(positions.size());
    ordovan::text::StandardSorter sorter;
    const std::span<const std::uint32_t> all(positions);
    for (std::size_t begin = 0; begin < all.size();) {
        std::size_t end = begin + 1;
        while (end < all.size() && size(all[end]) == size(all[begin])) ++end;
        appendByName(all.subspan(begin, end - begin), entries, sorter, largest);
        begin = end;
    }
    largest.resize(count);
    return largest;
}
