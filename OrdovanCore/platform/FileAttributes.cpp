#include "OrdovanCore/platform/FileAttributes.h"

#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace ordovan {

namespace {

constexpr const char* accessList = "system.posix_acl_access";

/// True for the ways in which a file system or the kernel says that this attribute can not be kept here: no support
/// (ENOTSUP), no right (EPERM, EACCES), a list that names users who do not exist here (EINVAL), or a value larger than
/// attributes may be (E2BIG, ERANGE).
bool isRefusal(int error) {
    return error == ENOTSUP || error == EPERM || error == EACCES || error == EINVAL || error == E2BIG ||
           error == ERANGE;
}

/// True when setting an attribute failed for want of its own space and not of the volume's: ext4, btrfs and tmpfs give
/// the attributes of a file a block or a quota of their own and answer ENOSPC or EDQUOT when a value exceeds it.
bool isTooBigHere(int error, int file, std::size_t size) {
    struct ::statvfs volume;
    if ((error != ENOSPC && error != EDQUOT) || ::fstatvfs(file, &volume) != 0) return false;
    // Beside the value itself, the blocks that lead to it.
    constexpr std::uint64_t margin = 1 << 20;
    return std::uint64_t{volume.f_bavail} * volume.f_frsize > size + margin;
}

/// The value of an attribute, or 0 bytes and an errno. Asks again when the value grew between the two calls.
int readAttribute(int file, const char* name, std::string& value) {
    for (;;) {
        const ::ssize_t size = ::fgetxattr(file, name, nullptr, 0);
        if (size < 0) return errno;
        value.resize(static_cast<std::size_t>(size));
        const ::ssize_t got = ::fgetxattr(file, name, value.data(), value.size());
        if (got < 0 && errno == ERANGE) continue;
        if (got < 0) return errno;
        value.resize(static_cast<std::size_t>(got));
        return 0;
    }
}

/// All attribute names, each ended by NUL. A file system without attributes has none, and names that are together more
/// than the kernel passes on can not be kept.
int readAttributeNames(int file, std::string& names) {
    for (;;) {
        const ::ssize_t size = ::flistxattr(file, nullptr, 0);
        if (size < 0) return errno == ENOTSUP || errno == E2BIG ? 0 : errno;
        names.resize(static_cast<std::size_t>(size));
        const ::ssize_t got = ::flistxattr(file, names.data(), names.size());
        if (got < 0 && errno == ERANGE) continue;
        if (got < 0) return errno;
        names.resize(static_cast<std::size_t>(got));
        return 0;
    }
}

/// What an access control list (acl(5), in the form of linux/posix_acl_xattr.h) allows the owning group. In a mode
/// that stands beside a list the group bits are the list's mask, which may be far more.
::mode_t groupBitsOf(std::string_view list) {
    constexpr std::size_t headerSize = 4, entrySize = 8;
    constexpr std::uint16_t owningGroup = 0x04, mask = 0x10;
    unsigned group = 0, limit = 7;
    for (std::size_t at = headerSize; at + entrySize <= list.size(); at += entrySize) {
        // Two little-endian 16-bit numbers, the second of which is at most 7, and a user or group.
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(list[at + i]); };
        const auto tag = static_cast<std::uint16_t>(byte(0) | byte(1) << 8);
        if (tag == owningGroup) group = byte(2) & 7u;
        if (tag == mask) limit = byte(2) & 7u;
    }
    return (group & limit) << 3;
}

/// Copies every attribute that can be kept; narrows `mode` when the access control list can not.
int copyExtendedAttributes(int from, int to, ::mode_t& mode) {
    std::string names, value;
    const int error = readAttributeNames(from, names);
    if (error != 0) return error;
    for (std::size_t at = 0; at < names.size(); at += std::strlen(names.c_str() + at) + 1) {
        const char* const name = names.c_str() + at;
        const int unread = readAttribute(from, name, value);
        if (unread == ENODATA || isRefusal(unread)) continue;
        if (unread != 0) return unread;
        if (::fsetxattr(to, name, value.data(), value.size(), 0) == 0) continue;
        const int unset = errno;
        if (!isRefusal(unset) && !isTooBigHere(unset, to, value.size())) return unset;
        if (std::strcmp(name, accessList) == 0) mode = (mode & ~static_cast<::mode_t>(S_IRWXG)) | groupBitsOf(value);
    }
    return 0;
}

/// Owner and group as far as allowed; takes from `mode` what would mean something else under another owner.
int copyOwner(const struct ::stat& facts, int to, ::mode_t& mode) {
    struct ::stat now;
    if (::fstat(to, &now) != 0) return errno;
    if (now.st_uid == facts.st_uid && now.st_gid == facts.st_gid) return 0;
    if (::fchown(to, facts.st_uid, facts.st_gid) == 0) return 0;
    // Perhaps the group alone. Refusals are expected here and every other trouble shows in the calls that follow.
    const bool groupKept = now.st_gid == facts.st_gid || ::fchown(to, static_cast<::uid_t>(-1), facts.st_gid) == 0;
    if (now.st_uid != facts.st_uid) mode &= ~static_cast<::mode_t>(S_ISUID);
    if (!groupKept) mode &= ~static_cast<::mode_t>(S_ISGID);
    return 0;
}

}  // namespace

int copyAttributes(int from, const struct ::stat& facts, int to) {
    // In this order: a change of owner clears the set-ID bits, an access control list rewrites the group bits, and
    // everything touches the times.
    ::mode_t mode = facts.st_mode & 07777;
    int error = copyOwner(facts, to, mode);
    if (error == 0) error = copyExtendedAttributes(from, to, mode);
    if (error != 0) return error;
    if (::fchmod(to, mode) != 0 && !isRefusal(errno)) return errno;
    const struct ::timespec times[2] = {facts.st_atim, facts.st_mtim};
    return ::futimens(to, times) == 0 || isRefusal(errno) ? 0 : errno;
}

}  // namespace ordovan
