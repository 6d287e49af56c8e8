#include "OrdovanApp/controller/FolderRun.h"

#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/TrashPlace.h"

bool FolderRun::mayRead(const Url& file, const Url& root, OrdovanFileSystem& fs) {
    if (!ordovan::namesOnePlace(file)) return false;
    if (ordovan::isInTrash(file.path())) return true;
    const ordovan::Boundary boundary(root);
    return boundary.holds(file, fs) && !OrdovanHasSymlinkedParent(file, boundary.canonicalRoot(), fs);
}
