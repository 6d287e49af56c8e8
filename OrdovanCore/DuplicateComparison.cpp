#include "OrdovanCore/DuplicateComparison.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace ordovan {

namespace {

/// Files up to this size are read whole sooner than their ends are looked at.
constexpr std::int64_t sampleAbove = 256 * 1024;

/// What a sample takes from each end of a file.
constexpr std::size_t sampleEnd = 4096;

/// How many bytes of a step's files may be on their way from the disk at once.
constexpr std::size_t mostOnItsWay = 16 << 20;

/// With how many others a file is compared byte by byte; beyond that, hashing it is cheaper.
constexpr std::size_t mostComparisons = 4;

struct StateHash {
    std::size_t operator()(const Sha256State& state) const noexcept {
        return state[0] ^ (static_cast<std::size_t>(state[1]) << 32);
    }
};

}  // namespace

ComparisonStep ComparisonStep::firstOf(DuplicateBucket& bucket) {
    ComparisonStep step;
    step.bucket = &bucket;
    step.kind = bucket.byteSize() > sampleAbove ? Kind::sample : Kind::piece;
    step.isFirst = true;
    return step;
}

ComparisonStep ComparisonStep::withoutFiles() const {
    return {bucket, kind, isFirst, offset, {equal.prefix, {}}, slice};
}

std::vector<ComparisonStep> ComparisonStep::following(std::vector<EqualFiles> outcome,
                                                      DuplicateSearchContext& context) const {
    std::vector<ComparisonStep> steps;
    for (EqualFiles& same : outcome) {
        if (nameCount(same) >= 2 && !isLast()) {
            ComparisonStep& step = steps.emplace_back();
            step.bucket = bucket;
            step.equal = std::move(same);
            if (kind == Kind::sample) {
                step.equal.prefix = {};
            } else {
                step.offset = offset + static_cast<std::int64_t>(length());
                context.bytesDone += length() * step.equal.files.size();
            }
            continue;
        }
        for (std::size_t i = 0; i < same.files.size(); ++i) context.fileDone(bytesLeft());
        DuplicateBucket::Positions names;
        for (const ComparedFile& file : same.files) {
            std::ranges::copy(bucket->names(file.position), std::back_inserter(names));
        }
        if (names.size() >= 2) bucket->addFound(hexadecimal(same.prefix.state()), std::move(names));
    }
    return steps;
}

std::size_t ComparisonStep::nameCount(const EqualFiles& files) const {
    std::size_t count = 0;
    for (const ComparedFile& file : files.files) count += bucket->nameCount(file.position);
    return count;
}

std::uint64_t ComparisonStep::bytesLeft() const noexcept {
    return static_cast<std::uint64_t>(std::max(bucket->byteSize() - offset, std::int64_t{0}));
}

bool ComparisonStep::isLast() const noexcept {
    return kind == Kind::piece && bucket->byteSize() - offset <= static_cast<std::int64_t>(pieceSize);
}

std::size_t ComparisonStep::length() const noexcept {
    if (kind == Kind::sample) return 2 * sampleEnd;
    return isLast() ? static_cast<std::size_t>(std::max(bucket->byteSize() - offset, std::int64_t{0})) : pieceSize;
}

std::size_t ComparisonStep::slotSize() const noexcept {
    const std::int64_t most = std::clamp(bucket->byteSize(), std::int64_t{0}, static_cast<std::int64_t>(pieceSize));
    // One byte more than a piece shows whether the file ends there.
    return static_cast<std::size_t>(most) / sha256BlockSize * sha256BlockSize + sha256BlockSize;
}

std::optional<std::vector<EqualFiles>> SlicedStep::add(std::vector<EqualFiles> slice) {
    const std::scoped_lock lock(mutex_);
    std::ranges::move(slice, std::back_inserter(joined_));
    if (--missing_ > 0) return std::nullopt;
    joinByState(joined_);
    return std::move(joined_);
}

void joinByState(std::vector<EqualFiles>& files) {
    std::unordered_map<Sha256State, std::size_t, StateHash> places;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < files.size(); ++i) {
        const auto [place, isNew] = places.try_emplace(files[i].prefix.state(), kept);
        if (!isNew) {
            std::ranges::copy(files[i].files, std::back_inserter(files[place->second].files));
        } else if (kept++ != i) {
            files[kept - 1] = std::move(files[i]);
        }
    }
    files.resize(kept);
}

DuplicateComparison::DuplicateComparison(ComparisonStep step, std::span<char> memory, DuplicateSearchContext& context,
                                         Sha256Streams& streams)
    : step_(std::move(step)), context_(context), streams_(streams), length_(step_.length()) {
    const std::size_t slotSize = step_.slotSize();
    for (std::size_t at = memory.size() / slotSize * slotSize; at > 0; at -= slotSize) {
        freeSlots_.push_back(memory.data() + at - slotSize);
    }
}

void DuplicateComparison::readAtHand() {
    for (ComparedFile& file : step_.equal.files) {
        if (!context_.mayContinue()) return;
        if (freeSlots_.empty()) makeRoom();
        const bool isAheadEnough = notAtHand_.size() * length_ >= mostOnItsWay;
        const Reading reading = readInto(freeSlots_.back(), file, step_.isFirst, isAheadEnough ? Wait::yes : Wait::no);
        if (reading == Reading::notAtHand) {
            notAtHand_.push_back(file);
        } else {
            use(file, reading);
        }
    }
    step_.equal.files.clear();
}

void DuplicateComparison::readRest() {
    for (ComparedFile& file : notAtHand_) {
        if (!context_.mayContinue()) return;
        if (freeSlots_.empty()) makeRoom();
        use(file, readInto(freeSlots_.back(), file, false, Wait::yes));
    }
    notAtHand_.clear();
}

DuplicateComparison::Reading DuplicateComparison::readInto(char* slot, ComparedFile& file, bool isFirstOpening,
                                                           Wait wait) {
    DuplicateBucket& bucket = *step_.bucket;
    for (;;) {
        const auto content = context_.contents.open(context_.inventory[file.position].url);
        if (isFirstOpening) {
            if (!content) return Reading::unreadable;
            file.identity = (*content)->identity();
            if ((*content)->linkCount() > 1 && !bucket.claim(file.identity, file.position)) return Reading::otherName;
        }
        if (content && (*content)->identity() == file.identity) {
            return bucket.byteSize() < 0 ? Reading::odd : readPiece(**content, slot, wait);
        }
        // Something else bears the name now. What was compared goes on by another name of the file.
        const std::optional<std::uint32_t> other = bucket.handOver(file.identity, file.position);
        if (!other) return content ? Reading::odd : Reading::unreadable;
        if (content) bucket.addOdd(file.position);
        file.position = *other;
    }
}

/// What the step compares of a file; with its last bytes one more is asked for, to see that the file ends there.
DuplicateComparison::Reading DuplicateComparison::readPiece(OrdovanOpenContent& content, char* slot, Wait wait) const {
    const auto read = [&](std::int64_t offset, std::span<char> into, std::size_t expected) {
        std::size_t done = 0;
        while (done < into.size()) {
            const std::int64_t at = offset + static_cast<std::int64_t>(done);
            const std::span<char> rest = into.subspan(done);
            const auto got = wait == Wait::yes ? content.read(at, rest) : content.readAtHand(at, rest);
            if (!got) {
                const bool isOnItsWay = wait == Wait::no && got.error() == OrdovanSystemError::posix(EAGAIN);
                return isOnItsWay ? Reading::notAtHand : Reading::unreadable;
            }
            if (*got == 0) break;
            done += *got;
        }
        return done == expected ? Reading::complete : Reading::odd;
    };
    if (step_.kind == ComparisonStep::Kind::piece) {
        return read(step_.offset, {slot, length_ + (step_.isLast() ? 1 : 0)}, length_);
    }
    // Both ends are asked for before one of them is waited for.
    const std::int64_t tail = step_.bucket->byteSize() - static_cast<std::int64_t>(sampleEnd);
    const Reading first = read(0, {slot, sampleEnd}, sampleEnd);
    const Reading last = read(tail, {slot + sampleEnd, sampleEnd}, sampleEnd);
    return std::max(first, last);
}

/// Puts a file where what was read of it belongs: that is in the slot next to be used.
void DuplicateComparison::use(const ComparedFile& file, Reading reading) {
    if (reading == Reading::complete) {
        char* const slot = freeSlots_.back();
        freeSlots_.pop_back();
        take(file, slot);
    } else {
        leaveOut(file.position, reading);
    }
}

void DuplicateComparison::leaveOut(std::uint32_t position, Reading why) {
    if (why == Reading::odd) step_.bucket->addOdd(position);
    context_.fileDone(step_.bytesLeft());
}

void DuplicateComparison::take(const ComparedFile& file, char* slot) {
    std::size_t tried = 0;
    for (std::size_t i = 0; i < variants_.size() && tried < mostComparisons; ++i) {
        if (variants_[i].bytes == nullptr) continue;
        ++tried;
        if (std::memcmp(variants_[i].bytes, slot, length_) != 0) continue;
        variants_[i].equal.files.push_back(file);
        freeSlots_.push_back(slot);
        if (i > 0) std::swap(variants_[0], variants_[i]);
        return;
    }
    if (tried < variants_.size()) everythingCompared_ = false;
    variants_.push_back({{step_.equal.prefix, {file}}, slot, false});
}

/// Hashes the pieces in memory and gives their slots free, but for that of the most files.
void DuplicateComparison::makeRoom() {
    everythingCompared_ = false;
    std::vector<Sha256Job> jobs;
    collectJobs(jobs);
    if (!streams_.add(jobs)) fail();
    std::unordered_map<Sha256State, std::size_t, StateHash> places;
    std::vector<Variant> joined;
    for (Variant& variant : variants_) {
        const auto [place, isNew] = places.try_emplace(variant.equal.prefix.state(), joined.size());
        if (isNew) {
            joined.push_back(std::move(variant));
        } else {
            Variant& same = joined[place->second];
            std::ranges::copy(variant.equal.files, std::back_inserter(same.equal.files));
            if (same.bytes == nullptr) std::swap(same.bytes, variant.bytes);
            if (variant.bytes != nullptr) freeSlots_.push_back(variant.bytes);
        }
    }
    variants_ = std::move(joined);
    const auto most =
        std::ranges::max_element(variants_, {}, [](const Variant& variant) { return variant.equal.files.size(); });
    for (auto variant = variants_.begin(); variant != variants_.end(); ++variant) {
        if (variant->bytes == nullptr || variant == most) continue;
        freeSlots_.push_back(std::exchange(variant->bytes, nullptr));
    }
    std::iter_swap(variants_.begin(), most);
}

void DuplicateComparison::collectJobs(std::vector<Sha256Job>& jobs) {
    const bool isSample = step_.kind == ComparisonStep::Kind::sample;
    for (Variant& variant : variants_) {
        if (variant.isHashed) continue;
        if (everythingCompared_ && !step_.slice && (isSample || step_.nameCount(variant.equal) < 2)) continue;
        jobs.push_back({&variant.equal.prefix, {variant.bytes, length_}, isSample || step_.isLast()});
        variant.isHashed = true;
    }
}

std::vector<EqualFiles> DuplicateComparison::conclude() && {
    std::vector<EqualFiles> outcome;
    if (failed_) return outcome;
    outcome.reserve(variants_.size());
    for (Variant& variant : variants_) outcome.push_back(std::move(variant.equal));
    if (!everythingCompared_ && !step_.slice) joinByState(outcome);
    return outcome;
}

}  // namespace ordovan
