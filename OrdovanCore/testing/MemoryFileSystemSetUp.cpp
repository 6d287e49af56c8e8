#include "OrdovanCore/platform/Sha256.h"
#include "OrdovanCore/testing/MemoryFileSystem.h"
#include "OrdovanCore/testing/MemoryTree.h"
#include "OrdovanCore/testing/TreeBuilder.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

namespace ordovan::testing {

namespace {

using Place = MemoryTree::Place;
constexpr auto everything = MemoryTree::Rights::unlimited;

/// Ends the process: a test built a tree that can not be.
[[noreturn]] void setUpFailed(std::string_view path, int errnoValue) {
    static_cast<void>(std::fprintf(stderr, "MemoryFileSystem: can not set up '%s': %s\n", std::string(path).c_str(),
                                   std::strerror(errnoValue)));
    std::abort();
}

/// A place for an item, its folder made when missing. A final link is not followed.
Place placeFor(MemoryTree& tree, std::string_view path) {
    if (auto made = tree.makeFolders(parentPath(path), 0755, everything); !made) setUpFailed(path, made.error());
    auto place = tree.locate(path, false, everything);
    if (!place) setUpFailed(path, place.error());
    return std::move(*place);
}

Place freePlaceFor(MemoryTree& tree, std::string_view path) {
    Place place = placeFor(tree, path);
    if (place.node) setUpFailed(path, EEXIST);
    return place;
}

MemoryNode& nodeAt(const MemoryTree& tree, std::string_view path) {
    const auto place = tree.locateExisting(path, true, everything);
    if (!place) setUpFailed(path, place.error());
    return *place->node;
}

void dropTree(const Place& place) {
    while (!place.node->children.empty()) {
        const auto [name, child] = *place.node->children.begin();
        dropTree({place.node, name, child, {}});
    }
    MemoryTree::drop(place);
}

MemoryItem itemOf(std::string_view name, const MemoryNode& node) {
    return {.name = std::string(name),
            .type = node.type,
            .byteSize = static_cast<std::int64_t>(node.content.size()),
            .modifiedNs = node.modifiedNs,
            .mode = node.mode,
            .inode = node.inode,
            .device = node.volume->device,
            .links = node.links,
            .content = node.content};
}

void forEachBelow(const MemoryNode& folder, const std::string& prefix,
                  const std::function<void(const std::string& path, const MemoryNode& node)>& visit) {
    for (const auto& [name, node] : folder.children) {
        const std::string path = prefix + name;
        visit(path, *node);
        forEachBelow(*node, path + '/', visit);
    }
}

/// A Trash keeps its info files in "info", beside the "files" they are about.
bool isTrashInfo(std::string_view path) {
    return path.ends_with(".trashinfo") && lastPathComponent(parentPath(path)) == "info" &&
           path.find("Trash") != std::string_view::npos;
}

}  // namespace

std::string digestOf(std::string_view bytes) {
    auto digest = sha256(bytes);
    if (!digest) std::abort();
    return std::move(*digest);
}

MemoryFileSystem::MemoryFileSystem() : tree_(std::make_unique<MemoryTree>()) {
    makeDirectory(homePath);
}

MemoryFileSystem::~MemoryFileSystem() = default;

void MemoryFileSystem::makeDirectory(std::string_view path) {
    const std::lock_guard lock(mutex_);
    if (auto made = tree_->makeFolders(path, 0755, everything); !made) setUpFailed(path, made.error());
}

void MemoryFileSystem::write(std::string_view path, std::string_view content) {
    const std::lock_guard lock(mutex_);
    const Place place = placeFor(*tree_, path);
    MemoryNode& file = place.node ? *place.node : tree_->put(place, ItemType::file, {}, 0644);
    if (file.type != ItemType::file) setUpFailed(path, EEXIST);
    if (!MemoryTree::setContent(file, content)) setUpFailed(path, ENOSPC);
    file.modifiedNs = tree_->tick();
}

void MemoryFileSystem::replace(std::string_view path, std::string_view content) {
    removeTree(path);
    write(path, content);
}

void MemoryFileSystem::link(std::string_view path, std::string_view target) {
    const std::lock_guard lock(mutex_);
    tree_->put(freePlaceFor(*tree_, path), ItemType::link, target, 0777);
}

void MemoryFileSystem::hardLink(std::string_view path, std::string_view existing) {
    const std::lock_guard lock(mutex_);
    const auto original = tree_->locateExisting(existing, false, everything);
    if (!original) setUpFailed(existing, original.error());
    const Place place = freePlaceFor(*tree_, path);
    if (original->node->type == ItemType::directory) setUpFailed(path, EPERM);
    if (original->node->volume != place.parent->volume) setUpFailed(path, EXDEV);
    place.parent->children[place.name] = original->node;
    ++original->node->links;
}

void MemoryFileSystem::fifo(std::string_view path) {
    const std::lock_guard lock(mutex_);
    tree_->put(freePlaceFor(*tree_, path), ItemType::fifo, {}, 0644);
}

void MemoryFileSystem::setMode(std::string_view path, std::uint32_t mode) {
    const std::lock_guard lock(mutex_);
    nodeAt(*tree_, path).mode = mode;
}

void MemoryFileSystem::setModified(std::string_view path, std::int64_t nanosecondsSince1970) {
    const std::lock_guard lock(mutex_);
    nodeAt(*tree_, path).modifiedNs = nanosecondsSince1970;
}

void MemoryFileSystem::removeTree(std::string_view path) {
    const std::lock_guard lock(mutex_);
    const auto place = tree_->locateExisting(path, false, everything);
    if (!place) setUpFailed(path, place.error());
    if (!place->parent) setUpFailed(path, EBUSY);
    dropTree(*place);
}

void MemoryFileSystem::addVolume(std::string_view mountPoint, std::int64_t freeBytes) {
    makeDirectory(mountPoint);
    const std::lock_guard lock(mutex_);
    MemoryVolume& volume = tree_->addVolume(mountPoint, tree_->newDevice());
    volume.freeBytes = freeBytes;
    nodeAt(*tree_, mountPoint).volume = &volume;
}

void MemoryFileSystem::addMountOfRootDevice(std::string_view mountPoint) {
    makeDirectory(mountPoint);
    const std::lock_guard lock(mutex_);
    nodeAt(*tree_, mountPoint).volume = &tree_->addVolume(mountPoint, tree_->root().volume->device);
}

void MemoryFileSystem::setFreeBytes(std::string_view path, std::int64_t freeBytes) {
    const std::lock_guard lock(mutex_);
    nodeAt(*tree_, path).volume->freeBytes = freeBytes;
}

void MemoryFileSystem::setReadOnly(std::string_view path, bool readOnly) {
    const std::lock_guard lock(mutex_);
    nodeAt(*tree_, path).volume->readOnly = readOnly;
}

std::int64_t MemoryFileSystem::freeBytes(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    return nodeAt(*tree_, path).volume->freeBytes;
}

std::optional<std::string> MemoryFileSystem::read(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    const auto place = tree_->locateExisting(path, true, everything);
    if (!place || place->node->type != ItemType::file) return std::nullopt;
    return place->node->content;
}

std::optional<std::string> MemoryFileSystem::linkTarget(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    const auto place = tree_->locateExisting(path, false, everything);
    if (!place || place->node->type != ItemType::link) return std::nullopt;
    return place->node->content;
}

std::optional<MemoryItem> MemoryFileSystem::item(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    const auto place = tree_->locateExisting(path, false, everything);
    if (!place) return std::nullopt;
    return itemOf(place->name, *place->node);
}

std::optional<std::string> MemoryFileSystem::realPath(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    const auto place = tree_->locateExisting(path, true);
    if (!place) return std::nullopt;
    return place->path;
}

OrdovanResult<std::vector<MemoryItem>> MemoryFileSystem::list(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    const auto place = tree_->locateExisting(path, true);
    if (!place) return std::unexpected(OrdovanSystemError::posix(place.error()));
    if (place->node->type != ItemType::directory) return std::unexpected(OrdovanSystemError::posix(ENOTDIR));
    if (!ownerMay(*place->node, 4)) return std::unexpected(OrdovanSystemError::posix(EACCES));
    std::vector<MemoryItem> items;
    for (const auto& [name, node] : place->node->children) items.push_back(itemOf(name, *node));
    return items;
}

std::map<std::string, std::string> MemoryFileSystem::snapshot(std::string_view below) const {
    const std::lock_guard lock(mutex_);
    std::map<std::string, std::string> descriptions;
    forEachBelow(nodeAt(*tree_, below), {}, [&](const std::string& path, const MemoryNode& node) {
        descriptions[path] = describe(itemOf(lastPathComponent(path), node));
    });
    return descriptions;
}

std::multiset<std::string> MemoryFileSystem::contents() const {
    const std::lock_guard lock(mutex_);
    std::set<const MemoryNode*> seen;
    std::multiset<std::string> hashes;
    forEachBelow(tree_->root(), "/", [&](const std::string& path, const MemoryNode& node) {
        if (node.type != ItemType::file || isTrashInfo(path) || !seen.insert(&node).second) return;
        hashes.insert(digestOf(node.content));
    });
    return hashes;
}

std::vector<std::string> MemoryFileSystem::log() const {
    const std::lock_guard lock(mutex_);
    return log_;
}

std::vector<std::string> MemoryFileSystem::changes() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> changing;
    for (const std::string& call : log_) {
        for (const std::string_view operation : {"createDirectory ", "move ", "copy ", "remove ", "trash "}) {
            if (call.starts_with(operation)) changing.push_back(call);
        }
    }
    return changing;
}

void MemoryFileSystem::clearLog() {
    const std::lock_guard lock(mutex_);
    log_.clear();
}

}  // namespace ordovan::testing
