#include "OrdovanCore/testing/MemoryFileSystem.h"

#include "OrdovanCore/TrashPlace.h"
#include "OrdovanCore/platform/TrashNaming.h"
#include "OrdovanCore/testing/MemoryTree.h"

#include <cerrno>

namespace ordovan::testing {

namespace {

std::unexpected<OrdovanSystemError> refused(int errnoValue) {
    return std::unexpected(OrdovanSystemError::posix(errnoValue));
}

std::unexpected<OrdovanSystemError> notExamined() {
    return std::unexpected(OrdovanSystemError::cocoa(OrdovanSystemError::fileReadNoSuchFile));
}

/// Nothing but file URLs has a path on a disk.
std::string_view pathOf(const Url& url) {
    return url.isFile() ? url.path() : std::string_view();
}

/// The device of the path, or of its nearest existing ancestor; nothing for what is no path.
std::optional<std::int32_t> nearestDevice(const MemoryTree& tree, const Url& url) {
    if (MemoryTree::errorOfPath(pathOf(url)) != 0) return std::nullopt;
    Url at = url;
    auto place = tree.locateExisting(pathOf(at), true);
    while (!place) {
        const Url above = at.deletingLastPathComponent();
        if (above == at) return std::nullopt;
        at = above;
        place = tree.locateExisting(pathOf(at), true);
    }
    return place->node->volume->device;
}

/// A file opened for reading without following a link, or its errno; `folder` is the one for a folder.
std::expected<MemoryTree::NodePtr, int> openForReading(const MemoryTree& tree, const Url& url, int folder) {
    const auto place = tree.locateExisting(pathOf(url), false);
    if (!place) return std::unexpected(place.error());
    switch (place->node->type) {
        case ItemType::link:
            return std::unexpected(ELOOP);
        case ItemType::directory:
            return std::unexpected(folder);
        case ItemType::fifo:
            return std::unexpected(EINVAL);
        case ItemType::file:
            break;
    }
    if (!ownerMay(*place->node, 4)) return std::unexpected(EACCES);
    return place->node;
}

/// Moves an item into a Trash folder under the first name that is free there.
std::expected<std::string, int> moveIntoTrash(MemoryTree& tree, const MemoryTree::Place& item, const std::string& trash,
                                              std::string_view storedPath) {
    constexpr unsigned maxAttempts = 1000;
    for (const std::string_view folder : {"/files", "/info"}) {
        if (auto made = tree.makeFolders(trash + std::string(folder), 0700); !made) {
            return std::unexpected(made.error());
        }
    }
    for (unsigned attempt = 1; attempt <= maxAttempts; ++attempt) {
        const std::string name = trashedName(item.name, attempt);
        const auto info = tree.locate(trash + "/info/" + name + std::string(trashInfoSuffix), false);
        const auto there = tree.locate(trash + "/files/" + name, false);
        if (!info || !there) return std::unexpected(!info ? info.error() : there.error());
        if (info->node || there->node) continue;
        if (auto allowed = MemoryTree::mayChangeFolder(*info); !allowed) return std::unexpected(allowed.error());
        if (auto allowed = MemoryTree::mayRename(item, *there); !allowed) return std::unexpected(allowed.error());
        MemoryTree::rename(item, *there);
        const std::int64_t now = tree.tick();
        tree.put(*info, ItemType::file, trashInfoText(storedPath, now / 1'000'000'000), 0600);
        return there->path;
    }
    return std::unexpected(EEXIST);
}

/// Takes away what a Trash knows about an item that was just put back.
void forgetTrashInfo(const MemoryTree& tree, std::string_view item, std::optional<std::string_view> movedTo) {
    const auto path = trashInfoPath(item);
    if (!path) return;
    const auto info = tree.locateExisting(*path, false);
    if (!info || info->node->type != ItemType::file) return;
    const auto original = originalPlace(*path, info->node->content);
    if (!original) return;
    const auto there = tree.locateExisting(*original, false);
    const bool isBack = there && there->node->type == ItemType::file && (!movedTo || *original == *movedTo);
    if (isBack && MemoryTree::mayChangeFolder(*info)) MemoryTree::drop(*info);
}

}  // namespace

bool MemoryFileSystem::exists(const Url& url) {
    const std::lock_guard lock(mutex_);
    record("exists", url.path());
    return tree_->locateExisting(pathOf(url), true).has_value();
}

bool MemoryFileSystem::isRegularFile(const Url& url) {
    const std::lock_guard lock(mutex_);
    record("isRegularFile", url.path());
    const auto place = tree_->locateExisting(pathOf(url), false);
    return place && place->node->type == ItemType::file;
}

bool MemoryFileSystem::isSymlink(const Url& url) {
    const std::lock_guard lock(mutex_);
    record("isSymlink", url.path());
    const auto place = tree_->locateExisting(pathOf(url), false);
    return place && place->node->type == ItemType::link;
}

bool MemoryFileSystem::sameVolume(const Url& a, const Url& b) {
    const std::lock_guard lock(mutex_);
    record("sameVolume", a.path(), b.path());
    const auto first = nearestDevice(*tree_, a);
    return first && first == nearestDevice(*tree_, b);
}

OrdovanResult<void> MemoryFileSystem::createDirectory(const Url& url) {
    const std::lock_guard lock(mutex_);
    record("createDirectory", url.path());
    if (auto made = tree_->makeFolders(pathOf(url), 0755); !made) return refused(made.error());
    return {};
}

OrdovanResult<void> MemoryFileSystem::move(const Url& from, const Url& to) {
    const std::lock_guard lock(mutex_);
    record("move", from.path(), to.path());
    const auto source = tree_->locate(pathOf(from), false);
    if (!source) return refused(source.error());
    const auto target = tree_->locate(pathOf(to), false);
    if (!target) return refused(target.error());
    if (auto allowed = MemoryTree::mayRename(*source, *target); !allowed) return refused(allowed.error());
    MemoryTree::rename(*source, *target);
    forgetTrashInfo(*tree_, from.path(), to.path());
    return {};
}

OrdovanResult<void> MemoryFileSystem::copy(const Url& from, const Url& to) {
    const std::lock_guard lock(mutex_);
    record("copy", from.path(), to.path());
    const auto source = openForReading(*tree_, from, EINVAL);
    if (!source) return refused(source.error());
    const auto target = tree_->locate(pathOf(to), false);
    if (!target) return refused(target.error());
    if (target->node) return refused(EEXIST);
    if (auto allowed = MemoryTree::mayChangeFolder(*target); !allowed) return refused(allowed.error());
    MemoryNode& copied = tree_->put(*target, ItemType::file, {}, (*source)->mode);
    if (!MemoryTree::setContent(copied, (*source)->content)) {
        target->parent->children.erase(target->name);
        return refused(ENOSPC);
    }
    copied.modifiedNs = (*source)->modifiedNs;
    return {};
}

OrdovanResult<void> MemoryFileSystem::remove(const Url& url) {
    const std::lock_guard lock(mutex_);
    record("remove", url.path());
    const auto place = tree_->locateExisting(pathOf(url), false);
    if (!place) return refused(place.error());
    if (place->node->type == ItemType::directory) return refused(EISDIR);
    if (auto allowed = MemoryTree::mayChangeFolder(*place); !allowed) return refused(allowed.error());
    MemoryTree::drop(*place);
    forgetTrashInfo(*tree_, url.path(), std::nullopt);
    return {};
}

OrdovanResult<std::int64_t> MemoryFileSystem::fileSize(const Url& url) {
    const std::lock_guard lock(mutex_);
    record("fileSize", url.path());
    const auto place = tree_->locateExisting(pathOf(url), false);
    if (!place) return notExamined();
    return static_cast<std::int64_t>(place->node->content.size());
}

OrdovanResult<std::string> MemoryFileSystem::contentHash(const Url& url) {
    const std::lock_guard lock(mutex_);
    record("contentHash", url.path());
    const auto file = openForReading(*tree_, url, EISDIR);
    if (!file) return refused(file.error());
    return digestOf((*file)->content);
}

OrdovanResult<std::string> MemoryFileSystem::fileIdentity(const Url& url) {
    const std::lock_guard lock(mutex_);
    record("fileIdentity", url.path());
    const auto place = tree_->locateExisting(pathOf(url), true);
    if (!place) return notExamined();
    return std::to_string(place->node->volume->device) + ':' + std::to_string(place->node->inode);
}

OrdovanResult<Url> MemoryFileSystem::trash(const Url& url) {
    const std::lock_guard lock(mutex_);
    record("trash", url.path());
    const auto item = tree_->locateExisting(pathOf(url), false);
    if (!item) return refused(item.error());
    if (item->isMountPoint()) return refused(EBUSY);
    if (auto allowed = MemoryTree::mayChangeFolder(*item); !allowed) return refused(allowed.error());
    const MemoryVolume& volume = *item->parent->volume;
    const bool isHomes = &volume == tree_->root().volume;
    const std::string trash = isHomes ? std::string(homeTrashPath) : volume.mountPoint + "/.Trash-1000";
    const std::string_view stored =
        isHomes ? std::string_view(item->path) : std::string_view(item->path).substr(volume.mountPoint.size() + 1);
    const auto there = moveIntoTrash(*tree_, *item, trash, stored);
    if (!there) return refused(there.error());
    return Url::file(*there);
}

void MemoryFileSystem::record(std::string_view operation, std::string_view path, std::string_view second) {
    std::string call(operation);
    (call += ' ') += path;
    if (!second.empty()) (call += " -> ") += second;
    log_.push_back(std::move(call));
}

}  // namespace ordovan::testing
