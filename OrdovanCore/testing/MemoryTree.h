#pragma once

#include "OrdovanCore/testing/MemoryFileSystem.h"

namespace ordovan::testing {

struct MemoryVolume {
    std::int32_t device = 0;
    std::string mountPoint;  ///< "" for the root
    std::int64_t freeBytes = MemoryFileSystem::unlimited;
    bool readOnly = false;
};

struct MemoryNode {
    ItemType type = ItemType::file;
    MemoryVolume* volume = nullptr;
    std::uint64_t inode = 0;
    std::uint32_t mode = 0;
    std::int64_t modifiedNs = 0;
    std::uint32_t links = 1;
    std::string content = {};  ///< of a file its bytes, of a link its target
    std::map<std::string, std::shared_ptr<MemoryNode>, std::less<>> children = {};
};

/// The nodes, volumes and path resolution below `MemoryFileSystem`. Not for several threads.
class MemoryTree {
public:
    using NodePtr = std::shared_ptr<MemoryNode>;

    /// Where a path leads.
    struct Place {
        NodePtr parent;    ///< the folder that holds or would hold the item; none for the root
        std::string name;  ///< the item's name in it
        NodePtr node;      ///< none when the place is free
        std::string path;  ///< with all links resolved

        /// A mount point, or the root: what can not be renamed.
        [[nodiscard]] bool isMountPoint() const { return !parent || (node && node->volume != parent->volume); }
    };

    enum class Rights { ofUser, unlimited };

    MemoryTree();

    /// Why a text can not be a path at all: EINVAL where it is not absolute or holds a NUL byte, ENAMETOOLONG; else 0.
    [[nodiscard]] static int errorOfPath(std::string_view path) noexcept;

    /// Resolves a path as the kernel does (path_resolution(7)), but for slashes at its end, which mean nothing here.
    /// Fails with an errno unless at most the last piece is missing.
    [[nodiscard]] std::expected<Place, int> locate(std::string_view path, bool followLast,
                                                   Rights rights = Rights::ofUser) const;
    /// The same, ENOENT where the place is free.
    [[nodiscard]] std::expected<Place, int> locateExisting(std::string_view path, bool followLast,
                                                           Rights rights = Rights::ofUser) const;

    /// Makes the missing folders of a path with this mode.
    std::expected<void, int> makeFolders(std::string_view path, std::uint32_t mode, Rights rights = Rights::ofUser);
    /// Puts a new item into a free place, without asking for permission.
    MemoryNode& put(const Place& place, ItemType type, std::string_view content, std::uint32_t mode);
    /// Gives a file another content; its volume's free space follows. False when there is too little.
    static bool setContent(MemoryNode& file, std::string_view content);
    /// Takes a name away, without asking for permission.
    static void drop(const Place& place);
    static void rename(const Place& from, const Place& to);

    /// Whether the user may add a name to, or take one from, the folder of a place: EROFS, EACCES.
    [[nodiscard]] static std::expected<void, int> mayChangeFolder(const Place& place);
    /// Whether a rename may be done that replaces nothing.
    [[nodiscard]] static std::expected<void, int> mayRename(const Place& from, const Place& to);

    MemoryVolume& addVolume(std::string_view mountPoint, std::int32_t device);
    [[nodiscard]] std::int32_t newDevice() { return ++lastDevice_; }
    [[nodiscard]] MemoryNode& root() const { return *root_; }
    /// The next moment of the clock.
    std::int64_t tick() { return clockNs_ += 1'000'000'000; }

private:
    std::vector<std::unique_ptr<MemoryVolume>> volumes_;
    NodePtr root_;
    std::uint64_t lastInode_ = 1;
    std::int32_t lastDevice_ = 40;
    std::int64_t clockNs_ = 1'600'000'000'000'000'000;
};

/// True when the permission bits grant the owner all of these ("r" 4, "w" 2, "x" 1).
[[nodiscard]] bool ownerMay(const MemoryNode& node, std::uint32_t bits) noexcept;

}  // namespace ordovan::testing
