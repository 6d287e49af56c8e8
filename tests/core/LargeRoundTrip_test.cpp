// Organize and undo a large generated tree on the real disk, with everything odd that real folders hold.

#include "OrdovanCore/Executor.h"
#include "OrdovanCore/FolderCleanup.h"
#include "OrdovanCore/Planner.h"
#include "OrdovanCore/platform/DirectoryReader.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/DeviceNumbers.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using ordovan::test::TempFolder;
using ordovan::testing::describeTree;
using ordovan::testing::TreeItem;
using Kind = TreeItem::Kind;

// Takes the C library's place: what is flushed when has its own tests, and 20,000 flushes would measure the disk.
extern "C" int fsync(int) {
    return 0;
}

namespace {

constexpr std::size_t fileCount = 10'000;

constexpr std::array<std::string_view, 18> oddNames = {
    "with space", "new\nline", "\"double\"", "'single'",  "-rf", "--help", "\u00fcber", "u\u0308ber", "Twin",
    "twin",       ".dotted",   "*?[x]",      "tab\there", "%41", "$(x)",   "back\\",    "end.",       "\U0001F600",
};

constexpr std::array<std::string_view, 12> extensions = {".pdf", ".PDF",  ".jpg", ".tar.gz",  ".mp3", "",
                                                         ".md",  ".JSON", ".zip", ".unknown", ".doc", ".mov"};

/// A tree that is the same in every run.
class Forest {
public:
    Forest() {
        makeFolders();
        makeFiles();
        makeOthers();
    }

    [[nodiscard]] const std::vector<TreeItem>& items() const { return items_; }
    /// How many files there are to be moved: in folders that can be listed, and with names that are UTF-8.
    [[nodiscard]] std::size_t movable() const { return movable_; }

private:
    std::size_t below(std::size_t limit) { return random_() % limit; }

    template <class List>
    auto oneOf(const List& list) {
        return list[below(list.size())];
    }

    void makeFolders() {
        folders_.emplace_back();
        while (folders_.size() < 250) {
            // One draw a statement: their order within one is up to the compiler.
            const std::string parent = oneOf(folders_);
            const std::string name(oneOf(oddNames));
            const std::string number = below(2) == 0 ? "" : std::to_string(below(50));
            const std::string folder = parent + name + number + "/";
            if (folder.size() < 100) folders_.push_back(folder);
        }
        std::string deep;
        for (int depth = 0; depth < 24; ++depth) folders_.push_back(deep += "deep " + std::to_string(depth) + "/");
        folders_.push_back(std::string(255, 'L') + "/");
        for (const std::string& folder : folders_) taken_.insert(folder.substr(0, folder.find_last_of('/')));
    }

    void add(std::string path, std::string content, bool isMovable = true) {
        if (items_.size() == fileCount || !taken_.insert(path).second) return;
        items_.push_back({std::move(path), Kind::file, std::move(content)});
        movable_ += isMovable ? 1 : 0;
    }

    void makeFiles() {
        while (items_.size() < fileCount) {
            const std::string folder = oneOf(folders_);
            const std::string number = std::to_string(items_.size());
            std::string name(oneOf(oddNames));
            if (below(20) != 0) name += number;
            const std::string extension(oneOf(extensions));
            const std::string content = "content " + number;
            switch (below(40)) {
                case 0:
                    add(folder + std::string(255 - extension.size(), 'n') + extension, content);
                    break;
                case 1:
                    add(folder + "not\xffutf8 " + number + extension, content, false);
                    break;
                case 2:
                    add("bad\xff/" + number + extension, content, false);
                    break;
                case 3:
                    add("closed folder/" + number + extension, content, false);
                    break;
                case 4:
                    add(folder + "Caf\u00e9" + extension, content);
                    add(folder + "Cafe\u0301" + extension, content);
                    add(folder + "CAF\u00c9" + extension, content);
                    break;
                case 5:
                    add(folder + name + extension, "");
                    break;
                default:
                    add(folder + name + extension, content);
            }
        }
    }

    void makeOthers() {
        const std::vector<TreeItem> files = items_;
        for (int i = 0; i < 50; ++i) {
            const std::string name = oneOf(folders_) + "other " + std::to_string(i);
            std::string target = oneOf(files).path;
            for (const char c : name) target.insert(0, c == '/' ? "../" : "");
            items_.push_back({name + " to file.pdf", Kind::link, target});
            items_.push_back({name + " to folder", Kind::link, "."});
            items_.push_back({name + " to nowhere", Kind::link, "no\nwhere"});
            items_.push_back({name + " out.txt", Kind::link, "/etc/hostname"});
            items_.push_back({name + " pipe.pdf", Kind::fifo});
            const std::string& first = oneOf(files).path;
            items_.push_back({name + " name.png", Kind::hardLink, first});
            ++movable_;
        }
    }

    std::mt19937 random_{20240229};
    std::vector<std::string> folders_;
    std::set<std::string> taken_;
    std::vector<TreeItem> items_;
    std::size_t movable_ = 0;
};

/// Modes and times of every kind, and the items that `TreeItem` has no kind for.
void dress(const TempFolder& folder, const std::vector<TreeItem>& items) {
    std::mt19937 random{19700101};
    constexpr std::array<::mode_t, 6> modes = {0644, 0600, 0444, 0755, 0400, 06750};
    for (const TreeItem& item : items) {
        if (item.kind != Kind::file) continue;
        const std::string path = folder.path(item.path);
        ASSERT_EQ(::chmod(path.c_str(), modes[random() % modes.size()]), 0);
        const auto seconds = static_cast<std::int64_t>(random()) - 100'000'000;
        const ::timespec times[2] = {{0, UTIME_OMIT}, {seconds, static_cast<long>(random() % 1'000'000'000)}};
        ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    }
    for (const char* socket : {"socket", "socket.pdf", ".socket"}) {
        ASSERT_EQ(::mknod(folder.path(socket).c_str(), S_IFSOCK | 0644, 0), 0);
    }
    folder.write("unreadable 1.pdf", "secret");
    folder.write("unreadable 2", "secret");
    ordovan::test::giveToUnprivileged(folder.path());
    ::chmod(folder.path("unreadable 1.pdf").c_str(), 0);
    ::chmod(folder.path("unreadable 2").c_str(), 0);
    ::chmod(folder.path("closed folder").c_str(), 0);
}

/// Everything but the output folder itself.
std::map<std::string, std::string> treeOf(const TempFolder& folder) {
    auto all = describeTree(folder.path());
    all.erase("ordovan+");
    return all;
}

/// "3 moved, 2 skipped, 1 failed"
std::string counts(const OrdovanExecutionReport& report) {
    return std::to_string(report.movedCount()) + " moved, " + std::to_string(report.skippedCount()) + " skipped, " +
           std::to_string(report.failedCount()) + " failed";
}

/// Scans, plans and applies; a line that says what became of the files, and the stored journal.
std::string organized(const TempFolder& folder) {
    FileManagerDirectoryReader reader;
    SystemFileSystem disk;
    OrdovanInventoryLimits limits;
    limits.includeHidden = true;
    limits.maxDepth = 64;
    const Url output = folder.url("ordovan+");
    const auto inventory =
        OrdovanInventoryScanner::scan(folder.url(), reader, limits, std::vector{output}, [] { return true; });
    const auto plan = OrdovanPlanner::plan(inventory.files, folder.url(), output, {}, false, {}, false,
                                           ordovan::text::TimeZone::utc());
    const auto report = OrdovanExecutor::apply(plan.proposals, folder.url(), output, disk, 17);
    return counts(report) + ", " + std::to_string(plan.conflicts.size()) + " in conflict\n" + report.journal.encoded();
}

/// What undoing a stored journal did.
std::string undone(const TempFolder& folder, std::string_view stored) {
    SystemFileSystem disk;
    const auto journal = OrdovanJournal::decoded(stored);
    if (!journal) return "the journal can not be read";
    const Url output = folder.url("ordovan+");
    const auto report = OrdovanExecutor::undo(*journal, folder.url(), output, disk);
    std::vector<Url> vacated;
    for (const auto& outcome : report.outcomes) vacated.push_back(outcome.destination);
    (void)OrdovanFolderCleanup::removeEmptyFolders(vacated, output);
    return counts(report);
}

}  // namespace

TEST(LargeRoundTrip, GivesBackTheVeryTreeOfTenThousandFiles) {
    if (!ordovan::test::filesShareTheirFoldersDevice()) GTEST_SKIP() << ordovan::test::filesHaveOtherDevices;
    const TempFolder folder;
    const Forest forest;
    ordovan::testing::buildOnDisk(folder.path(), forest.items());
    ASSERT_NO_FATAL_FAILURE(dress(folder, forest.items()));
    const auto before = treeOf(folder);

    const std::string answer = ordovan::test::unprivileged([&] { return organized(folder); });
    const std::size_t lineEnd = answer.find('\n');
    // Skipped are the FIFOs and sockets, failed the two unreadable files; in conflict are namesakes.
    EXPECT_EQ(answer.substr(0, lineEnd), "8007 moved, 53 skipped, 2 failed, 1293 in conflict");
    EXPECT_EQ(forest.movable(), 8007u + 1293u);
    EXPECT_TRUE(folder.has("closed folder") && folder.has("unreadable 1.pdf") && folder.has("socket.pdf"));
    ASSERT_GT(folder.count("ordovan+"), 5u);
    for (const auto& category : std::filesystem::directory_iterator(folder.path("ordovan+"))) {
        folder.write("ordovan+/" + category.path().filename().string() + "/.DS_Store", "view settings");
    }
    ordovan::test::giveToUnprivileged(folder.path("ordovan+"));

    const std::string stored = answer.substr(lineEnd + 1);
    EXPECT_EQ(ordovan::test::unprivileged([&] { return undone(folder, stored); }), "8007 moved, 0 skipped, 0 failed");
    EXPECT_EQ(folder.count("ordovan+"), 0u);
    const auto after = treeOf(folder);
    EXPECT_EQ(after.size(), before.size());
    for (const auto& [path, item] : before) {
        const auto found = after.find(path);
        ASSERT_EQ(found == after.end() ? "gone" : found->second, item) << path;
    }
}
