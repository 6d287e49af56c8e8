#include "OrdovanCore/platform/RegularFile.h"

namespace ordovan {

int RegularFile::open(FolderEntry item) {
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK;
    descriptor = Descriptor::openAt(item.folder, item.name, flags | O_NOATIME);
    // Only the owner may spare the access time.
    if (!descriptor && errno == EPERM) descriptor = Descriptor::openAt(item.folder, item.name, flags);
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
