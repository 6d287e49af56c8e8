#include "OrdovanCore/Executor.h"

#include <algorithm>
#include <cerrno>
#include <initializer_list>

namespace {

/// The two numbers by which a refusal is recognized; each is absent where the error does not carry it.
struct Codes {
    std::optional<int> cocoa;
    std::optional<int> posix;

    explicit Codes(const OrdovanSystemError& error) : posix(error.underlyingPosix) {
        if (error.domain == OrdovanSystemError::Domain::cocoa) cocoa = error.code;
        if (error.domain == OrdovanSystemError::Domain::posix) posix = error.code;
    }

    bool match(std::initializer_list<int> cocoaCodes, std::initializer_list<int> posixNumbers) const {
        return (cocoa && std::ranges::find(cocoaCodes, *cocoa) != cocoaCodes.end()) ||
               (posix && std::ranges::find(posixNumbers, *posix) != posixNumbers.end());
    }
};

}  // namespace

std::string OrdovanExecutor::failureReason(const OrdovanSystemError& error) {
    using Error = OrdovanSystemError;
    const Codes codes(error);
    if (codes.match({Error::fileReadNoPermission, Error::fileWriteNoPermission}, {EACCES, EPERM})) {
        return "ordovan+ doesn't have permission to change this folder. Choose the folder again with Choose Folder…, "
               "or check its permissions in Finder.";
    }
    if (codes.match({Error::fileWriteOutOfSpace}, {ENOSPC})) {
        return "The disk is full. Free up some space and try again.";
    }
    if (codes.match({Error::fileWriteVolumeReadOnly}, {EROFS})) return "This disk is read-only.";
    if (codes.match({Error::fileReadNoSuchFile}, {ENOENT})) return "The file was moved or deleted while organizing.";
    if (codes.match({}, {ETXTBSY, EBUSY})) return "The file is in use by another app.";
    return "The system reported an error (code " + std::to_string(error.code) + ").";
}
