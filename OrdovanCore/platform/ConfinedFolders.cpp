#include "OrdovanCore/platform/ConfinedFolders.h"

#include "OrdovanCore/Url.h"
#include "OrdovanCore/platform/Folders.h"
#include "OrdovanCore/platform/SameFile.h"

#include <linux/openat2.h>
#include <sys/syscall.h>

#include <algorithm>

namespace ordovan {

namespace {

constexpr int folderItself = O_PATH | O_DIRECTORY;

/// openat2(2), which the C library does not offer; again after an interrupting signal. On failure the descriptor is
/// empty and errno tells.
Descriptor openBeneath(int root, const char* path, int flags) {
    constexpr int mostTries = 100;
    ::open_how how{};
    how.flags = static_cast<unsigned>(flags | O_CLOEXEC);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    for (int tries = 1;; ++tries) {
        const long descriptor = ::syscall(SYS_openat2, root, path, &how, sizeof how);
        if (descriptor >= 0) return Descriptor(static_cast<int>(descriptor));
        // EAGAIN: something was renamed while the kernel followed a "..", and it can not vouch for the result.
        if (errno != EINTR && (errno != EAGAIN || tries == mostTries)) return {};
    }
}

bool isLink(int folder, const char* name) {
    struct ::stat facts;
    return ::fstatat(folder, name, &facts, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(facts.st_mode);
}

}  // namespace

ConfinedFolders::ConfinedFolders(std::string_view root, Entering entering) : entering_(entering) {
    while (root.size() > 1 && root.ends_with('/')) root.remove_suffix(1);
    root_.path = root;
    prefix_ = root == "/" ? "/" : root_.path + '/';
}

bool ConfinedFolders::leadsBelow(std::string_view path) const noexcept {
    return path.starts_with(prefix_) && !behindRoot(path).empty();
}

std::string_view ConfinedFolders::behindRoot(std::string_view path) const noexcept {
    path.remove_prefix(std::min(prefix_.size(), path.size()));
    while (path.starts_with('/')) path.remove_prefix(1);
    return path;
}

std::expected<const ConfinedFolders::Folder*, int> ConfinedFolders::open(std::string_view path) {
    if (behindRoot(path).empty()) {
        const int error = openRoot();
        if (error != 0) return std::unexpected(error);
        return &root_;
    }
    Slot* slot = find(path);
    if (slot != nullptr && leadsTo(slot->folder)) {
        slot->usedAt = ++uses_;
        return &slot->folder;
    }
    const int error = openRoot();
    if (error != 0) return std::unexpected(error);
    return take(slot, path);
}

std::expected<const ConfinedFolders::Folder*, int> ConfinedFolders::openAnew(std::string_view path) {
    const bool isOpen = static_cast<bool>(root_.descriptor) && !behindRoot(path).empty();
    return isOpen ? take(find(path), path) : open(path);
}

/// Enters a folder and keeps it in its slot, or in the one that was not used for the longest time.
std::expected<const ConfinedFolders::Folder*, int> ConfinedFolders::take(Slot* slot, std::string_view path) {
    auto entered = enter(behindRoot(path));
    if (!entered) return std::unexpected(entered.error());
    if (slot == nullptr) slot = &*std::ranges::min_element(slots_, {}, &Slot::usedAt);
    slot->usedAt = 0;
    slot->folder.descriptor = *std::move(entered);
    if (::fstat(slot->folder.descriptor.get(), &slot->folder.facts) != 0) return std::unexpected(errno);
    slot->folder.path = path;
    slot->usedAt = ++uses_;
    return &slot->folder;
}

const ConfinedFolders::Folder* ConfinedFolders::held(std::string_view path) {
    if (path == root_.path) return root_.descriptor ? &root_ : nullptr;
    Slot* const slot = find(path);
    if (slot == nullptr) return nullptr;
    slot->usedAt = ++uses_;
    return &slot->folder;
}

void ConfinedFolders::forget(std::string_view path) {
    if (path == root_.path) root_.descriptor = {};
    if (Slot* const slot = find(path)) *slot = {};
}

ConfinedFolders::Slot* ConfinedFolders::find(std::string_view path) {
    const auto found =
        std::ranges::find_if(slots_, [&](const Slot& slot) { return slot.usedAt != 0 && slot.folder.path == path; });
    return found == slots_.end() ? nullptr : &*found;
}

bool ConfinedFolders::leadsTo(const Folder& folder) const {
    // Links on the way to the root are not this object's concern.
    const int flags = &folder == &root_ ? 0 : AT_SYMLINK_NOFOLLOW;
    struct ::stat there;
    return ::fstatat(AT_FDCWD, folder.path.c_str(), &there, flags) == 0 && isSameItem(there, folder.facts);
}

int ConfinedFolders::openRoot() {
    if (root_.descriptor && leadsTo(root_)) return 0;
    root_.descriptor = Descriptor::open(root_.path.c_str(), folderItself);
    if (root_.descriptor && ::fstat(root_.descriptor.get(), &root_.facts) == 0) return 0;
    const int error = errno;
    root_.descriptor = {};
    return error;
}

std::expected<Descriptor, int> ConfinedFolders::enter(std::string_view piecesBehindRoot) {
    if (entering_ == Entering::atOnce) {
        Descriptor folder = openBeneath(root_.descriptor.get(), std::string(piecesBehindRoot).c_str(), folderItself);
        if (folder) return folder;
        if (errno == ENOSYS || errno == EPERM) {
            entering_ = Entering::stepByStep;
        } else if (errno != EAGAIN) {
            return std::unexpected(errno);
        }
    }
    return enterStepByStep(piecesBehindRoot);
}

std::expected<Descriptor, int> ConfinedFolders::enterStepByStep(std::string_view piecesBehindRoot) const {
    Descriptor folder;
    std::string piece;
    for (std::size_t begin = 0; begin < piecesBehindRoot.size();) {
        const std::size_t end = std::min(piecesBehindRoot.find('/', begin), piecesBehindRoot.size());
        piece = piecesBehindRoot.substr(begin, end - begin);
        begin = end + 1;
        if (piece.empty() || piece == ".") continue;
        if (piece == "..") return std::unexpected(EXDEV);
        const int above = folder ? folder.get() : root_.descriptor.get();
        Descriptor next = Descriptor::openAt(above, piece.c_str(), folderItself | O_NOFOLLOW);
        if (!next) {
            const int error = errno;
            // A link itself is what would be opened, and is no folder.
            return std::unexpected(error == ENOTDIR && isLink(above, piece.c_str()) ? ELOOP : error);
        }
        folder = std::move(next);
    }
    return folder;
}

int ConfinedFolders::openFile(std::string_view path, RegularFile& file) {
    const std::string pieces(behindRoot(path));
    int error = root_.descriptor ? 0 : openRoot();
    if (error != 0) return error;
    struct ::stat seen;
    if (!FolderEntry(root_.descriptor.get(), pieces.c_str()).examine(seen)) return errno;
    if (!S_ISREG(seen.st_mode)) return EINVAL;
    if (entering_ == Entering::atOnce) {
        error = file.openWith([&](int flags) { return openBeneath(root_.descriptor.get(), pieces.c_str(), flags); });
        // EBUSY stands for EAGAIN, of which there are two reasons.
        if (error != ENOSYS && error != EPERM && error != EBUSY) return error;
    }
    const std::string name(lastPathComponent(path));
    const auto folder = open(parentPath(path));
    return folder ? file.open(FolderEntry((*folder)->descriptor.get(), name.c_str())) : folder.error();
}

int ConfinedFolders::make(std::string_view path, ::mode_t mode) {
    const auto there = open(path);
    if (there) return 0;
    if (there.error() == ENOENT) {
        const std::string_view above = parentPath(path);
        const int error = leadsBelow(above) ? make(above, mode) : open(above) ? 0 : makeFolders(root_.path, mode);
        return error == 0 ? makeOne(path, mode) : error;
    }
    // What is no folder stands on the way, or has the very name.
    return there.error() == ENOTDIR && open(parentPath(path)) ? EEXIST : there.error();
}

int ConfinedFolders::makeOne(std::string_view path, ::mode_t mode) {
    const auto above = open(parentPath(path));
    if (!above) return above.error();
    const std::string name(lastPathComponent(path));
    const int folder = (*above)->descriptor.get();
    if (::mkdirat(folder, name.c_str(), mode) == 0) {
        // Else a file could reach the disk in a folder that does not, and leave its old place.
        return keepsOrder(folder) ? 0 : syncFolderOf({folder, name.c_str()});
    }
    if (errno != EEXIST) return errno;
    // Another process may have made it meanwhile.
    const auto there = open(path);
    return there ? 0 : there.error() == ENOTDIR ? EEXIST : there.error();
}

}  // namespace ordovan
