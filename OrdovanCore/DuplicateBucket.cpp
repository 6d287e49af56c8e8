#include "OrdovanCore/DuplicateBucket.h"

namespace ordovan {

DuplicateBucket::Unusual& DuplicateBucket::unusual() {
    if (!unusual_) unusual_ = std::make_unique<Unusual>();
    return *unusual_;
}

bool DuplicateBucket::claim(OrdovanOpenContent::Identity identity, std::uint32_t position) {
    const std::scoped_lock lock(mutex_);
    const auto [claim, isFirst] = unusual().claims.try_emplace(identity, position);
    if (!isFirst) {
        unusual().otherNames[claim->second].push_back(position);
        hasOtherNames_ = true;
    }
    return isFirst;
}

std::optional<std::uint32_t> DuplicateBucket::handOver(OrdovanOpenContent::Identity identity, std::uint32_t position) {
    const std::scoped_lock lock(mutex_);
    Unusual& all = unusual();
    const auto claim = all.claims.find(identity);
    if (claim == all.claims.end() || claim->second != position) return std::nullopt;
    const auto others = all.otherNames.find(position);
    if (others == all.otherNames.end()) {
        all.claims.erase(claim);
        return std::nullopt;
    }
    Positions names = std::move(others->second);
    all.otherNames.erase(others);
    const std::uint32_t next = names.back();
    names.pop_back();
    if (!names.empty()) all.otherNames.emplace(next, std::move(names));
    claim->second = next;
    return next;
}

const DuplicateBucket::Positions* DuplicateBucket::otherNames(std::uint32_t position) const {
    const auto found = unusual_->otherNames.find(position);
    return found == unusual_->otherNames.end() ? nullptr : &found->second;
}

std::size_t DuplicateBucket::nameCount(std::uint32_t position) const {
    if (!hasOtherNames_) return 1;
    const std::scoped_lock lock(mutex_);
    const Positions* const others = otherNames(position);
    return others == nullptr ? 1 : 1 + others->size();
}

DuplicateBucket::Positions DuplicateBucket::names(std::uint32_t position) const {
    Positions names = {position};
    if (!hasOtherNames_) return names;
    const std::scoped_lock lock(mutex_);
    const Positions* const others = otherNames(position);
    if (others != nullptr) names.insert(names.end(), others->begin(), others->end());
    return names;
}

void DuplicateBucket::addOdd(std::uint32_t position) {
    const std::scoped_lock lock(mutex_);
    unusual().odd.push_back(position);
}

void DuplicateBucket::addFound(std::string contentHash, Positions files) {
    const std::scoped_lock lock(mutex_);
    found_.push_back({std::move(contentHash), std::move(files)});
}

DuplicateBucket::Positions DuplicateBucket::takeOdd() {
    return unusual_ ? std::move(unusual_->odd) : Positions();
}

}  // namespace ordovan
