#pragma once

#include "OrdovanCore/testing/FaultyFileSystem.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>

namespace ordovan::test {

/// What the system's calls may say that a move, a copy or a removal meets.
constexpr std::array errors = {ENOSPC, EDQUOT, EROFS,  EPERM,  EACCES, EBUSY, ETXTBSY,
                               EIO,    ESTALE, EMFILE, ENOENT, EEXIST, EXDEV};

/// One way for a call to go wrong: the N-th of all that can fail, or of one operation.
struct Fault {
    std::optional<testing::Operation> operation;
    int errnoValue;
    testing::FaultyFileSystem::Moment moment;
    testing::FaultyFileSystem::Lasting lasting;

    void setIn(testing::FaultyFileSystem& fs, std::size_t number) const {
        fs.failCall(operation, number, OrdovanSystemError::posix(errnoValue), moment, lasting);
    }
};

inline std::string describe(const Fault& fault, std::size_t number) {
    using Moment = testing::FaultyFileSystem::Moment;
    const char* moment = fault.moment == Moment::beforeEffect  ? " before"
                         : fault.moment == Moment::afterEffect ? " after"
                                                               : " instead of";
    return "call " + std::to_string(number) +
           (fault.operation ? " of operation " + std::to_string(static_cast<int>(*fault.operation)) : "") + moment +
           " its effect, errno " + std::to_string(fault.errnoValue) +
           (fault.lasting == testing::FaultyFileSystem::Lasting::once ? "" : ", and all later calls");
}

/// Makes call 1, 2, 3 and so on go wrong, until `sequence` finishes before its fault comes about, which it tells by
/// false. It is given `kind`, the fault and the call's number. Returns how many did.
template <class Sequence, class Kind>
std::size_t forEachCall(const Sequence& sequence, Kind kind, const Fault& fault) {
    for (std::size_t number = 1;; ++number) {
        SCOPED_TRACE(describe(fault, number));
        if (!sequence(kind, fault, number) || ::testing::Test::HasFailure()) return number - 1;
    }
}

}  // namespace ordovan::test
