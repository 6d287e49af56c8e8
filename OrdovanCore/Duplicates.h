#pragma once

#include "OrdovanCore/ContentReading.h"
#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/Url.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// Files of one content. A value, as its report is: any thread.
struct OrdovanDuplicateGroup {
    std::string contentHash;    ///< SHA-256 of the content of each of them, 64 lower-case hexadecimal digits
    std::int64_t byteSize = 0;  ///< as the inventory gave it
    std::vector<Url> files;     ///< at least two, by path in standard order

    /// The hash, ":", the size: what tells the groups of one report apart.
    [[nodiscard]] std::string id() const;
    /// How many files could go with one copy left; 0 for a group without files.
    [[nodiscard]] std::int64_t redundantCount() const noexcept;
    /// Bytes of the redundant files. A product beyond 64 bits ends the process.
    [[nodiscard]] std::int64_t reclaimableBytes() const;
    friend bool operator==(const OrdovanDuplicateGroup&, const OrdovanDuplicateGroup&) = default;
};

/// What a search found.
struct OrdovanDuplicateReport {
    std::vector<OrdovanDuplicateGroup> groups;  ///< the most reclaimable bytes first, then by hash

    /// Bytes of all redundant files. A sum beyond 64 bits ends the process.
    [[nodiscard]] std::int64_t reclaimableBytes() const;
    /// How many files take part in the groups, the one that stays in each included.
    [[nodiscard]] std::int64_t duplicateFileCount() const;
    friend bool operator==(const OrdovanDuplicateReport&, const OrdovanDuplicateReport&) = default;
};

/// How far a search is. Bytes that need not be read count as done.
struct OrdovanDuplicateProgress {
    std::size_t filesDone = 0;
    std::size_t filesTotal = 0;  ///< the files that share their size with another
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0;
};

/// How a caller follows and stops a search on several threads. Either function may be empty.
struct OrdovanDuplicateSearchControl {
    /// Asked between pieces of files, by several threads at once. Once it says false, the search ends.
    std::function<bool()> shouldContinue = {};
    /// Told several times a second, and at the end. Called on any thread, never on two at once; the counts only grow.
    std::function<void(const OrdovanDuplicateProgress& progress)> progressed = {};
    /// How many threads work, the calling one included; 0: as many as there are cores, at most four, since more would
    /// wait for the disk.
    unsigned workers = 0;
};

/// Finds files of equal content: of one size in the inventory and of one SHA-256. Directories, links and packages take
/// no part; hidden and empty files do. A file that can not be read is left out without a word. Nothing is changed. Any
/// thread; a search returns when it is done.
namespace OrdovanDuplicateFinder {

/// Hashes every file whose size occurs twice, one after the other. Of the port only `contentHash` is called.
[[nodiscard]] OrdovanDuplicateReport find(std::span<const OrdovanInventoryEntry> files, OrdovanFileSystem& fs);

/// The same report sooner: files of one size are read side by side on several threads, a file is dropped where its
/// content parts from all others, what is equal is hashed once, and hard links are read once. Nothing when it was
/// stopped. At most 2^32 - 1 files. Memory beyond the report: some 100 bytes a file and 1 MiB a thread.
[[nodiscard]] std::optional<OrdovanDuplicateReport> find(std::span<const OrdovanInventoryEntry> files,
                                                         OrdovanContentReading& contents,
                                                         const OrdovanDuplicateSearchControl& control);

}  // namespace OrdovanDuplicateFinder
