#include "OrdovanCore/Duplicates.h"

#include "OrdovanCore/DuplicateOrder.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

std::string OrdovanDuplicateGroup::id() const {
    return contentHash + ":" + std::to_string(byteSize);
}

std::int64_t OrdovanDuplicateGroup::redundantCount() const noexcept {
    return files.empty() ? 0 : static_cast<std::int64_t>(files.size()) - 1;
}

std::int64_t OrdovanDuplicateGroup::reclaimableBytes() const {
    std::int64_t bytes = 0;
    if (__builtin_mul_overflow(byteSize, redundantCount(), &bytes)) std::abort();
    return bytes;
}

std::int64_t OrdovanDuplicateReport::reclaimableBytes() const {
    std::int64_t total = 0;
    for (const OrdovanDuplicateGroup& group : groups) {
        if (__builtin_add_overflow(total, group.reclaimableBytes(), &total)) std::abort();
    }
    return total;
}

std::int64_t OrdovanDuplicateReport::duplicateFileCount() const {
    std::int64_t total = 0;
    for (const OrdovanDuplicateGroup& group : groups) {
        if (__builtin_add_overflow(total, static_cast<std::int64_t>(group.files.size()), &total)) std::abort();
    }
    return total;
}

namespace ordovan {

OrdovanDuplicateGroup duplicateGroup(std::string contentHash, std::int64_t byteSize,
                                     std::vector<std::uint32_t> positions,
                                     std::span<const OrdovanInventoryEntry> inventory, text::StandardSorter& sorter) {
    std::ranges::sort(positions);
    std::vector<std::string_view> paths;
    paths.reserve(positions.size());
    for (const std::uint32_t position : positions) paths.push_back(inventory[position].url.path());
    OrdovanDuplicateGroup group{std::move(contentHash), byteSize, {}};
    group.files.reserve(positions.size());
    for (const std::uint32_t place : sorter.order(paths)) group.files.push_back(inventory[positions[place]].url);
    return group;
}

OrdovanDuplicateReport duplicateReport(std::vector<OrdovanDuplicateGroup> groups) {
    std::ranges::stable_sort(groups, [](const OrdovanDuplicateGroup& a, const OrdovanDuplicateGroup& b) {
        const std::int64_t bytesOfA = a.reclaimableBytes(), bytesOfB = b.reclaimableBytes();
        if (bytesOfA != bytesOfB) return bytesOfA > bytesOfB;
        return std::tie(a.contentHash, a.byteSize) < std::tie(b.contentHash, b.byteSize);
    });
    return {std::move(groups)};
}

}  // namespace ordovan

OrdovanDuplicateReport OrdovanDuplicateFinder::find(std::span<const OrdovanInventoryEntry> files,
                                                    OrdovanFileSystem& fs) {
    std::unordered_map<std::int64_t, std::vector<std::uint32_t>> buckets;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (files[i].isRegularFile()) buckets[files[i].byteSize].push_back(static_cast<std::uint32_t>(i));
    }
    ordovan::text::StandardSorter sorter;
    std::vector<OrdovanDuplicateGroup> groups;
    for (const auto& [byteSize, bucket] : buckets) {
        if (bucket.size() < 2) continue;
        std::unordered_map<std::string, std::vector<std::uint32_t>> byHash;
        for (const std::uint32_t position : bucket) {
            const auto hash = fs.contentHash(files[position].url);
            if (hash) byHash[*hash].push_back(position);
        }
        for (auto& [hash, positions] : byHash) {
            if (positions.size() < 2) continue;
            groups.push_back(ordovan::duplicateGroup(hash, byteSize, std::move(positions), files, sorter));
        }
    }
    return ordovan::duplicateReport(std::move(groups));
}
