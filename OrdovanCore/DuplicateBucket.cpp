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

const DuplicateBucket::Positions* DuplicateBucket::otherNames(std::uint32_t position) const {
    if (!hasOtherNames_) return nullptr;
    const auto found = unusual_->otherNames.find(position);
    return found == unusual_->otherNames.end() ? nullptr : &found->second;
}

std::size_t DuplicateBucket::nameCount(std::uint32_t position) const {
    const Positions* const others = otherNames(position);
    return others == nullptr ? 1 : 1 + others->size();
}

DuplicateBucket::Positions DuplicateBucket::names(std::uint32_t position) const {
    Positions names = {position};
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
