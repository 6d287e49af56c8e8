#include "OrdovanCore/platform/TrashSearch.h"

#include "OrdovanCore/TrashPlace.h"
#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/RealPath.h"
#include "OrdovanCore/platform/SystemPath.h"
#include "OrdovanCore/platform/TrashFolder.h"
#include "OrdovanCore/platform/TrashNaming.h"
#include "OrdovanCore/platform/UserDatabase.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <expected>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>

namespace ordovan {

namespace {

std::string joined(std::string_view folder, std::string_view name) {
    return std::string(folder == "/" ? "" : folder).append("/").append(name);
}

/// The highest folder above a resolved path that is on its device and in its mount.
std::string volumeTop(std::string path) {
    constexpr int folderItself = O_PATH | O_DIRECTORY | O_NOFOLLOW;
    const auto mountOf = [](const std::string& folder) {
        const Descriptor opened = Descriptor::open(folder.c_str(), folderItself);
        return opened ? Mount::of(opened) : std::nullopt;
    };
    const auto mount = mountOf(path);
    while (mount && path != "/") {
        std::string above(parentPath(path));
        if (mountOf(above) != mount) break;
        path = std::move(above);
    }
    return path;
}

/// Whether there may be a Trash in an administrator's ".Trash": that is a sticky folder which lets the user in, and no
/// link.
bool mayHoldOurs(const std::string& shared) {
    struct ::stat facts;
    if (::lstat(shared.c_str(), &facts) != 0) return errno != ENOENT;
    return S_ISDIR(facts.st_mode) && (facts.st_mode & S_ISVTX) != 0 &&
           ::faccessat(AT_FDCWD, shared.c_str(), X_OK, AT_EACCESS) == 0;
}

/// A name in a Trash without the number in front of the extension ("report 2.pdf"); empty where it has none.
std::string withoutNumber(std::string_view item) {
    const std::string_view extension = pathExtension(item);
    const std::string_view tail = extension.empty() ? extension : item.substr(item.size() - extension.size() - 1);
    const std::string_view stem = item.substr(0, item.size() - tail.size());
    const std::size_t end = stem.find_last_not_of("0123456789");
    if (end == std::string_view::npos || end + 1 == stem.size() || stem[end] != ' ') return {};
    return std::string(stem.substr(0, end)).append(tail);
}

bool isThere(const Url& url) {
    const SystemPath path(url);
    struct ::stat facts;
    return path.error() == 0 && ::lstat(path.text(), &facts) == 0;
}

/// The places asked for, by their paths with all links resolved, and the folders of Trash that may tell of them.
class Places {
public:
    explicit Places(std::span<const Url> originals) {
        const std::string user = std::to_string(::geteuid());
        if (const std::string data = userDataFolder(); !data.empty()) trashes_.insert(joined(data, "Trash"));
        std::string lastFolder;
        std::string resolvedFolder;
        for (const Url& original : originals) {
            const std::string_view folder = parentPath(original.path());
            if (folder != lastFolder) {
                lastFolder = folder;
                resolvedFolder = realPath(folder).value_or(lastFolder);
                if (folders_.insert(resolvedFolder).second) {
                    const std::string top = volumeTop(resolvedFolder);
                    trashes_.insert(joined(top, ".Trash-" + user));
                    const std::string shared = joined(top, ".Trash");
                    if (mayHoldOurs(shared)) trashes_.insert(joined(shared, user));
                }
            }
            originals_.emplace(joined(resolvedFolder, original.lastPathComponent()), original);
            byName_.emplace(trashedName(original.lastPathComponent(), 1), original);
        }
    }

    [[nodiscard]] const std::set<std::string>& trashes() const { return trashes_; }
    /// The place asked for at this resolved path, or null.
    [[nodiscard]] const Url* find(const std::string& path) const {
        const auto found = originals_.find(path);
        return found == originals_.end() ? nullptr : &found->second;
    }
    /// The places asked for from which an item of this name in a Trash may have come.
    [[nodiscard]] std::vector<Url> thatMayBe(std::string_view item) const {
        std::vector<Url> result;
        for (const std::string& name : {std::string(item), withoutNumber(item)}) {
            const auto [begin, end] = byName_.equal_range(name);
            std::transform(begin, end, std::back_inserter(result), [](const auto& each) { return each.second; });
        }
        return result;
    }

private:
    std::set<std::string> trashes_;
    std::set<std::string> folders_;
    std::unordered_map<std::string, Url> originals_;
    std::unordered_multimap<std::string, Url> byName_;  // by the name that a Trash gives first
};

/// The beginning of an info file, which holds all that programs write into one; empty for what is none.
std::string textOf(int folder, const char* name) {
    constexpr std::size_t longest = 64 * 1024;
    const Descriptor file = Descriptor::openAt(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    struct ::stat facts;
    if (!file || ::fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode)) return {};
    std::string text(std::min<std::size_t>(longest, static_cast<std::size_t>(facts.st_size)), '\0');
    const ::ssize_t got = ::pread(file.get(), text.data(), text.size(), 0);
    text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return text;
}

/// Opens the info folder of a Trash of ours. ENOENT where there is none, which is also what a link or a folder of
/// another user amounts to: nothing of ours was ever put there.
std::expected<Descriptor, int> openInfoFolder(const std::string& trash) {
    Descriptor above;  // none at first: the path of a Trash is absolute
    for (const char* const name : {trash.c_str(), "info"}) {
        Descriptor folder = Descriptor::openAt(above.get(), name, O_PATH | O_DIRECTORY | O_NOFOLLOW);
        if (!folder) return std::unexpected(errno == ENOTDIR || errno == ELOOP ? ENOENT : errno);
        if (!isPrivate(folder)) return std::unexpected(ENOENT);
        above = std::move(folder);
    }
    Descriptor opened = Descriptor::openAt(above.get(), ".", O_RDONLY | O_DIRECTORY);
    if (!opened) return std::unexpected(errno);
    return opened;
}

/// Reads one Trash; 0 or the errno. One that is not there holds nothing.
int search(const std::string& trash, const Places& places, std::vector<TrashedFile>& found) {
    const std::string infoFolder = joined(trash, "info");
    auto opened = openInfoFolder(trash);
    if (!opened) return opened.error() == ENOENT ? 0 : opened.error();
    const std::unique_ptr<::DIR, int (*)(::DIR*)> listing(::fdopendir(opened->get()), ::closedir);
    if (listing == nullptr) return errno;
    const int folder = opened->release();
    for (;;) {
        errno = 0;
        const ::dirent* entry = ::readdir(listing.get());
        if (entry == nullptr) return errno;
        const std::string_view name = entry->d_name;
        if (!name.ends_with(trashInfoSuffix)) continue;
        const std::string info = joined(infoFolder, name);
        const std::string text = textOf(folder, entry->d_name);
        const std::string_view item = name.substr(0, name.size() - trashInfoSuffix.size());
        const Url there = Url::file(joined(joined(trash, "files"), item));
        if (const auto place = originalPlace(info, text)) {
            if (const Url* original = places.find(*place)) found.push_back({*original, Url::file(info), there});
        } else if (isThere(there)) {
            // Names and sizes reach the disk before contents do: after a power cut an item may stand beside an info
            // file that is empty or all zeros. What the item is, its identity has to tell.
            for (const Url& original : places.thatMayBe(item)) found.push_back({original, Url::file(info), there});
        }
    }
}

/// Whether an info file, which may have been found a while ago, still tells of this place, or of none.
bool stillTellsOf(const std::string& text, const TrashedFile& file) {
    const auto place = originalPlace(std::string(file.info.path()), text);
    return !place || Places({&file.original, 1}).find(*place) != nullptr;
}

/// Returns 0 or the errno: ENOTEMPTY where there is an item.
int removeOrphan(const char* item, const char* info, const TrashedFile& orphan) {
    struct ::stat facts;
    if (::lstat(item, &facts) == 0) return ENOTEMPTY;
    if (errno != ENOENT) return errno;
    const std::string text = textOf(AT_FDCWD, info);
    if (!stillTellsOf(text, orphan)) return ENOTEMPTY;
    if (::unlink(info) != 0) return errno == ENOENT ? 0 : errno;
    if (::lstat(item, &facts) != 0) return 0;
    // Another program that was just trashing the file has come to move it: it needs what it had written down.
    const Descriptor again = Descriptor::open(info, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (again && ::write(again.get(), text.data(), text.size()) < 0) return errno;
    return ENOTEMPTY;
}

}  // namespace

OrdovanResult<std::vector<TrashedFile>> findInTrash(std::span<const Url> originals) {
    const Places places(originals);
    std::vector<TrashedFile> found;
    for (const std::string& trash : places.trashes()) {
        if (const int error = search(trash, places, found); error != 0) {
            return std::unexpected(OrdovanSystemError::posix(error));
        }
    }
    return found;
}

OrdovanResult<void> removeTrashInfo(const TrashedFile& orphan) {
    const SystemPath item(orphan.item), info(orphan.info), original(orphan.original);
    for (const SystemPath* path : {&item, &info, &original}) {
        if (path->error() != 0) return std::unexpected(OrdovanSystemError::posix(path->error()));
    }
    const int error = removeOrphan(item.text(), info.text(), orphan);
    if (error != 0) return std::unexpected(OrdovanSystemError::posix(error));
    return {};
}

}  // namespace ordovan
