#include "OrdovanCore/platform/RegularFile.h"

namespace ordovan {

int RegularFile::check() {
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
    if (::fstat(descriptor.get(), &facts) != 0) return errno;
    if (S_ISDIR(facts.st_mode)) return EISDIR;
    return S_ISREG(facts.st_mode) ? 0 : EINVAL;
}

}  // namespace ordovan
