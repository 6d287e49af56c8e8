#include "OrdovanCore/testing/FaultyFileSystem.h"

#include <algorithm>
#include <type_traits>

namespace ordovan::testing {

void FaultyFileSystem::failCall(std::size_t number, int errnoValue, Moment moment, Lasting lasting) {
    failCall(std::nullopt, number, OrdovanSystemError::posix(errnoValue), moment, lasting);
}

void FaultyFileSystem::failCall(Operation operation, std::size_t number, int errnoValue, Moment moment,
                                Lasting lasting) {
    failCall(std::optional(operation), number, OrdovanSystemError::posix(errnoValue), moment, lasting);
}

void FaultyFileSystem::failCall(std::optional<Operation> operation, std::size_t number, OrdovanSystemError error,
                                Moment moment, Lasting lasting) {
    const std::lock_guard lock(mutex_);
    faults_.push_back({operation, number, error, moment, lasting});
}

void FaultyFileSystem::lieAboutHash(std::size_t number) {
    failCall(Operation::contentHash, number, 0, Moment::insteadOfEffect);
}

void FaultyFileSystem::setBeforeCall(Hook hook) {
    const std::lock_guard lock(mutex_);
    before_ = std::move(hook);
}

void FaultyFileSystem::setAfterCall(Hook hook) {
    const std::lock_guard lock(mutex_);
    after_ = std::move(hook);
}

std::size_t FaultyFileSystem::callCount() const {
    const std::lock_guard lock(mutex_);
    return failable_;
}

std::size_t FaultyFileSystem::callCount(Operation operation) const {
    const std::lock_guard lock(mutex_);
    return counts_.at(static_cast<std::size_t>(operation));
}

std::size_t FaultyFileSystem::faultsDone() const {
    const std::lock_guard lock(mutex_);
    return faultsDone_;
}

void FaultyFileSystem::reset() {
    const std::lock_guard lock(mutex_);
    faults_.clear();
    counts_ = {};
    failable_ = all_ = faultsDone_ = 0;
}

/// Numbers a call and finds the fault that is meant for it.
std::optional<FaultyFileSystem::Fault> FaultyFileSystem::count(Call& call) {
    const std::lock_guard lock(mutex_);
    call.number = ++all_;
    const std::size_t ofOperation = ++counts_.at(static_cast<std::size_t>(call.operation));
    if (canFail(call.operation)) ++failable_;
    const auto fault = std::ranges::find_if(faults_, [&](const Fault& each) {
        if (each.operation ? *each.operation != call.operation : !canFail(call.operation)) return false;
        const std::size_t number = each.operation ? ofOperation : failable_;
        return each.lasting == Lasting::once ? number == each.number : number >= each.number;
    });
    if (fault == faults_.end()) return std::nullopt;
    ++faultsDone_;
    return *fault;
}

template <class T>
T FaultyFileSystem::pass(Call call, const T& success, const std::function<T()>& inner) {
    const std::optional<Fault> fault = count(call);
    Hook before;
    Hook after;
    {
        const std::lock_guard lock(mutex_);
        before = before_;
        after = after_;
    }
    if (before) before(call);
    T answer = success;
    if (!fault || fault->moment == Moment::afterEffect) answer = inner();
    if (fault && fault->moment != Moment::insteadOfEffect) {
        if constexpr (std::is_same_v<T, bool>) {
            answer = false;
        } else {
            answer = std::unexpected(fault->error);
        }
    }
    if (after) after(call);
    return answer;
}

bool FaultyFileSystem::exists(const Url& url) {
    return pass<bool>({Operation::exists, url, {}, 0}, true, [&] { return inner_.exists(url); });
}

bool FaultyFileSystem::isRegularFile(const Url& url) {
    return pass<bool>({Operation::isRegularFile, url, {}, 0}, true, [&] { return inner_.isRegularFile(url); });
}

bool FaultyFileSystem::isSymlink(const Url& url) {
    return pass<bool>({Operation::isSymlink, url, {}, 0}, true, [&] { return inner_.isSymlink(url); });
}

bool FaultyFileSystem::sameVolume(const Url& a, const Url& b) {
    return pass<bool>({Operation::sameVolume, a, b, 0}, true, [&] { return inner_.sameVolume(a, b); });
}

OrdovanResult<void> FaultyFileSystem::createDirectory(const Url& url) {
    return pass<OrdovanResult<void>>({Operation::createDirectory, url, {}, 0}, {},
                                     [&] { return inner_.createDirectory(url); });
}

OrdovanResult<void> FaultyFileSystem::move(const Url& from, const Url& to) {
    return pass<OrdovanResult<void>>({Operation::move, from, to, 0}, {}, [&] { return inner_.move(from, to); });
}

OrdovanResult<void> FaultyFileSystem::copy(const Url& from, const Url& to) {
    return pass<OrdovanResult<void>>({Operation::copy, from, to, 0}, {}, [&] { return inner_.copy(from, to); });
}

OrdovanResult<void> FaultyFileSystem::remove(const Url& url) {
    return pass<OrdovanResult<void>>({Operation::remove, url, {}, 0}, {}, [&] { return inner_.remove(url); });
}

OrdovanResult<std::int64_t> FaultyFileSystem::fileSize(const Url& url) {
    return pass<OrdovanResult<std::int64_t>>({Operation::fileSize, url, {}, 0}, 0,
                                             [&] { return inner_.fileSize(url); });
}

OrdovanResult<std::string> FaultyFileSystem::contentHash(const Url& url) {
    return pass<OrdovanResult<std::string>>({Operation::contentHash, url, {}, 0}, std::string(falseHash),
                                            [&] { return inner_.contentHash(url); });
}

OrdovanResult<std::string> FaultyFileSystem::fileIdentity(const Url& url) {
    return pass<OrdovanResult<std::string>>({Operation::fileIdentity, url, {}, 0}, std::string("0:0"),
                                            [&] { return inner_.fileIdentity(url); });
}

OrdovanResult<Url> FaultyFileSystem::trash(const Url& url) {
    return pass<OrdovanResult<Url>>({Operation::trash, url, {}, 0}, url, [&] { return inner_.trash(url); });
}

}  // namespace ordovan::testing
