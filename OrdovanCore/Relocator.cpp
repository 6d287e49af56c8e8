#include "OrdovanCore/Relocator.h"

#include <cerrno>

namespace ordovan {

using End = Relocation::End;

Relocation Relocator::relocate(const Url& from, const Url& to, const Fingerprint& was,
                               const std::function<bool()>& mayTryAgain) {
    const Url folder = to.deletingLastPathComponent();
    if (const auto made = makeFolder(folder); !made) return {End::folderFailed, false, made.error()};
    // The new place is free, so it is on the volume of its folder.
    return fs_.sameVolume(from, folder) ? rename(from, to, was, mayTryAgain) : carry(from, to, was, mayTryAgain);
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
/// since it was made. Whatever stands on its way now was not there when the places were checked.
template <class Operation>
OrdovanResult<void> Relocator::inFolder(const Url& folder, const std::function<bool()>& mayTryAgain,
                                        const Operation& operation) {
    const OrdovanResult<void> first = operation();
    if (first || first.error() != OrdovanSystemError::posix(ENOENT) || fs_.exists(folder)) return first;
    lastFolder_.clear();
    madeFolders_.erase(std::string(folder.path()));
    if (!mayTryAgain || !mayTryAgain()) return first;
    if (const auto made = makeFolder(folder); !made) return made;
    return operation();
}

Relocation Relocator::rename(const Url& from, const Url& to, const Fingerprint& was,
                             const std::function<bool()>& mayTryAgain) {
    const auto moved = inFolder(to.deletingLastPathComponent(), mayTryAgain, [&] { return fs_.move(from, to); });
    if (moved && fs_.isRegularFile(to)) return {End::done, true};
    if (hasMoved(from, to, was.identity, was.identity)) return {End::done, true};
    // Two mounts of one device, or folders that the file system keeps apart: as if they were two volumes.
    if (!moved && moved.error() == OrdovanSystemError::posix(EXDEV)) return carry(from, to, was, mayTryAgain);
    return moved ? Relocation{End::didNotLand, true} : Relocation{End::moveFailed, true, moved.error()};
}

Relocation Relocator::carry(const Url& from, const Url& to, const Fingerprint& was,
                            const std::function<bool()>& mayTryAgain) {
    const Url partial = OrdovanPartialName::beside(to);
    const auto copied = inFolder(to.deletingLastPathComponent(), mayTryAgain, [&] { return fs_.copy(from, partial); });
    if (!copied) {
        // What has taken the name is not ours to remove, unless it was the reply to our own success that got lost: it
        // is then our whole copy, or the empty file that was to become it, since nobody else makes up such a name.
        const bool taken = copied.error() == OrdovanSystemError::posix(EEXIST);
        if (!taken || isEmptyFile(partial) || fs_.contentHash(partial) == was.contentHash)
            discardPartial(partial, from);
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

/// The last step across volumes: the verified copy stands at `to`, so the original goes, or else the copy. The original
/// is hashed once more, because a copy takes its time: what was written to it meanwhile exists nowhere else. One that
/// is not seen counts as gone only while the copy is seen: a volume that answers nothing proves nothing.
Relocation Relocator::replaceOriginal(const Url& from, const Url& to, const std::string& copyIdentity,
                                      const Fingerprint& was) {
    const bool isUnchanged = fs_.contentHash(from) == was.contentHash;
    if (!isUnchanged || !isThere(from, was.identity)) {
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

bool Relocator::isEmptyFile(const Url& url) {
    return fs_.isRegularFile(url) && fs_.fileSize(url) == 0;
}

void Relocator::discardPartial(const Url& partial, const Url& original) {
    if (fs_.isRegularFile(original)) (void)fs_.remove(partial);
}

}  // namespace ordovan
