#include "OrdovanCore/platform/Folders.h"

#include "OrdovanCore/Url.h"
#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/SystemPath.h"

#include <linux/btrfs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace ordovan {

namespace {

/// A flush of one folder waits for the device, and so does one of its whole volume: from here on the latter is quicker.
constexpr std::size_t mostFoldersOneByOne = 32;

unsigned long typeOf(const struct ::statfs& volume) {
    // The field is signed on some machines and must not drag its sign along.
    return static_cast<unsigned long>(volume.f_type) & 0xffffffff;
}

bool isOrdered(unsigned long type) {
    return type == EXT4_SUPER_MAGIC || type == XFS_SUPER_MAGIC || type == BTRFS_SUPER_MAGIC || type == F2FS_SUPER_MAGIC;
}

/// Whether a call that flushes did all that there is to do: some file systems know none (fsync(2)). It is made again
/// after an interrupting signal.
template <class Flush>
bool isFlushed(const Flush& flush) {
    int result = -1;
    do {
        result = flush();
    } while (result != 0 && errno == EINTR);
    return result == 0 || errno == EINVAL || errno == ENOTSUP || errno == ENOSYS;
}

bool isFolder(const char* path) {
    struct ::stat facts;
    return ::stat(path, &facts) == 0 && S_ISDIR(facts.st_mode);
}

bool isThere(const Url& item) {
    const SystemPath path(item);
    struct ::stat facts;
    return path.error() == 0 && ::lstat(path.text(), &facts) == 0;
}

/// A folder from which or to which items were moved. Not held open: there may be more than a process may open.
class MovesFolder {
public:
    explicit MovesFolder(std::string_view path) : path_(path) {
        const Descriptor folder = opened();
        struct ::stat facts;
        struct ::statfs volume;
        isThere_ = folder && ::fstat(folder.get(), &facts) == 0 && ::fstatfs(folder.get(), &volume) == 0;
        isBroken_ = !isThere_ && !isOutOfReach(errno);
        if (!isThere_) return;
        device_ = facts.st_dev;
        type_ = typeOf(volume);
    }

    [[nodiscard]] bool isThere() const { return isThere_; }
    /// Whether it could not even be asked for, so that nothing is known of its volume.
    [[nodiscard]] bool isBroken() const { return isBroken_; }
    [[nodiscard]] ::dev_t device() const { return device_; }
    /// Whether a rename reaches the disk whole or not at all, with either folder.
    [[nodiscard]] bool renamesAtOnce() const { return isOrdered(type_); }
    /// Whether a later flush of another file of its volume brings along what is in the journal before it: all of it, in
    /// one log for the whole volume. (btrfs flushes what belongs to that file.)
    [[nodiscard]] bool isBroughtAlong() const { return type_ == EXT4_SUPER_MAGIC || type_ == XFS_SUPER_MAGIC; }
    /// Where folders are flushed one by one, btrfs would keep the new name and, where the old one's folder is not
    /// flushed as well, the old one too. The server of a FUSE volume is told of flushed folders only.
    [[nodiscard]] bool wantsWholeVolume(bool areMany) const {
        return type_ == BTRFS_SUPER_MAGIC || (areMany && type_ != FUSE_SUPER_MAGIC);
    }
    /// These say whether what was changed is on the disk now.
    [[nodiscard]] bool flush() const {
        const Descriptor folder = opened();
        return folder ? isFlushed([&] { return ::fsync(folder.get()); }) : isOutOfReach(errno);
    }
    /// syncfs(2) does nothing, and says so to nobody, where an error has made the volume read-only. There fsync(2) of
    /// any folder of ext4 and XFS tells; that of btrfs does for folders that were changed last, its own call for all.
    /// False may as well be about another program's file: then each folder says.
    [[nodiscard]] bool flushVolume() const {
        const Descriptor folder = opened();
        if (!folder) return isOutOfReach(errno);
        const bool isWhole = isFlushed([&] { return ::syncfs(folder.get()); });
        const bool isTold =
            type_ != BTRFS_SUPER_MAGIC || isFlushed([&] { return ::ioctl(folder.get(), BTRFS_IOC_SYNC); });
        return isWhole && isTold && isFlushed([&] { return ::fsync(folder.get()); });
    }

private:
    /// Whether a folder that can not be opened is gone, or not ours to read: then there is nothing to flush.
    static bool isOutOfReach(int error) {
        return error == ENOENT || error == ENOTDIR || error == ELOOP || error == EACCES;
    }
    [[nodiscard]] Descriptor opened() const {
        const SystemPath text(Url::file(path_));
        return Descriptor::open(text.text(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    }

    std::string path_;
    bool isThere_ = false;
    bool isBroken_ = false;
    ::dev_t device_ = 0;
    unsigned long type_ = 0;
};

int makeOne(const char* path, ::mode_t mode) {
    return ::mkdir(path, mode) == 0 ? 0 : errno;
}

}  // namespace

int makeFolders(std::string_view path, ::mode_t mode) {
    std::string text(path);
    // Most often it is there already, and then this is the only call.
    struct ::stat facts;
    if (::stat(text.c_str(), &facts) == 0) return S_ISDIR(facts.st_mode) ? 0 : EEXIST;

    // Upwards to the first folder that can be made or stands; the slashes on the way become ends of the text.
    std::size_t end = text.size();
    int error = makeOne(text.c_str(), mode);
    while (error == ENOENT) {
        const std::size_t parent = parentPath(std::string_view(text).substr(0, end)).size();
        if (parent <= 1 || parent >= end) return ENOENT;
        end = parent;
        text[end] = '\0';
        error = makeOne(text.c_str(), mode);
    }
    // And down again. Another process may make the same folders meanwhile.
    while (end < text.size() && (error == 0 || error == EEXIST)) {
        text[end] = '/';
        end = text.find('\0', end);
        if (end == std::string::npos) end = text.size();
        error = makeOne(text.c_str(), mode);
    }
    return error == EEXIST && isFolder(text.c_str()) ? 0 : error;
}

int syncFolderOf(FolderEntry item) {
    const std::string folder(item.folder == AT_FDCWD ? parentPath(item.name) : ".");
    const Descriptor opened = Descriptor::openAt(item.folder, folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (opened) return isFlushed([&] { return ::fsync(opened.get()); }) ? 0 : errno;
    if (errno != EACCES) return errno;
    const Descriptor inside = Descriptor::openAt(item.folder, item.name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    return inside && ::syncfs(inside.get()) == 0 ? 0 : errno;
}

bool keepsOrder(int openFolder) {
    struct ::statfs volume;
    return ::fstatfs(openFolder, &volume) == 0 && isOrdered(typeOf(volume));
}

bool syncMoves(std::span<const Url> arrivals, std::span<const Url> departures, std::string_view records) {
    const MovesFolder later(records);
    const auto comesLater = [&](const MovesFolder& folder) {
        return later.isThere() && later.isBroughtAlong() && folder.device() == later.device();
    };
    std::vector<MovesFolder> folders;
    std::unordered_set<std::string_view> known, spared;
    std::unordered_set<::dev_t> arrivedAt;
    bool isOnDisk = true;
    std::string_view last;  // mostly that of the next one, too
    for (const Url& item : arrivals) {
        const std::string_view path = parentPath(item.path());
        if (path == last || !known.insert(path).second) continue;
        last = path;
        MovesFolder folder(path);
        isOnDisk = isOnDisk && !folder.isBroken();
        if (!folder.isThere()) continue;
        arrivedAt.insert(folder.device());
        if (!comesLater(folder)) folders.push_back(std::move(folder));
    }
    for (const Url& item : departures) {
        const std::string_view path = parentPath(item.path());
        if (known.contains(path) || (spared.contains(path) && !isThere(item))) continue;
        MovesFolder folder(path);
        for (std::string_view above = path; !folder.isThere() && above.size() > 1;) {
            isOnDisk = isOnDisk && !folder.isBroken();
            folder = MovesFolder(above = parentPath(above));
        }
        // One of several volumes may be left for another one of them. What still stands may have been away meanwhile.
        const bool isWithin = arrivedAt.size() == 1 && arrivedAt.contains(folder.device());
        const bool isOneChange = isWithin && folder.renamesAtOnce() && !comesLater(folder) && !isThere(item);
        (isOneChange ? spared : known).insert(path);
        if (folder.isThere() && !isOneChange && !comesLater(folder)) folders.push_back(std::move(folder));
    }
    const bool areMany = folders.size() > mostFoldersOneByOne;
    std::unordered_map<::dev_t, bool> wholes;  // volumes, and whether they could be flushed at once
    for (const MovesFolder& folder : folders) {
        bool isWhole = false;
        if (folder.wantsWholeVolume(areMany)) {
            const auto [volume, isNew] = wholes.try_emplace(folder.device(), false);
            if (isNew) volume->second = folder.flushVolume();
            isWhole = volume->second;
        }
        if (!isWhole) isOnDisk = folder.flush() && isOnDisk;
    }
    return isOnDisk;
}

bool canFlush(std::span<const Url> folders) {
    return std::ranges::all_of(folders, [](const Url& url) {
        const MovesFolder folder(url.path());
        return folder.isThere() ? folder.renamesAtOnce() || folder.flush() : !folder.isBroken();
    });
}

}  // namespace ordovan
