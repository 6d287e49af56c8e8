#pragma once

#include "OrdovanCore/FileSystem.h"

#include <array>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace ordovan::testing {

/// The operations of the port, in their order.
enum class Operation {
    exists,
    isRegularFile,
    isSymlink,
    sameVolume,
    createDirectory,
    move,
    copy,
    remove,
    fileSize,
    contentHash,
    fileIdentity,
    trash,
};
inline constexpr std::size_t operationCount = 12;

/// True for the operations that can return an error, `createDirectory` to `trash`.
[[nodiscard]] constexpr bool canFail(Operation operation) {
    return operation >= Operation::createDirectory;
}

/// A file system that passes every call on to another and breaks down as told.
///
///     FaultyFileSystem faulty(memory);
///     faulty.failCall(3, ENOSPC);                       // the third call that can fail
///     faulty.failCall(Operation::move, 1, EIO, Moment::afterEffect);
///
/// Calls are counted from construction or the last `reset()`, beginning with 1. Any thread.
class FaultyFileSystem final : public OrdovanFileSystem {
public:
    enum class Moment {
        beforeEffect,     ///< refused: nothing has changed
        afterEffect,      ///< the lost reply: it was done, and the caller is told that it failed
        insteadOfEffect,  ///< the lie: the caller is told of success (true, 0, `falseHash`, the URL) and nothing was
                          ///< done
    };
    enum class Lasting { once, forGood };

    struct Call {
        Operation operation;
        Url url;             ///< the only or the first argument
        Url second;          ///< the second argument, an empty path where there is none
        std::size_t number;  ///< among all calls, those that can not fail included
    };
    using Hook = std::function<void(const Call& call)>;

    explicit FaultyFileSystem(OrdovanFileSystem& inner) : inner_(inner) {}

    /// Makes one of the calls that can fail do so; `forGood` also every later one.
    void failCall(std::size_t number, int errnoValue, Moment moment = Moment::beforeEffect,
                  Lasting lasting = Lasting::once);
    /// The same, counting only this operation's calls. One that can not fail answers false.
    void failCall(Operation operation, std::size_t number, int errnoValue, Moment moment = Moment::beforeEffect,
                  Lasting lasting = Lasting::once);
    /// The same with an error of any domain.
    void failCall(std::optional<Operation> operation, std::size_t number, OrdovanSystemError error, Moment moment,
                  Lasting lasting);
    /// Makes one call of `contentHash` answer with `falseHash`.
    void lieAboutHash(std::size_t number = 1);

    /// Called before and after each call is passed on, also one that is made to fail; may change the file system
    /// below, and call this one again.
    void setBeforeCall(Hook hook);
    void setAfterCall(Hook hook);

    /// How many calls that can fail there were.
    [[nodiscard]] std::size_t callCount() const;
    [[nodiscard]] std::size_t callCount(Operation operation) const;
    /// How many faults and lies have come about. A loop over N ends when a run leaves this at 0.
    [[nodiscard]] std::size_t faultsDone() const;
    /// Forgets all faults, lies and counts; hooks stay.
    void reset();

    bool exists(const Url& url) override;
    bool isRegularFile(const Url& url) override;
    bool isSymlink(const Url& url) override;
    bool sameVolume(const Url& a, const Url& b) override;
    OrdovanResult<void> createDirectory(const Url& url) override;
    OrdovanResult<void> move(const Url& from, const Url& to) override;
    OrdovanResult<void> copy(const Url& from, const Url& to) override;
    OrdovanResult<void> remove(const Url& url) override;
    OrdovanResult<std::int64_t> fileSize(const Url& url) override;
    OrdovanResult<std::string> contentHash(const Url& url) override;
    OrdovanResult<std::string> fileIdentity(const Url& url) override;
    OrdovanResult<Url> trash(const Url& url) override;

    static constexpr std::string_view falseHash = "0000000000000000000000000000000000000000000000000000000000000000";

private:
    struct Fault {
        std::optional<Operation> operation;
        std::size_t number;
        OrdovanSystemError error;
        Moment moment;
        Lasting lasting;
    };

    std::optional<Fault> count(Call& call);
    template <class T>
    T pass(Call call, const T& success, const std::function<T()>& inner);

    OrdovanFileSystem& inner_;
    mutable std::mutex mutex_;
    std::vector<Fault> faults_;
    std::array<std::size_t, operationCount> counts_{};
    std::size_t failable_ = 0;
    std::size_t all_ = 0;
    std::size_t faultsDone_ = 0;
    Hook before_;
    Hook after_;
};

}  // namespace ordovan::testing
