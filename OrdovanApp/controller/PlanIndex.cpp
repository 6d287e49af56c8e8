#include "OrdovanApp/controller/PlanIndex.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace {

constexpr const char* unreadableFolder = "This folder could not be read; the files in it are left untouched.";
constexpr const char* tooDeepFolder =
    "This folder lies too deep to be looked into; the files in it are left untouched.";

std::vector<PlanIndex::Skip> skipsOf(const OrdovanPlanResult& plan, const OrdovanInventory& inventory) {
    std::vector<PlanIndex::Skip> skips;
    skips.reserve(plan.skipped.size());
    for (const OrdovanPlanSkip& skip : plan.skipped) skips.push_back({skip.source, skip.reason});
    const ordovan::SharedText unreadable(unreadableFolder);
    const ordovan::SharedText tooDeep(tooDeepFolder);
    for (const OrdovanInventorySkip& skip : inventory.skipped) {
        if (skip.reason == OrdovanInventorySkip::Reason::unreadableDirectory) skips.push_back({skip.url, unreadable});
        if (skip.reason == OrdovanInventorySkip::Reason::depthLimitReached) skips.push_back({skip.url, tooDeep});
    }
    return skips;
}

}  // namespace

PlanIndex PlanIndex::of(const OrdovanPlanResult& plan, const OrdovanInventory& inventory, const Url& root) {
    PlanIndex index;
    index.skips = skipsOf(plan, inventory);

    std::unordered_map<std::string_view, std::uint32_t> byPath;
    byPath.reserve(inventory.files.size());
    for (std::uint32_t i = 0; i < inventory.files.size(); ++i) byPath.emplace(inventory.files[i].url.path(), i);
    const std::size_t files = plan.proposals.size() + plan.conflicts.size();
    index.entries.reserve(files);
    for (std::size_t item = 0; item < files; ++item) {
        const auto found = byPath.find(index.source(plan, item).path());
        index.entries.push_back(found == byPath.end() ? nowhere : found->second);
    }
    index.byteSizes.reserve(plan.proposals.size());
    for (std::size_t i = 0; i < plan.proposals.size(); ++i) {
        index.byteSizes.push_back(index.entries[i] == nowhere ? 0 : inventory.files[index.entries[i]].byteSize);
    }

    const std::size_t items = files + index.skips.size();
    const std::size_t rootLength = root.path() == "/" ? 0 : root.path().size();
    index.names.reset(items);
    for (std::size_t item = 0; item < items; ++item) {
        std::string_view path = index.source(plan, item).path();
        path.remove_prefix(std::min(path.size(), rootLength + 1));
        index.names.add(path);
    }
    return index;
}

const Url& PlanIndex::source(const OrdovanPlanResult& plan, std::size_t item) const {
    const std::size_t firstConflict = plan.proposals.size();
    const std::size_t firstSkip = firstConflict + plan.conflicts.size();
    if (item < firstConflict) return plan.proposals[item].source;
    return item < firstSkip ? plan.conflicts[item - firstConflict].source : skips[item - firstSkip].url;
}
