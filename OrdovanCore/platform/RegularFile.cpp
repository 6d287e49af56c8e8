#include "OrdovanCore/platform/RegularFile.h"

namespace ordovan {

int RegularFile::check(Look look) {
    if (!descriptor) {
        switch (errno) {
            case ENXIO:  // a socket
            case ENODEV:
                return EINVAL;
            case EWOULDBLOCK:
                return EBUSY;
            default:
                return errno;
        }
    }
    const bool isSeen = look == Look::afresh ? examineAfresh(facts) : ::fstat(descriptor.get(), &facts) == 0;
    if (!isSeen) return errno;
    if (S_ISDIR(facts.st_mode)) return EISDIR;
    return S_ISREG(facts.st_mode) ? 0 : EINVAL;
}

}  // namespace ordovan
