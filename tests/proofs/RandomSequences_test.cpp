// Random sequences of what a user, another application and the program do to a folder, once on the real disk and once
// in memory. After every step both must look alike and say the same, and the program must have lost, doubled and
// overwritten nothing. A sequence that fails is shrunk; its seed and its steps are printed.

#include "tests/proofs/DiskWorld.h"
#include "tests/proofs/Proof.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using namespace ordovan::proofs;
using ordovan::testing::MemoryFileSystem;

namespace {

enum class Kind {
    create,
    edit,
    editKeepingSize,
    replace,
    rename,
    remove,
    preview,
    organize,
    organizeSome,
    organizeAndTakeBack,
    undo,
    undoOne,
    trashExtras,
    trashSome,
    trashAndTakeBack,
    restore,
    restoreOne,
    emptyTrash,
    removeFromTrash,
    editInTrash,
};
constexpr std::array<const char*, 20> names = {"create",
                                               "edit",
                                               "edit keeping the size",
                                               "replace",
                                               "rename",
                                               "remove",
                                               "preview",
                                               "organize",
                                               "organize some",
                                               "organize and take back",
                                               "undo",
                                               "undo one",
                                               "trash extras",
                                               "trash some",
                                               "trash and take back",
                                               "restore",
                                               "restore one",
                                               "empty the Trash",
                                               "remove from the Trash",
                                               "edit in the Trash"};

/// One step. What it is done to is chosen by the two numbers among what is there then, so that a sequence makes sense
/// also when steps are left out.
struct Step {
    Kind kind;
    std::uint64_t a;
    std::uint64_t b;
};

using Files = std::map<std::string, std::string>;  // by path below the folder: content

/// The controller and the disk under it, real or not.
class Side {
public:
    virtual ~Side() = default;
    virtual TidyViewModel& model() = 0;
    virtual void finish() = 0;
    [[nodiscard]] virtual std::string root() const = 0;
    [[nodiscard]] virtual Files files() = 0;
    [[nodiscard]] virtual Files trash() = 0;
    virtual void write(const std::string& path, const std::string& content) = 0;
    virtual void replace(const std::string& path, const std::string& content) = 0;
    virtual void rename(const std::string& from, const std::string& to) = 0;
    virtual void remove(const std::string& path) = 0;
    virtual void writeInTrash(const std::string& name, const std::string& content) = 0;
    virtual void removeFromTrash(const std::string& name) = 0;
    /// Everything beside the folder, the Trash and the records.
    [[nodiscard]] virtual std::map<std::string, std::string> decoy() = 0;

    [[nodiscard]] std::multiset<std::string> contents() {
        std::multiset<std::string> all;
        for (const auto& [path, content] : files()) all.insert(content);
        for (const auto& [path, content] : trash()) all.insert(content);
        return all;
    }
    [[nodiscard]] std::string below(std::string_view path) const {
        return std::string(path.starts_with(root() + "/") ? path.substr(root().size() + 1) : "(elsewhere)");
    }
};

class MemorySide final : public Side {
public:
    MemorySide() {
        world_.memory.makeDirectory("/r");
        world_.memory.write("/home/user/decoy/letter.txt", "private");
        model_ = world_.previewed();
    }
    TidyViewModel& model() override { return *model_; }
    void finish() override { world_.tasks.finish(); }
    [[nodiscard]] std::string root() const override { return "/r"; }
    [[nodiscard]] Files files() override { return filesBelow("/r"); }
    [[nodiscard]] Files trash() override {
        const std::string folder = std::string(MemoryFileSystem::homeTrashPath) + "/files";
        return world_.memory.item(folder) ? filesBelow(folder) : Files();
    }
    void write(const std::string& path, const std::string& content) override {
        world_.memory.write("/r/" + path, content);
    }
    void replace(const std::string& path, const std::string& content) override {
        world_.memory.replace("/r/" + path, content);
    }
    void rename(const std::string& from, const std::string& to) override {
        const Url target = Url::file("/r/" + to);
        (void)world_.memory.createDirectory(target.deletingLastPathComponent());
        (void)world_.memory.move(Url::file("/r/" + from), target);
    }
    void remove(const std::string& path) override { world_.memory.removeTree("/r/" + path); }
    void writeInTrash(const std::string& name, const std::string& content) override {
        world_.memory.write(std::string(MemoryFileSystem::homeTrashPath) + "/files/" + name, content);
    }
    void removeFromTrash(const std::string& name) override {
        const std::string trash(MemoryFileSystem::homeTrashPath);
        world_.memory.removeTree(trash + "/files/" + name);
        if (world_.memory.item(trash + "/info/" + name + ".trashinfo")) {
            world_.memory.removeTree(trash + "/info/" + name + ".trashinfo");
        }
    }
    [[nodiscard]] std::map<std::string, std::string> decoy() override {
        return world_.memory.snapshot("/home/user/decoy");
    }

private:
    struct World : ordovan::test::TidyWorld {
        void TestBody() override {}
    };
    [[nodiscard]] Files filesBelow(const std::string& folder) {
        Files found;
        for (const auto& [path, description] : world_.memory.snapshot(folder)) {
            if (description.starts_with("file")) found[path] = *world_.memory.read(folder + "/" + path);
        }
        return found;
    }

    World world_;
    std::unique_ptr<TidyViewModel> model_;
};

class DiskSide final : public Side {
public:
    DiskSide() : program_(disk_) {}

    TidyViewModel& model() override { return program_.model(); }
    void finish() override {
        program_.run([](TidyViewModel&) { return true; });
    }
    [[nodiscard]] std::string root() const override { return disk_.tree(); }
    [[nodiscard]] Files files() override { return filesBelow(disk_.tree()); }
    [[nodiscard]] Files trash() override {
        return disk_.has("data/Trash/files") ? filesBelow(disk_.path("data/Trash/files")) : Files();
    }
    void write(const std::string& path, const std::string& content) override { disk_.write("tree/" + path, content); }
    void replace(const std::string& path, const std::string& content) override {
        disk_.write("fresh", content);
        std::filesystem::rename(disk_.path("fresh"), disk_.path("tree/" + path));
    }
    void rename(const std::string& from, const std::string& to) override {
        const std::filesystem::path target = disk_.path("tree/" + to);
        std::filesystem::create_directories(target.parent_path());
        if (!std::filesystem::exists(target)) std::filesystem::rename(disk_.path("tree/" + from), target);
    }
    void remove(const std::string& path) override { std::filesystem::remove(disk_.path("tree/" + path)); }
    void writeInTrash(const std::string& name, const std::string& content) override {
        disk_.write("data/Trash/files/" + name, content);
    }
    void removeFromTrash(const std::string& name) override {
        std::filesystem::remove(disk_.path("data/Trash/files/" + name));
        std::filesystem::remove(disk_.path("data/Trash/info/" + name + ".trashinfo"));
    }
    [[nodiscard]] std::map<std::string, std::string> decoy() override { return disk_.decoy(); }

private:
    static Files filesBelow(const std::string& folder) {
        Files found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (entry.is_regular_file()) {
                found[entry.path().lexically_relative(folder)] = Disk::contentOf(entry.path());
            }
        }
        return found;
    }

    Disk disk_;
    Program program_;
};

template <class Items>
std::string nth(const Items& items, std::uint64_t number) {
    return std::next(items.begin(), static_cast<std::ptrdiff_t>(number % items.size()))->first;
}

/// What a run said, in words that are the same wherever the folder lies.
std::string said(Side& side) {
    std::string text;
    const auto add = [&](const OrdovanExecutionOutcome& outcome) {
        text += side.below(outcome.source.path()) + " -> " + side.below(outcome.destination.path()) + ": " +
                std::string(rawValue(outcome.status)) + ", " + outcome.message + "\n";
    };
    if (const auto report = side.model().lastReport()) std::ranges::for_each(report->outcomes, add);
    if (const auto report = side.model().lastTrashReport()) std::ranges::for_each(report->outcomes, add);
    if (const auto& journal = side.model().recoverableJournal()) {
        for (const auto& entry : journal->entries) {
            text += "can go back: " + side.below(entry.destination()) + " to " + side.below(entry.source()) + ", " +
                    std::to_string(entry.byteSize()) + " " + std::string(entry.contentHash()) + "\n";
        }
    }
    for (const auto& entry : side.model().trashRecord()->entries) {
        text += "in the Trash: " + side.below(entry.original()) + ", " + std::string(entry.contentHash()) + "\n";
    }
    if (const auto& plan = side.model().plan()) {
        for (const auto& proposal : plan->proposals) {
            text += "proposed: " + side.below(proposal.source.path()) + " to " +
                    side.below(proposal.destination.path()) + "\n";
        }
        for (const auto& skip : plan->skipped) text += "skipped: " + std::string(skip.reason.view()) + "\n";
    }
    return text + side.model().journalWarning().value_or("") + side.model().runRefusal().value_or("");
}

/// Checks that a run told the truth: what it says it moved is there, and only there. Says what is wrong, or nothing.
template <class Report>
std::string lie(Side& side, const Report& report, bool isPuttingBack) {
    const Files files = side.files();
    for (const OrdovanExecutionOutcome& outcome : report.outcomes) {
        if (outcome.status != OrdovanExecutionStatus::moved) continue;
        const Url& now =
            isPuttingBack && outcome.source.path().starts_with(side.root()) ? outcome.source : outcome.destination;
        if (now.path().starts_with(side.root()) && !files.contains(side.below(now.path()))) {
            return "said to be at " + std::string(now.path()) + ", and is not";
        }
    }
    return "";
}

/// How many files the runs of each kind have moved, so that a proof that tried nothing is seen to be none.
std::array<std::size_t, names.size()> movedBy{};

/// One sequence under way on one side.
class Player {
public:
    explicit Player(Side& side) : side_(side) {}

    /// Takes a step; says what is wrong with what the program did, or nothing.
    std::string take(const Step& step) {
        const bool isProgram = step.kind >= Kind::preview && step.kind <= Kind::restoreOne;
        if (!isProgram) {
            change(step);
            return "";
        }
        const auto contents = side_.contents();
        const auto decoy = side_.decoy();
        std::string wrong = act(step);
        side_.finish();
        if (side_.contents() != contents) return "contents were lost or doubled";
        if (side_.decoy() != decoy) return "something else was touched";
        for (const auto& [path, content] : side_.files()) {
            if (OrdovanPartialName::isPartial(path)) return "a partial copy is left: " + path;
        }
        return wrong;
    }

private:
    void change(const Step& step) {
        constexpr std::array folders = {"", "", "sub/", "sub/deep/", "other/", "ordovan+/", "ordovan+/Documents/"};
        constexpr std::array stems = {"a", "b", "report", "c 2"};
        constexpr std::array extensions = {".pdf", ".jpg", ".txt", ".zip", "", ".PDF"};
        const Files files = side_.files();
        const Files trash = side_.trash();
        const std::string content = "content " + std::to_string(step.b % 5);
        const std::string fresh =
            std::string(folders[step.a % 7]) + stems[step.a / 7 % 4] + extensions[step.a / 28 % 6];
        const auto isFree = [&](const std::string& path) {
            return !files.contains(path) && std::ranges::none_of(files, [&](const auto& file) {
                return file.first.starts_with(path + "/") || path.starts_with(file.first + "/");
            });
        };
        if (step.kind == Kind::create) {
            if (isFree(fresh)) side_.write(fresh, content);
            return;
        }
        if (step.kind >= Kind::emptyTrash) {
            if (trash.empty()) return;
            // The names that one Trash gives may differ from the other's; what lies in it does not.
            const std::string name = byContent(trash, step.a);
            if (step.kind == Kind::removeFromTrash) side_.removeFromTrash(name);
            if (step.kind == Kind::editInTrash) side_.writeInTrash(name, changed(trash.at(name)));
            if (step.kind == Kind::emptyTrash) {
                for (const auto& item : trash) side_.removeFromTrash(item.first);
            }
            return;
        }
        if (files.empty()) return;
        const std::string path = nth(files, step.b);
        if (step.kind == Kind::edit) side_.write(path, content + " edited");
        if (step.kind == Kind::editKeepingSize) side_.write(path, changed(files.at(path)));
        if (step.kind == Kind::replace) side_.replace(path, step.a % 2 == 0 ? files.at(path) : content);
        if (step.kind == Kind::rename && isFree(fresh)) side_.rename(path, fresh);
        if (step.kind == Kind::remove) side_.remove(path);
    }

    std::string act(const Step& step) {
        TidyViewModel& model = side_.model();
        const Files before = side_.files();
        if (step.kind == Kind::preview) {
            model.preview();
            return "";
        }
        if (step.kind == Kind::organizeSome && model.plan()) {
            std::vector<bool> left(model.plan()->proposals.size());
            for (std::size_t i = 0; i < left.size(); ++i) left[i] = (step.a >> (i % 60)) % 2 == 0;
            model.setExcludedProposals(left);
        }
        if (step.kind == Kind::organizeAndTakeBack) return takeBack(before);
        if (step.kind == Kind::trashAndTakeBack) return putBack(before, step);
        bool isPuttingBack = false;
        bool started = false;
        if (step.kind == Kind::organize || step.kind == Kind::organizeSome) started = model.organize();
        if (step.kind == Kind::undo) started = isPuttingBack = model.undo();
        if (step.kind == Kind::undoOne && model.recoverableJournal()) {
            const auto& entries = model.recoverableJournal()->entries;
            started = isPuttingBack = model.undo({std::string(entries[step.a % entries.size()].id())});
        }
        if (step.kind == Kind::trashExtras) {
            model.findDuplicates();
            side_.finish();
            started = model.trashExtras();
        }
        if (step.kind == Kind::trashSome && !before.empty()) started = trash(before, step);
        if (step.kind == Kind::restore) started = model.restore();
        if (step.kind == Kind::restoreOne && !model.restorableEntries().empty()) {
            const auto entries = model.restorableEntries();
            started = model.restore({std::string(entries[step.a % entries.size()].original())});
        }
        side_.finish();
        if (!started) return "";
        const bool isOrganizing = step.kind <= Kind::undoOne;
        movedBy[static_cast<std::size_t>(step.kind)] +=
            isOrganizing ? model.lastReport()->movedCount() : model.lastTrashReport()->movedCount();
        return isOrganizing ? lie(side_, *model.lastReport(), isPuttingBack)
                            : lie(side_, *model.lastTrashReport(), false);
    }

    /// Nothing comes in between, so every file that a run moves must come back to where it was.
    std::string takeBack(const Files& before) {
        TidyViewModel& model = side_.model();
        model.preview();
        side_.finish();
        if (!model.organize()) return "";
        side_.finish();
        std::unordered_set<std::string> moved;
        for (const auto& entry : model.lastReport()->journal.entries) moved.emplace(entry.id());
        movedBy[static_cast<std::size_t>(Kind::organizeAndTakeBack)] += moved.size();
        if (!moved.empty() && !model.undo(moved)) return "what was organized can not be undone";
        side_.finish();
        return side_.files() == before ? "" : "organizing and undoing changed the files";
    }
    std::string putBack(const Files& before, const Step& step) {
        TidyViewModel& model = side_.model();
        if (before.empty() || !trash(before, step)) return "";
        side_.finish();
        std::unordered_set<std::string> moved;
        for (const auto& entry : model.lastTrashReport()->record.entries) moved.emplace(entry.original());
        movedBy[static_cast<std::size_t>(step.kind)] += moved.size();
        if (!moved.empty() && !model.restore(moved)) return "what was trashed can not be put back";
        side_.finish();
        return side_.files() == before ? "" : "trashing and putting back changed the files";
    }

    bool trash(const Files& files, const Step& step) {
        std::vector<OrdovanFileTrasher::Item> items;
        for (const std::uint64_t number : {step.a, step.b}) {
            const std::string path = nth(files, number);
            items.push_back({Url::file(side_.root() + "/" + path), static_cast<std::int64_t>(files.at(path).size())});
        }
        return side_.model().trashBigFiles(std::move(items));
    }

    static std::string changed(std::string content) {
        if (!content.empty()) content.back() = content.back() == '!' ? '?' : '!';
        return content;
    }
    static std::string byContent(const Files& trash, std::uint64_t number) {
        std::vector<std::pair<std::string, std::string>> items;
        for (const auto& [name, content] : trash) items.emplace_back(content, name);
        std::ranges::sort(items);
        return items[number % items.size()].second;
    }

    Side& side_;
};

/// Plays a sequence on both sides; what went wrong, or nothing.
std::string play(const std::vector<Step>& steps) {
    MemorySide memory;
    DiskSide disk;
    Player inMemory(memory), onDisk(disk);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const std::string at =
            "step " + std::to_string(i + 1) + " (" + names[static_cast<std::size_t>(steps[i].kind)] + ")";
        if (const auto wrong = inMemory.take(steps[i]); !wrong.empty()) return at + " in memory: " + wrong;
        if (const auto wrong = onDisk.take(steps[i]); !wrong.empty()) return at + " on the disk: " + wrong;
        if (memory.files() != disk.files()) return at + ": the folders differ";
        std::multiset<std::string> first, second;
        for (const auto& [name, content] : memory.trash()) first.insert(content);
        for (const auto& [name, content] : disk.trash()) second.insert(content);
        if (first != second) return at + ": the Trashes differ";
        const std::string a = said(memory), b = said(disk);
        if (a != b) return at + ": the programs say different things\n--- in memory\n" + a + "--- on the disk\n" + b;
    }
    return "";
}

std::vector<Step> sequence(std::uint64_t seed, std::size_t length) {
    Dice dice(seed);
    std::vector<Step> steps;
    for (int i = 0; i < 4; ++i) steps.push_back({Kind::create, dice.next(), dice.next()});
    while (steps.size() < length) {
        steps.push_back({static_cast<Kind>(dice.below(names.size())), dice.next(), dice.next()});
    }
    return steps;
}

/// Leaves out steps, many at a time and then one by one, as long as the rest still fails.
std::vector<Step> shrunk(std::vector<Step> steps) {
    for (std::size_t size = steps.size() / 2; size > 0; size = size == 1 ? 0 : size / 2) {
        for (std::size_t begin = 0; begin < steps.size();) {
            std::vector<Step> fewer = steps;
            const auto from = fewer.begin() + static_cast<std::ptrdiff_t>(begin);
            fewer.erase(from, from + static_cast<std::ptrdiff_t>(std::min(size, fewer.size() - begin)));
            if (play(fewer).empty()) {
                begin += size;
            } else {
                steps = std::move(fewer);
            }
        }
    }
    return steps;
}

TEST(RandomSequences, AgreeOnTheDiskAndInMemoryAndLoseNothing) {
    const std::size_t count = rounds(250, 20'000);
    const char* only = std::getenv("ORDOVAN_SEED");
    for (std::uint64_t seed = 1; seed <= count; ++seed) {
        const std::vector<Step> all = sequence(only != nullptr ? std::strtoull(only, nullptr, 10) : seed, 24);
        const std::string wrong = play(all);
        if (!wrong.empty()) {
            std::string text = "seed " + std::to_string(seed) + ": " + wrong + "\nshrunk:\n";
            const std::vector<Step> few = shrunk(all);
            for (const Step& step : few) {
                text += "  " + std::string(names[static_cast<std::size_t>(step.kind)]) + " " + std::to_string(step.a) +
                        " " + std::to_string(step.b) + "\n";
            }
            FAIL() << text << play(few) << "\nrepeat with ORDOVAN_SEED=" << seed;
        }
        if (only != nullptr) break;
    }
    for (const Kind kind :
         {Kind::organize, Kind::organizeSome, Kind::organizeAndTakeBack, Kind::undo, Kind::undoOne, Kind::trashExtras,
          Kind::trashSome, Kind::trashAndTakeBack, Kind::restore, Kind::restoreOne}) {
        const std::size_t moved = movedBy[static_cast<std::size_t>(kind)];
        EXPECT_TRUE(only != nullptr || moved > count / 10) << names[static_cast<std::size_t>(kind)];
        RecordProperty(names[static_cast<std::size_t>(kind)], static_cast<int>(moved));
    }
    tell("random sequences", count, "sequences of 24 steps, alike on the disk and in memory");
}

}  // namespace
