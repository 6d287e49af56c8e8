#include "OrdovanCore/platform/ExclusiveMove.h"

#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/SameFile.h"

#include <cstdio>

namespace ordovan {

namespace {

/// True when the file system, not the situation, is why a call failed.
bool isUnsupported(int error) {
    return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP;
}

int renameOver(FolderEntry from, FolderEntry to) {
    return ::renameat(from.folder, from.name, to.folder, to.name) == 0 ? 0 : errno;
}

/// Takes the second name of an item away again, as long as the item keeps its first one. Where the second can not be
/// looked at, the count of names tells whether it is still there.
void takeBackLink(FolderEntry from, FolderEntry to, ::nlink_t namesBefore) {
    struct ::stat old, fresh;
    if (!from.examine(old)) return;
    const bool isOurs = to.examine(fresh) ? isSameItem(old, fresh) : errno != ENOENT && old.st_nlink > namesBefore;
    if (isOurs) to.unlink();
}

/// `names` is how many the item had just now.
int moveByLink(FolderEntry from, FolderEntry to, ::nlink_t names) {
    if (::linkat(from.folder, from.name, to.folder, to.name, 0) != 0) return errno;
    struct ::stat old, fresh;
    int error = to.examine(fresh) ? 0 : errno;
    if (error == 0) {
        // Whoever replaced or removed the old name meanwhile did so to a file that had moved already: that name is
        // theirs. A look that fails otherwise proves no such thing.
        const bool isSeen = from.examine(old);
        if (isSeen && !isSameItem(old, fresh)) return 0;
        if (isSeen && from.unlink() == 0) return 0;
        if (errno == ENOENT) return 0;
        error = errno;
    }
    takeBackLink(from, to, names);
    return error;
}

int moveFolderOverPlaceholder(FolderEntry from, FolderEntry to) {
    if (::mkdirat(to.folder, to.name, 0700) != 0) return errno;
    const int error = renameOver(from, to);
    if (error != 0) ::unlinkat(to.folder, to.name, AT_REMOVEDIR);
    return error;
}

/// An empty file made exclusively under the new name.
class Placeholder {
public:
    explicit Placeholder(FolderEntry place)
        : place_(place),
          descriptor_(Descriptor::openAt(place.folder, place.name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600)) {
        error_ = descriptor_ ? 0 : errno;
        if (error_ != 0 || ::fstat(descriptor_.get(), &made_) == 0) return;
        error_ = errno;
        // Nothing but its making has happened yet, and so an empty file of one name can be no other.
        struct ::stat there;
        if (place_.examine(there) && S_ISREG(there.st_mode) && there.st_size == 0 && there.st_nlink == 1) {
            place_.unlink();
        }
    }

    [[nodiscard]] int error() const { return error_; }

    /// 0 while the file bears its name and is empty; EEXIST once something else does or it was written to; else the
    /// errno for which that can not be told.
    [[nodiscard]] int check() const {
        struct ::stat there;
        if (!place_.examine(there)) return errno;
        return isSameItem(made_, there) && there.st_size == 0 ? 0 : EEXIST;
    }

    /// Removes the file while it bears its name and is empty. Where the name can not be looked at, the file itself
    /// tells whether it still has one.
    void takeBack() const {
        struct ::stat now;
        int error = check();
        if (error != 0 && error != EEXIST && error != ENOENT && ::fstat(descriptor_.get(), &now) == 0) {
            error = now.st_nlink != 0 && now.st_size == 0 ? 0 : EEXIST;
        }
        if (error == 0) place_.unlink();
    }

private:
    FolderEntry place_;
    Descriptor descriptor_;
    struct ::stat made_{};
    int error_ = 0;
};

int moveOverPlaceholder(FolderEntry from, FolderEntry to) {
    const Placeholder placeholder(to);
    if (placeholder.error() != 0) return placeholder.error();
    int error = placeholder.check();
    if (error == 0) error = renameOver(from, to);
    if (error != 0) placeholder.takeBack();
    return error;
}

}  // namespace

int moveExclusively(FolderEntry from, FolderEntry to, MoveWays ways) {
    int error = ENOTSUP;
    if (ways.rename) {
        if (::renameat2(from.folder, from.name, to.folder, to.name, RENAME_NOREPLACE) == 0) return 0;
        error = errno;
        if (!isUnsupported(error)) return error;
    }
    struct ::stat facts;
    if (!from.examine(facts)) return errno;
    if (ways.announce != nullptr) (*ways.announce)();
    if (S_ISDIR(facts.st_mode)) return ways.placeholder ? moveFolderOverPlaceholder(from, to) : error;
    if (ways.link) {
        error = moveByLink(from, to, facts.st_nlink);
        // EPERM is also how a file that must not be linked or renamed at all answers; the rename then says so again.
        if (!isUnsupported(error) && error != EPERM && error != EMLINK) return error;
    }
    return ways.placeholder ? moveOverPlaceholder(from, to) : error;
}

int moveDurably(FolderEntry from, FolderEntry to, MoveWays ways, int (*sync)(FolderEntry item)) {
    const int moved = moveExclusively(from, to, ways);
    if (moved != 0) return moved;
    const int synced = sync(to);
    // The old name was free a moment ago. Should it be taken now, the item stays whole under its new name.
    if (synced != 0) static_cast<void>(moveExclusively(to, from, ways));
    return synced;
}

}  // namespace ordovan
