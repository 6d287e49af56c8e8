#include "OrdovanApp/stores/HeldLock.h"

#include <cerrno>
#include <utility>

namespace ordovan {

namespace {

OrdovanResult<HeldLock> held(OrdovanResult<FolderLock> lock) {
    if (!lock) return std::unexpected(lock.error());
    return std::make_shared<const FolderLock>(std::move(*lock));
}

}  // namespace

OrdovanResult<HeldLock> tryLockFolder(const Url& folder) {
    return held(FolderLock::tryAcquire(folder));
}

LockFunction lockFolderWithin(LockPatience patience) {
    return [patience = std::move(patience)](const Url& folder) { return held(FolderLock::acquire(folder, patience)); };
}

bool isHeldElsewhere(const OrdovanResult<HeldLock>& lock) {
    return !lock &&
           (lock.error() == OrdovanSystemError::posix(EWOULDBLOCK) || lock.error() == OrdovanSystemError::posix(EINTR));
}

}  // namespace ordovan
