#pragma once

#include "OrdovanCore/Planner.h"

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

/// The proposals that are not ticked. To its users a set of ids; kept as a bit for each proposal of the plan, so that
/// ticking all of 50,000 files takes no text for each of them. Used by one thread.
class ExcludedProposals {
public:
    /// Takes over another plan (null for none). What is proposed again, for the same place, stays as it is; other ids
    /// are forgotten. Of what is proposed for the first time, partial downloads are excluded. True when there are other
    /// ids than before.
    bool follow(std::shared_ptr<const OrdovanPlanResult> plan);

    /// Excludes exactly these. True when that changed something. Ids that the plan lacks are kept as well.
    bool set(const std::unordered_set<std::string>& ids);
    /// The same with a bit for each proposal of the plan.
    bool set(std::vector<bool> proposals);
    void toggle(const std::string& id);
    /// `proposal`: its place in the plan.
    void toggle(std::size_t proposal);

    /// A bit for each proposal of the plan.
    [[nodiscard]] const std::vector<bool>& proposals() const { return excluded_; }
    /// How many of the plan's proposals are excluded. Constant time.
    [[nodiscard]] std::size_t count() const { return count_; }
    [[nodiscard]] std::unordered_set<std::string> ids() const;
    /// The proposals that are not excluded, in plan order.
    [[nodiscard]] std::vector<OrdovanFileProposal> remaining() const;

private:
    std::shared_ptr<const OrdovanPlanResult> plan_;
    std::vector<bool> excluded_;
    std::size_t count_ = 0;
    std::unordered_set<std::string> others_;  // ids that the plan lacks
};
