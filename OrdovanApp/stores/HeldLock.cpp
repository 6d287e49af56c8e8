#include "OrdovanApp/stores/HeldLock.h"

#include "OrdovanCore/platform/FolderLock.h"

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

OrdovanResult<HeldLock> lockFolder(const Url& folder) {
    return held(FolderLock::acquire(folder));
}

}  // namespace ordovan
