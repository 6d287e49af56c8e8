#pragma once

#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/Text.h"

#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// A file that could be organized but for what is, or would be, at its destination.
struct OrdovanPlanConflict {
    enum class Kind { duplicateDestination, destinationOccupied };
    Url source;
    Url destination;
    Kind kind;

    /// The source path, "#", the kind.
    [[nodiscard]] std::string id() const;
    friend bool operator==(const OrdovanPlanConflict&, const OrdovanPlanConflict&) = default;
};

/// The case name.
[[nodiscard]] std::string_view rawValue(OrdovanPlanConflict::Kind kind);
/// The sentence shown for a conflict.
[[nodiscard]] std::string_view message(OrdovanPlanConflict::Kind kind);

/// A file that can not be organized, and why.
struct OrdovanPlanSkip {
    Url source;
    ordovan::SharedText reason;  ///< a sentence for the user

    [[nodiscard]] std::string_view id() const noexcept { return source.path(); }
    friend bool operator==(const OrdovanPlanSkip&, const OrdovanPlanSkip&) = default;
};

/// What would happen: every file of the inventory stands in exactly one of the three lists. A value; any thread.
struct OrdovanPlanResult {
    std::vector<OrdovanFileProposal> proposals;  ///< by destination path, then source path, in standard order
    std::vector<OrdovanPlanConflict> conflicts;  ///< by source path in standard order
    std::vector<OrdovanPlanSkip> skipped;        ///< by source path in standard order

    /// The categories of the proposals, each once, by raw value in byte order.
    [[nodiscard]] std::vector<OrdovanFileCategory> categoriesTouched() const;

    /// The proposals whose id is not among the given ones, in plan order.
    [[nodiscard]] std::vector<OrdovanFileProposal> selectedProposals(
        const std::unordered_set<std::string>& excluding) const;

    /// The ids of the proposals whose file was last changed at `notOlderThan` or later. Times are seconds since
    /// 1970-01-01 UTC; `modified` maps path to modification time, and a file that it lacks counts as not older.
    [[nodiscard]] std::unordered_set<std::string> proposalIDs(
        double notOlderThan, const std::unordered_map<std::string, double>& modified) const;

    friend bool operator==(const OrdovanPlanResult&, const OrdovanPlanResult&) = default;
};

namespace OrdovanPlanner {

/// The plan for a scanned folder. Two files bound for one destination are both conflicts, and nothing is proposed for
/// a destination that exists; names are never altered. Never fails; linear but for the final sorts. Any thread.
///
/// `files`: the scan's files. `preexistingPaths`: what exists under the output root, as canonical paths.
/// `caseInsensitive`: names that differ only in case are one name. `groupByMonth`: files with a known time go one
/// folder deeper, named by their month in `timeZone`. A file whose path is not UTF-8 is skipped: no record could name
/// it.
[[nodiscard]] OrdovanPlanResult plan(std::span<const OrdovanInventoryEntry> files, const Url& authorizedRoot,
                                     const Url& outputRoot, const std::unordered_set<std::string>& preexistingPaths,
                                     bool caseInsensitive, const OrdovanRuleSet& rules, bool groupByMonth,
                                     const ordovan::text::TimeZone& timeZone);

/// "2024-03": year and month of an instant (seconds since 1970-01-01 UTC) in the Gregorian calendar of a time zone. Any
/// thread.
[[nodiscard]] std::string monthFolder(double epoch, const ordovan::text::TimeZone& timeZone);

}  // namespace OrdovanPlanner
