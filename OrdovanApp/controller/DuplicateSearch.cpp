#include "OrdovanApp/controller/DuplicateSearch.h"

#include "OrdovanApp/controller/StoppableFileSystem.h"
#include "OrdovanApp/controller/WatchedContents.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <unordered_map>
#include <utility>

std::optional<DuplicateSearch::Found> DuplicateSearch::run(
    const TidyPorts& ports, const OrdovanInventory& inventory, const std::shared_ptr<const CancelFlag>& flag,
    const std::function<void(const OrdovanDuplicateProgress&)>& progressed) {
    Found found;
    if (ports.contents != nullptr) {
        WatchedContents contents(*ports.contents);
        auto report = OrdovanDuplicateFinder::find(
            inventory.files, contents,
            {.shouldContinue = [&flag] { return !flag->isCancelled(); }, .progressed = progressed});
        if (!report) return std::nullopt;
        found = {.report = std::move(*report), .unread = contents.unread()};
    } else {
        StoppableFileSystem fs(ports.fileSystem, nullptr, *flag);
        found.report = OrdovanDuplicateFinder::find(inventory.files, fs);
    }
    if (flag->isCancelled()) return std::nullopt;
    return found;
}

DuplicateSearch::Found DuplicateSearch::remaining(const OrdovanDuplicateReport& report, const std::vector<Url>& unread,
                                                  const OrdovanInventory& inventory) {
    std::unordered_map<std::string_view, std::int64_t> sizes;
    sizes.reserve(inventory.files.size());
    for (const OrdovanInventoryEntry& entry : inventory.files) {
        if (entry.isRegularFile()) sizes.emplace(entry.url.path(), entry.byteSize);
    }
    Found result;
    for (const OrdovanDuplicateGroup& group : report.groups) {
        OrdovanDuplicateGroup left = {.contentHash = group.contentHash, .byteSize = group.byteSize, .files = {}};
        std::ranges::copy_if(group.files, std::back_inserter(left.files), [&](const Url& file) {
            const auto size = sizes.find(file.path());
            return size != sizes.end() && size->second == group.byteSize;
        });
        if (left.files.size() > 1) result.report.groups.push_back(std::move(left));
    }
    std::ranges::copy_if(unread, std::back_inserter(result.unread),
                         [&](const Url& file) { return sizes.contains(file.path()); });
    return result;
}
