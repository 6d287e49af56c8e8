#include "OrdovanCore/FolderCleanup.h"

#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/platform/EmptyFolder.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

using Folders = std::unordered_set<std::string>;  // paths relative to the root

/// The part of a normal path behind its first `pieces` pieces; empty where there is nothing.
std::string_view behindPieces(std::string_view normalPath, std::ptrdiff_t pieces) {
    std::size_t slash = 0;
    for (; pieces > 0 && slash != std::string_view::npos; --pieces) slash = normalPath.find('/', slash + 1);
    return slash == std::string_view::npos ? std::string_view() : normalPath.substr(slash + 1);
}

/// The folders strictly inside the root that hold one of the files or one another.
Folders foldersThatHeld(std::span<const Url> files, const Url& within, const std::string& normalRoot) {
    const auto rootPieces = normalRoot == "/" ? 0 : std::ranges::count(normalRoot, '/');
    Folders folders;
    std::string_view previous;
    for (const Url& file : files) {
        // Neighbors in a record mostly come from one folder.
        const std::string_view folder = ordovan::parentPath(file.path());
        if (folder == std::exchange(previous, folder)) continue;
        const Url url = Url::file(folder);
        if (!ordovan::namesOnePlace(file) || !OrdovanProposalPlanner::contains(url, within)) continue;
        const std::string normal = ordovan::normalizedPath(folder);
        std::string_view below = behindPieces(normal, rootPieces);
        while (!below.empty() && folders.emplace(below).second) {
            below = ordovan::parentPath(below);
        }
    }
    return folders;
}

}  // namespace

std::size_t OrdovanFolderCleanup::removeEmptyFolders(std::span<const Url> thatHeld, const Url& within) {
    if (!ordovan::namesOnePlace(within)) return 0;
    const std::string root = ordovan::normalizedPath(within.path());
    const Folders folders = foldersThatHeld(thatHeld, within, root);
    std::vector<std::string_view> deepestFirst(folders.begin(), folders.end());
    std::ranges::sort(deepestFirst, [](std::string_view a, std::string_view b) {
        const auto depthA = std::ranges::count(a, '/');
        const auto depthB = std::ranges::count(b, '/');
        return depthA != depthB ? depthA > depthB : a < b;
    });
    return static_cast<std::size_t>(std::ranges::count_if(
        deepestFirst, [&](std::string_view folder) { return ordovan::removeFolderIfEmpty(root, folder); }));
}
