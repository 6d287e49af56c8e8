#include "OrdovanCore/platform/Trash.h"

#include "OrdovanCore/platform/ExclusiveMove.h"
#include "OrdovanCore/platform/Failure.h"
#include "OrdovanCore/platform/MovedItem.h"
#include "OrdovanCore/platform/SameFile.h"
#include "OrdovanCore/platform/SystemPath.h"
#include "OrdovanCore/platform/TrashNaming.h"

#include <ctime>
#include <string>
#include <utility>

namespace ordovan {

namespace {

/// How often a name may be taken between the look at it and its use.
constexpr unsigned maxAttempts = 1000;

bool examine(const Descriptor& folder, const std::string& name, struct ::stat& facts) {
    return ::fstatat(folder.get(), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) == 0;
}

/// True when the item has left its place; another one that has its name by now is not it.
bool hasLeft(const TrashItem& item) {
    struct ::stat facts{};
    return !examine(item.folder, item.name, facts) ? errno == ENOENT : !isSameItem(facts, item.facts);
}

/// Renames the item into the Trash without replacing anything. Returns 0 or the errno.
int rename(const TrashItem& item, const TrashFolder& trash, const std::string& name, const MoveWays& ways) {
    const int error = moveExclusively(item.entry(), {trash.files.get(), name.c_str()}, ways);
    if (error == 0) return 0;
    // A network volume may have done it and lost the reply.
    struct ::stat there{};
    return examine(trash.files, name, there) && isSameItem(there, item.facts) && hasLeft(item) ? 0 : error;
}

std::string pathIn(const TrashFolder& trash, const std::string& name) {
    return trash.path + "/files/" + name;
}

/// Looks whether the item itself, and not another that slipped in under its name, is in the Trash, by the path that is
/// going to be told, and no more where it was.
bool isProved(const TrashItem& item, const TrashFolder& trash, const std::string& name) {
    const std::string path = pathIn(trash, name);
    struct ::stat there{};
    return ::lstat(path.c_str(), &there) == 0 && isMoved(item.facts, there, path.c_str()) && hasLeft(item);
}

/// Undoes a move that could not be proved. True when the item is certainly not in the Trash any more, or never was.
bool takeBack(const TrashItem& item, const TrashFolder& trash, const std::string& name) {
    static_cast<void>(moveExclusively({trash.files.get(), name.c_str()}, item.entry(), {.hidesOldName = false}));
    struct ::stat there{};
    return !examine(trash.files, name, there) && errno == ENOENT;
}

/// A number, from 2 on, that seems free for an item's name. Where one number is taken thousands may be, so they are not
/// tried in turn: the look leaps ahead until one is free, and then halves the way back to one that is taken.
unsigned freeNumber(const TrashItem& item, const TrashFolder& trash) {
    const auto isTaken = [&](unsigned number) {
        const std::string name = trashedName(item.name, number, trash.maxNameBytes);
        struct ::stat there{};
        return examine(trash.files, name, there) || examine(trash.info, name + std::string(trashInfoSuffix), there);
    };
    constexpr unsigned most = 1U << 30U;
    unsigned taken = 1;
    unsigned free = 2;
    while (free < most && isTaken(free)) {
        taken = free;
        free *= 2;
    }
    while (free - taken > 1) {
        const unsigned middle = taken + (free - taken) / 2;
        (isTaken(middle) ? taken : free) = middle;
    }
    return free;
}

/// Puts an item into a Trash and returns the name it got there; on failure the item is where it was, and what may be in
/// the Trash though it was to be taken out again keeps its info file. That is sent on its way to the disk by the
/// flusher, or before the item moves where there is none.
std::expected<std::string, OrdovanSystemError> place(const TrashItem& item, const TrashFolder& trash,
                                                     const TrashTerms& terms, InfoFlusher* flusher) {
    const std::string text = trashInfoText(trash.storedPath(item), std::time(nullptr));
    unsigned number = 1;
    for (unsigned attempt = 1; attempt <= maxAttempts; ++attempt) {
        std::string name = trashedName(item.name, number, trash.maxNameBytes);
        InfoFile info;
        int error = info.make(trash.info, name + std::string(trashInfoSuffix), text);
        if (error == 0 && flusher == nullptr) error = info.startWriting();
        bool leavesSomething = false;
        if (error == 0) {
            error = rename(item, trash, name, {.announce = terms.announce, .leavesSomething = &leavesSomething});
        }
        const bool isRenamed = error == 0;
        const bool isThere = isRenamed && isProved(item, trash, name);
        if (isRenamed && !isThere && !takeBack(item, trash, name)) leavesSomething = true;
        if (leavesSomething && terms.leavesSomething != nullptr) *terms.leavesSomething = true;
        if (isThere || leavesSomething) {
            Descriptor file = info.keep();
            if (flusher != nullptr) flusher->add(std::move(file));
        }
        if (isThere) return name;
        if (isRenamed) return std::unexpected(OrdovanSystemError::cocoa(OrdovanSystemError::fileWriteUnknown));
        // Taken: by another info file, or by an item that has none.
        if (error != EEXIST) return failure(error);
        number = attempt == 1 ? freeNumber(item, trash) : number + 1;
    }
    return failure(EEXIST);
}

/// True for what a Trash answers that was removed or unmounted meanwhile, or that an item can not be renamed to.
bool isWrongTrash(const OrdovanSystemError& error) {
    return error == OrdovanSystemError::posix(ENOENT) || error == OrdovanSystemError::posix(EXDEV) ||
           error == OrdovanSystemError::posix(ESTALE);
}

}  // namespace

OrdovanResult<Url> TrashSession::move(const Url& url, const TrashTerms& terms) {
    const SystemPath path(url);
    if (path.error() != 0) return failure(path.error());
    if (const int error = item_.find(path.view(), terms.confined); error != 0) return failure(error);
    if (terms.was != nullptr && !isUntouched(*terms.was, item_.facts)) return failure(EBUSY);
    if (known_ && item_.mount == known_->mount) {
        const auto name = place(item_, known_->folder, terms, &flusher_);
        if (name) return Url::file(pathIn(known_->folder, *name));
        if (!isWrongTrash(name.error())) return std::unexpected(name.error());
    }
    known_.reset();
    return moveToNewFound(terms);
}

OrdovanResult<Url> TrashSession::moveToNewFound(const TrashTerms& terms) {
    int homeError = 0;
    int lastError = 0;
    for (const TrashKind kind : trashKinds) {
        auto trash = TrashFolder::open(kind, item_);
        if (trash) {
            const auto name = place(item_, *trash, terms, nullptr);
            if (name) {
                const Url there = Url::file(pathIn(*trash, *name));
                if (item_.mount) known_.emplace(*item_.mount, std::move(*trash));
                return there;
            }
            if (name.error() != OrdovanSystemError::posix(EXDEV)) return std::unexpected(name.error());
        }
        lastError = trash ? EXDEV : trash.error();
        if (kind == TrashKind::home) homeError = lastError;
    }
    // Where the home Trash should have served, what is wrong with it says more than the lack of another.
    return failure(homeError == EXDEV ? lastError : homeError);
}

OrdovanResult<Url> moveToTrash(const Url& item) {
    return TrashSession().move(item);
}

}  // namespace ordovan
