#pragma once

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cstddef>
#include <cstdint>

namespace ordovan::test {

/// From now on the kernel refuses this process a system call with an errno, as a sandbox does. It can not be undone, so
/// it is for a child (`unprivileged`). False where the kernel has no such filters.
inline bool refuseCall(long number, int error) {
    const auto at = [](std::size_t offset) { return static_cast<std::uint32_t>(offset); };
    ::sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, at(offsetof(struct seccomp_data, nr))),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(number), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const ::sock_fprog filter{.len = sizeof program / sizeof *program, .filter = program};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

}  // namespace ordovan::test
