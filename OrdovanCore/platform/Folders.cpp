#include "OrdovanCore/platform/Folders.h"

#include "OrdovanCore/Url.h"
#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/SystemPath.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <cstddef>
#include <string>
#include <unordered_set>

namespace ordovan {

namespace {

/// A flush of one folder waits for the device, and so does one of its whole volume: from here on the latter is quicker.
constexpr std::size_t mostFoldersOneByOne = 32;

bool isFolder(const char* path) {
    struct ::stat facts;
    return ::stat(path, &facts) == 0 && S_ISDIR(facts.st_mode);
}

bool isThere(const Url& item) {
    const SystemPath path(item);
    struct ::stat facts;
    return path.error() == 0 && ::lstat(path.text(), &facts) == 0;
}

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
    if (opened) return ::fsync(opened.get()) == 0 || errno == EINVAL || errno == ENOTSUP ? 0 : errno;
    if (errno != EACCES) return errno;
    const Descriptor inside = Descriptor::openAt(item.folder, item.name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    return inside && ::syncfs(inside.get()) == 0 ? 0 : errno;
}

void syncFoldersOf(std::span<const Url> items) {
    std::unordered_set<std::string_view> folders;
    for (const Url& item : items) {
        const std::string_view folder = parentPath(item.path());
        if (!folders.contains(folder) && isThere(item)) folders.insert(folder);
    }
    std::unordered_set<::dev_t> whole;
    for (const std::string_view each : folders) {
        const SystemPath path(Url::file(each));
        const Descriptor folder = Descriptor::open(path.text(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
        struct ::stat facts;
        struct ::statfs volume;
        if (!folder || ::fstat(folder.get(), &facts) != 0 || ::fstatfs(folder.get(), &volume) != 0) continue;
        // Where folders are flushed one by one, btrfs would keep the new name and, where the old one's folder is not
        // flushed as well, the old one too. The server of a FUSE volume is told of flushed folders only.
        const bool isMany = folders.size() > mostFoldersOneByOne && volume.f_type != FUSE_SUPER_MAGIC;
        if (!isMany && volume.f_type != BTRFS_SUPER_MAGIC) {
            static_cast<void>(::fsync(folder.get()));
        } else if (whole.insert(facts.st_dev).second) {
            static_cast<void>(::syncfs(folder.get()));
        }
    }
}

}  // namespace ordovan
