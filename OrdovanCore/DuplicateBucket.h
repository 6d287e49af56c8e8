#pragma once

#include "OrdovanCore/ContentReading.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ordovan {

/// The files of one size in an inventory, and what several threads have found out about them. Files are named by their
/// position in the inventory. Any thread, but for what is said to be for one.
class DuplicateBucket {
public:
    using Positions = std::vector<std::uint32_t>;

    /// Files of one content.
    struct Found {
        std::string contentHash;
        Positions files;
    };

    /// `files` outlives the bucket.
    DuplicateBucket(std::int64_t byteSize, std::span<const std::uint32_t> files) : byteSize_(byteSize), files_(files) {}

    [[nodiscard]] std::int64_t byteSize() const noexcept { return byteSize_; }
    [[nodiscard]] std::span<const std::uint32_t> files() const noexcept { return files_; }

    /// Names a file by its identity when it is opened for the first time. False when it is another name of a file
    /// claimed before: it needs no reading then, and goes the way of that one. To be asked of files with hard links.
    [[nodiscard]] bool claim(OrdovanOpenContent::Identity identity, std::uint32_t position);
    /// A claimed name leads to another file now: its claim goes to another name of the same file, if there is one.
    [[nodiscard]] std::optional<std::uint32_t> handOver(OrdovanOpenContent::Identity identity, std::uint32_t position);
    /// Another name counts as a file. Not before all files were opened once.
    [[nodiscard]] std::size_t nameCount(std::uint32_t position) const;
    /// The position and those of its other names. Not before all files were opened once.
    [[nodiscard]] Positions names(std::uint32_t position) const;

    /// Notes a file whose content is not of the bucket's size, or that was replaced while it was being compared.
    void addOdd(std::uint32_t position);
    /// Notes files of one content, all their names among them; a content that was not noted before.
    void addFound(std::string contentHash, Positions files);

    /// Counts what is still to be done for the bucket; `release` is true for the one thread that did the last of it.
    void hold() noexcept { held_.fetch_add(1, std::memory_order_relaxed); }
    [[nodiscard]] bool release() noexcept { return held_.fetch_sub(1, std::memory_order_acq_rel) == 1; }

    /// What was noted. For the one thread that did the last.
    [[nodiscard]] Positions takeOdd();
    [[nodiscard]] std::vector<Found> takeFound() { return std::move(found_); }

private:
    struct IdentityHash {
        std::size_t operator()(const OrdovanOpenContent::Identity& identity) const noexcept {
            return std::hash<std::uint64_t>()(identity.inode * 31 + identity.device);
        }
    };
    /// What hardly any bucket needs.
    struct Unusual {
        std::unordered_map<OrdovanOpenContent::Identity, std::uint32_t, IdentityHash> claims;
        std::unordered_map<std::uint32_t, Positions> otherNames;  // of a claimed position
        Positions odd;
    };

    Unusual& unusual();
    [[nodiscard]] const Positions* otherNames(std::uint32_t position) const;  // the mutex is held

    std::int64_t byteSize_;
    std::span<const std::uint32_t> files_;
    std::atomic<std::size_t> held_ = 0;
    std::atomic<bool> hasOtherNames_ = false;
    mutable std::mutex mutex_;
    std::unique_ptr<Unusual> unusual_;
    std::vector<Found> found_;
};

}  // namespace ordovan
