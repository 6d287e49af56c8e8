#include "OrdovanCore/Inventory.h"

#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/Text.h"
#include "OrdovanCore/platform/RealPath.h"

#include <algorithm>
#include <cstdlib>
#include <unordered_set>
#include <utility>

using Reason = OrdovanInventorySkip::Reason;

std::string_view rawValue(Reason reason) {
    switch (reason) {
        case Reason::hidden:
            return "hidden";
        case Reason::symbolicLinkNotFollowed:
            return "symbolicLinkNotFollowed";
        case Reason::packageTreatedAsFile:
            return "packageTreatedAsFile";
        case Reason::depthLimitReached:
            return "depthLimitReached";
        case Reason::fileLimitReached:
            return "fileLimitReached";
        case Reason::directoryLimitReached:
            return "directoryLimitReached";
        case Reason::excludedSubtree:
            return "excludedSubtree";
        case Reason::unreadableDirectory:
            return "unreadableDirectory";
    }
    std::unreachable();
}

std::int64_t OrdovanInventory::totalByteSize() const {
    std::int64_t total = 0;
    for (const OrdovanInventoryEntry& file : files) {
        if (__builtin_add_overflow(total, file.byteSize, &total)) std::abort();
    }
    return total;
}

bool OrdovanInventory::rootWasUnreadable(const Url& root) const {
    if (!files.empty() || !directories.empty()) return false;
    for (const OrdovanInventorySkip& skip : skipped) {
        if (skip.reason == Reason::unreadableDirectory &&
            skip.url.standardized().path() == root.standardized().path()) {
            return true;
        }
    }
    return false;
}

std::string OrdovanDirectoryReading::resolvedPath(const Url& directory) {
    return ordovan::realPath(directory.path()).value_or(directory.standardized().sharedPath().str());
}

namespace {

using OrdovanProposalPlanner::canonicalPath;
using OrdovanProposalPlanner::containsCanonical;

class Walk {
public:
    Walk(OrdovanDirectoryReading& reader, const OrdovanInventoryLimits& limits, std::span<const Url> excludedSubtrees,
         const std::function<bool()>& shouldContinue)
        : reader_(reader), limits_(limits), shouldContinue_(shouldContinue) {
        for (const Url& excluded : excludedSubtrees) excluded_.push_back(canonicalPath(excluded));
    }

    /// Recursive; the depth of the call stack is the depth of the tree, which `maxDepth` bounds.
    void visit(const Url& directory, std::size_t depth) {
        if (shouldContinue_ && !shouldContinue_()) {
            cancelled_ = true;
            return;
        }
        if (!visited_.insert(reader_.resolvedPath(directory)).second) return;

        auto children = reader_.children(directory);
        if (!children) {
            skip(directory, Reason::unreadableDirectory);
            return;
        }
        const Exclusions exclusions = exclusionsIn(directory);
        for (const std::uint32_t position : standardOrder(*children)) {
            if (!take((*children)[position], depth, exclusions)) return;
            if (found_.truncated || cancelled_) return;
        }
    }

    OrdovanInventory result() && { return std::move(found_); }

private:
    /// Which children of one directory lie at or under an excluded subtree.
    struct Exclusions {
        std::string directory;  // in normal form
        bool all = false;
        std::vector<std::string_view> names;  // in NFC
    };

    Exclusions exclusionsIn(const Url& directory) const {
        Exclusions exclusions;
        if (excluded_.empty()) return exclusions;
        exclusions.directory = directory.standardized().path();
        const std::string canonical = canonicalPath(exclusions.directory);
        for (const std::string& excluded : excluded_) {
            if (containsCanonical(canonical, excluded)) exclusions.all = true;
            if (excluded != "/" && ordovan::parentPath(excluded) == canonical) {
                exclusions.names.push_back(ordovan::lastPathComponent(excluded));
            }
        }
        return exclusions;
    }

    bool isExcluded(const OrdovanInventoryEntry& child, const Exclusions& exclusions) const {
        if (ordovan::parentPath(child.url.path()) != exclusions.directory) {
            const std::string canonical = canonicalPath(child.url);  // a reader that answers with paths of its own
            return std::ranges::any_of(
                excluded_, [&](const std::string& excluded) { return containsCanonical(canonical, excluded); });
        }
        if (exclusions.all) return true;
        if (exclusions.names.empty()) return false;
        const std::string name = ordovan::text::composed(child.url.lastPathComponent());
        return std::ranges::find(exclusions.names, name) != exclusions.names.end();
    }

    /// Puts one child where it belongs, descending into a directory. False: a limit ended the walk.
    bool take(OrdovanInventoryEntry& child, std::size_t depth, const Exclusions& exclusions) {
        if (found_.files.size() >= limits_.maxFiles) return endAt(child, Reason::fileLimitReached);
        if (!excluded_.empty() && isExcluded(child, exclusions)) {
            skip(child.url, Reason::excludedSubtree);
        } else if (child.isHidden && !limits_.includeHidden) {
            skip(child.url, Reason::hidden);
        } else if (child.isSymbolicLink) {
            skip(child.url, Reason::symbolicLinkNotFollowed);
        } else if (child.isPackage) {
            skip(child.url, Reason::packageTreatedAsFile);
        } else if (!child.isDirectory) {
            found_.files.push_back(std::move(child));
        } else if (found_.directories.size() >= limits_.maxDirectories) {
            return endAt(child, Reason::directoryLimitReached);
        } else {
            const Url url = child.url;
            found_.directories.push_back(std::move(child));
            if (depth + 1 > limits_.maxDepth) {
                skip(url, Reason::depthLimitReached);
            } else {
                visit(url, depth + 1);
            }
        }
        return true;
    }

    bool endAt(const OrdovanInventoryEntry& child, Reason reason) {
        found_.truncated = true;
        skip(child.url, reason);
        return false;
    }

    void skip(const Url& url, Reason reason) { found_.skipped.push_back({url, reason}); }

    std::vector<std::uint32_t> standardOrder(const std::vector<OrdovanInventoryEntry>& children) {
        names_.clear();
        for (const OrdovanInventoryEntry& child : children) names_.push_back(child.url.lastPathComponent());
        const std::span<const std::uint32_t> order = sorter_.order(names_);
        return {order.begin(), order.end()};
    }

    OrdovanDirectoryReading& reader_;
    const OrdovanInventoryLimits& limits_;
    const std::function<bool()>& shouldContinue_;
    std::vector<std::string> excluded_;  // canonical
    std::unordered_set<std::string> visited_;
    bool cancelled_ = false;
    OrdovanInventory found_;
    ordovan::text::StandardSorter sorter_;
    std::vector<std::string_view> names_;
};

}  // namespace

OrdovanInventory OrdovanInventoryScanner::scan(const Url& root, OrdovanDirectoryReading& reader,
                                               const OrdovanInventoryLimits& limits,
                                               std::span<const Url> excludedSubtrees,
                                               const std::function<bool()>& shouldContinue) {
    Walk walk(reader, limits, excludedSubtrees, shouldContinue);
    walk.visit(root, 0);
    return std::move(walk).result();
}
