#include "OrdovanCore/platform/TrashFolder.h"

#include "OrdovanCore/Url.h"
#include "OrdovanCore/platform/Folders.h"
#include "OrdovanCore/platform/RealPath.h"
#include "OrdovanCore/platform/SameFile.h"
#include "OrdovanCore/platform/UserDatabase.h"

#include <linux/magic.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace ordovan {

namespace {

std::string appended(std::string_view folder, std::string_view name) {
    return std::string(folder == "/" ? "" : folder).append("/").append(name);
}

constexpr int folderItself = O_PATH | O_DIRECTORY | O_NOFOLLOW;

/// True for file systems that give every file the same owner: there, ownership tells nothing.
bool storesNoOwners(const Descriptor& folder) {
    constexpr long exfatMagic = 0x2011BAB0;  // EXFAT_SUPER_MAGIC, not in older kernel headers
    struct ::statfs volume{};
    return ::fstatfs(folder.get(), &volume) == 0 && (volume.f_type == MSDOS_SUPER_MAGIC || volume.f_type == exfatMagic);
}

/// Opens a folder of ours, made first where it is missing.
std::expected<Descriptor, int> openOwn(const Descriptor& above, const char* name) {
    bool made = false;
    Descriptor folder = Descriptor::openAt(above.get(), name, folderItself);
    if (!folder && errno == ENOENT) {
        made = ::mkdirat(above.get(), name, 0700) == 0;
        if (!made && errno != EEXIST) return std::unexpected(errno);
        folder = Descriptor::openAt(above.get(), name, folderItself);
    }
    if (!folder) return std::unexpected(errno);
    int error = 0;
    if (!isPrivate(folder)) {
        error = EPERM;  // as on a volume that gives new folders to somebody else
    } else if (made && !keepsOrder(above.get())) {
        // Else an item could leave its place for a folder that never reaches the disk.
        error = syncFolderOf({above.get(), name});
    }
    if (error == 0) return folder;
    // One that stayed would be taken for flushed by the next item.
    if (made) ::unlinkat(above.get(), name, AT_REMOVEDIR);
    return std::unexpected(error);
}

/// The device of the path's nearest existing ancestor, itself first.
std::optional<dev_t> nearestDevice(std::string_view path) {
    struct ::stat facts{};
    for (std::string at(path);; at = parentPath(at)) {
        if (::stat(at.c_str(), &facts) == 0) return facts.st_dev;
        if (at.size() <= 1) return std::nullopt;
    }
}

struct Base {
    Descriptor folder;
    std::string path;
};

/// The data folder, if it is or would be on the item's device.
std::expected<Base, int> openDataFolder(const TrashItem& item) {
    std::string path = userDataFolder();
    if (path.empty()) return std::unexpected(ENOENT);
    struct ::stat itemFolder{};
    if (::fstat(item.folder.get(), &itemFolder) != 0) return std::unexpected(errno);
    if (nearestDevice(path) != itemFolder.st_dev) return std::unexpected(EXDEV);
    if (const int error = makeFolders(path, 0700); error != 0) return std::unexpected(error);
    Descriptor folder = Descriptor::open(path.c_str(), O_PATH | O_DIRECTORY);
    if (!folder) return std::unexpected(errno);
    if (!isNormalPath(path)) path = realPath(path).value_or(path);
    return Base{std::move(folder), std::move(path)};
}

/// The highest folder above an item that is on its device and in its mount: a mount point, or the root of a btrfs
/// subvolume, which need not be one.
std::expected<Base, int> openVolumeTop(const TrashItem& item) {
    Base top{Descriptor::openAt(item.folder.get(), ".", folderItself), item.folderPath};
    if (!top.folder) return std::unexpected(errno);
    if (!item.mount) return std::unexpected(ENOSYS);
    while (top.path != "/") {
        Descriptor above = Descriptor::openAt(top.folder.get(), "..", folderItself);
        if (!above || Mount::of(above) != item.mount) break;
        top = {std::move(above), std::string(parentPath(top.path))};
    }
    return top;
}

/// An administrator's ".Trash" is for everybody: sticky, so that nobody removes another's folder, and no link.
std::expected<Base, int> openShared(Base top) {
    Descriptor shared = Descriptor::openAt(top.folder.get(), ".Trash", folderItself);
    if (!shared) return std::unexpected(errno);
    struct ::stat facts{};
    if (::fstat(shared.get(), &facts) != 0) return std::unexpected(errno);
    if ((facts.st_mode & S_ISVTX) == 0) return std::unexpected(EPERM);
    return Base{std::move(shared), appended(top.path, ".Trash")};
}

/// Longest name in bytes that a folder's file system takes; some report more than the kernel does.
std::size_t longestName(const Descriptor& folder) {
    struct ::statfs volume{};
    if (::fstatfs(folder.get(), &volume) != 0 || volume.f_namelen <= 0) return NAME_MAX;
    return std::min<std::size_t>(static_cast<std::size_t>(volume.f_namelen), NAME_MAX);
}

/// The path of an open folder with all links resolved. The kernel knows it (proc(5)), which is quicker to ask than to
/// walk the path again.
std::expected<std::string, int> pathOf(const Descriptor& folder, const std::string& path) {
    std::array<char, PATH_MAX> text{};
    const std::string link = "/proc/self/fd/" + std::to_string(folder.get());
    const ::ssize_t size = ::readlink(link.c_str(), text.data(), text.size());
    if (size > 0 && static_cast<std::size_t>(size) < text.size() && text.front() == '/') {
        return std::string(text.data(), static_cast<std::size_t>(size));
    }
    std::optional<std::string> real = realPath(path);
    if (!real) return std::unexpected(errno);
    return *std::move(real);
}

}  // namespace

bool isPrivate(const Descriptor& folder) {
    struct ::stat facts{};
    if (::fstat(folder.get(), &facts) != 0) return false;
    const bool ours = facts.st_uid == ::geteuid() && (facts.st_mode & S_IWOTH) == 0;
    return ours || storesNoOwners(folder);
}

std::optional<Mount> Mount::of(const Descriptor& folder) {
    struct ::statx facts{};
    if (::statx(folder.get(), "", AT_EMPTY_PATH, STATX_MNT_ID, &facts) != 0) return std::nullopt;
    const bool isTold = (facts.stx_mask & STATX_MNT_ID) != 0;
    return Mount{makedev(facts.stx_dev_major, facts.stx_dev_minor), isTold ? facts.stx_mnt_id : 0};
}

std::string TrashItem::path() const {
    return appended(folderPath, name);
}

int TrashItem::find(std::string_view itemPath, ConfinedFolders* confined) {
    name = lastPathComponent(itemPath);
    if (name == "/" || name == "." || name == "..") return EBUSY;
    const std::string_view above = parentPath(itemPath);
    if (confined != nullptr && confined->leadsBelow(itemPath)) {
        const auto held = confined->open(above);
        const int error = held ? takeFolder(above, **held) : held.error();
        if (error != 0) return error;
    } else if (const int error = findFolder(above); error != 0) {
        return error;
    }
    return entry().examine(facts) ? 0 : errno;
}

int TrashItem::findFolder(std::string_view path) {
    struct ::stat now{};
    const bool isUsed =
        folder && path == askedPath_ && ::stat(askedPath_.c_str(), &now) == 0 && isSameFile(now, folderFacts_);
    return isUsed ? 0 : useFolder(path, Descriptor::open(std::string(path).c_str(), O_PATH | O_DIRECTORY));
}

int TrashItem::takeFolder(std::string_view path, const ConfinedFolders::Folder& held) {
    if (folder && path == askedPath_ && isSameFile(held.facts, folderFacts_)) return 0;
    return useFolder(path, Descriptor(::fcntl(held.descriptor.get(), F_DUPFD_CLOEXEC, 0)));
}

int TrashItem::useFolder(std::string_view path, Descriptor opened) {
    askedPath_.clear();
    folder = std::move(opened);
    if (!folder || ::fstat(folder.get(), &folderFacts_) != 0) return errno;
    std::string asked(path);
    auto real = pathOf(folder, asked);
    if (!real) return real.error();
    // A missing item is told before a missing right, which is asked for here since it is the folder's.
    if (!entry().examine(facts) || ::faccessat(folder.get(), ".", W_OK | X_OK, AT_EACCESS) != 0) return errno;
    folderPath = *std::move(real);
    mount = Mount::of(folder);
    askedPath_ = std::move(asked);
    return 0;
}

std::expected<TrashFolder, int> TrashFolder::open(TrashKind kind, const TrashItem& item) {
    const std::string user = std::to_string(::geteuid());
    std::string top;
    std::string name = "Trash";
    std::expected<Base, int> base;
    if (kind == TrashKind::home) {
        base = openDataFolder(item);
    } else {
        base = openVolumeTop(item);
        if (!base) return std::unexpected(base.error());
        top = appended(base->path, {});
        name = kind == TrashKind::shared ? user : ".Trash-" + user;
        if (kind == TrashKind::shared) base = openShared(std::move(*base));
    }
    if (!base) return std::unexpected(base.error());

    const auto trash = openOwn(base->folder, name.c_str());
    if (!trash) return std::unexpected(trash.error());
    auto files = openOwn(*trash, "files");
    if (!files) return std::unexpected(files.error());
    auto info = openOwn(*trash, "info");
    if (!info) return std::unexpected(info.error());
    const std::size_t maxNameBytes = longestName(*info);
    return TrashFolder{std::move(*files), std::move(*info), appended(base->path, name), std::move(top), maxNameBytes};
}

std::string TrashFolder::storedPath(const TrashItem& item) const {
    return item.path().substr(top.size());
}

}  // namespace ordovan
