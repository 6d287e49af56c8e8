#include "OrdovanCore/Relocator.h"

#include <cerrno>

namespace ordovan {

using End = Relocation::End;

Relocation Relocator::relocate(const Url& from, const Url& to, const Fingerprint& was) {
    const Url folder = to.deletingLastPathComponent();
    if (const auto made = makeFolder(folder); !made) return {End::folderFailed, false, made.error()};
    // The new place is free, so it is on the volume of its folder.
    return fs_.sameVolume(from, folder) ? rename(from, to, folder, was.identity) : carry(from, to, folder, was);
}

OrdovanResult<void> Relocator::makeFolder(const Url& folder) {
    if (folder.path() == lastFolder_) return {};
    std::string path(folder.path());
    if (!madeFolders_.contains(path)) {
        if (const auto made = fs_.createDirectory(folder); !made) return made;
        madeFolders_.insert(path);
    }
    lastFolder_ = std::move(path);
    return {};
}

/// Runs an operation that needs the folder; when it reports that something is missing, the folder may have been removed
/// since it was made, so it is made anew and the operation gets a second try.
template <class Operation>
OrdovanResult<void> Relocator::inFolder(const Url& folder, const Operation& operation) {
    const OrdovanResult<void> first = operation();
    if (first || first.error() != OrdovanSystemError::posix(ENOENT) || fs_.exists(folder)) return first;
    lastFolder_.clear();
    madeFolders_.erase(std::string(folder.path()));
    if (const auto made = makeFolder(folder); !made) return made;
    return operation();
}

Relocation Relocator::rename(const Url& from, const Url& to, const Url& folder, const std::string& identity) {
    const auto moved = inFolder(folder, [&] { return fs_.move(from, to); });
    if (moved && fs_.isRegularFile(to)) return {End::done, true};
    if (hasMoved(from, to, identity, identity)) return {End::done, true};
    return moved ? Relocation{End::didNotLand, true} : Relocation{End::moveFailed, true, moved.error()};
}

Relocation Relocator::carry(const Url& from, const Url& to, const Url& folder, const Fingerprint& was) {
    const Url partial = OrdovanPartialName::beside(to);
    const auto copied = inFolder(folder, [&] { return fs_.copy(from, partial); });
    if (!copied) {
        // A name that was taken is not ours to remove, unless it was the reply to our own success that got lost.
        const bool taken = copied.error() == OrdovanSystemError::posix(EEXIST);
        if (!taken || fs_.contentHash(partial) == was.contentHash) (void)fs_.remove(partial);
        return {End::copyFailed, false, copied.error()};
    }
    const auto hash = fs_.contentHash(partial);
    const auto copyIdentity = fs_.fileIdentity(partial);
    if (!hash || *hash != was.contentHash || !copyIdentity) {
        discardPartial(partial, from);
        return {End::verificationFailed};
    }
    const auto published = fs_.move(partial, to);
    const bool landed = isThere(to, *copyIdentity);
    if (published && landed) return replaceOriginal(from, to, *copyIdentity, was);

    if (hasMoved(from, to, was.identity, *copyIdentity)) return {End::done};  // the original went away meanwhile
    // A rename that reports an error may have happened and yet not be on disk, so it is the copy that goes.
    if (isThere(partial, *copyIdentity)) {
        discardPartial(partial, from);
    } else if (isThere(to, *copyIdentity)) {
        (void)fs_.remove(to);
    }
    return published ? Relocation{End::didNotLand} : Relocation{End::publishFailed, false, published.error()};
}

/// The last step across volumes: the verified copy stands at `to`, so the original goes, or else the copy. An original
/// that is not seen counts as gone only while the copy is seen: a volume that answers nothing proves nothing.
Relocation Relocator::replaceOriginal(const Url& from, const Url& to, const std::string& copyIdentity,
                                      const Fingerprint& was) {
    const auto size = fs_.fileSize(from);
    if (!isThere(from, was.identity) || !size || *size != was.byteSize) {
        if (!fs_.isRegularFile(from)) return {mayBeThere(to, copyIdentity) ? End::done : End::originalStays};
        if (isThere(to, copyIdentity)) (void)fs_.remove(to);
        return {End::verificationFailed};
    }
    const auto removed = fs_.remove(from);
    if (isThere(from, was.identity)) {
        if (isThere(to, copyIdentity)) (void)fs_.remove(to);
        return {End::originalStays};
    }
    return {removed || hasMoved(from, to, was.identity, copyIdentity) ? End::done : End::originalStays};
}

bool Relocator::isThere(const Url& url, const std::string& identity) {
    if (!fs_.isRegularFile(url)) return false;
    const auto found = fs_.fileIdentity(url);
    return found && *found == identity;
}

bool Relocator::mayBeThere(const Url& url, const std::string& identity) {
    if (!fs_.isRegularFile(url)) return false;
    const auto found = fs_.fileIdentity(url);
    return !found || *found == identity;
}

bool Relocator::hasMoved(const Url& from, const Url& to, const std::string& identityBefore,
                         const std::string& identityAfter) {
    return mayBeThere(to, identityAfter) && !mayBeThere(from, identityBefore);
}

void Relocator::discardPartial(const Url& partial, const Url& original) {
    if (fs_.isRegularFile(original)) (void)fs_.remove(partial);
}

}  // namespace ordovan
