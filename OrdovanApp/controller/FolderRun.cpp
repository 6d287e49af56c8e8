#include "OrdovanApp/controller/FolderRun.h"

#include <cerrno>

bool FolderRun::isHeldElsewhere(const OrdovanResult<ordovan::HeldLock>& lock) {
    return !lock && lock.error().domain == OrdovanSystemError::Domain::posix && lock.error().code == EWOULDBLOCK;
}
