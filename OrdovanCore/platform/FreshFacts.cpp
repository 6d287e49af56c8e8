#include "OrdovanCore/platform/FreshFacts.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <ctime>

namespace ordovan {

namespace {

::timespec timeOf(const ::statx_timestamp& stamp) {
    return {static_cast<::time_t>(stamp.tv_sec), static_cast<long>(stamp.tv_nsec)};
}

struct ::stat factsOf(const struct ::statx& told) {
    struct ::stat facts{};
    facts.st_dev = ::makedev(told.stx_dev_major, told.stx_dev_minor);
    facts.st_ino = told.stx_ino;
    facts.st_mode = told.stx_mode;
    facts.st_nlink = told.stx_nlink;
    facts.st_uid = told.stx_uid;
    facts.st_gid = told.stx_gid;
    facts.st_rdev = ::makedev(told.stx_rdev_major, told.stx_rdev_minor);
    facts.st_size = static_cast<::off_t>(told.stx_size);
    facts.st_blksize = static_cast<::blksize_t>(told.stx_blksize);
    facts.st_blocks = static_cast<::blkcnt_t>(told.stx_blocks);
    facts.st_atim = timeOf(told.stx_atime);
    facts.st_mtim = timeOf(told.stx_mtime);
    facts.st_ctim = timeOf(told.stx_ctime);
    return facts;
}

/// Whether an errno of statx(2) is about the call and not about the item: an old kernel, a sandbox, a server that does
/// not know the question.
bool isNotUnderstood(int error) {
    return error == ENOSYS || error == EINVAL || error == EPERM || error == EOPNOTSUPP;
}

}  // namespace

bool examineAfresh(int folder, const char* name, struct ::stat& facts) noexcept {
    constexpr int item = AT_SYMLINK_NOFOLLOW | AT_EMPTY_PATH;
    struct ::statx told;
    if (::statx(folder, name, item | AT_STATX_FORCE_SYNC, STATX_BASIC_STATS, &told) == 0) {
        facts = factsOf(told);
        return true;
    }
    return isNotUnderstood(errno) && ::fstatat(folder, name, &facts, item) == 0;
}

}  // namespace ordovan
