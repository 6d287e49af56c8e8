#pragma once

#include <fcntl.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

namespace ordovan::test {

/// The user that `unprivileged` becomes when the tests run as root ("nobody").
inline constexpr ::uid_t unprivilegedUser = 65534;

/// Makes a tree belong to the user that `unprivileged` becomes. Links are not followed; without root nothing changes.
inline void giveToUnprivileged(const std::string& path) {
    if (::geteuid() != 0) return;
    (void)!::lchown(path.c_str(), unprivilegedUser, unprivilegedUser);
    std::error_code ignored;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path, ignored)) {
        (void)!::lchown(entry.path().c_str(), unprivilegedUser, unprivilegedUser);
    }
}

namespace detail {

[[noreturn]] inline void answerFromChild(int pipe, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ::ssize_t written = ::write(pipe, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) ::_exit(2);
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    ::_exit(0);
}

inline std::string allFrom(int pipe) {
    std::string all;
    char piece[4096];
    for (;;) {
        const ::ssize_t got = ::read(pipe, piece, sizeof piece);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return all;
        all.append(piece, static_cast<std::size_t>(got));
    }
}

inline void dropPrivileges() {
    if (::geteuid() != 0) return;
    if (::setgroups(0, nullptr) != 0 || ::setresgid(unprivilegedUser, unprivilegedUser, unprivilegedUser) != 0 ||
        ::setresuid(unprivilegedUser, unprivilegedUser, unprivilegedUser) != 0) {
        ::_exit(3);
    }
}

}  // namespace detail

/// Runs `action` in a child process without privileges (as user 65534 when the tests run as root, else as the user
/// they run as) and returns what it returned: a std::string or a trivially copyable value. What the child changes in
/// memory is lost, and so are its assertions: assert on the returned value.
template <class Action>
auto unprivileged(Action&& action) -> std::invoke_result_t<Action> {
    using Result = std::invoke_result_t<Action>;
    static_assert(std::is_same_v<Result, std::string> || std::is_trivially_copyable_v<Result>);
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    const ::pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("can not fork");
    if (child == 0) {
        ::close(pipe[0]);
        detail::dropPrivileges();
        const Result result = std::forward<Action>(action)();
        if constexpr (std::is_same_v<Result, std::string>) {
            detail::answerFromChild(pipe[1], result.data(), result.size());
        } else {
            char bytes[sizeof(Result)];
            std::memcpy(bytes, &result, sizeof bytes);
            detail::answerFromChild(pipe[1], bytes, sizeof bytes);
        }
    }
    ::close(pipe[1]);
    const std::string answer = detail::allFrom(pipe[0]);
    ::close(pipe[0]);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (status != 0) throw std::runtime_error("the unprivileged child failed, status " + std::to_string(status));
    if constexpr (std::is_same_v<Result, std::string>) {
        return answer;
    } else {
        if (answer.size() != sizeof(Result)) throw std::runtime_error("the unprivileged child said too little");
        Result result;
        std::memcpy(&result, answer.data(), sizeof result);
        return result;
    }
}

/// The errno with which an operation of a port fails without privileges; 0 when it succeeds. `action` returns an
/// `OrdovanResult`.
template <class Action>
int errorUnprivileged(Action&& action) {
    return unprivileged([&]() -> int {
        const auto result = action();
        return result ? 0 : result.error().code;
    });
}

}  // namespace ordovan::test
