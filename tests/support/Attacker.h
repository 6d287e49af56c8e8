#pragma once

#include "OrdovanCore/testing/FaultyFileSystem.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <random>
#include <stop_token>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace ordovan::test {

// Sanitizers slow programs down by an order of magnitude.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
inline constexpr bool isSanitized = true;
#elif defined(__has_feature)
inline constexpr bool isSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
inline constexpr bool isSanitized = false;
#endif

/// How long a race goes on at most. It ends long before, by what it has done; how soon the other thread gets a
/// processor is up to the machine.
class Patience {
public:
    [[nodiscard]] bool isOver() const { return std::chrono::steady_clock::now() > end_; }

private:
    std::chrono::steady_clock::time_point end_ = std::chrono::steady_clock::now() + std::chrono::minutes(1);
};

/// A second thread that takes names away and gives them back, again and again, and leaves them as they were.
class Attacker {
public:
    /// Two names of one volume. Both exist and are exchanged; or the first one's item takes the second name for a while
    /// whenever that is free.
    struct Pair {
        std::string first, second;
        bool areExchanged = true;
    };

    /// True when the file system can exchange these.
    static bool works(const std::vector<Pair>& pairs) {
        return std::ranges::all_of(pairs, [](const Pair& pair) {
            return !pair.areExchanged || (rename(pair.first, pair.second, RENAME_EXCHANGE) &&
                                          rename(pair.second, pair.first, RENAME_EXCHANGE));
        });
    }

    /// Lets it go first now and then. Where it has no processor of its own, it would hardly ever act between two steps
    /// of another.
    static void letIn() {
        thread_local std::minstd_rand dice;
        if (dice() % 16 == 0) std::this_thread::yield();
    }

    /// The same before each call of a file system.
    static void letInto(testing::FaultyFileSystem& fs) {
        fs.setBeforeCall([](const testing::FaultyFileSystem::Call&) { letIn(); });
    }

    /// `rest` is up to how many turns, of half a microsecond or so, it lets pass before it acts again, at random, so
    /// that what takes many steps comes to its end now and then. It holds the names for a shorter time. The thread is
    /// at work when this returns.
    explicit Attacker(std::vector<Pair> pairs, unsigned rest = 1)
        : thread_([this, pairs = std::move(pairs), rest](const std::stop_token& stop) {
              std::minstd_rand dice;
              const auto pause = [&](unsigned most) {
                  // Given to others, the processor might not come back for long. A system call takes the same time in
                  // every kind of build.
                  unsigned calls = callsATurn * (1 + static_cast<unsigned>(dice()) % most);
                  for (; calls > 0 && !stop.stop_requested(); --calls) static_cast<void>(::getppid());
              };
              std::vector<const Pair*> acted;
              while (!stop.stop_requested()) {
                  for (const Pair& pair : pairs) {
                      if (act(pair.first, pair.second, pair.areExchanged)) acted.push_back(&pair);
                  }
                  pause(1 + rest / 8);
                  // It is in the nature of an attack that it comes too late now and then.
                  for (const Pair* pair : acted) static_cast<void>(act(pair->second, pair->first, pair->areExchanged));
                  acted.clear();
                  if (!isAtWork_.exchange(true)) isAtWork_.notify_one();
                  pause(rest);
              }
          }) {
        isAtWork_.wait(false);
    }

private:
    static constexpr unsigned callsATurn = 4;

    static bool rename(const std::string& from, const std::string& to, unsigned flags) {
        return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0;
    }
    static bool act(const std::string& from, const std::string& to, bool exchanges) {
        return rename(from, to, exchanges ? RENAME_EXCHANGE : RENAME_NOREPLACE);
    }

    std::atomic<bool> isAtWork_ = false;
    std::jthread thread_;
};

}  // namespace ordovan::test
