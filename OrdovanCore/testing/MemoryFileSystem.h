#pragma once

#include "OrdovanCore/FileSystem.h"

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::testing {

class MemoryTree;

/// What an item is.
enum class ItemType { file, directory, link, fifo };

/// One item of a `MemoryFileSystem`, as a listing shows it.
struct MemoryItem {
    std::string name;
    ItemType type = ItemType::file;
    std::int64_t byteSize = 0;    ///< st_size: a link's is the length of its target
    std::int64_t modifiedNs = 0;  ///< nanoseconds since 1970
    std::uint32_t mode = 0;       ///< permission bits
    std::uint64_t inode = 0;
    std::int32_t device = 0;
    std::uint32_t links = 1;  ///< names of this file; 1 for a folder
    std::string content;      ///< of a file its bytes, of a link its target
};

/// A file system in memory with the semantics of a real one: inodes, hard and symbolic links, FIFOs, permissions,
/// several volumes with their own devices, free space and read-only state, and a Trash.
///
/// Its user is an ordinary one who owns everything, so only the owner's permission bits count. Errors are the ones
/// Linux gives. There is no working directory: paths are absolute. The root is a volume without limit; the home folder
/// "/home/user" exists on it. Modification times come from a clock that goes on by one second at each item made.
///
/// The port's operations obey permissions; the set-up operations further down ignore them, make missing parent folders
/// and end the process when a test asks for nonsense. Any thread.
class MemoryFileSystem final : public OrdovanFileSystem {
public:
    MemoryFileSystem();
    ~MemoryFileSystem() override;

    bool exists(const Url& url) override;
    bool isRegularFile(const Url& url) override;
    bool isSymlink(const Url& url) override;
    bool sameVolume(const Url& a, const Url& b) override;
    OrdovanResult<void> createDirectory(const Url& url) override;
    OrdovanResult<void> move(const Url& from, const Url& to) override;
    OrdovanResult<void> copy(const Url& from, const Url& to) override;
    OrdovanResult<void> remove(const Url& url) override;
    OrdovanResult<std::int64_t> fileSize(const Url& url) override;
    OrdovanResult<std::string> contentHash(const Url& url) override;
    OrdovanResult<std::string> fileIdentity(const Url& url) override;
    /// Home's volume: "/home/user/.local/share/Trash/files"; any other: ".Trash-1000/files" below its mount point.
    OrdovanResult<Url> trash(const Url& url) override;

    static constexpr std::string_view homePath = "/home/user";
    static constexpr std::string_view homeTrashPath = "/home/user/.local/share/Trash";
    static constexpr std::int64_t unlimited = std::numeric_limits<std::int64_t>::max();

    // Making a tree.

    void makeDirectory(std::string_view path);
    /// Makes a file, or changes the content of the one that is there in place: its identity stays, its time advances.
    void write(std::string_view path, std::string_view content);
    /// Puts another file, with another identity, in place of what is there.
    void replace(std::string_view path, std::string_view content);
    void link(std::string_view path, std::string_view target);
    void hardLink(std::string_view path, std::string_view existing);
    void fifo(std::string_view path);
    /// Permission bits; a final link is followed.
    void setMode(std::string_view path, std::uint32_t mode);
    void setModified(std::string_view path, std::int64_t nanosecondsSince1970);
    /// Takes away whatever is there, a folder with all it holds.
    void removeTree(std::string_view path);

    // Volumes.

    /// Mounts an empty volume with a device number of its own on a folder, which is made when missing.
    void addVolume(std::string_view mountPoint, std::int64_t freeBytes = unlimited);
    /// Mounts an empty volume that has the root's device number and yet refuses renames to and from it, as a second
    /// mount of one device does.
    void addMountOfRootDevice(std::string_view mountPoint);
    /// Of the volume that holds the path.
    void setFreeBytes(std::string_view path, std::int64_t freeBytes);
    void setReadOnly(std::string_view path, bool readOnly);
    [[nodiscard]] std::int64_t freeBytes(std::string_view path) const;

    // Looking at the outcome. None of these counts as a call.

    /// A file's bytes, links followed; nothing when there is no regular file.
    [[nodiscard]] std::optional<std::string> read(std::string_view path) const;
    [[nodiscard]] std::optional<std::string> linkTarget(std::string_view path) const;
    /// The item itself, links not followed.
    [[nodiscard]] std::optional<MemoryItem> item(std::string_view path) const;
    /// The path with all links resolved; nothing when it leads nowhere.
    [[nodiscard]] std::optional<std::string> realPath(std::string_view path) const;
    /// A folder's children by name, links in the path followed: EACCES without permission, ENOTDIR, ENOENT.
    [[nodiscard]] OrdovanResult<std::vector<MemoryItem>> list(std::string_view path) const;
    /// Every item below a folder, by path, described as `describe` of TreeBuilder.h does. The folder itself is left
    /// out. Two trees are the same when their snapshots are equal.
    [[nodiscard]] std::map<std::string, std::string> snapshot(std::string_view below = "/") const;
    /// The SHA-256 of every regular file on all volumes, one for each file however many names it has. The Trash's
    /// info files do not count. Equal before and after an operation that lost and doubled nothing.
    [[nodiscard]] std::multiset<std::string> contents() const;

    /// Every call of the port's operations, in order: "move /a -> /b", "exists /a".
    [[nodiscard]] std::vector<std::string> log() const;
    /// Only the calls that change something: createDirectory, move, copy, remove and trash.
    [[nodiscard]] std::vector<std::string> changes() const;
    void clearLog();

private:
    void record(std::string_view operation, std::string_view path, std::string_view second = {});

    mutable std::mutex mutex_;
    std::unique_ptr<MemoryTree> tree_;
    std::vector<std::string> log_;
};

/// The SHA-256 of some bytes as 64 lower-case hexadecimal digits.
[[nodiscard]] std::string digestOf(std::string_view bytes);

}  // namespace ordovan::testing
