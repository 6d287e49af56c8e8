#include "OrdovanCore/platform/WriterProbe.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <csignal>

namespace ordovan {

namespace {

/// Takes the lease; true when a writer is why it is refused.
bool isRefusedForAWriter(int file) {
    return ::fcntl(file, F_SETLEASE, F_RDLCK) != 0 && errno == EAGAIN;
}

}  // namespace

bool WriterProbe::knowsWriters(unsigned long fileSystemType) {
    constexpr unsigned long lustreType = 0x0BD00BD0, gfs2Type = 0x01161970, gpfsType = 0x47504653;
    switch (fileSystemType) {
        case NFS_SUPER_MAGIC:
        case SMB_SUPER_MAGIC:
        case CIFS_SUPER_MAGIC:
        case SMB2_SUPER_MAGIC:
        case AFS_SUPER_MAGIC:
        case AFS_FS_MAGIC:
        case CODA_SUPER_MAGIC:
        case CEPH_SUPER_MAGIC:
        case NCP_SUPER_MAGIC:
        case V9FS_MAGIC:
        case OCFS2_SUPER_MAGIC:
        case lustreType:
        case gfs2Type:
        case gpfsType:
            return false;
        default:
            return true;
    }
}

bool WriterProbe::isWrittenAtStart(const RegularFile& file) {
    const int descriptor = file.descriptor.get();
    if (device_ != file.facts.st_dev) {
        struct ::statfs volume;
        // The field is signed on some machines and must not drag its sign along.
        isTold_ =
            ::fstatfs(descriptor, &volume) == 0 && knowsWriters(static_cast<unsigned long>(volume.f_type) & 0xffffffff);
        device_ = file.facts.st_dev;
    }
    if (!isTold_) return false;
    // The signal that tells of a lease being broken would by default end the program. Where it can not be exchanged for
    // one that is ignored by default, no lease is taken, at the end neither.
    if (::fcntl(descriptor, F_SETSIG, SIGURG) != 0) {
        device_.reset();
        return false;
    }
    if (isRefusedForAWriter(descriptor)) return true;
    ::fcntl(descriptor, F_SETLEASE, F_UNLCK);
    return false;
}

bool WriterProbe::isWrittenAtEnd(const RegularFile& file) const {
    return isTold_ && device_ == file.facts.st_dev && isRefusedForAWriter(file.descriptor.get());
}

}  // namespace ordovan
