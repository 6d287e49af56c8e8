#include "OrdovanCore/DuplicateComparison.h"
#include "OrdovanCore/DuplicateOrder.h"
#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/Text.h"
#include "OrdovanCore/platform/Sha256.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <iterator>
#include <string>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <utility>

namespace ordovan {
namespace {

/// No more threads than this: beyond it, the disk is what one waits for.
constexpr unsigned mostWorkers = 4;

/// What one thread reads into: as much as two steps over large files need, so that two hashes are made in step.
constexpr std::size_t memorySize = 4 * (ComparisonStep::pieceSize + sha256BlockSize);

/// What of it a step over many small files gets.
constexpr std::size_t shareOfMemory = memorySize / 4;

/// How many steps a thread takes at once.
constexpr std::size_t mostSteps = 16;

/// How many files one thread compares in a step; more are compared in slices.
constexpr std::size_t sliceSize = 64;

/// What a step is given to read into: two slots at least, unless it has but one file.
std::size_t memoryFor(const ComparisonStep& step) {
    const std::size_t slot = step.slotSize();
    return std::min(step.equal.files.size() * slot, std::max(2 * slot, shareOfMemory / slot * slot));
}

/// What a thread has to itself.
struct Worker {
    std::unique_ptr<char[]> memory = std::make_unique_for_overwrite<char[]>(memorySize);
    Sha256Streams streams;
    Sha256 digest;
    text::StandardSorter sorter;
    std::vector<ComparisonStep> steps = {};
    std::vector<OrdovanDuplicateGroup> groups = {};
    bool isBusy = false;
};

/// One search: buckets are compared from the largest size on, each worker taking some steps, reading, hashing in step
/// what needs a hash, and going on with what stayed equal.
class Search {
public:
    Search(std::span<const OrdovanInventoryEntry> inventory, OrdovanContentReading& contents,
           const OrdovanDuplicateSearchControl& control)
        : context_{inventory, contents, control} {
        makeBuckets();
    }

    std::optional<OrdovanDuplicateReport> run() {
        if (!context_.mayContinue()) return std::nullopt;
        const unsigned cores = std::clamp(std::thread::hardware_concurrency(), 1U, mostWorkers);
        const unsigned workers = context_.control.workers == 0 ? cores : context_.control.workers;
        {
            std::vector<std::jthread> others;
            try {
                for (std::size_t i = 1; i < workers && 2 * i < positions_.size(); ++i) {
                    others.emplace_back([this] { work(); });
                }
            } catch (const std::system_error&) {
                // No more threads to be had: those there are do the work.
            }
            work();
        }
        if (context_.stopped) return std::nullopt;
        return duplicateReport(std::move(groups_));
    }

private:
    void makeBuckets();
    void work();
    [[nodiscard]] bool takeSteps(Worker& worker);
    void put(std::vector<ComparisonStep> steps);
    void putLocked(ComparisonStep step);
    [[nodiscard]] bool openBucket();
    void runSteps(Worker& worker);
    void conclude(DuplicateComparison&& comparison, Worker& worker);
    void finish(DuplicateBucket& bucket, Worker& worker);
    void addOdd(const DuplicateBucket& bucket, const DuplicateBucket::Positions& odd,
                std::vector<DuplicateBucket::Found>& found, Worker& worker);
    [[nodiscard]] std::string hashAlone(std::uint32_t position, Worker& worker);
    void tellProgress();

    DuplicateSearchContext context_;
    DuplicateBucket::Positions positions_;  // of the files that share their size, bucket by bucket
    std::deque<DuplicateBucket> buckets_;   // the largest size first
    std::uint64_t bytesTotal_ = 0;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<ComparisonStep> waiting_;
    std::size_t nextBucket_ = 0;
    std::size_t busyWorkers_ = 0;
    std::vector<OrdovanDuplicateGroup> groups_;
    std::mutex progressMutex_;
};

void Search::makeBuckets() {
    struct Sized {
        std::int64_t byteSize;
        std::uint32_t position;
    };
    std::vector<Sized> files;
    for (std::size_t i = 0; i < context_.inventory.size(); ++i) {
        const OrdovanInventoryEntry& entry = context_.inventory[i];
        if (entry.isRegularFile()) files.push_back({entry.byteSize, static_cast<std::uint32_t>(i)});
    }
    std::ranges::sort(files, [](const Sized& a, const Sized& b) {
        return a.byteSize != b.byteSize ? a.byteSize > b.byteSize : a.position < b.position;
    });
    positions_.reserve(files.size());  // the buckets point into it
    for (std::size_t begin = 0; begin < files.size();) {
        std::size_t end = begin + 1;
        while (end < files.size() && files[end].byteSize == files[begin].byteSize) ++end;
        if (end - begin > 1) {
            const std::size_t first = positions_.size();
            for (std::size_t i = begin; i < end; ++i) positions_.push_back(files[i].position);
            buckets_.emplace_back(files[begin].byteSize, std::span(positions_).subspan(first));
            bytesTotal_ += static_cast<std::uint64_t>(std::max(files[begin].byteSize, std::int64_t{0})) * (end - begin);
        }
        begin = end;
    }
}

void Search::work() {
    Worker worker;
    while (takeSteps(worker)) {
        runSteps(worker);
        tellProgress();
    }
    const std::scoped_lock lock(mutex_);
    std::ranges::move(worker.groups, std::back_inserter(groups_));
}

/// Gives the worker as many steps as its memory holds, beside those it has. False when all is done, or stopped.
bool Search::takeSteps(Worker& worker) {
    std::size_t room = memorySize;
    for (const ComparisonStep& step : worker.steps) room -= memoryFor(step);
    std::unique_lock lock(mutex_);
    for (;;) {
        while (worker.steps.size() < mostSteps && (!waiting_.empty() || openBucket())) {
            const std::size_t needed = memoryFor(waiting_.back());
            if (needed > room) break;
            room -= needed;
            worker.steps.push_back(std::move(waiting_.back()));
            waiting_.pop_back();
        }
        const bool goesOn = !worker.steps.empty() && !context_.stopped;
        if (goesOn != worker.isBusy) goesOn ? ++busyWorkers_ : --busyWorkers_;
        worker.isBusy = goesOn;
        if (goesOn) return true;
        if (busyWorkers_ == 0 || context_.stopped) {
            changed_.notify_all();
            return false;
        }
        changed_.wait(lock);
    }
}

/// Puts the first steps of the next bucket among those that wait. False when there is none.
bool Search::openBucket() {
    if (nextBucket_ == buckets_.size()) return false;
    DuplicateBucket& bucket = buckets_[nextBucket_++];
    ComparisonStep step = ComparisonStep::firstOf(bucket);
    step.equal.files.reserve(bucket.files().size());
    for (const std::uint32_t position : bucket.files()) step.equal.files.push_back({position, {}});
    putLocked(std::move(step));
    return true;
}

void Search::put(std::vector<ComparisonStep> steps) {
    const std::scoped_lock lock(mutex_);
    for (ComparisonStep& step : steps) putLocked(std::move(step));
    changed_.notify_all();
}

/// Lets a step wait for a worker, in slices when it has many files.
void Search::putLocked(ComparisonStep step) {
    const std::span<const ComparedFile> files(step.equal.files);
    if (files.size() <= sliceSize) {
        step.bucket->hold();
        waiting_.push_back(std::move(step));
        return;
    }
    const std::size_t slices = (files.size() + sliceSize - 1) / sliceSize;
    const auto whole = std::make_shared<SlicedStep>(slices);
    for (std::size_t i = 0; i < slices; ++i) {
        const auto part = files.subspan(i * sliceSize, std::min(sliceSize, files.size() - i * sliceSize));
        step.bucket->hold();
        ComparisonStep& slice = waiting_.emplace_back(step.withoutFiles());
        slice.equal.files.assign(part.begin(), part.end());
        slice.slice = whole;
    }
}

void Search::runSteps(Worker& worker) {
    std::vector<DuplicateComparison> comparisons;
    comparisons.reserve(worker.steps.size());
    char* memory = worker.memory.get();
    for (ComparisonStep& step : worker.steps) {
        const std::size_t size = memoryFor(step);
        comparisons.emplace_back(std::move(step), std::span(memory, size), context_, worker.streams).readAtHand();
        if (context_.stopped) return;
        memory += size;
    }
    worker.steps.clear();
    for (DuplicateComparison& comparison : comparisons) {
        comparison.readRest();
        if (context_.stopped) return;
    }
    std::vector<Sha256Job> jobs;
    for (DuplicateComparison& comparison : comparisons) comparison.collectJobs(jobs);
    if (!worker.streams.add(jobs)) {
        for (DuplicateComparison& comparison : comparisons) comparison.fail();
    }
    for (DuplicateComparison& comparison : comparisons) conclude(std::move(comparison), worker);
}

/// Goes on with what a step found equal: one step stays with the worker, the others wait.
void Search::conclude(DuplicateComparison&& comparison, Worker& worker) {
    const ComparisonStep step = comparison.step().withoutFiles();
    std::vector<EqualFiles> outcome = std::move(comparison).conclude();
    bool isWhole = true;
    if (step.slice) {
        auto joined = step.slice->add(std::move(outcome));
        isWhole = joined.has_value();
        outcome = std::move(joined).value_or(std::vector<EqualFiles>());
    }
    if (isWhole) {
        std::vector<ComparisonStep> next = step.following(std::move(outcome), context_);
        if (!next.empty() && next.back().equal.files.size() <= sliceSize) {
            step.bucket->hold();
            worker.steps.push_back(std::move(next.back()));
            next.pop_back();
        }
        if (!next.empty()) put(std::move(next));
    }
    if (step.bucket->release()) finish(*step.bucket, worker);
}

void Search::finish(DuplicateBucket& bucket, Worker& worker) {
    std::vector<DuplicateBucket::Found> found = bucket.takeFound();
    const DuplicateBucket::Positions odd = bucket.takeOdd();
    if (!odd.empty()) addOdd(bucket, odd, found, worker);
    for (DuplicateBucket::Found& same : found) {
        if (same.files.size() < 2) continue;
        worker.groups.push_back(duplicateGroup(std::move(same.contentHash), bucket.byteSize(), std::move(same.files),
                                               context_.inventory, worker.sorter));
    }
}

/// Hashes the files that could not be compared with the others of their bucket, and joins them to what was found.
void Search::addOdd(const DuplicateBucket& bucket, const DuplicateBucket::Positions& odd,
                    std::vector<DuplicateBucket::Found>& found, Worker& worker) {
    DuplicateBucket::Positions names;
    for (const std::uint32_t position : odd) std::ranges::copy(bucket.names(position), std::back_inserter(names));
    if (names.size() < 2 && found.empty()) return;
    std::unordered_map<std::string, std::size_t> places;
    for (std::size_t i = 0; i < found.size(); ++i) places.emplace(found[i].contentHash, i);
    for (const std::uint32_t position : names) {
        const std::string hash = hashAlone(position, worker);
        if (hash.empty()) continue;
        const auto [place, isNew] = places.try_emplace(hash, found.size());
        if (isNew) found.push_back({hash, {}});
        found[place->second].files.push_back(position);
    }
}

/// The hash of a file's whole content, or the empty text when it can not be read (or the search was stopped).
std::string Search::hashAlone(std::uint32_t position, Worker& worker) {
    const auto content = context_.contents.open(context_.inventory[position].url);
    if (!content || !worker.digest.begin()) return {};
    for (std::int64_t offset = 0; context_.mayContinue();) {
        const auto got = (*content)->read(offset, {worker.memory.get(), memorySize});
        if (!got) return {};
        if (*got == 0) return worker.digest.finish();
        if (!worker.digest.add(worker.memory.get(), *got)) return {};
        offset += static_cast<std::int64_t>(*got);
    }
    return {};
}

void Search::tellProgress() {
    if (!context_.control.progressed || context_.stopped) return;
    const std::scoped_lock lock(progressMutex_);
    context_.control.progressed({context_.filesDone, positions_.size(), context_.bytesDone, bytesTotal_});
}

}  // namespace
}  // namespace ordovan

std::optional<OrdovanDuplicateReport> OrdovanDuplicateFinder::find(std::span<const OrdovanInventoryEntry> files,
                                                                   OrdovanContentReading& contents,
                                                                   const OrdovanDuplicateSearchControl& control) {
    return ordovan::Search(files, contents, control).run();
}
