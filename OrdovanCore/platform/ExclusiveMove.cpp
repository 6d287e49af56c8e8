#include "OrdovanCore/platform/ExclusiveMove.h"

#include "OrdovanCore/platform/Descriptor.h"

#include <sys/stat.h>

#include <cstdio>

namespace ordovan {

namespace {

bool examine(const char* path, struct ::stat& facts) {
    return ::lstat(path, &facts) == 0;
}

bool sameItem(const struct ::stat& a, const struct ::stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && (a.st_mode & S_IFMT) == (b.st_mode & S_IFMT);
}

/// True when the file system, not the situation, is why a call failed.
bool isUnsupported(int error) {
    return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP;
}

int renameOver(const char* from, const char* to) {
    return ::rename(from, to) == 0 ? 0 : errno;
}

int moveByLink(const char* from, const char* to) {
    if (::linkat(AT_FDCWD, from, AT_FDCWD, to, 0) != 0) return errno;
    struct ::stat old, fresh;
    if (!examine(to, fresh)) return errno;
    // Whoever replaced or removed the old name meanwhile did so to a file that had moved already: that name is theirs.
    if (!examine(from, old) || !sameItem(old, fresh)) return 0;
    if (::unlink(from) == 0 || errno == ENOENT) return 0;
    const int error = errno;
    struct ::stat now;
    if (examine(to, now) && sameItem(now, old)) ::unlink(to);
    return error;
}

int moveFolderOverPlaceholder(const char* from, const char* to) {
    if (::mkdir(to, 0700) != 0) return errno;
    const int error = renameOver(from, to);
    if (error != 0) ::rmdir(to);
    return error;
}

int moveOverPlaceholder(const char* from, const char* to) {
    const Descriptor placeholder = Descriptor::open(to, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!placeholder) return errno;
    struct ::stat ours, there;
    if (::fstat(placeholder.get(), &ours) != 0) return errno;
    const auto stillOursAndEmpty = [&] { return examine(to, there) && sameItem(ours, there) && there.st_size == 0; };
    if (!stillOursAndEmpty()) return EEXIST;
    const int error = renameOver(from, to);
    if (error != 0 && stillOursAndEmpty()) ::unlink(to);
    return error;
}

}  // namespace

int moveExclusively(const char* from, const char* to, MoveWays ways) {
    int error = ENOTSUP;
    if (ways.rename) {
        if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
        error = errno;
        if (!isUnsupported(error)) return error;
    }
    struct ::stat facts;
    if (!examine(from, facts)) return errno;
    if (S_ISDIR(facts.st_mode)) return ways.placeholder ? moveFolderOverPlaceholder(from, to) : error;
    if (ways.link) {
        error = moveByLink(from, to);
        // EPERM is also how a file that must not be linked or renamed at all answers; the rename then says so again.
        if (!isUnsupported(error) && error != EPERM && error != EMLINK) return error;
    }
    return ways.placeholder ? moveOverPlaceholder(from, to) : error;
}

int moveDurably(const char* from, const char* to, MoveWays ways, int (*sync)(const char* item)) {
    const int moved = moveExclusively(from, to, ways);
    if (moved != 0) return moved;
    const int synced = sync(to);
    // The old name was free a moment ago. Should it be taken now, the item stays whole under its new name.
    if (synced != 0) static_cast<void>(moveExclusively(to, from, ways));
    return synced;
}

}  // namespace ordovan
