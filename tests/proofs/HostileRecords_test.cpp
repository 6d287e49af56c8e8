// Journals and Trash records that somebody made to do harm, or that got damaged: each is refused, whole or entry by
// entry, and nothing but what is provably ours is touched.

#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/TrashRecord.h"
#include "OrdovanCore/testing/MemoryFileSystem.h"
#include "tests/proofs/DiskWorld.h"
#include "tests/proofs/Proof.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace ordovan::proofs;
using ordovan::testing::digestOf;
using ordovan::testing::MemoryFileSystem;

namespace {

std::string inJson(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '\0') {
            out += "\\u0000";
        } else if (c == '"' || c == '\\') {
            (out += '\\') += c;
        } else {
            out += c;
        }
    }
    return out += '"';
}

/// One entry of a journal as it is stored; numbers are given as they stand.
struct Entry {
    std::string source;
    std::string destination;
    std::string content = "organized";
    std::string byteSize = "9";
    std::string fileID = "";
    bool sameVolume = false;
    std::string hash = "";

    [[nodiscard]] std::string json() const {
        return R"({"byteSize": )" + byteSize + R"(, "contentHash": )" +
               inJson(hash.empty() ? digestOf(content) : hash) + R"(, "destination": )" + inJson(destination) +
               R"(, "fileID": )" + inJson(fileID) + R"(, "sameVolume": )" + (sameVolume ? "true" : "false") +
               R"(, "source": )" + inJson(source) + "}";
    }
};

std::string journal(const std::vector<Entry>& entries, std::string_view version = "1") {
    std::string text = R"({"createdAtEpoch": 1700000000, "entries": [)";
    for (const Entry& entry : entries) (text += &entry == entries.data() ? "" : ", ") += entry.json();
    return (text += R"(], "version": )").append(version) + "}";
}

/// A disk on which "tree/ordovan+/Documents/a.pdf" was organized, beside things that were not.
class Hostile : public ::testing::Test {
protected:
    Hostile() {
        disk.build({"ordovan+/Documents/a.pdf = organized", "ordovan+/Documents/b.pdf = organized", "mine.txt = mine",
                    "folder/"});
        disk.write("decoy/organized.pdf", "organized");
        std::filesystem::create_symlink(disk.path("decoy"), disk.path("tree/link"));
        std::filesystem::create_symlink(disk.path("decoy"), disk.path("tree/ordovan+/Linked"));
        std::filesystem::create_symlink(disk.path("decoy/organized.pdf"),
                                        disk.path("tree/ordovan+/Documents/link.pdf"));
        ::mkfifo(disk.path("tree/ordovan+/Documents/fifo.pdf").c_str(), 0644);
        before = disk.described();
        decoy = disk.decoy();
    }

    [[nodiscard]] std::string tree(std::string_view name) const { return disk.tree() + "/" + std::string(name); }
    [[nodiscard]] std::string organized(std::string_view name) const {
        return tree("ordovan+/Documents/" + std::string(name));
    }

    /// What undoing this stored journal changes of the chosen folder: the paths that are new.
    std::vector<std::string> undo(const std::string& stored) {
        const std::string file(disk.locations().journal(disk.root()).path());
        disk.write(file.substr(disk.base().size() + 1), stored);
        {
            Program program(disk);
            program.undo();
        }
        std::vector<std::string> fresh;
        for (const auto& [path, description] : disk.described()) {
            if (!before.contains(path)) fresh.push_back(path);
        }
        return fresh;
    }
    void expectRefused(const std::string& what, const std::string& stored) {
        SCOPED_TRACE(what);
        EXPECT_EQ(undo(stored), std::vector<std::string>());
        EXPECT_EQ(disk.described(), before);
        EXPECT_EQ(disk.decoy(), decoy);
        ++tried;
    }

    Disk disk;
    std::map<std::string, std::string> before;
    std::map<std::string, std::string> decoy;
    std::size_t tried = 0;
};

TEST_F(Hostile, JournalsWithWaysOutOfTheFolderAreRefused) {
    const std::string good = organized("a.pdf");
    const std::vector<std::pair<std::string, std::string>> sources = {
        {"another place", disk.path("decoy/new.pdf")},
        {"upwards", tree("../decoy/new.pdf")},
        {"upwards out of a folder that is there", tree("folder/../../decoy/new.pdf")},
        {"a relative place", "new.pdf"},
        {"a relative place upwards", "../../decoy/new.pdf"},
        {"nothing", ""},
        {"the top", "/"},
        {"the folder itself", disk.tree()},
        {"a system file", "/etc/ordovan-new"},
        {"a NUL at the end", tree("new.pdf") + std::string(1, '\0')},
        {"a NUL in the middle", tree("new") + std::string(1, '\0') + "/../../decoy/new.pdf"},
        {"through a link", tree("link/new.pdf")},
        {"through a link and back", tree("link/../new.pdf")},
        {"a URL", "file://" + tree("new.pdf")},
        {"a megabyte of name", tree(std::string(1 << 20, 'n'))},
        {"a megabyte of folders", tree(std::string(1 << 19, 'n').replace(0, 0, "")) + std::string(1 << 19, '/')},
        {"a name that no file can have", tree(std::string(300, 'n'))},
        {"a place with the folder's name in front", disk.tree() + "-other/new.pdf"},
        {"a place that is taken", tree("mine.txt")},
        {"a taken folder", tree("folder")},
        {"a place below a file", tree("mine.txt/new.pdf")},
        {"a name like a link", tree("link")},
    };
    for (const auto& [what, source] : sources) {
        expectRefused("back to " + what, journal({{.source = source, .destination = good}}));
    }
    const std::vector<std::pair<std::string, std::string>> destinations = {
        {"another place", disk.path("decoy/organized.pdf")},
        {"upwards", tree("ordovan+/../../decoy/organized.pdf")},
        {"a relative place", "ordovan+/Documents/a.pdf"},
        {"a file that was not organized", tree("mine.txt")},
        {"a linked file", organized("link.pdf")},
        {"a linked folder", tree("ordovan+/Linked/organized.pdf")},
        {"a FIFO", organized("fifo.pdf")},
        {"a folder", tree("ordovan+/Documents")},
        {"the output folder", tree("ordovan+")},
        {"nothing", ""},
        {"a NUL", organized("a.pdf") + std::string(1, '\0')},
        {"a megabyte", organized(std::string(1 << 20, 'n'))},
        {"another output folder", disk.tree() + "-other/ordovan+/a.pdf"},
    };
    for (const auto& [what, destination] : destinations) {
        expectRefused("from " + what, journal({{.source = tree("new.pdf"), .destination = destination}}));
    }
    tell("hostile journals: ways out", tried, "journals, each refused with nothing touched");
}

TEST_F(Hostile, JournalsThatTellFalseFactsAreRefused) {
    const Entry good{.source = tree("new.pdf"), .destination = organized("a.pdf")};
    const auto changed = [&](auto change) {
        Entry entry = good;
        change(entry);
        return journal({entry});
    };
    expectRefused("another hash", changed([](Entry& e) { e.content = "something else"; }));
    expectRefused("no hash", changed([](Entry& e) { e.hash = " "; }));
    expectRefused("a hash in capitals", changed([](Entry& e) {
                      e.hash = digestOf("organized");
                      std::ranges::transform(e.hash, e.hash.begin(), [](char c) {
                          return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
                      });
                  }));
    expectRefused("another identity", changed([](Entry& e) {
                      e.sameVolume = true;
                      e.fileID = "1:1";
                  }));
    for (const char* size : {"8", "10", "0", "-1", "-9", "9223372036854775807", "9223372036854775808", "1e400", "9.5",
                             "99999999999999999999999999999999999999", "\"9\"", "null", "true"}) {
        expectRefused(std::string("the size ") + size, changed([&](Entry& e) { e.byteSize = size; }));
    }
    for (const char* version : {"0", "2", "-1", "1.5", "9223372036854775808", "\"1\"", "null"}) {
        expectRefused(std::string("the version ") + version, journal({good}, version));
    }
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    expectRefused("deep lists", R"({"createdAtEpoch": 1, "entries": )" + deep + R"(, "version": 1})");
    expectRefused("a deep unknown member", R"({"x": )" + deep + "," + journal({good}).substr(1));
    std::string objects;
    for (int i = 0; i < 100'000; ++i) objects += R"({"a":)";
    expectRefused("deep objects",
                  R"({"x": )" + objects + "1" + std::string(100'000, '}') + "," + journal({good}).substr(1));
    expectRefused("two lists of entries", R"({"entries": [], )" + journal({good}).substr(1));
    expectRefused("no journal", std::string(1 << 20, '\0'));
    tell("hostile journals: false facts", tried, "journals, each refused with nothing touched");
}

TEST_F(Hostile, EntriesAreRefusedOneByOneBesideGoodOnes) {
    const Entry good{.source = tree("new.pdf"), .destination = organized("a.pdf")};
    const Entry other{.source = tree("other.pdf"), .destination = organized("b.pdf")};
    const Entry outside{.source = disk.path("decoy/new.pdf"), .destination = organized("b.pdf")};
    // An entry is known by its destination; of two with one destination each is judged by what is on the disk then.
    EXPECT_EQ(undo(journal({outside, good})), std::vector<std::string>({"new.pdf"}));
    EXPECT_EQ(disk.decoy(), decoy);
    EXPECT_FALSE(disk.has("decoy/new.pdf"));
    EXPECT_EQ(disk.read("tree/new.pdf"), "organized");
    EXPECT_EQ(disk.read("tree/ordovan+/Documents/b.pdf"), "organized");
    EXPECT_EQ(undo(journal({good, other, outside})), std::vector<std::string>({"new.pdf", "other.pdf"}));
    EXPECT_EQ(disk.decoy(), decoy);
    tell("hostile journals: beside good entries", 2, "journals, the good entries put back and no other");
}

TEST_F(Hostile, EntriesThatContradictEachOtherLoseNothing) {
    const auto contents = disk.contents();
    const std::string a = organized("a.pdf"), b = organized("b.pdf"), fresh = tree("new.pdf");
    const std::vector<std::vector<Entry>> journals = {
        {{.source = fresh, .destination = a},
         {.source = tree("new2.pdf"), .destination = a}},                            // one file to two places
        {{.source = fresh, .destination = a}, {.source = fresh, .destination = b}},  // two files to one place
        {{.source = a, .destination = b}, {.source = b, .destination = a}},          // a circle
        {{.source = a, .destination = a}},                                           // back to itself
        {{.source = organized("c.pdf"), .destination = a}, {.source = fresh, .destination = organized("c.pdf")}},
        {{.source = fresh + "/x.pdf", .destination = a}, {.source = fresh, .destination = b}},  // a file as a folder
        {{.source = fresh, .destination = a}, {.source = fresh + "/x.pdf", .destination = b}},
    };
    for (const auto& entries : journals) {
        (void)undo(journal(entries));
        EXPECT_EQ(disk.contents(), contents);
        EXPECT_EQ(disk.decoy(), decoy);
        ++tried;
    }
    tell("hostile journals: contradictions", tried, "journals, every content still there once");
}

TEST_F(Hostile, ALinkInPlaceOfTheOutputFolderIsNotFollowed) {
    const std::string stored = journal({{.source = tree("new.pdf"), .destination = tree("ordovan+/organized.pdf")}});
    std::filesystem::rename(disk.path("tree/ordovan+"), disk.path("aside"));
    std::filesystem::create_symlink(disk.path("decoy"), disk.path("tree/ordovan+"));
    before = disk.described();
    expectRefused("a linked output folder", stored);
}

TEST_F(Hostile, JournalsCutAtAnyByteAreRefusedWhole) {
    std::string stored = journal({{.source = tree("new.pdf"), .destination = organized("a.pdf")}});
    const auto whole = OrdovanJournal::decoded(stored);
    ASSERT_TRUE(whole);
    for (std::size_t size = 0; size < stored.size(); ++size) {
        EXPECT_FALSE(OrdovanJournal::decoded(stored.substr(0, size))) << "cut to " << size;
    }
    const std::size_t step = rounds(40, 1);
    for (std::size_t size = 0; size < stored.size(); size += step) {
        expectRefused("cut to " + std::to_string(size), stored.substr(0, size));
    }
    tell("hostile journals: cut", stored.size() + tried, "cuts, each refused whole");
}

/// A disk with a file in the Trash, and a decoy.
class HostileTrash : public Hostile {
protected:
    HostileTrash() {
        disk.build({"film.mkv = film"});
        {
            Program program(disk);
            program.trash({tree("film.mkv")});
        }
        trashed = disk.path("data/Trash/files/film.mkv");
        before = disk.described();
        before.erase("film.mkv");
        files = disk.files();
    }

    static std::string entry(std::string_view original, std::string_view place, std::string_view content = "film",
                             std::string_view size = "4") {
        return R"({"byteSize": )" + std::string(size) + R"(, "contentHash": )" + inJson(digestOf(content)) +
               R"(, "original": )" + inJson(original) + R"(, "trashed": )" + inJson(place) + "}";
    }
    static std::string record(const std::string& entries) {
        return R"({"entries": [)" + entries + R"(], "version": 1})";
    }
    void expectRefused(const std::string& what, const std::string& stored) {
        SCOPED_TRACE(what);
        disk.write("data/ordovan/trash-record.json", stored);
        {
            Program(disk).restore();
        }
        EXPECT_EQ(disk.files(), files);
        EXPECT_EQ(disk.described(), before);
        EXPECT_EQ(disk.decoy(), decoy);
        ++tried;
    }

    std::string trashed;
    std::map<std::string, std::string> files;
};

TEST_F(HostileTrash, RecordsAreRefusedWholeOrEntryByEntry) {
    ASSERT_TRUE(disk.has("data/Trash/files/film.mkv"));
    const std::string fresh = tree("new.mkv");
    for (const auto& original :
         {disk.path("decoy/new.mkv"), tree("../decoy/new.mkv"), tree("link/new.mkv"), tree("link/../new.mkv"),
          std::string("new.mkv"), std::string(), std::string("/"), fresh + std::string(1, '\0'), disk.tree(),
          tree("mine.txt"), tree("mine.txt/new.mkv"), tree(std::string(1 << 20, 'n')), disk.tree() + "-other/new.mkv",
          disk.path("data/Trash/files/new.mkv"), tree("folder")}) {
        expectRefused("back to " + original.substr(0, 100), record(entry(original, trashed)));
    }
    disk.write("decoy/film.mkv", "film");
    decoy = disk.decoy();
    for (const auto& place : {disk.path("decoy/film.mkv"), disk.path("data/Trash/files/../../../decoy/film.mkv"),
                              disk.path("data/Trash/files/gone.mkv"), disk.path("data/Trash/files"), std::string(),
                              tree("mine.txt"), std::string("/.Trash/x"), trashed + std::string(1, '\0')}) {
        expectRefused("from " + place, record(entry(fresh, place)));
    }
    expectRefused("another hash", record(entry(fresh, trashed, "flim")));
    for (const char* size : {"3", "5", "-4", "9223372036854775807", "1e400", "4.5"}) {
        expectRefused(std::string("the size ") + size, record(entry(fresh, trashed, "film", size)));
    }
    expectRefused("another version", R"({"entries": [], "version": 2})");
    const std::string whole = record(entry(fresh, trashed));
    for (std::size_t size = 0; size < whole.size(); size += rounds(40, 1)) {
        expectRefused("cut to " + std::to_string(size), whole.substr(0, size));
    }
    tell("hostile Trash records", tried, "records, each refused with nothing touched");
}

/// Pieces of which hostile paths are put together.
std::string hostilePath(Dice& dice) {
    constexpr std::array roots = {"/r",  "/r/ordovan+", "/r/ordovan+/Documents", "/decoy", "",     "/",
                                  "/rr", "/r/link",     "/r/ordovan+/link",      "..",     "/r/.", "/r//ordovan+"};
    constexpr std::array names = {"a.pdf", "b.pdf",         "new.pdf",       "..",    ".",       "", "mine.txt", "link",
                                  "sub",   "organized.pdf", "../../decoy/x", "x/y/z", "ordovan+"};
    std::string path = roots[dice.below(roots.size())];
    for (std::size_t pieces = dice.below(4); pieces > 0; --pieces) (path += '/') += names[dice.below(names.size())];
    if (dice.below(40) == 0) path += '\0';
    if (dice.below(40) == 0) path += "/";
    return path;
}

TEST(HostileMutations, OfJournalsLoseAndReachNothing) {
    const std::size_t count = rounds(4'000, 200'000);
    std::size_t restored = 0;
    for (std::uint64_t seed = 1; seed <= count; ++seed) {
        Dice dice(seed);
        MemoryFileSystem memory;
        ordovan::testing::build(
            memory, "/",
            {"r/ordovan+/Documents/a.pdf = x", "r/ordovan+/Documents/b.pdf = y", "r/ordovan+/a.pdf = x",
             "r/mine.txt = x", "r/sub/", "decoy/x = x", "decoy/organized.pdf = x", "r/link -> /decoy",
             "r/ordovan+/link -> /decoy", "rr/a.pdf = x"});
        const auto contents = memory.contents();
        const auto decoy = memory.snapshot("/decoy"), beside = memory.snapshot("/rr");
        OrdovanJournal journal;
        for (std::size_t entries = 1 + dice.below(6); entries > 0; --entries) {
            const bool isGood = dice.below(3) == 0;
            const std::string destination = isGood ? "/r/ordovan+/Documents/a.pdf" : hostilePath(dice);
            const bool sameVolume = dice.below(2) == 0;
            journal.entries.emplace_back(hostilePath(dice), destination, sameVolume,
                                         dice.below(8) == 0 ? static_cast<std::int64_t>(dice.next()) : 1,
                                         digestOf(dice.below(4) == 0 ? "y" : "x"), dice.below(4) == 0 ? "1:1" : "");
        }
        const auto decoded = OrdovanJournal::decoded(journal.encoded());
        if (!decoded) continue;  // a NUL in a path is refused whole
        const auto report = OrdovanExecutor::undo(*decoded, Url::file("/r"), Url::file("/r/ordovan+"), memory, {});
        restored += report.movedCount();
        ASSERT_EQ(memory.contents(), contents) << "seed " << seed;
        ASSERT_EQ(memory.snapshot("/decoy"), decoy) << "seed " << seed;
        ASSERT_EQ(memory.snapshot("/rr"), beside) << "seed " << seed;
        ASSERT_EQ(memory.linkTarget("/r/link"), "/decoy") << "seed " << seed;
        for (const auto& outcome : report.outcomes) {
            if (outcome.status != OrdovanExecutionStatus::moved) continue;
            ASSERT_TRUE(memory.exists(outcome.source) || report.movedCount() > 1) << "seed " << seed;
        }
    }
    EXPECT_GT(restored, count / 100);  // or else nothing was tried
    tell("hostile journals: mutations", count, "made by seed, nothing lost and nothing outside reached");
}

TEST(HostileMutations, OfTrashRecordsLoseAndReachNothing) {
    const std::size_t count = rounds(4'000, 200'000);
    std::size_t restored = 0;
    for (std::uint64_t seed = 1; seed <= count; ++seed) {
        Dice dice(seed);
        MemoryFileSystem memory;
        ordovan::testing::build(
            memory, "/",
            {"r/mine.txt = x", "r/sub/", "decoy/x = x", "decoy/organized.pdf = x", "r/link -> /decoy", "rr/a.pdf = x",
             "home/user/.local/share/Trash/files/a.pdf = x", "home/user/.local/share/Trash/files/b.pdf = y"});
        const auto contents = memory.contents();
        const auto decoy = memory.snapshot("/decoy"), beside = memory.snapshot("/rr");
        OrdovanTrashRecord record;
        for (std::size_t entries = 1 + dice.below(6); entries > 0; --entries) {
            const std::string trash(MemoryFileSystem::homeTrashPath);
            const std::string place = dice.below(2) == 0 ? trash + "/files/a.pdf" : trash + hostilePath(dice);
            record.entries.emplace_back(hostilePath(dice), dice.below(5) == 0 ? hostilePath(dice) : place,
                                        dice.below(8) == 0 ? static_cast<std::int64_t>(dice.next()) : 1,
                                        digestOf(dice.below(4) == 0 ? "y" : "x"));
        }
        const auto decoded = OrdovanTrashRecord::decoded(record.encoded());
        if (!decoded) continue;
        restored += OrdovanDuplicateTrasher::restore(*decoded, Url::file("/r"), memory).movedCount();
        ASSERT_EQ(memory.contents(), contents) << "seed " << seed;
        ASSERT_EQ(memory.snapshot("/decoy"), decoy) << "seed " << seed;
        ASSERT_EQ(memory.snapshot("/rr"), beside) << "seed " << seed;
    }
    EXPECT_GT(restored, count / 100);
    tell("hostile Trash records: mutations", count, "made by seed, nothing lost and nothing outside reached");
}

}  // namespace
