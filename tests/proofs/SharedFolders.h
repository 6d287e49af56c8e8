#pragma once

#include "OrdovanCore/FileSystem.h"
#include "tests/cli/CommandLine.h"
#include "tests/proofs/Proof.h"
#include "tests/support/SecondVolume.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ordovan::proofs {

/// How programs that ran at once ended.
struct Tally {
    std::size_t all = 0;
    std::size_t done = 0;     ///< with all that was asked for, or some of it
    std::size_t refused = 0;  ///< because another held the folder
};

/// The arguments of some of the commands that change files, in Downloads or in the folder "sub" inside it.
inline std::vector<test::Home::Arguments> chosen(Dice& dice, std::size_t count) {
    std::vector<test::Home::Arguments> commands;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string folder = dice.below(2) == 0 ? "Downloads" : "Downloads/sub";
        switch (dice.below(6)) {
            case 0:
            case 1:
                commands.push_back({"organize", folder, "--yes"});
                break;
            case 2:
                commands.push_back({"undo", folder, "--yes"});
                break;
            case 3:
                commands.push_back({"duplicates", folder, "--trash", "--yes"});
                break;
            case 4:
                commands.push_back({"restore", folder, "--yes"});
                break;
            default:
                commands.push_back({"big", folder, "--trash", folder + "/a.pdf", "--yes"});
        }
    }
    return commands;
}

/// A person's folder with another in it, and what lies in the Trash.
class SharedFolders {
public:
    SharedFolders() {
        for (const char* name : {"a.pdf", "b.jpg", "c.txt", "sub/a.pdf", "sub/b.zip", "sub/deep/d.jpg"}) {
            home_.write(name, name);
        }
        for (const char* name : {"x1.mp3", "x2.mp3", "sub/x3.mp3", "sub/x4.mp3"}) home_.write(name, "the same");
        original_ = files();
    }

    /// Starts these programs together and waits for all of them.
    void runAtOnce(const std::vector<test::Home::Arguments>& commands, Tally& tally) const {
        std::vector<::pid_t> running;
        std::vector<std::string> said(commands.size());
        std::map<int, std::string*> outputs;
        for (std::size_t i = 0; i < commands.size(); ++i) {
            int pipe[2];
            test::Home::makePipe(pipe);
            running.push_back(home_.start(commands[i], [&] {
                ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
                ::dup2(pipe[1], STDOUT_FILENO);
                ::dup2(pipe[1], STDERR_FILENO);
            }));
            ::close(pipe[1]);
            outputs[pipe[0]] = &said[i];
        }
        test::Home::drain(outputs);
        for (std::size_t i = 0; i < running.size(); ++i) {
            const int status = test::Home::await(running[i]);
            ++tally.all;
            if (status == 0 || status == 1) ++tally.done;
            if (said[i].find("Another ordovan+ run is working in this folder.") != std::string::npos) ++tally.refused;
            // A file that is to be trashed may have been moved by another program before.
            const bool isExpected = status == 0 || status == 1 || status == 3;
            EXPECT_TRUE(isExpected || (status == 2 && commands[i].front() == "big"))
                << commands[i].front() << " ended with " << status << ": " << said[i];
            EXPECT_TRUE(status == 0 || !said[i].empty()) << commands[i].front() << " failed and said nothing";
        }
    }

    /// Undoes and puts back in both folders until nothing is left to do.
    void takeAllBack() const {
        for (int round = 0; round < 6 && files() != original_; ++round) {
            for (const char* folder : {"Downloads", "Downloads/sub"}) {
                (void)home_.run({"restore", folder, "--yes"});
                (void)home_.run({"undo", folder, "--yes"});
            }
        }
    }

    /// The user's files by path, Trash included: what is in them.
    [[nodiscard]] std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(home_.folder.path())) {
            const std::string name = entry.path().lexically_relative(home_.folder.path());
            if (!entry.is_regular_file() || name.starts_with(".local/share/ordovan/") || name.starts_with(".config/") ||
                name.ends_with(".trashinfo")) {
                continue;
            }
            EXPECT_FALSE(OrdovanPartialName::isPartial(name)) << name;
            found[name] = home_.folder.read(name);
        }
        return found;
    }
    [[nodiscard]] std::multiset<std::string> contents() const {
        std::multiset<std::string> all;
        for (const auto& [name, content] : files()) all.insert(content);
        return all;
    }
    [[nodiscard]] const std::map<std::string, std::string>& original() const { return original_; }
    [[nodiscard]] std::string list() const {
        std::string text;
        for (const auto& [name, content] : files()) text += "\n    " + name + " = " + content;
        return text;
    }

private:
    test::Home home_;
    std::map<std::string, std::string> original_;
};

}  // namespace ordovan::proofs
