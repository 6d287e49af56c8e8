#include "OrdovanCore/platform/Interrupts.h"

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace ordovan::interrupts {
namespace {

constexpr std::array signals = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t arrived = 0;
volatile std::sig_atomic_t statusOfTheEnd = 0;
std::array<int, 2> ends = {-1, -1};

void note(int) {
    const int saved = errno;
    arrived = arrived + 1;
    // The pipe does not block: when it is full, it is readable already.
    static_cast<void>(::write(ends[1], "!", 1) == 1);
    errno = saved;
}

[[noreturn]] void endTheProgram(int) {
    ::_exit(statusOfTheEnd);
}

}  // namespace

void install() {
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) ends = {-1, -1};
    struct sigaction noting{};
    noting.sa_handler = note;
    for (const int signal : signals) {
        struct sigaction before{};
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) continue;
        ::sigaction(signal, &noting, nullptr);
    }
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
}

bool requested() {
    return arrived != 0;
}

int count() {
    return arrived;
}

int descriptor() {
    return ends[0];
}

void drain() {
    std::array<char, 64> bytes;
    while (::read(ends[0], bytes.data(), bytes.size()) > 0) {
    }
}

void letThemEndTheProgram(int exitStatus) {
    statusOfTheEnd = exitStatus;
    struct sigaction ending{};
    ending.sa_handler = endTheProgram;
    for (const int signal : signals) {
        struct sigaction now{};
        if (::sigaction(signal, nullptr, &now) != 0 || now.sa_handler != note) continue;
        ::sigaction(signal, &ending, nullptr);
    }
}

}  // namespace ordovan::interrupts
