#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Url.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// One item met by a scan.
struct OrdovanInventoryEntry {
    Url url = {};
    bool isDirectory = false;                            ///< a package is also a directory
    bool isSymbolicLink = false;                         ///< never followed
    bool isHidden = false;                               ///< the name begins with a dot
    bool isPackage = false;                              ///< a directory shown to the user as one file
    std::int64_t byteSize = 0;                           ///< 0 when unknown
    std::optional<double> modifiedEpoch = std::nullopt;  ///< seconds since 1970-01-01 00:00 UTC

    [[nodiscard]] std::string_view id() const noexcept { return url.path(); }
    [[nodiscard]] bool isRegularFile() const noexcept { return !isDirectory && !isSymbolicLink && !isPackage; }
    friend bool operator==(const OrdovanInventoryEntry&, const OrdovanInventoryEntry&) = default;
};

/// Something a scan deliberately did not take, and why.
struct OrdovanInventorySkip {
    enum class Reason {
        hidden,
        symbolicLinkNotFollowed,
        packageTreatedAsFile,
        depthLimitReached,
        fileLimitReached,
        directoryLimitReached,
        excludedSubtree,
        unreadableDirectory,
    };
    Url url;  ///< the skipped item, or the directory that could not be read
    Reason reason;
    friend bool operator==(const OrdovanInventorySkip&, const OrdovanInventorySkip&) = default;
};

/// The case name: "hidden", "symbolicLinkNotFollowed" and so on.
[[nodiscard]] std::string_view rawValue(OrdovanInventorySkip::Reason reason);

/// The bounds of a scan, which keep the time and the memory that it takes small however large the tree is. The defaults
/// are far more than a person files by hand, and little enough to be scanned, planned and shown in under a second.
struct OrdovanInventoryLimits {
    std::size_t maxFiles = 50'000;
    /// The root is depth 0; directories at this depth are still read. Trees that go deeper are made by programs.
    std::size_t maxDepth = 16;
    std::size_t maxDirectories = 50'000;  ///< as many as files: a tree without files must end as well
    bool includeHidden = false;
    friend bool operator==(const OrdovanInventoryLimits&, const OrdovanInventoryLimits&) = default;
};

/// What a scan found. A value, as its parts are; any thread.
struct OrdovanInventory {
    std::vector<OrdovanInventoryEntry> files;        ///< in walk order: depth first, each folder in standard order
    std::vector<OrdovanInventoryEntry> directories;  ///< met and accepted; the root is not among them
    std::vector<OrdovanInventorySkip> skipped;       ///< in the order they occurred
    bool truncated = false;                          ///< the file or the directory limit stopped the walk

    [[nodiscard]] std::size_t fileCount() const noexcept { return files.size(); }
    /// Bytes of all files. A sum beyond 64 bits ends the process.
    [[nodiscard]] std::int64_t totalByteSize() const;
    /// True when nothing was found because the root itself could not be listed.
    [[nodiscard]] bool rootWasUnreadable(const Url& root) const;
    friend bool operator==(const OrdovanInventory&, const OrdovanInventory&) = default;
};

/// Lists directories: the port through which a scan sees the disk. It never reads a file's content and never changes
/// anything. A reader serves one scan on one thread at a time.
class OrdovanDirectoryReading {
public:
    virtual ~OrdovanDirectoryReading() = default;

    /// The direct children of a directory, hidden ones included, in any order (the order decides only between names
    /// that compare as equal). A child whose attributes can not be read is still listed, with every flag false, size
    /// 0 and no date. Symbolic links are reported as such, whatever they point to; a link in place of the directory
    /// itself is followed only for the root of a scan. Errors: the system's own when the directory can not be listed.
    virtual OrdovanResult<std::vector<OrdovanInventoryEntry>> children(const Url& of) = 0;

    /// The directory's path with every symbolic link resolved: two URLs with the same answer are one directory.
    /// Where that can not be told, the standardized path. The default asks the disk (realpath(3)).
    virtual std::string resolvedPath(const Url& directory);
};

namespace OrdovanInventoryScanner {

/// Walks a folder, reading metadata only, within the limits. Depth first, children in standard order, never following
/// links, never entering packages, leaving out hidden items (unless asked) and the excluded subtrees.
///
/// `shouldContinue` is polled on the calling thread once for each directory before it is read; once it says false the
/// walk stops and what was gathered is returned with `truncated` false; without one nothing stops the walk. A limit
/// that stops the walk is recorded as one skip. Never fails: a directory that can not be listed is a skip. Synchronous
/// and without state: any thread, each with a reader of its own.
[[nodiscard]] OrdovanInventory scan(const Url& root, OrdovanDirectoryReading& reader,
                                    const OrdovanInventoryLimits& limits, std::span<const Url> excludedSubtrees,
                                    const std::function<bool()>& shouldContinue);

}  // namespace OrdovanInventoryScanner
