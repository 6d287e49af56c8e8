#include "OrdovanCore/TrashMove.h"

#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/Text.h"
#include "OrdovanCore/TrashPlace.h"

#include <cerrno>
#include <utility>

namespace ordovan {

using End = TrashMove::End;

namespace {

bool isThere(const Url& url, const std::string& identity, OrdovanFileSystem& fs) {
    if (identity.empty() || !fs.isRegularFile(url)) return false;
    const auto found = fs.fileIdentity(url);
    return found && *found == identity;
}

/// The file at `url` has the size and either the identity or the content.
bool isStill(const Fingerprint& was, const Url& url, OrdovanFileSystem& fs) {
    if (!fs.isRegularFile(url)) return false;
    const auto size = fs.fileSize(url);
    if (!size || *size != was.byteSize) return false;
    const auto identity = fs.fileIdentity(url);
    if (identity && *identity == was.identity) return true;
    const auto hash = fs.contentHash(url);
    return hash && *hash == was.contentHash;
}

/// What lies at `url`, as far as it can be read, else what was.
Fingerprint asFound(const Url& url, const Fingerprint& was, OrdovanFileSystem& fs) {
    const auto size = fs.fileSize(url);
    auto hash = fs.contentHash(url);
    if (!size || !hash) return was;
    return {*size, std::move(*hash), was.identity};
}

/// Takes a file out of the Trash again because of `why`, an errno.
TrashMove putBack(const Url& trashed, const Url& file, const Fingerprint& was, int why, OrdovanFileSystem& fs) {
    // Whatever is answered, both ends tell.
    (void)fs.move(trashed, file);
    if (fs.isRegularFile(trashed)) return {End::inTrash, trashed, asFound(trashed, was, fs)};
    if (!fs.isRegularFile(file) && !fs.exists(file)) return {End::gone};
    return {.end = End::inPlace, .error = OrdovanSystemError::posix(why)};
}

}  // namespace

TrashScope::TrashScope(const Url& authorizedRoot)
    : boundary_(authorizedRoot), tooBroad_(OrdovanProposalPlanner::isTooBroad(authorizedRoot)) {}

bool TrashScope::holds(const Url& place, OrdovanFileSystem& fs) const {
    return !tooBroad_ && boundary_.holds(place, fs) && !isInTrash(place.path()) &&
           !OrdovanHasSymlinkedParent(place, boundary_.canonicalRoot(), fs);
}

TrashMove sendToTrash(const Url& file, const Fingerprint& was, OrdovanFileSystem& fs,
                      const std::function<bool()>& mayStay) {
    const auto trashed = fs.trash(file);
    if (!trashed) {
        if (!fs.isRegularFile(file) && !fs.exists(file)) return {End::gone};
        return {.end = End::inPlace, .error = trashed.error()};
    }
    if (isThere(file, was.identity, fs)) {
        return {.end = End::inPlace, .error = OrdovanSystemError::cocoa(OrdovanSystemError::fileWriteUnknown)};
    }
    if (!isRecordable(*trashed)) return putBack(*trashed, file, was, EILSEQ, fs);
    if (isStill(was, *trashed, fs) && (!mayStay || mayStay())) return {End::inTrash, *trashed, was};
    return putBack(*trashed, file, was, EBUSY, fs);
}

bool isRecordable(const Url& file) {
    return text::isUtf8(file.path());
}

std::string recordedPath(const Url& file) {
    return isNormalPath(file.path()) ? std::string(file.path()) : normalizedPath(file.path());
}

bool isStop(const OrdovanSystemError& error) {
    return error == OrdovanSystemError::posix(ECANCELED);
}

}  // namespace ordovan
