#include "OrdovanCore/platform/TrashFolder.h"

#include "OrdovanCore/Url.h"
#include "OrdovanCore/platform/Folders.h"
#include "OrdovanCore/platform/RealPath.h"

#include <linux/magic.h>
#include <pwd.h>
#include <sys/vfs.h>

#include <cstdlib>
#include <optional>
#include <vector>

namespace ordovan {

namespace {

std::string appended(std::string_view folder, std::string_view name) {
    return std::string(folder == "/" ? "" : folder).append("/").append(name);
}

constexpr int folderItself = O_PATH | O_DIRECTORY | O_NOFOLLOW;

/// Where a folder is mounted: a rename stays within one device and one mount.
struct Mount {
    dev_t device = 0;
    std::uint64_t id = 0;  ///< 0 where the kernel does not tell
    friend bool operator==(const Mount&, const Mount&) = default;
};

std::optional<Mount> mountOf(const Descriptor& folder) {
    struct ::stat facts{};
    if (::fstat(folder.get(), &facts) != 0) return std::nullopt;
    struct ::statx more{};
    const bool told =
        ::statx(folder.get(), "", AT_EMPTY_PATH, STATX_MNT_ID, &more) == 0 && (more.stx_mask & STATX_MNT_ID) != 0;
    return Mount{facts.st_dev, told ? more.stx_mnt_id : 0};
}

/// True for file systems that give every file the same owner: there, ownership tells nothing.
bool storesNoOwners(const Descriptor& folder) {
    constexpr long exfatMagic = 0x2011BAB0;  // EXFAT_SUPER_MAGIC, not in older kernel headers
    struct ::statfs volume{};
    return ::fstatfs(folder.get(), &volume) == 0 && (volume.f_type == MSDOS_SUPER_MAGIC || volume.f_type == exfatMagic);
}

bool isPrivate(const Descriptor& folder) {
    struct ::stat facts{};
    if (::fstat(folder.get(), &facts) != 0) return false;
    const bool ours = facts.st_uid == ::geteuid() && (facts.st_mode & S_IWOTH) == 0;
    return ours || storesNoOwners(folder);
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
    if (isPrivate(folder)) return folder;
    // A volume that gives new folders to somebody else is not for a Trash.
    if (made) ::unlinkat(above.get(), name, AT_REMOVEDIR);
    return std::unexpected(EPERM);
}

std::string homeFolder() {
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == '/') return home;
    std::vector<char> space(1 << 14);
    struct ::passwd entry{};
    struct ::passwd* found = nullptr;
    if (::getpwuid_r(::geteuid(), &entry, space.data(), space.size(), &found) != 0 || found == nullptr) return {};
    return entry.pw_dir;
}

/// The folder of the user's data (XDG Base Directory Specification: a relative path is to be ignored); empty where
/// the user has no home.
std::string dataFolder() {
    const char* set = std::getenv("XDG_DATA_HOME");
    if (set != nullptr && *set == '/') return set;
    std::string home = homeFolder();
    if (!home.starts_with('/')) return {};
    return home + "/.local/share";
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
    std::string path = dataFolder();
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
    const std::optional<Mount> mount = mountOf(top.folder);
    if (!mount) return std::unexpected(errno);
    while (top.path != "/") {
        Descriptor above = Descriptor::openAt(top.folder.get(), "..", folderItself);
        if (!above || mountOf(above) != mount) break;
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

}  // namespace

std::expected<TrashItem, int> TrashItem::open(std::string_view path) {
    TrashItem item;
    item.name = lastPathComponent(path);
    if (item.name == "/" || item.name == "." || item.name == "..") return std::unexpected(EBUSY);
    const std::string folder(parentPath(path));
    item.folder = Descriptor::open(folder.c_str(), O_PATH | O_DIRECTORY);
    if (!item.folder) return std::unexpected(errno);
    std::optional<std::string> real = realPath(folder);
    if (!real) return std::unexpected(errno);
    item.folderPath = std::move(*real);
    if (::fstatat(item.folder.get(), item.name.c_str(), &item.facts, AT_SYMLINK_NOFOLLOW) != 0 ||
        ::faccessat(item.folder.get(), ".", W_OK | X_OK, AT_EACCESS) != 0) {
        return std::unexpected(errno);
    }
    return item;
}

std::expected<TrashFolder, int> TrashFolder::open(TrashKind kind, const TrashItem& item) {
    const std::string user = std::to_string(::geteuid());
    std::string itemPath = appended(item.folderPath, item.name);
    std::string name = "Trash";
    std::expected<Base, int> base;
    if (kind == TrashKind::home) {
        base = openDataFolder(item);
    } else {
        base = openVolumeTop(item);
        if (!base) return std::unexpected(base.error());
        itemPath.erase(0, appended(base->path, {}).size());
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
    return TrashFolder{std::move(*files), std::move(*info), appended(base->path, name), std::move(itemPath)};
}

}  // namespace ordovan
