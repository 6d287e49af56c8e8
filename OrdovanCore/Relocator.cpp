#include "OrdovanCore/Relocator.h"

#include <cerrno>

namespace ordovan {

using End = Relocation::End;

namespace {

bool isAbsence(const OrdovanSystemError& error) {
    return error == OrdovanSystemError::posix(ENOENT) ||
           error == OrdovanSystemError::cocoa(OrdovanSystemError::fileReadNoSuchFile);
}

}  // namespace

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
    if (wasRenamed(from, to, was.identity)) return {End::done, true};
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
    const auto landed = published ? identityOfLanded(partial, to, *copyIdentity, was) : std::nullopt;
    if (landed) return replaceOriginal(from, to, *landed, was);

    // The original went away meanwhile.
    if (mayBeThere(to, *copyIdentity) && isGone(from, was.identity, fs_)) return {End::done};
    // A rename that reports an error may have happened and yet not be on disk, so it is the copy that goes.
    if (isThere(partial, *copyIdentity)) {
        discardPartial(partial, from);
    } else {
        discardPublished(to, *copyIdentity);
    }
    return published ? Relocation{End::didNotLand} : Relocation{End::publishFailed, false, published.error()};
}

/// The identity of the verified copy at its new place; nothing where it is not seen there. Some volumes number a file
/// anew when it is renamed: there it is known by its content, and by its partial name being free again.
std::optional<std::string> Relocator::identityOfLanded(const Url& partial, const Url& to,
                                                       const std::string& copyIdentity, const Fingerprint& was) {
    if (isThere(to, copyIdentity)) return copyIdentity;
    if (!fs_.isRegularFile(to) || fs_.isRegularFile(partial) || fs_.fileSize(to) != was.byteSize) return std::nullopt;
    const auto identity = fs_.fileIdentity(to);
    if (!identity || fs_.contentHash(to) != was.contentHash) return std::nullopt;
    return *identity;
}

/// The last step across volumes: the verified copy stands at `to`, so the original goes, or else the copy. The original
/// is hashed once more, because a copy takes its time: what was written to it meanwhile exists nowhere else. And the
/// copy is looked at once more, because that takes its time as well. An original that can not be seen counts as gone
/// only when that is certain, else nothing is removed at all.
Relocation Relocator::replaceOriginal(const Url& from, const Url& to, const std::string& copyIdentity,
                                      const Fingerprint& was) {
    const bool isUnchanged = fs_.contentHash(from) == was.contentHash;
    if (!isUnchanged || !isThere(from, was.identity)) {
        if (isGone(from, was.identity, fs_)) return {mayBeThere(to, copyIdentity) ? End::done : End::originalStays};
        if (!fs_.isRegularFile(from)) return {End::originalStays};
        discardPublished(to, copyIdentity);
        return {End::verificationFailed};
    }
    if (!isThere(to, copyIdentity)) {
        discardPublished(to, copyIdentity);
        return {End::didNotLand};
    }
    const auto removed = fs_.remove(from);
    const bool isChanged = !removed && removed.error() == originalChanged;
    if (isThere(from, was.identity) || (isChanged && fs_.isRegularFile(from))) {
        discardPublished(to, copyIdentity);
        return {isChanged ? End::verificationFailed : End::originalStays};
    }
    if (removed) return {End::done};
    return {isGone(from, was.identity, fs_) && mayBeThere(to, copyIdentity) ? End::done : End::originalStays};
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

bool Relocator::wasRenamed(const Url& from, const Url& to, const std::string& identity) {
    return mayBeThere(to, identity) && !mayBeThere(from, identity);
}

bool Relocator::isEmptyFile(const Url& url) {
    return fs_.isRegularFile(url) && fs_.fileSize(url) == 0;
}

void Relocator::discardPartial(const Url& partial, const Url& original) {
    if (fs_.isRegularFile(original)) (void)fs_.remove(partial);
}

void Relocator::discardPublished(const Url& to, const std::string& copyIdentity) {
    if (isThere(to, copyIdentity)) (void)fs_.remove(to);
}

bool isGone(const Url& file, std::string_view identity, OrdovanFileSystem& fs) {
    if (fs.isRegularFile(file)) return false;
    if (!fs.isSymlink(file)) {
        // Of all questions, this one is answered with the system's own error.
        const auto content = fs.contentHash(file);
        if (content || !isAbsence(content.error())) return false;
    }
    const auto deviceOf = [](std::string_view text) { return text.substr(0, text.find(':')); };
    const auto folder = fs.fileIdentity(file.deletingLastPathComponent());
    return folder && deviceOf(*folder) == deviceOf(identity);
}

}  // namespace ordovan
