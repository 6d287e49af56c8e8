#include "OrdovanApp/controller/DuplicateSearch.h"

#include "OrdovanApp/controller/StoppableFileSystem.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <utility>

std::optional<OrdovanDuplicateReport> DuplicateSearch::run(
    const TidyPorts& ports, const OrdovanInventory& inventory, const std::shared_ptr<const CancelFlag>& flag,
    const std::function<void(const OrdovanDuplicateProgress&)>& progressed) {
    std::optional<OrdovanDuplicateReport> report;
    if (ports.contents != nullptr) {
        report = OrdovanDuplicateFinder::find(
            inventory.files, *ports.contents,
            {.shouldContinue = [&flag] { return !flag->isCancelled(); }, .progressed = progressed});
    } else {
        StoppableFileSystem fs(ports.fileSystem, nullptr, *flag);
        report = OrdovanDuplicateFinder::find(inventory.files, fs);
    }
    if (flag->isCancelled()) return std::nullopt;
    return report;
}

OrdovanDuplicateReport DuplicateSearch::remaining(const OrdovanDuplicateReport& report,
                                                  const OrdovanInventory& inventory) {
    std::unordered_map<std::string_view, std::int64_t> sizes;
    sizes.reserve(inventory.files.size());
    for (const OrdovanInventoryEntry& entry : inventory.files) {
        if (entry.isRegularFile()) sizes.emplace(entry.url.path(), entry.byteSize);
    }
    OrdovanDuplicateReport result;
    for (const OrdovanDuplicateGroup& group : report.groups) {
        OrdovanDuplicateGroup left = {.contentHash = group.contentHash, .byteSize = group.byteSize, .files = {}};
        std::ranges::copy_if(group.files, std::back_inserter(left.files), [&](const Url& file) {
            const auto size = sizes.find(file.path());
            return size != sizes.end() && size->second == group.byteSize;
        });
        if (left.files.size() > 1) result.groups.push_back(std::move(left));
    }
    return result;
}
