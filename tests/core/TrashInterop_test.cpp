// The Trash shared with other programs: what goes in here is listed and put back by `gio` and trash-cli, what they put
// in is put back from here, and nobody is left with entries of things that are gone.

#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;
using ordovan::testing::buildOnDisk;
using ordovan::testing::describeTree;
using ::testing::IsEmpty;

namespace {

std::string shellWord(std::string_view text) {
    std::string shell = "'";
    for (const char c : text) shell += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return shell += '\'';
}

/// Standard output of a shell command. Messages of the tools are left out; a failure shows in what they did not do.
std::string output(const std::string& command) {
    std::string all;
    std::FILE* const pipe = ::popen((command + " 2>/dev/null").c_str(), "r");
    if (pipe == nullptr) return all;
    std::array<char, 4096> piece{};
    for (std::size_t got = 1; got > 0;) {
        got = std::fread(piece.data(), 1, piece.size(), pipe);
        all.append(piece.data(), got);
    }
    ::pclose(pipe);
    return all;
}

bool hasTools() {
    return std::system(
               "for tool in gio trash-put trash-list trash-restore trash-rm; do"
               "  command -v $tool >/dev/null || exit 1;"
               "done") == 0;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    std::ranges::sort(lines);
    return lines;
}

/// A home of its own, below the temporary folder.
class TrashInterop : public ::testing::Test {
protected:
    void SetUp() override {
        if (!hasTools()) GTEST_SKIP() << "NOT TESTED: gio (libglib2.0-bin) and trash-cli are not installed";
        ::setenv("HOME", home_.path().c_str(), 1);
        ::setenv("XDG_DATA_HOME", home_.path("data").c_str(), 1);
        ::setenv("LC_ALL", "C.UTF-8", 1);
        buildOnDisk(root_,
                    {"plain = 1", "sub dir/new\nline = 2", "sub dir/plain = 3", "100% + ünïcode = 4", "-rf = 5"});
    }
    void TearDown() override {
        oldHome_.empty() ? ::unsetenv("HOME") : ::setenv("HOME", oldHome_.c_str(), 1);
        ::unsetenv("XDG_DATA_HOME");
        ::unsetenv("LC_ALL");
    }

    [[nodiscard]] std::string at(std::string_view name) const { return root_ + "/" + std::string(name); }
    OrdovanTrashRecord trash(const std::vector<std::string>& names) {
        std::vector<OrdovanFileTrasher::Item> items;
        for (const std::string& name : names) {
            items.push_back({Url::file(at(name)), fs_.fileSize(Url::file(at(name))).value()});
        }
        const auto report = OrdovanFileTrasher::trash(items, Url::file(root_), fs_);
        EXPECT_EQ(report.movedCount(), names.size());
        return report.record;
    }
    OrdovanTrashReport restore(const OrdovanTrashRecord& record) {
        return OrdovanDuplicateTrasher::restore(record, Url::file(root_), fs_);
    }
    /// The paths below `root_` that trash-list shows, without their dates. It looks into the Trash of every volume.
    [[nodiscard]] std::vector<std::string> listed() const {
        std::vector<std::string> paths;
        for (const std::string& line : linesOf(output("trash-list"))) {
            const std::size_t path = line.find(root_ + "/");
            if (path != std::string::npos) paths.push_back(line.substr(path));
        }
        std::ranges::sort(paths);
        return paths;
    }
    [[nodiscard]] std::size_t infoCount() const { return describeTree(home_.path("data/Trash/info")).size(); }
    /// Has trash-restore put the first (and only) item of a path back.
    static void restoreByTrashCli(const std::string& path) {
        (void)output("echo 0 | trash-restore " + shellWord(path));
    }
    /// The record of what another program trashed.
    [[nodiscard]] OrdovanTrashEntry entryOf(const std::string& original, const std::string& trashed) {
        const Url item = Url::file(trashed);
        return {original, trashed, fs_.fileSize(item).value(), fs_.contentHash(item).value()};
    }

    TempFolder home_;
    SystemFileSystem fs_;
    std::string root_ = std::string(home_.makeFolder("tree").path());
    const std::string oldHome_ = std::getenv("HOME") != nullptr ? std::getenv("HOME") : "";
};

TEST_F(TrashInterop, TrashCliListsAndPutsBackWhatWasTrashedHere) {
    const auto before = describeTree(root_);
    trash({"plain", "100% + ünïcode", "-rf"});
    EXPECT_EQ(listed(), (std::vector{at("-rf"), at("100% + ünïcode"), at("plain")}));
    for (const char* name : {"plain", "100% + ünïcode", "-rf"}) restoreByTrashCli(at(name));
    EXPECT_EQ(describeTree(root_), before);
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(TrashInterop, TrashCliListsNothingOnceItWasPutBackFromHere) {
    const auto before = describeTree(root_);
    const OrdovanTrashRecord record = trash({"plain", "sub dir/plain", "sub dir/new\nline"});
    EXPECT_EQ(listed(), (std::vector{at("plain"), at("sub dir/new"), at("sub dir/plain")}));  // one name has two lines
    EXPECT_EQ(restore(record).movedCount(), 3U);
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_EQ(infoCount(), 0U);
    EXPECT_EQ(describeTree(root_), before);
}

TEST_F(TrashInterop, WhatTrashCliPutBackIsGoneFromTheTrashAndOverwritesNothing) {
    const OrdovanTrashRecord record = trash({"plain"});
    restoreByTrashCli(at("plain"));
    EXPECT_EQ(restore(record).outcomes.at(0).message, "No longer in the Trash (emptied or moved).");
    EXPECT_EQ(home_.read("tree/plain"), "1");
}

TEST_F(TrashInterop, WhatTrashCliAndGioTrashedIsPutBackFromHere) {
    const auto before = describeTree(root_);
    (void)output("trash-put " + shellWord(at("plain")));
    (void)output("gio trash " + shellWord(at("100% + ünïcode")));
    ASSERT_EQ(infoCount(), 2U);
    const std::string files = home_.path("data/Trash/files/");
    const OrdovanTrashRecord record{
        1, {entryOf(at("plain"), files + "plain"), entryOf(at("100% + ünïcode"), files + "100% + ünïcode")}};
    EXPECT_EQ(restore(record).movedCount(), 2U);
    EXPECT_EQ(describeTree(root_), before);
    EXPECT_EQ(infoCount(), 0U);
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(TrashInterop, ItemsOfOneNameFromSeveralProgramsStandSideBySide) {
    (void)output("gio trash " + shellWord(at("plain")));
    trash({"sub dir/plain"});
    buildOnDisk(root_, {"plain = 6"});
    (void)output("trash-put " + shellWord(at("plain")));
    buildOnDisk(root_, {"plain = 7"});
    trash({"plain"});
    EXPECT_EQ(describeTree(home_.path("data/Trash/files")).size(), 4U);
    EXPECT_EQ(infoCount(), 4U);
    EXPECT_EQ(listed(), (std::vector{at("plain"), at("plain"), at("plain"), at("sub dir/plain")}));
}

// Not by trash-empty, which would empty the Trash of every volume there is.
TEST_F(TrashInterop, WhatTrashCliDeletedIsGone) {
    const OrdovanTrashRecord record = trash({"plain", "-rf"});
    for (const char* name : {"plain", "-rf"}) (void)output("trash-rm " + shellWord(at(name)));
    EXPECT_EQ(home_.count("data/Trash/files"), 0U);
    const OrdovanTrashReport report = restore(record);
    EXPECT_EQ(report.outcomes.at(0).message, "No longer in the Trash (emptied or moved).");
    EXPECT_EQ(report.record, record);
}

TEST_F(TrashInterop, OrphansAndGhostsInTheTrashDisturbNobody) {
    buildOnDisk(home_.path("data/Trash"), {"files/plain = orphan", "info/-rf.trashinfo",
                                           "info/half.trashinfo.A1B2C3 = [Tr", "info/ghost.trashinfo = [Trash Info]"});
    const OrdovanTrashRecord record = trash({"plain", "-rf"});
    EXPECT_THAT(listed(), ::testing::IsSupersetOf({at("plain"), at("-rf")}));
    EXPECT_EQ(restore(record).movedCount(), 2U);
    EXPECT_EQ(home_.read("data/Trash/files/plain"), "orphan");
    EXPECT_TRUE(home_.has("data/Trash/info/ghost.trashinfo"));
    EXPECT_TRUE(home_.has("data/Trash/info/-rf.trashinfo"));
}

TEST_F(TrashInterop, OnAnotherVolumeTrashCliListsAndPutsBackWhatWasTrashedHere) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume volume;
    root_ = volume.path("tree");
    buildOnDisk(root_, {"film one = 1", "film two = 2"});
    const OrdovanTrashRecord record = trash({"film one", "film two"});
    EXPECT_EQ(listed(), (std::vector{at("film one"), at("film two")}));
    EXPECT_EQ(restore({1, {record.entries[0]}}).movedCount(), 1U);
    EXPECT_EQ(listed(), (std::vector{at("film two")}));
    restoreByTrashCli(at("film two"));
    EXPECT_EQ(volume.root().read("tree/film two"), "2");
    EXPECT_THAT(listed(), IsEmpty());
}

/// `gio` shows the Trash through a service on a session bus, which is started for each look at it.
class TrashInteropWithGio : public TrashInterop {
protected:
    void SetUp() override {
        TrashInterop::SetUp();
        if (IsSkipped()) return;
        home_.makeFolder("run");
        ::chmod(home_.path("run").c_str(), 0700);
        ::setenv("XDG_RUNTIME_DIR", home_.path("run").c_str(), 1);
        const bool works = std::system("dbus-run-session -- gio trash --list >/dev/null 2>&1") == 0;
        if (!works) GTEST_SKIP() << "NOT TESTED: gio can not show the Trash here (packages gvfs and dbus-daemon)";
    }
    void TearDown() override {
        ::unsetenv("XDG_RUNTIME_DIR");
        TrashInterop::TearDown();
    }

    static std::string inSession(const std::string& script) {
        return output("dbus-run-session -- sh -c " + shellWord(script));
    }
    /// The original paths below `root_` that gio shows.
    [[nodiscard]] std::vector<std::string> shown() const {
        std::vector<std::string> paths = linesOf(inSession("gio trash --list"));
        for (std::string& line : paths) line.erase(0, line.find('\t') + 1);
        std::erase_if(paths, [&](const std::string& path) { return !path.starts_with(root_ + "/"); });
        std::ranges::sort(paths);
        return paths;
    }
};

// Names beyond ASCII are left out: gio escapes them where it shows them, and restores to the escaped name.
TEST_F(TrashInteropWithGio, ListsAndPutsBackWhatWasTrashedHere) {
    buildOnDisk(root_, {"100% + more = 6"});
    const auto before = describeTree(root_);
    trash({"plain", "100% + more", "-rf"});
    EXPECT_EQ(shown(), (std::vector{at("-rf"), at("100% + more"), at("plain")}));
    (void)inSession("gio trash --restore trash:///plain trash:///-rf trash:///100%25%20+%20more");
    EXPECT_EQ(describeTree(root_), before);
    EXPECT_EQ(infoCount(), 0U);
}

TEST_F(TrashInteropWithGio, ListsNothingOnceItWasPutBackFromHere) {
    const OrdovanTrashRecord record = trash({"plain", "sub dir/plain", "-rf"});
    EXPECT_EQ(shown().size(), 3U);
    EXPECT_EQ(restore(record).movedCount(), 3U);
    EXPECT_THAT(shown(), IsEmpty());
}

}  // namespace
