#include "OrdovanCore/platform/Trash.h"

#include "OrdovanCore/platform/ExclusiveMove.h"
#include "OrdovanCore/platform/SystemPath.h"
#include "OrdovanCore/platform/TrashFolder.h"
#include "OrdovanCore/platform/TrashNaming.h"

#include <sys/vfs.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace ordovan {

namespace {

constexpr unsigned maxAttempts = 1000;

std::unexpected<OrdovanSystemError> failure(int error) {
    return std::unexpected(OrdovanSystemError::posix(error));
}

bool sameItem(const struct ::stat& a, const struct ::stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && (a.st_mode & S_IFMT) == (b.st_mode & S_IFMT);
}

bool examine(const Descriptor& folder, const std::string& name, struct ::stat& facts) {
    return ::fstatat(folder.get(), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) == 0;
}

/// An item's info file, made by us; taken away again at the end unless it was kept.
class InfoFile {
public:
    /// Makes it exclusively and puts it on disk. Returns 0 or the errno.
    int make(const Descriptor& folder, std::string name, std::string_view text) {
        Descriptor file =
            Descriptor::openAt(folder.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
        if (!file) return errno;
        folder_ = &folder;
        name_ = std::move(name);
        file_ = std::move(file);
        while (!text.empty()) {
            const ::ssize_t written = ::write(file_.get(), text.data(), text.size());
            if (written < 0 && errno != EINTR) return errno;
            if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
        }
        // Without it a crash could leave the item in the Trash beside an empty info file.
        return ::fsync(file_.get()) == 0 ? 0 : errno;
    }
    void keep() { folder_ = nullptr; }

    InfoFile() = default;
    ~InfoFile() {
        struct ::stat ours{}, there{};
        if (folder_ == nullptr || ::fstat(file_.get(), &ours) != 0) return;
        if (examine(*folder_, name_, there) && sameItem(ours, there)) ::unlinkat(folder_->get(), name_.c_str(), 0);
    }
    InfoFile(const InfoFile&) = delete;
    InfoFile& operator=(const InfoFile&) = delete;

private:
    const Descriptor* folder_ = nullptr;
    std::string name_;
    Descriptor file_;
};

/// True when the item has left its place; another one that has its name by now is not it.
bool hasLeft(const TrashItem& item) {
    struct ::stat facts{};
    return !examine(item.folder, item.name, facts) ? errno == ENOENT : !sameItem(facts, item.facts);
}

/// Renames the item into the Trash without replacing anything. Returns 0 or the errno.
int rename(const TrashItem& item, const TrashFolder& trash, const std::string& name) {
    if (::renameat2(item.folder.get(), item.name.c_str(), trash.files.get(), name.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    int error = errno;
    if (error == EINVAL || error == ENOSYS || error == EOPNOTSUPP) {
        // The file system can not do that in one call. The other ways take paths, and these two lead through our
        // open folders (proc(5)).
        const std::string open = "/proc/self/fd/";
        const std::string from = open + std::to_string(item.folder.get()) + '/' + item.name;
        const std::string to = open + std::to_string(trash.files.get()) + '/' + name;
        error = moveExclusively(from.c_str(), to.c_str(), {.rename = false});
    }
    if (error == 0) return 0;
    // A network volume may have done it and lost the reply.
    struct ::stat there{};
    return examine(trash.files, name, there) && sameItem(there, item.facts) && hasLeft(item) ? 0 : error;
}

/// Longest name in bytes that the Trash's file system takes; some report more than the kernel does.
std::size_t maxNameBytes(const TrashFolder& trash) {
    struct ::statfs volume{};
    if (::fstatfs(trash.info.get(), &volume) != 0 || volume.f_namelen <= 0) return NAME_MAX;
    return std::min<std::size_t>(static_cast<std::size_t>(volume.f_namelen), NAME_MAX);
}

/// Puts an item into a Trash and returns the name it got there, or an errno; then the item is where it was.
std::expected<std::string, int> place(const TrashItem& item, const TrashFolder& trash) {
    const std::string text = trashInfoText(trash.itemPath, std::time(nullptr));
    const std::size_t longest = maxNameBytes(trash);
    for (unsigned attempt = 1; attempt <= maxAttempts; ++attempt) {
        std::string name = trashedName(item.name, attempt, longest);
        // Where one name was taken many may be, and this is quicker than to try. The rename has the last word.
        struct ::stat taken{};
        if (attempt > 1 && examine(trash.files, name, taken)) continue;
        InfoFile info;
        int error = info.make(trash.info, name + std::string(trashInfoSuffix), text);
        if (error == 0) error = rename(item, trash, name);
        if (error == 0) {
            info.keep();
            return name;
        }
        // Taken: by another info file, or by an item that has none.
        if (error != EEXIST) return std::unexpected(error);
    }
    return std::unexpected(EEXIST);
}

/// Looks whether an item that is said to be in the Trash is there and nowhere else.
OrdovanResult<Url> proved(const TrashItem& item, const TrashFolder& trash, const std::string& name) {
    struct ::stat there{};
    const bool landed = examine(trash.files, name, there) && (there.st_mode & S_IFMT) == (item.facts.st_mode & S_IFMT);
    if (!landed || !hasLeft(item)) {
        return std::unexpected(OrdovanSystemError::cocoa(OrdovanSystemError::fileWriteUnknown));
    }
    return Url::file(trash.path + "/files/" + name);
}

}  // namespace

OrdovanResult<Url> moveToTrash(const Url& url) {
    const SystemPath path(url);
    if (path.error() != 0) return failure(path.error());
    const auto item = TrashItem::open(path.view());
    if (!item) return failure(item.error());

    int homeError = 0;
    int lastError = 0;
    for (const TrashKind kind : trashKinds) {
        const auto trash = TrashFolder::open(kind, *item);
        if (trash) {
            const auto name = place(*item, *trash);
            if (name) return proved(*item, *trash, *name);
            if (name.error() != EXDEV) return failure(name.error());
        }
        lastError = trash ? EXDEV : trash.error();
        if (kind == TrashKind::home) homeError = lastError;
    }
    // Where the home Trash should have served, what is wrong with it says more than the lack of another.
    return failure(homeError == EXDEV ? lastError : homeError);
}

}  // namespace ordovan
