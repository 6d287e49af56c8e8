#include "OrdovanCore/Planner.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

using ordovan::SharedText;

std::string OrdovanPlanConflict::id() const {
    return std::string(source.path()).append("#").append(rawValue(kind));
}

std::string_view rawValue(OrdovanPlanConflict::Kind kind) {
    return kind == OrdovanPlanConflict::Kind::duplicateDestination ? "duplicateDestination" : "destinationOccupied";
}

std::string_view message(OrdovanPlanConflict::Kind kind) {
    return kind == OrdovanPlanConflict::Kind::duplicateDestination
               ? "Another file would be organized to the same location. Needs your decision; left untouched."
               : "A file already exists at the destination. Will not overwrite; left untouched.";
}

std::vector<OrdovanFileCategory> OrdovanPlanResult::categoriesTouched() const {
    std::array<bool, OrdovanFileCategories::allCases.size()> touched{};
    for (const OrdovanFileProposal& proposal : proposals) touched[static_cast<std::size_t>(proposal.category)] = true;
    std::vector<OrdovanFileCategory> categories;
    for (const OrdovanFileCategory category : OrdovanFileCategories::allCases) {
        if (touched[static_cast<std::size_t>(category)]) categories.push_back(category);
    }
    std::ranges::sort(categories, {}, [](OrdovanFileCategory category) { return rawValue(category); });
    return categories;
}

std::vector<OrdovanFileProposal> OrdovanPlanResult::selectedProposals(
    const std::unordered_set<std::string>& excluding) const {
    if (excluding.empty()) return proposals;
    std::vector<OrdovanFileProposal> selected;
    std::ranges::copy_if(proposals, std::back_inserter(selected),
                         [&](const OrdovanFileProposal& proposal) { return !excluding.contains(proposal.id()); });
    return selected;
}

std::unordered_set<std::string> OrdovanPlanResult::proposalIDs(
    double notOlderThan, const std::unordered_map<std::string, double>& modified) const {
    std::unordered_set<std::string> ids;
    for (const OrdovanFileProposal& proposal : proposals) {
        const auto known = modified.find(proposal.source.sharedPath().str());
        if (known == modified.end() || known->second >= notOlderThan) ids.insert(proposal.id());
    }
    return ids;
}

namespace {

/// Month folder names of instants in one time zone.
class MonthFolders {
public:
    explicit MonthFolders(const ordovan::text::TimeZone& zone) : calendar_(zone) {}

    std::string name(double epoch) const {
        const ordovan::text::LocalDateTime date = calendar_.at(epoch);
        std::array<char, 32> name;
        const int length = std::snprintf(name.data(), name.size(), "%04d-%02d", date.year, date.month);
        return {name.data(), static_cast<std::size_t>(length)};
    }

private:
    ordovan::text::Calendar calendar_;
};

/// Which destinations are taken or contested. A destination's key is its canonical path, lower-cased where the volume
/// takes names that differ in case for one.
class Destinations {
public:
    Destinations(const std::vector<OrdovanFileProposal>& proposals,
                 const std::unordered_set<std::string>& preexistingPaths, bool caseInsensitive)
        : caseInsensitive_(caseInsensitive), preexisting_(preexistingPaths) {
        if (caseInsensitive) {
            for (const std::string& path : preexistingPaths) lowered_.insert(ordovan::text::lowercased(path));
        }
        keys_.reserve(proposals.size());
        for (const OrdovanFileProposal& proposal : proposals) keys_.push_back(keyOf(proposal));
        countEachKey();
    }

    [[nodiscard]] bool isOccupied(std::size_t index) const {
        const std::unordered_set<std::string>& taken = caseInsensitive_ ? lowered_ : preexisting_;
        return !taken.empty() && taken.contains(keys_[index].str());
    }
    [[nodiscard]] bool isContested(std::size_t index) const { return contested_[index]; }

private:
    [[nodiscard]] SharedText keyOf(const OrdovanFileProposal& proposal) const {
        const std::string_view path = proposal.destination.path();
        const bool isCanonical = ordovan::text::isAscii(path) || ordovan::text::isComposed(path);
        if (isCanonical && !caseInsensitive_) return proposal.destination.sharedPath();  // standardized already
        const std::string canonical = OrdovanProposalPlanner::canonicalPath(path);
        return caseInsensitive_ ? ordovan::text::lowercased(canonical) : canonical;
    }

    /// Open addressing over the keys' positions: one table, whatever the number of files.
    void countEachKey() {
        contested_.assign(keys_.size(), false);
        std::size_t slots = 16;
        while (slots < 2 * keys_.size()) slots *= 2;
        constexpr std::uint32_t free = 0xFFFF'FFFF;
        std::vector<std::uint32_t> table(slots, free);
        for (std::size_t i = 0; i < keys_.size(); ++i) {
            std::size_t slot = std::hash<std::string_view>()(keys_[i]) & (slots - 1);
            while (table[slot] != free && keys_[table[slot]] != keys_[i]) slot = (slot + 1) & (slots - 1);
            if (table[slot] == free) {
                table[slot] = static_cast<std::uint32_t>(i);
            } else {
                contested_[table[slot]] = contested_[i] = true;
            }
        }
    }

    bool caseInsensitive_;
    const std::unordered_set<std::string>& preexisting_;
    std::unordered_set<std::string> lowered_;
    std::vector<SharedText> keys_;
    std::vector<bool> contested_;
};

/// Puts at each place the value that `sources` names for it, along the cycles of the permutation; `sources` is used up.
template <class Value>
void moveToPlaces(std::vector<Value>& values, std::vector<std::uint32_t>& sources) {
    for (std::uint32_t start = 0; start < sources.size(); ++start) {
        if (sources[start] == start) continue;
        Value held = std::move(values[start]);
        std::uint32_t place = start;
        while (sources[place] != start) {
            values[place] = std::move(values[sources[place]]);
            place = std::exchange(sources[place], place);
        }
        values[place] = std::move(held);
        sources[place] = place;
    }
}

/// Puts values in standard order of a path, and those with equal paths in that of a second one. The paths all lie
/// under `root`, which is left out of the comparison: what all have in common decides nothing.
template <class Value, class PathOf, class SecondPathOf>
void sortByPath(std::vector<Value>& values, const Url& root, PathOf pathOf, SecondPathOf secondPathOf) {
    const std::string_view rootPath = root.path();
    const auto belowRoot = [&](std::string_view path) {
        const bool isBelow =
            path.starts_with(rootPath) && path.size() > rootPath.size() && path[rootPath.size()] == '/';
        return isBelow ? path.substr(rootPath.size()) : path;
    };
    const bool allBelow = std::ranges::all_of(
        values, [&](const Value& value) { return belowRoot(pathOf(value)).size() < pathOf(value).size(); });
    std::vector<std::string_view> paths;
    paths.reserve(values.size());
    for (const Value& value : values) paths.push_back(allBelow ? belowRoot(pathOf(value)) : pathOf(value));
    ordovan::text::StandardSorter sorter;
    const auto order = sorter.order(paths, [&](std::size_t position) { return secondPathOf(values[position]); });
    std::vector<std::uint32_t> places(order.begin(), order.end());
    moveToPlaces(values, places);
}

/// Gives every file a provisional proposal or a skip.
void propose(std::span<const OrdovanInventoryEntry> files, OrdovanProposalPlanner::Proposer proposer,
             const std::optional<MonthFolders>& months, OrdovanPlanResult& plan) {
    plan.proposals.reserve(files.size());
    for (const OrdovanInventoryEntry& file : files) {
        if (!file.isRegularFile()) {
            plan.skipped.push_back({file.url, "Not a regular file."});
            continue;
        }
        if (!ordovan::text::isUtf8(file.url.path())) {
            plan.skipped.push_back({file.url, "Could not evaluate this file."});
            continue;
        }
        std::optional<std::string> month;
        if (months && file.modifiedEpoch) month = months->name(*file.modifiedEpoch);
        if (auto proposal = proposer.preview(file.url, month)) {
            plan.proposals.push_back(std::move(*proposal));
        } else {
            plan.skipped.push_back({file.url, message(proposal.error())});
        }
    }
}

/// Turns the proposals whose destination is taken or contested into conflicts.
void separateConflicts(OrdovanPlanResult& plan, const std::unordered_set<std::string>& preexistingPaths,
                       bool caseInsensitive) {
    using enum OrdovanPlanConflict::Kind;
    const Destinations destinations(plan.proposals, preexistingPaths, caseInsensitive);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < plan.proposals.size(); ++i) {
        OrdovanFileProposal& proposal = plan.proposals[i];
        if (destinations.isOccupied(i)) {
            plan.conflicts.push_back({proposal.source, proposal.destination, destinationOccupied});
        } else if (destinations.isContested(i)) {
            plan.conflicts.push_back({proposal.source, proposal.destination, duplicateDestination});
        } else {
            if (kept != i) plan.proposals[kept] = std::move(proposal);
            ++kept;
        }
    }
    plan.proposals.resize(kept);
}

}  // namespace

std::string OrdovanPlanner::monthFolder(double epoch, const ordovan::text::TimeZone& timeZone) {
    return MonthFolders(timeZone).name(epoch);
}

OrdovanPlanResult OrdovanPlanner::plan(std::span<const OrdovanInventoryEntry> files, const Url& authorizedRoot,
                                       const Url& outputRoot, const std::unordered_set<std::string>& preexistingPaths,
                                       bool caseInsensitive, const OrdovanRuleSet& rules, bool groupByMonth,
                                       const ordovan::text::TimeZone& timeZone) {
    OrdovanPlanResult plan;
    propose(files, OrdovanProposalPlanner::Proposer(authorizedRoot, outputRoot, rules),
            groupByMonth ? std::optional<MonthFolders>(timeZone) : std::nullopt, plan);
    separateConflicts(plan, preexistingPaths, caseInsensitive);

    const auto sourceOf = [](const auto& item) { return item.source.path(); };
    const auto destinationOf = [](const OrdovanFileProposal& proposal) { return proposal.destination.path(); };
    sortByPath(plan.proposals, outputRoot, destinationOf, sourceOf);
    sortByPath(plan.conflicts, authorizedRoot, sourceOf, sourceOf);
    sortByPath(plan.skipped, authorizedRoot, sourceOf, sourceOf);
    return plan;
}
