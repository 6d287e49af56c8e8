#include "OrdovanApp/controller/ExcludedProposals.h"

#include "OrdovanCore/PartialDownloads.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace {

std::size_t countOf(const std::vector<bool>& bits) {
    return static_cast<std::size_t>(std::ranges::count(bits, true));
}

bool startsExcluded(const OrdovanFileProposal& proposal) {
    return OrdovanPartialDownloads::isPartialDownload(proposal.source.lastPathComponent());
}

/// What is known of one proposal of a plan.
struct Choice {
    std::string_view destination;
    bool isExcluded = false;
};

}  // namespace

bool ExcludedProposals::follow(std::shared_ptr<const OrdovanPlanResult> plan) {
    const std::size_t before = count_ + others_.size();
    std::size_t kept = count_;
    const auto old = std::exchange(plan_, std::move(plan));
    if (old != plan_) {
        // A file has one proposal, so that its path finds it. Only what is not as it would start has to be known.
        std::unordered_map<std::string_view, Choice> choices;
        for (std::size_t i = 0; i < excluded_.size(); ++i) {
            const OrdovanFileProposal& proposal = old->proposals[i];
            if (!excluded_[i] && !startsExcluded(proposal)) continue;
            choices.emplace(proposal.source.path(), Choice{proposal.destination.path(), excluded_[i]});
        }
        kept = 0;
        excluded_.assign(plan_ ? plan_->proposals.size() : 0, false);
        for (std::size_t i = 0; i < excluded_.size(); ++i) {
            const OrdovanFileProposal& proposal = plan_->proposals[i];
            const auto choice = choices.empty() ? choices.end() : choices.find(proposal.source.path());
            const bool isKnown = choice != choices.end() && choice->second.destination == proposal.destination.path();
            const bool isKept =
                (isKnown && choice->second.isExcluded) || (!others_.empty() && others_.contains(proposal.id()));
            kept += isKept ? 1 : 0;
            excluded_[i] = isKept || (!isKnown && startsExcluded(proposal));
        }
        count_ = countOf(excluded_);
    }
    others_.clear();
    return kept != before || count_ != before;
}

bool ExcludedProposals::set(const std::unordered_set<std::string>& ids) {
    std::vector<bool> excluded(excluded_.size(), false);
    std::unordered_set<std::string> others = ids;
    for (std::size_t i = 0; i < excluded.size() && !others.empty(); ++i) {
        excluded[i] = others.erase(plan_->proposals[i].id()) > 0;
    }
    const bool changed = excluded != excluded_ || others != others_;
    excluded_ = std::move(excluded);
    count_ = countOf(excluded_);
    others_ = std::move(others);
    return changed;
}

bool ExcludedProposals::set(std::vector<bool> proposals) {
    proposals.resize(excluded_.size(), false);
    const bool changed = proposals != excluded_ || !others_.empty();
    excluded_ = std::move(proposals);
    count_ = countOf(excluded_);
    others_.clear();
    return changed;
}

void ExcludedProposals::toggle(const std::string& id) {
    if (plan_) {
        const auto found = std::ranges::find_if(plan_->proposals, [&](const OrdovanFileProposal& proposal) {
            return id.starts_with(proposal.source.path()) && id == proposal.id();
        });
        if (found != plan_->proposals.end()) {
            return toggle(static_cast<std::size_t>(found - plan_->proposals.begin()));
        }
    }
    if (others_.erase(id) == 0) others_.insert(id);
}

void ExcludedProposals::toggle(std::size_t proposal) {
    excluded_[proposal] = !excluded_[proposal];
    count_ = excluded_[proposal] ? count_ + 1 : count_ - 1;
}

std::unordered_set<std::string> ExcludedProposals::ids() const {
    std::unordered_set<std::string> ids = others_;
    for (std::size_t i = 0; i < excluded_.size(); ++i) {
        if (excluded_[i]) ids.insert(plan_->proposals[i].id());
    }
    return ids;
}

std::vector<OrdovanFileProposal> ExcludedProposals::remaining() const {
    std::vector<OrdovanFileProposal> proposals;
    proposals.reserve(excluded_.size() - count_);
    for (std::size_t i = 0; i < excluded_.size(); ++i) {
        if (!excluded_[i]) proposals.push_back(plan_->proposals[i]);
    }
    return proposals;
}
