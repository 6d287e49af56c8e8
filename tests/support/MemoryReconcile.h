#pragma once

#include "OrdovanCore/Reconcile.h"
#include "OrdovanCore/TrashPlace.h"
#include "OrdovanCore/testing/MemoryFileSystem.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::test {

/// What lstat(2) would tell of an item of a file system in memory. Does not count as a call.
inline OrdovanResult<FileFacts> factsIn(const testing::MemoryFileSystem& memory, const Url& url) {
    const auto item = memory.item(url.path());
    if (!item) return std::unexpected(OrdovanSystemError::posix(ENOENT));
    return FileFacts{.isRegular = item->type == testing::ItemType::file,
                     .byteSize = item->byteSize,
                     .identity = std::to_string(item->device) + ":" + std::to_string(item->inode),
                     .modifiedNs = item->modifiedNs,
                     .names = item->links};
}

/// The info files of every Trash in memory that tell of one of these places.
inline std::vector<TrashedFile> trashedIn(const testing::MemoryFileSystem& memory, std::span<const Url> originals) {
    constexpr std::string_view suffix = ".trashinfo";
    std::vector<TrashedFile> found;
    for (const auto& [name, description] : memory.snapshot()) {
        const std::string path = "/" + name;
        const std::string_view folder = parentPath(path);
        if (!path.ends_with(suffix) || lastPathComponent(folder) != "info") continue;
        const auto place = originalPlace(path, memory.read(path).value_or(""));
        const auto original = std::ranges::find_if(originals, [&](const Url& url) { return place == url.path(); });
        if (original == originals.end()) continue;
        const std::string_view infoName = lastPathComponent(path);
        found.push_back({*original, Url::file(path),
                         Url::file(std::string(parentPath(folder)) + "/files/" +
                                   std::string(infoName.substr(0, infoName.size() - suffix.size())))});
    }
    return found;
}

/// What reconciling uses, over a file system in memory. `fs` sees that one's files.
inline ReconcilePorts reconcilePorts(testing::MemoryFileSystem& memory, OrdovanFileSystem& fs) {
    return {.fs = fs,
            .facts = [&memory](const Url& url) { return factsIn(memory, url); },
            .findInTrash = [&memory](std::span<const Url> originals) { return trashedIn(memory, originals); },
            .removeTrashInfo = [&memory](const TrashedFile& orphan) -> OrdovanResult<void> {
                if (memory.item(orphan.item.path())) return std::unexpected(OrdovanSystemError::posix(ENOTEMPTY));
                if (memory.item(orphan.info.path())) memory.removeTree(orphan.info.path());
                return {};
            },
            .forgetTrashInfo =
                [&memory](const Url& item, const Url& putBackTo) {
                    const auto info = trashInfoPath(item.path());
                    if (!info || memory.item(item.path()) || !memory.item(*info)) return;
                    if (originalPlace(*info, memory.read(*info).value_or("")) == putBackTo.path()) {
                        memory.removeTree(*info);
                    }
                }};
}

}  // namespace ordovan::test
