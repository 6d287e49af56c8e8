#pragma once

#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ordovan::test {

/// What a run of the program left: its exit status (128 + the signal that ended it) and its two outputs.
struct Finished {
    int status = -1;
    std::string out;
    std::string err;

    /// Standard output as the JSON object it must be.
    [[nodiscard]] boost::json::object json() const {
        boost::system::error_code error;
        const boost::json::value value = boost::json::parse(out, error);
        if (error || !value.is_object()) throw std::runtime_error("not one JSON object: " + out);
        return value.as_object();
    }
};

/// The names of an object's members in their order.
inline std::vector<std::string> keys(const boost::json::object& object) {
    std::vector<std::string> names;
    for (const auto& member : object) names.emplace_back(member.key());
    return names;
}

/// The texts that one member has in all records of a list.
inline std::vector<std::string> column(const boost::json::value& records, std::string_view key) {
    std::vector<std::string> texts;
    for (const auto& record : records.as_array()) texts.emplace_back(record.as_object().at(key).as_string());
    return texts;
}

inline std::string text(const boost::json::value& value) {
    return std::string(value.as_string());
}

/// A person's home with a Downloads folder, and the program run in it. Nothing outside is read or written.
class Home {
public:
    using Arguments = std::vector<std::string>;

    Home() { folder.makeFolder("Downloads"); }

    TempFolder folder;
    /// An empty value takes a variable away.
    std::map<std::string, std::string> environment = {{"LANG", "C.UTF-8"}, {"TZ", "UTC"}, {"TERM", "xterm"}};
    bool runsUnprivileged = false;
    /// Called in the program's process before it begins.
    std::function<void()> prepare = [] {};
    std::string workingFolder = folder.path();

    [[nodiscard]] std::string downloads() const { return folder.path("Downloads"); }
    [[nodiscard]] std::string download(std::string_view name) const { return downloads() + "/" + std::string(name); }
    [[nodiscard]] std::string organized(std::string_view name) const {
        return download("ordovan+/" + std::string(name));
    }
    /// Where the program keeps its records.
    [[nodiscard]] std::string records() const { return folder.path(".local/share/ordovan"); }
    /// The undo record of Downloads; only once there is one.
    [[nodiscard]] std::string journal() const {
        return std::filesystem::directory_iterator(records() + "/journals")->path();
    }

    /// Writes a file below Downloads, last changed at `epoch`.
    void write(std::string_view name, std::string_view content, ::time_t epoch = 1'600'000'000) const {
        folder.write("Downloads/" + std::string(name), content);
        setTime(download(name), epoch);
    }
    static void setTime(const std::string& path, ::time_t epoch) {
        const ::timespec times[2] = {{epoch, 0}, {epoch, 0}};
        if (::utimensat(AT_FDCWD, path.c_str(), times, 0) != 0) throw std::runtime_error("can not date " + path);
    }
    /// Every item below Downloads, described. The output folder itself is not an item: it stays when it is empty.
    [[nodiscard]] std::map<std::string, std::string> tree() const {
        auto items = ordovan::testing::describeTree(downloads());
        items.erase("ordovan+");
        return items;
    }
    [[nodiscard]] bool has(std::string_view name) const { return folder.has("Downloads/" + std::string(name)); }
    [[nodiscard]] std::string read(std::string_view name) const {
        return folder.read("Downloads/" + std::string(name));
    }

    /// Runs the program to its end, standard input being empty. A descriptor can be put in place of its output.
    [[nodiscard]] Finished run(const Arguments& arguments, std::optional<int> output = {}) const {
        int out[2], err[2];
        makePipe(out);
        makePipe(err);
        const ::pid_t child = start(arguments, [&] {
            ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
            ::dup2(output ? *output : out[1], STDOUT_FILENO);
            ::dup2(err[1], STDERR_FILENO);
        });
        ::close(out[1]);
        ::close(err[1]);
        Finished finished;
        drain({{out[0], &finished.out}, {err[0], &finished.err}});
        finished.status = await(child);
        return finished;
    }

    /// Starts the program; `redirect` is run in its process first.
    [[nodiscard]] ::pid_t start(const Arguments& arguments, const std::function<void()>& redirect) const {
        const ::pid_t child = ::fork();
        if (child < 0) throw std::runtime_error("can not fork");
        if (child == 0) {
            redirect();
            become(arguments);
        }
        return child;
    }

    /// Turns this process into the program.
    [[noreturn]] void become(const Arguments& arguments) const {
        prepare();
        for (const char* variable : {"NO_COLOR", "LC_ALL", "LC_COLLATE", "XDG_DATA_HOME", "XDG_CONFIG_HOME"}) {
            ::unsetenv(variable);
        }
        ::setenv("HOME", folder.path().c_str(), 1);
        for (const auto& [name, value] : environment) {
            value.empty() ? ::unsetenv(name.c_str()) : ::setenv(name.c_str(), value.c_str(), 1);
        }
        if (::chdir(workingFolder.c_str()) != 0) ::_exit(126);
        if (runsUnprivileged) detail::dropPrivileges();
        std::vector<std::string> words = {ORDOVAN_CLI};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> argv;
        for (std::string& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }

    /// The exit status as a shell would show it.
    static int await(::pid_t child) {
        int status = 0;
        while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    static void makePipe(int (&ends)[2]) {
        if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    }

    /// Reads descriptors to their ends and closes them.
    static void drain(std::map<int, std::string*> sources) {
        while (!sources.empty()) {
            std::vector<::pollfd> waiting;
            for (const auto& source : sources) waiting.push_back({source.first, POLLIN, 0});
            if (::poll(waiting.data(), waiting.size(), -1) < 0) continue;
            for (const ::pollfd& ready : waiting) {
                if (ready.revents == 0) continue;
                char piece[65536];
                const ::ssize_t got = ::read(ready.fd, piece, sizeof piece);
                if (got > 0) {
                    sources.at(ready.fd)->append(piece, static_cast<std::size_t>(got));
                } else if (got == 0 || errno != EINTR) {
                    ::close(ready.fd);
                    sources.erase(ready.fd);
                }
            }
        }
    }
};

/// The files of Downloads that a preview told as JSON has selected, in its order.
inline std::vector<std::string> selectedSources(const Home& home, const Finished& run) {
    std::vector<std::string> sources;
    const auto object = run.json();
    for (const auto& proposal : object.at("proposals").as_array()) {
        if (!proposal.at("selected").as_bool()) continue;
        sources.push_back(text(proposal.at("source")).substr(home.downloads().size() + 1));
    }
    return sources;
}

/// For `Home::prepare`: no file can grow beyond 16 KiB, which is room for all records but that of some hundred files.
inline void limitFileSize() {
    constexpr ::rlimit room = {.rlim_cur = 16 << 10, .rlim_max = 16 << 10};
    ::setrlimit(RLIMIT_FSIZE, &room);
    ::signal(SIGXFSZ, SIG_IGN);
}

/// Holds a folder as a run in it does.
class Held {
public:
    explicit Held(const std::string& folder) : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) throw std::runtime_error("can not lock " + folder);
    }
    ~Held() { ::close(descriptor_); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

    /// For a forked process, which must not look as if it had opened the folder itself. The folder stays held.
    void forget() const { ::close(descriptor_); }

private:
    int descriptor_;
};

/// The program at a terminal: what it shows is read here, and keys can be pressed.
class Terminal {
public:
    /// All three standard descriptors are the terminal.
    Terminal(const Home& home, const Home::Arguments& arguments) {
        child_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
        if (child_ < 0) throw std::runtime_error("no terminal");
        if (child_ == 0) home.become(arguments);
    }
    ~Terminal() {
        if (child_ > 0) {
            ::kill(child_, SIGKILL);
            Home::await(child_);
        }
        ::close(terminal_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Waits until the program has shown a text. False when it ended without.
    [[nodiscard]] bool waitFor(std::string_view shown) {
        while (shown_.find(shown) == std::string::npos) {
            if (!readMore()) return false;
        }
        return true;
    }
    void type(std::string_view keys) const { static_cast<void>(::write(terminal_, keys.data(), keys.size()) > 0); }
    void signal(int number) const { ::kill(child_, number); }
    [[nodiscard]] ::pid_t process() const { return child_; }

    /// Everything shown from the start, and the exit status.
    [[nodiscard]] Finished finish() {
        while (readMore()) {
        }
        const int status = Home::await(std::exchange(child_, -1));
        return {status, shown_, {}};
    }

private:
    bool readMore() {
        char piece[4096];
        const ::ssize_t got = ::read(terminal_, piece, sizeof piece);
        if (got <= 0) return got < 0 && errno == EINTR;
        shown_.append(piece, static_cast<std::size_t>(got));
        return true;
    }

    int terminal_ = -1;
    ::pid_t child_ = -1;
    std::string shown_;
};

}  // namespace ordovan::test
