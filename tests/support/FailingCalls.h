#pragma once

#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <vector>

namespace ordovan::test {

/// While it lives, a call of this function of the C library fails with an errno, or returns 0 where that is 0: the one
/// of this number, counted from 1, or every one. The test program names the functions that can:
///
///     ORDOVAN_FAILING(int, fchmod, (int file, mode_t mode) noexcept, file, mode)
///
/// For tests of one thread.
class FailingCall {
public:
    static constexpr int every = 0;

    explicit FailingCall(std::string_view function, int error, int number = 1)
        : function_(function), error_(error), number_(number) {
        living_.push_back(this);
    }
    ~FailingCall() { std::erase(living_, this); }
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;

    /// How many calls were made.
    [[nodiscard]] int calls() const { return calls_; }

    /// Whether the call that is about to be made fails; errno is set then.
    static bool befalls(std::string_view function) {
        const auto meets = [&](FailingCall* each) {
            return each->function_ == function && (++each->calls_ == each->number_ || each->number_ == every);
        };
        const auto found = std::ranges::find_if(living_, meets);
        if (found == living_.end()) return false;
        errno = (*found)->error_;
        return true;
    }

private:
    static inline std::vector<FailingCall*> living_;

    std::string_view function_;
    int error_;
    int number_;
    int calls_ = 0;
};

}  // namespace ordovan::test

// NOLINTBEGIN: the C library's names and signatures

/// Takes the place of a function of the C library that returns a number, -1 meaning an error.
#define ORDOVAN_FAILING(Result, name, parameters, ...)                                            \
    extern "C" Result name parameters {                                                           \
        static auto* const real = reinterpret_cast<decltype(&::name)>(::dlsym(RTLD_NEXT, #name)); \
        if (!ordovan::test::FailingCall::befalls(#name)) return real(__VA_ARGS__);                \
        return static_cast<Result>(errno == 0 ? 0 : -1);                                          \
    }

/// The same for one that returns a pointer, none meaning an error, or the end where errno is 0.
#define ORDOVAN_FAILING_POINTER(Result, name, parameters, ...)                                    \
    extern "C" Result name parameters {                                                           \
        static auto* const real = reinterpret_cast<decltype(&::name)>(::dlsym(RTLD_NEXT, #name)); \
        return ordovan::test::FailingCall::befalls(#name) ? nullptr : real(__VA_ARGS__);          \
    }

// NOLINTEND
