#include "OrdovanCLI/Console.h"

#include "OrdovanCLI/Output.h"
#include "OrdovanCore/Text.h"
#include "OrdovanCore/platform/Interrupts.h"

#include <array>
#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace ordovan::cli {
namespace {

constexpr std::string_view red = "\x1b[1;31m";
constexpr std::string_view yellow = "\x1b[1;33m";
constexpr std::string_view plain = "\x1b[0m";
constexpr std::string_view eraseLine = "\r\x1b[K";

void writeMessage(std::string_view text) {
    Output errors(STDERR_FILENO);
    errors.buffer() += text;
    errors.flush();
}

/// A variable that is set to anything but nothing (no-color.org).
bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool isDumbTerminal() {
    const char* terminal = std::getenv("TERM");
    return terminal == nullptr || std::string_view(terminal) == "dumb";
}

}  // namespace

Console::Console(Manner manner) : isQuiet_(manner.isQuiet) {
    const bool colored = manner.mayColor && !isSet("NO_COLOR") && !isDumbTerminal();
    colorsResults_ = colored && ::isatty(STDOUT_FILENO) == 1;
    colorsMessages_ = colored && ::isatty(STDERR_FILENO) == 1;
    showsProgress_ = !isQuiet_ && !isDumbTerminal() && ::isatty(STDERR_FILENO) == 1;
}

void Console::say(std::string_view color, std::string_view word, std::string_view sentence) {
    clearProgress();
    std::string line;
    if (!word.empty()) {
        if (colorsMessages_) line += color;
        line += word;
        if (colorsMessages_) line += plain;
        line += ": ";
    }
    writeMessage(line.append(sentence).append("\n"));
}

void Console::remark(std::string_view sentence) {
    if (!isQuiet_) say({}, {}, sentence);
}

void Console::warn(std::string_view sentence) {
    say(yellow, "warning", sentence);
}

void Console::fail(std::string_view sentence) {
    say(red, "error", sentence);
}

bool Console::canAsk() const {
    return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1;
}

Console::Answer Console::ask(std::string_view question) {
    clearProgress();
    writeMessage(std::string(question) + " [y/N] ");
    std::string line;
    while (!interrupts::requested()) {
        std::array<pollfd, 2> sources = {pollfd{STDIN_FILENO, POLLIN, 0}, pollfd{interrupts::descriptor(), POLLIN, 0}};
        if (::poll(sources.data(), sources.size(), -1) < 0 || sources[0].revents == 0) continue;
        char c = '\0';
        const ssize_t got = ::read(STDIN_FILENO, &c, 1);
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (got <= 0) {
            writeMessage("\n");
            return Answer::no;
        }
        if (c != '\n') {
            line.push_back(c);
            continue;
        }
        const std::string answer = text::asciiLowercased(line);
        return answer == "y" || answer == "yes" ? Answer::yes : Answer::no;
    }
    writeMessage("\n");
    return Answer::interrupted;
}

void Console::progress(std::string_view text) {
    constexpr auto interval = std::chrono::milliseconds(100);
    const auto now = std::chrono::steady_clock::now();
    if (!showsProgress_ || now - lastProgress_ < interval) return;
    lastProgress_ = now;
    progressIsShown_ = true;
    writeMessage(std::string(eraseLine).append(text));
}

void Console::clearProgress() {
    if (!progressIsShown_) return;
    progressIsShown_ = false;
    lastProgress_ = {};
    writeMessage(eraseLine);
}

void occupyStandardDescriptors() {
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) != -1) continue;
        // Standard input is given an end it can not read from, the others one they can not write to.
        static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
}

}  // namespace ordovan::cli
