#include "OrdovanApp/controller/FolderRun.h"

#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/TrashPlace.h"

#include <cerrno>

bool FolderRun::mayRead(const Url& file, const Url& root, OrdovanFileSystem& fs) {
    if (!ordovan::namesOnePlace(file)) return false;
    if (ordovan::isInTrash(file.path())) return true;
    const ordovan::Boundary boundary(root);
    return boundary.holds(file, fs) && !OrdovanHasSymlinkedParent(file, boundary.canonicalRoot(), fs);
}

bool FolderRun::isHeldElsewhere(const OrdovanResult<ordovan::HeldLock>& lock) {
    return !lock && lock.error().domain == OrdovanSystemError::Domain::posix && lock.error().code == EWOULDBLOCK;
}
