#include "OrdovanCore/testing/MemoryTree.h"

#include <algorithm>
#include <cerrno>
#include <deque>
#include <ranges>

namespace ordovan::testing {

namespace {

using NodePtr = MemoryTree::NodePtr;
using Place = MemoryTree::Place;

constexpr std::size_t maxNameBytes = 255;   // NAME_MAX
constexpr std::size_t maxPathBytes = 4095;  // PATH_MAX without its terminator
constexpr int maxLinksFollowed = 40;        // MAXSYMLINKS of the kernel

void prependPieces(std::deque<std::string>& pieces, std::string_view path) {
    std::vector<std::string> fresh;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (end > begin) fresh.emplace_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    pieces.insert(pieces.begin(), fresh.begin(), fresh.end());
}

/// The folders from the root down to where a resolution has come.
class Trail {
public:
    explicit Trail(NodePtr root) { steps_.emplace_back(std::string(), std::move(root)); }

    [[nodiscard]] const NodePtr& here() const { return steps_.back().second; }
    void down(std::string name, NodePtr folder) { steps_.emplace_back(std::move(name), std::move(folder)); }
    void up() {
        if (steps_.size() > 1) steps_.pop_back();
    }
    void toRoot() { steps_.resize(1); }

    [[nodiscard]] std::string path() const {
        std::string path;
        for (const auto& [name, folder] : steps_ | std::views::drop(1)) (path += '/') += name;
        return path;
    }
    [[nodiscard]] Place placeOf(std::string name, NodePtr node) const {
        std::string full = path() + '/' + name;
        return {here(), std::move(name), std::move(node), std::move(full)};
    }
    /// Where the resolution has come to, as a place in the folder above.
    [[nodiscard]] Place placeHere() const {
        if (steps_.size() == 1) return {nullptr, "/", here(), "/"};
        return {steps_[steps_.size() - 2].second, steps_.back().first, here(), path()};
    }

private:
    std::vector<std::pair<std::string, NodePtr>> steps_;
};

bool holds(const MemoryNode& folder, const MemoryNode* node) {
    return std::ranges::any_of(folder.children, [node](const auto& child) {
        return child.second.get() == node || (child.second->type == ItemType::directory && holds(*child.second, node));
    });
}

}  // namespace

bool ownerMay(const MemoryNode& node, std::uint32_t bits) noexcept {
    return ((node.mode >> 6U) & bits) == bits;
}

MemoryTree::MemoryTree() {
    volumes_.push_back(std::make_unique<MemoryVolume>(MemoryVolume{.device = newDevice(), .mountPoint = {}}));
    root_ = std::make_shared<MemoryNode>(MemoryNode{.type = ItemType::directory,
                                                    .volume = volumes_.front().get(),
                                                    .inode = ++lastInode_,
                                                    .mode = 0755,
                                                    .modifiedNs = tick()});
}

int MemoryTree::errorOfPath(std::string_view path) noexcept {
    if (path.size() > maxPathBytes) return ENAMETOOLONG;
    return path.starts_with('/') && !path.contains('\0') ? 0 : EINVAL;
}

std::expected<Place, int> MemoryTree::locate(std::string_view path, bool followLast, Rights rights) const {
    if (const int error = errorOfPath(path); error != 0) return std::unexpected(error);
    int linksFollowed = 0;
    Trail trail(root_);
    std::deque<std::string> pending;
    prependPieces(pending, path);
    while (!pending.empty()) {
        std::string piece = std::move(pending.front());
        pending.pop_front();
        const MemoryNode& here = *trail.here();
        if (here.type != ItemType::directory) return std::unexpected(ENOTDIR);
        if (rights == Rights::ofUser && !ownerMay(here, 1)) return std::unexpected(EACCES);
        if (piece == ".") continue;
        if (piece == "..") {
            trail.up();
            continue;
        }
        if (piece.size() > maxNameBytes) return std::unexpected(ENAMETOOLONG);
        const auto child = here.children.find(piece);
        if (child == here.children.end()) {
            if (!pending.empty()) return std::unexpected(ENOENT);
            return trail.placeOf(std::move(piece), nullptr);
        }
        const NodePtr node = child->second;
        if (node->type == ItemType::link && (!pending.empty() || followLast)) {
            if (++linksFollowed > maxLinksFollowed) return std::unexpected(ELOOP);
            if (node->content.starts_with('/')) trail.toRoot();
            prependPieces(pending, node->content);
        } else if (!pending.empty()) {
            trail.down(std::move(piece), node);
        } else {
            return trail.placeOf(std::move(piece), node);
        }
    }
    return trail.placeHere();
}

std::expected<Place, int> MemoryTree::locateExisting(std::string_view path, bool followLast, Rights rights) const {
    auto place = locate(path, followLast, rights);
    if (place && !place->node) return std::unexpected(ENOENT);
    return place;
}

std::expected<void, int> MemoryTree::makeFolders(std::string_view path, std::uint32_t mode, Rights rights) {
    const auto place = locate(path, true, rights);
    if (place && place->node) {
        if (place->node->type == ItemType::directory) return {};
        return std::unexpected(EEXIST);
    }
    // A dangling link is in the way: mkdir(2) does not make its target.
    const auto unfollowed = locate(path, false, rights);
    if (unfollowed && unfollowed->node) return std::unexpected(EEXIST);
    if (!place && place.error() != ENOENT) return std::unexpected(place.error());
    if (!place) {
        auto above = makeFolders(parentPath(path), mode, rights);
        if (!above) {
            // A dangling link stands on the way: the path through it leads nowhere.
            return std::unexpected(above.error() == EEXIST ? ENOENT : above.error());
        }
        return makeFolders(path, mode, rights);
    }
    if (rights == Rights::ofUser) {
        if (auto allowed = mayChangeFolder(*place); !allowed) return allowed;
    }
    put(*place, ItemType::directory, {}, mode);
    return {};
}

MemoryNode& MemoryTree::put(const Place& place, ItemType type, std::string_view content, std::uint32_t mode) {
    auto node = std::make_shared<MemoryNode>(MemoryNode{
        .type = type, .volume = place.parent->volume, .inode = ++lastInode_, .mode = mode, .modifiedNs = tick()});
    if (type == ItemType::file) {
        setContent(*node, content);
    } else {
        node->content = content;
    }
    place.parent->children[place.name] = node;
    return *node;
}

bool MemoryTree::setContent(MemoryNode& file, std::string_view content) {
    MemoryVolume& volume = *file.volume;
    if (volume.freeBytes != MemoryFileSystem::unlimited) {
        const auto wanted = static_cast<std::int64_t>(content.size()) - static_cast<std::int64_t>(file.content.size());
        if (wanted > volume.freeBytes) return false;
        volume.freeBytes -= wanted;
    }
    file.content = content;
    return true;
}

void MemoryTree::drop(const Place& place) {
    const NodePtr node = place.node;
    place.parent->children.erase(place.name);
    if (node->type == ItemType::file && --node->links == 0) setContent(*node, {});
}

void MemoryTree::rename(const Place& from, const Place& to) {
    from.parent->children.erase(from.name);
    to.parent->children[to.name] = from.node;
}

std::expected<void, int> MemoryTree::mayChangeFolder(const Place& place) {
    if (place.parent->volume->readOnly) return std::unexpected(EROFS);
    if (!ownerMay(*place.parent, 3)) return std::unexpected(EACCES);
    return {};
}

std::expected<void, int> MemoryTree::mayRename(const Place& from, const Place& to) {
    if (!from.parent || !to.parent) return std::unexpected(EBUSY);
    if (from.parent->volume != to.parent->volume) return std::unexpected(EXDEV);
    if (from.parent->volume->readOnly) return std::unexpected(EROFS);
    if (!from.node) return std::unexpected(ENOENT);
    if (to.node) return std::unexpected(EEXIST);
    if (from.isMountPoint()) return std::unexpected(EBUSY);
    const bool isFolder = from.node->type == ItemType::directory;
    if (isFolder && (from.node == to.parent || holds(*from.node, to.parent.get()))) return std::unexpected(EINVAL);
    if (auto allowed = mayChangeFolder(from); !allowed) return allowed;
    if (auto allowed = mayChangeFolder(to); !allowed) return allowed;
    // Moving a folder elsewhere changes the ".." in it.
    if (isFolder && from.parent != to.parent && !ownerMay(*from.node, 2)) return std::unexpected(EACCES);
    return {};
}

MemoryVolume& MemoryTree::addVolume(std::string_view mountPoint, std::int32_t device) {
    volumes_.push_back(
        std::make_unique<MemoryVolume>(MemoryVolume{.device = device, .mountPoint = normalizedPath(mountPoint)}));
    return *volumes_.back();
}

}  // namespace ordovan::testing
