#pragma once

#include "OrdovanCore/DuplicateBucket.h"
#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/platform/Sha256Streams.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

namespace ordovan {

/// What all threads of a search share.
struct DuplicateSearchContext {
    std::span<const OrdovanInventoryEntry> inventory;
    OrdovanContentReading& contents;
    const OrdovanDuplicateSearchControl& control;
    std::atomic<bool> stopped = false;
    std::atomic<std::size_t> filesDone = 0;
    std::atomic<std::uint64_t> bytesDone = 0;

    /// Asks the caller, unless it has said to stop before.
    [[nodiscard]] bool mayContinue() {
        if (!stopped && control.shouldContinue && !control.shouldContinue()) stopped = true;
        return !stopped;
    }
    /// Counts a file that needs no more reading.
    void fileDone(std::uint64_t bytesLeft) noexcept {
        filesDone.fetch_add(1, std::memory_order_relaxed);
        bytesDone.fetch_add(bytesLeft, std::memory_order_relaxed);
    }
};

/// A file on its way through the comparison.
struct ComparedFile {
    std::uint32_t position = 0;                  ///< in the inventory
    OrdovanOpenContent::Identity identity = {};  ///< once it was opened
};

/// Files that are equal as far as they were compared.
struct EqualFiles {
    Sha256Prefix prefix = {};  ///< of what was compared
    std::vector<ComparedFile> files = {};
};

class SlicedStep;

/// The next step for some files of a bucket: to be compared from `offset` on. Before the first byte of large files
/// only a sample of each is looked at, which spares most of the files that differ from being read.
struct ComparisonStep {
    enum class Kind { sample, piece };

    /// How much of each file a step compares at most. Large enough that opening a file anew for each piece does not
    /// count, small enough that some pieces fit in a processor's cache. A multiple of SHA-256's block size.
    static constexpr std::size_t pieceSize = 512 * 1024;

    DuplicateBucket* bucket = nullptr;
    Kind kind = Kind::piece;
    bool isFirst = false;  ///< no file was opened yet
    std::int64_t offset = 0;
    EqualFiles equal = {};
    std::shared_ptr<SlicedStep> slice = {};  ///< where these are only some of the files, the whole

    /// The first step of a bucket.
    [[nodiscard]] static ComparisonStep firstOf(DuplicateBucket& bucket);
    /// The same step for no files.
    [[nodiscard]] ComparisonStep withoutFiles() const;
    /// The steps that follow when this one, with all its slices, has parted its files so. Files that are equal to no
    /// other are done; after the last step the others are noted as found.
    [[nodiscard]] std::vector<ComparisonStep> following(std::vector<EqualFiles> outcome,
                                                        DuplicateSearchContext& context) const;

    [[nodiscard]] bool isLast() const noexcept;
    /// How many names equal files have together. Not before all files of the bucket were opened once.
    [[nodiscard]] std::size_t nameCount(const EqualFiles& files) const;
    /// Bytes of each file from the step's offset on.
    [[nodiscard]] std::uint64_t bytesLeft() const noexcept;
    /// Bytes of each file that the step compares.
    [[nodiscard]] std::size_t length() const noexcept;
    /// Bytes of memory that one file needs in any step of its bucket.
    [[nodiscard]] std::size_t slotSize() const noexcept;
};

/// A step whose files are compared in slices, on several threads.
class SlicedStep {
public:
    explicit SlicedStep(std::size_t slices) : missing_(slices) {}

    /// Joins a slice's files, whose prefixes have taken in the step, with those of the others. All of them for the
    /// one who brings the last slice.
    [[nodiscard]] std::optional<std::vector<EqualFiles>> add(std::vector<EqualFiles> slice);

private:
    std::mutex mutex_;
    std::size_t missing_;
    std::vector<EqualFiles> joined_;
};

/// Joins those that have one state. The prefixes must have taken in equally many bytes.
void joinByState(std::vector<EqualFiles>& files);

/// One step of one thread: reads a piece of each file and parts the files where the pieces differ. Pieces are
/// compared byte by byte as far as memory goes; each different piece is then hashed once, and by that the rest is
/// compared and the hash of what stays equal goes on. One file is open at a time.
class DuplicateComparison {
public:
    /// `memory`: at least two slots of the step's size.
    DuplicateComparison(ComparisonStep step, std::span<char> memory, DuplicateSearchContext& context,
                        Sha256Streams& streams);

    /// Reads and compares what the system has at hand; the rest is on its way from the disk afterwards. When it was
    /// stopped, nothing else may be called.
    void readAtHand();
    /// Reads and compares the rest. When it was stopped, nothing else may be called.
    void readRest();
    /// Appends what is to be hashed before `conclude`. The memory must stand until then.
    void collectJobs(std::vector<Sha256Job>& jobs);
    /// To be called when hashing those jobs failed: the files are left out then.
    void fail() noexcept { failed_ = true; }
    /// How the files part. Of files that are equal to no other the prefix is of no use, unless this is a slice.
    [[nodiscard]] std::vector<EqualFiles> conclude() &&;

    [[nodiscard]] const ComparisonStep& step() const noexcept { return step_; }

private:
    /// Files with one content in this step.
    struct Variant {
        EqualFiles equal;
        char* bytes;  // none once they made room for others
        bool isHashed;
    };
    enum class Reading { complete, notAtHand, unreadable, odd, otherName };
    enum class Wait { no, yes };

    [[nodiscard]] Reading readInto(char* slot, ComparedFile& file, bool isFirstOpening, Wait wait);
    [[nodiscard]] Reading readPiece(OrdovanOpenContent& content, char* slot, Wait wait) const;
    void use(const ComparedFile& file, Reading reading);
    void leaveOut(std::uint32_t position, Reading why);
    void take(const ComparedFile& file, char* slot);
    void makeRoom();

    ComparisonStep step_;
    DuplicateSearchContext& context_;
    Sha256Streams& streams_;
    std::size_t length_;
    std::vector<char*> freeSlots_;
    std::vector<ComparedFile> notAtHand_;
    std::vector<Variant> variants_;
    bool everythingCompared_ = true;  // each file with each variant, byte by byte
    bool failed_ = false;
};

}  // namespace ordovan
