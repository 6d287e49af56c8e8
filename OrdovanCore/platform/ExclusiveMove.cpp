#include "OrdovanCore/platform/ExclusiveMove.h"

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/MovedItem.h"
#include "OrdovanCore/platform/SameFile.h"

#include <cstdio>
#include <string>
#include <string_view>

namespace ordovan {

namespace {

/// True when the file system, not the situation, is why a call failed.
bool isUnsupported(int error) {
    return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP;
}

int renameOver(FolderEntry from, FolderEntry to) {
    return ::renameat(from.folder, from.name, to.folder, to.name) == 0 ? 0 : errno;
}

/// What came of one way: 0 or the errno, and whether something that it made may be left.
struct Outcome {
    int error = 0;
    bool leavesSomething = false;
};

/// Whether nothing bears a name, for certain.
bool isFree(FolderEntry place) {
    struct ::stat there;
    return !place.examine(there) && errno == ENOENT;
}

/// Whether an item may have got another name since it had so many.
bool mayHaveMoreNames(FolderEntry item, ::nlink_t namesBefore) {
    struct ::stat now;
    return !item.examine(now) || now.st_nlink > namesBefore;
}

/// Whether looks at two names, the second at `place`, were looks at one file. Where numbers are made up for each name,
/// the size and the time tell.
bool isOneFile(const struct ::stat& a, const struct ::stat& b, FolderEntry place) {
    return isSameItem(a, b) || isMoved(a, b, place);
}

/// Takes the second name of an item away again, as long as the item keeps its first one. Where the second can not be
/// looked at, the count of names tells whether it is still there. False when it may be.
bool takeBackLink(FolderEntry from, FolderEntry to, ::nlink_t namesBefore) {
    struct ::stat old, fresh;
    if (!from.examine(old)) return false;
    const bool isSeen = to.examine(fresh);
    const bool isOurs = isSeen ? isSameItem(old, fresh) : errno != ENOENT && old.st_nlink > namesBefore;
    if (isOurs) return to.unlink() == 0 || errno == ENOENT;
    return !isSeen || !isOneFile(old, fresh, to);
}

/// Gives what goes by the hidden name the name that it had, if that is free. False when it has it not.
bool giveBack(FolderEntry hidden, FolderEntry name) {
    bool isBack = ::linkat(hidden.folder, hidden.name, name.folder, name.name, 0) == 0;
    const int error = isBack ? 0 : errno;
    if (!isBack) {
        struct ::stat there, ours;
        if (name.examine(there)) {
            isBack = hidden.examine(ours) && isSameItem(there, ours);
        } else if (errno == ENOENT && error != EEXIST) {
            // Another user's file may be one that must not be linked.
            return renameOver(hidden, name) == 0;
        }
    }
    if (isBack) hidden.unlink();
    return isBack;
}

/// Takes the old name from an item that has a second one, which was seen as `fresh`.
Outcome removeOldName(FolderEntry from, FolderEntry to, const struct ::stat& fresh, ::nlink_t names) {
    // Whoever replaced or removed the old name meanwhile did so to a file that had moved already: that name is
    // theirs. A look that fails otherwise proves no such thing.
    struct ::stat old;
    const bool isSeen = from.examine(old);
    if (isSeen && !isOneFile(old, fresh, to)) return {};
    if (isSeen && from.unlink() == 0) return {};
    if (errno == ENOENT) return {};
    const int error = errno;
    const bool isTakenBack = takeBackLink(from, to, names);
    return {error, !isTakenBack};
}

/// The same by way of a hidden name, which nobody else replaces between the last look and the removal.
Outcome hideOldName(FolderEntry from, FolderEntry hidden, FolderEntry to, const struct ::stat& fresh, ::nlink_t names) {
    int error = renameOver(from, hidden);
    struct ::stat old;
    if (!hidden.examine(old)) {
        const int noSight = errno;
        if (noSight == ENOENT && (error == 0 || error == ENOENT)) return {};
        if (error == 0) {
            giveBack(hidden, from);
            error = noSight;
        }
        const bool isTakenBack = takeBackLink(from, to, names);
        return {error, !isTakenBack || !isFree(hidden)};
    }
    if (!isOneFile(old, fresh, to)) {
        giveBack(hidden, from);
        return {0, !isFree(hidden)};
    }
    if (hidden.unlink() == 0 || errno == ENOENT) return {};
    error = errno;
    // With its old name taken by another the item has moved, whatever else it is called.
    if (!giveBack(hidden, from)) return {0, true};
    const bool isTakenBack = takeBackLink(from, to, names);
    return {error, !isTakenBack || !isFree(hidden)};
}

/// `was` is what the item was just now; `hidden` the name by which it loses the old one, empty for none.
Outcome moveByLink(FolderEntry from, FolderEntry to, const struct ::stat& was, const std::string& hidden) {
    const int error = ::linkat(from.folder, from.name, to.folder, to.name, 0) == 0 ? 0 : errno;
    struct ::stat fresh;
    if (!to.examine(fresh)) {
        const int noSight = errno;
        if (noSight == ENOENT) return {error == 0 ? noSight : error};
        // What stood there already is not to be touched unseen.
        if (error == EEXIST) return {error, mayHaveMoreNames(from, was.st_nlink)};
        const bool isTakenBack = takeBackLink(from, to, was.st_nlink);
        return {error == 0 ? noSight : error, !isTakenBack};
    }
    // The reply may have been lost, or be that to a question asked twice: one name more tells that it was done. Where
    // numbers are made up for each name, what looks like the item may be another file, and stays.
    const bool isSame = isSameItem(was, fresh);
    const bool isMade = error == 0 || (isSame && fresh.st_nlink == was.st_nlink + 1);
    if (!isMade) return {error, error != EEXIST && !isSame && isMoved(was, fresh, to)};
    if (hidden.empty()) return removeOldName(from, to, fresh, was.st_nlink);
    return hideOldName(from, {from.folder, hidden.c_str()}, to, fresh, was.st_nlink);
}

/// A fresh hidden name of ours beside an item's.
std::string hiddenNameBeside(FolderEntry item) {
    const std::string_view path = item.name;
    const std::string_view name = lastPathComponent(path);
    const Url hidden = OrdovanPartialName::beside(Url::file(std::string("/").append(name)));
    return std::string(path.substr(0, path.size() - name.size())).append(hidden.lastPathComponent());
}

/// To a hidden name, which nobody else makes up.
int moveToHiddenName(FolderEntry from, FolderEntry to) {
    struct ::stat there;
    if (to.examine(there)) return EEXIST;
    return errno == ENOENT ? renameOver(from, to) : errno;
}

Outcome moveFolderOverPlaceholder(FolderEntry from, FolderEntry to) {
    if (::mkdirat(to.folder, to.name, 0700) != 0) return {errno};
    const int error = renameOver(from, to);
    if (error == 0) return {};
    const bool isTakenBack = ::unlinkat(to.folder, to.name, AT_REMOVEDIR) == 0 || errno == ENOENT;
    return {error, !isTakenBack};
}

/// An empty file made exclusively under the new name.
class Placeholder {
public:
    explicit Placeholder(FolderEntry place)
        : place_(place),
          descriptor_(Descriptor::openAt(place.folder, place.name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600)),
          error_(descriptor_ && ::fstat(descriptor_.get(), &made_) == 0 ? 0 : errno) {}

    /// 0 while the file bears its name and is empty; EEXIST once something else does or it was written to; else the
    /// errno for which it could not be made, or that can not be told.
    [[nodiscard]] int check() const {
        if (error_ != 0) return error_;
        struct ::stat there;
        if (!place_.examine(there)) return errno;
        return isIt(there) ? 0 : EEXIST;
    }

    /// Removes the file while it bears its name and is empty. Where the name can not be looked at, the file itself
    /// tells whether it still has one. False when it may still be there.
    [[nodiscard]] bool takeBack() const {
        struct ::stat now;
        const bool isSeen = place_.examine(now);
        // That it was made, the reply may have told and been lost: not enough to remove it.
        if (!descriptor_) return error_ == EEXIST || !isSeen || !isIt(now);
        if (!isSeen && errno == ENOENT) return true;
        if (!isSeen && ::fstat(descriptor_.get(), &now) != 0) return false;
        const bool isOurs = isSeen ? isIt(now) : now.st_nlink != 0 && now.st_size == 0;
        return !isOurs || place_.unlink() == 0 || errno == ENOENT;
    }

private:
    /// Whether an item under the name is the file, and empty. As long as that could not be looked at, nothing but its
    /// making has happened, and so an empty file of one name can be no other.
    [[nodiscard]] bool isIt(const struct ::stat& there) const {
        if (there.st_size != 0) return false;
        return error_ == 0 ? isSameItem(made_, there) : S_ISREG(there.st_mode) && there.st_nlink == 1;
    }

    FolderEntry place_;
    Descriptor descriptor_;
    struct ::stat made_{};
    int error_;
};

Outcome moveOverPlaceholder(FolderEntry from, FolderEntry to) {
    const Placeholder placeholder(to);
    int error = placeholder.check();
    if (error == 0) error = renameOver(from, to);
    if (error == 0) return {};
    const bool isTakenBack = placeholder.takeBack();
    return {error, !isTakenBack};
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
    const bool isFolder = S_ISDIR(facts.st_mode);
    if (!isFolder && ways.link && OrdovanPartialName::isPartial(to.name)) return moveToHiddenName(from, to);
    const bool hides = !isFolder && ways.link && ways.hidesOldName && !OrdovanPartialName::isPartial(from.name);
    const std::string hidden = hides ? hiddenNameBeside(from) : std::string();
    if (ways.announce != nullptr) (*ways.announce)(hidden.empty() ? hidden : std::string(lastPathComponent(hidden)));
    const auto told = [&](const Outcome& outcome) {
        if (outcome.leavesSomething && ways.leavesSomething != nullptr) *ways.leavesSomething = true;
        return outcome.error;
    };
    if (isFolder) return ways.placeholder ? told(moveFolderOverPlaceholder(from, to)) : error;
    if (ways.link) {
        error = told(moveByLink(from, to, facts, hidden));
        // EPERM is also how a file that must not be linked or renamed at all answers; the rename then says so again.
        if (!isUnsupported(error) && error != EPERM && error != EMLINK) return error;
    }
    return ways.placeholder ? told(moveOverPlaceholder(from, to)) : error;
}

int moveDurably(FolderEntry from, FolderEntry to, MoveWays ways, int (*sync)(FolderEntry item)) {
    const int moved = moveExclusively(from, to, ways);
    if (moved != 0) return moved;
    const int synced = sync(to);
    // The old name was free a moment ago. Should it be taken now, the item stays whole under its new name.
    ways.announce = nullptr;
    ways.hidesOldName = false;
    if (synced != 0) static_cast<void>(moveExclusively(to, from, ways));
    return synced;
}

}  // namespace ordovan
