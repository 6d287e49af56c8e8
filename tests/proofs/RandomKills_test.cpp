// Random sequences, in memory, of what a user and the program do to a folder, in which the program is killed before or
// after a random call of a random run, and sometimes once more while the next one puts that in order. After every step
// each file must be in one place with its content, and what was moved must go back. A sequence that fails is shrunk;
// its seed and its steps are printed.

#include "tests/proofs/Proof.h"
#include "tests/support/InterruptedWorld.h"
#include "tests/support/QtTestMain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using namespace ordovan::proofs;
using ordovan::test::KillableWorld;
using ordovan::test::Moment;
using ordovan::test::Notes;

namespace {

enum class Kind { create, copy, edit, remove, organize, undo, trashExtras, trashSome, restore };
constexpr std::array<const char*, 9> names = {"create", "copy",         "edit",       "remove", "organize",
                                              "undo",   "trash extras", "trash some", "restore"};

/// One step. What it is done to is chosen by the numbers among what is there then.
struct Step {
    Kind kind;
    std::uint64_t a;
    std::uint64_t b;
};

/// How often the program was killed in each kind of run, and while it put one in order.
std::array<std::size_t, names.size()> killedIn{};
std::size_t killedTwice = 0;

class Player {
public:
    Player() { world_.start(); }

    /// Takes a step; says what is wrong afterwards, or nothing.
    std::string take(const Step& step) {
        if (step.kind < Kind::organize) {
            change(step);
            preview();
            return "";
        }
        const auto contents = world_.contents();
        const auto before = world_.files();
        const auto moment = step.b % 2 == 0 ? Moment::before : Moment::after;
        const auto notes = step.b % 4 < 2 ? Notes::all : Notes::none;
        const auto act = [&](KillableWorld& world) { run(world, step); };
        const bool isKilled = world_.isKilledAt(1 + step.a % 64, moment, notes, act);
        if (isKilled) {
            ++killedIn[static_cast<std::size_t>(step.kind)];
            reopen(step);
        } else {
            preview();
        }
        if (const auto wrong = disorder(contents); !wrong.empty()) return wrong;
        if (!isKilled) return "";
        if (const auto told = world_.model->interruptedRun(); told && told->unsettled != 0) return told->summary();
        if (const auto wrong = unrecorded(before); !wrong.empty()) return wrong + " is not recorded";
        const auto files = world_.memory.snapshot("/r");
        restart();
        if (world_.memory.snapshot("/r") != files) return "a second start changed something";
        return step.b % 3 == 0 ? takeBack(contents) : "";
    }

private:
    void preview() {
        world_.model->preview();
        world_.tasks.finish();
    }
    void restart() {
        world_.model.reset();
        world_.start();
    }
    /// Starts the program again, which may be killed while it puts the run in order.
    void reopen(const Step& step) {
        world_.model.reset();
        const auto moment = step.b % 16 < 8 ? Moment::before : Moment::after;
        const auto start = [](KillableWorld& world) { world.start(); };
        if (step.b % 5 < 2 && world_.isKilledAt(1 + step.b / 16 % 24, moment, Notes::all, start)) ++killedTwice;
        restart();
    }

    static void run(KillableWorld& world, const Step& step) {
        TidyViewModel& model = *world.model;
        if (step.kind == Kind::organize) world.organize();
        if (step.kind == Kind::undo) world.undo();
        if (step.kind == Kind::restore) world.restore();
        if (step.kind == Kind::trashExtras) {
            world.search();
            world.trash();
        }
        if (step.kind == Kind::trashSome && model.inventory()) {
            std::vector<OrdovanFileTrasher::Item> items;
            for (const auto& entry : model.inventory()->files) {
                if (((step.b >> (items.size() % 60)) & 1U) == 0) items.push_back({entry.url, entry.byteSize});
            }
            model.trashBigFiles(std::move(items));
            world.tasks.finish();
        }
    }

    void change(const Step& step) {
        constexpr std::array folders = {"", "sub/", "sub/deep/", "other/"};
        constexpr std::array extensions = {".pdf", ".jpg", ".txt", ".zip"};
        const std::string fresh = std::string("/r/") + folders[step.a % 4] + static_cast<char>('a' + step.a / 4 % 6) +
                                  extensions[step.a / 24 % 4];
        if (step.kind == Kind::create && !world_.memory.item(fresh)) {
            world_.memory.write(fresh, "content " + std::to_string(step.b));
        }
        const std::vector<std::string> files = world_.files();
        if (files.empty() || step.kind == Kind::create) return;
        const std::string path = "/r/" + files[step.b % files.size()];
        if (step.kind == Kind::copy && !world_.memory.item(fresh)) {
            world_.memory.write(fresh, *world_.memory.read(path));
        }
        if (step.kind == Kind::edit) world_.memory.write(path, "edited " + std::to_string(step.a));
        if (step.kind == Kind::remove) world_.memory.removeTree(path);
    }

    [[nodiscard]] std::string disorder(const std::vector<std::string>& contents) const {
        if (world_.contents() != contents) return "contents were lost, doubled or changed";
        for (const std::string& path : world_.files()) {
            if (OrdovanPartialName::isPartial(path)) return "left under a hidden name: " + path;
        }
        if (world_.hasRunRecord()) return "the record of the run is left";
        return "";
    }

    /// A file that the killed run has moved, and that no record tells of.
    [[nodiscard]] std::string unrecorded(const std::vector<std::string>& before) const {
        std::set<std::string> known;
        if (const auto& journal = world_.model->recoverableJournal()) {
            for (const auto& entry : journal->entries) known.emplace(entry.source());
        }
        for (const auto& entry : world_.model->trashRecord()->entries) known.emplace(entry.original());
        for (const std::string& path : before) {
            const bool isOutput = path.starts_with("ordovan+/");  // whence it may have gone back
            if (!isOutput && !world_.memory.item("/r/" + path) && !known.contains("/r/" + path)) return path;
        }
        return "";
    }

    /// Whatever the records tell of that is as it was recorded must go back to where it was, where that is free.
    std::string takeBack(const std::vector<std::string>& contents) {
        std::vector<std::pair<std::string, std::string>> expected;
        std::multiset<std::string> places;
        const auto& memory = world_.memory;
        if (const auto& journal = world_.model->recoverableJournal()) {
            for (const auto& entry : journal->entries) {
                places.emplace(entry.source());
                const auto content = memory.read(entry.destination());
                const bool isAsRecorded = content && ordovan::testing::digestOf(*content) == entry.contentHash() &&
                                          !memory.item(entry.source());
                if (isAsRecorded) expected.emplace_back(entry.source(), *content);
            }
        }
        world_.undo();
        preview();
        for (const auto& [place, content] : expected) {
            if (places.count(place) == 1 && memory.read(place) != content) return "it did not go back to " + place;
        }
        world_.restore();
        preview();
        return disorder(contents);
    }

    KillableWorld world_;
};

std::string play(const std::vector<Step>& steps) {
    Player player;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const auto wrong = player.take(steps[i]);
        if (wrong.empty()) continue;
        return "step " + std::to_string(i + 1) + " (" + names[static_cast<std::size_t>(steps[i].kind)] + "): " + wrong;
    }
    return "";
}

std::vector<Step> sequence(std::uint64_t seed, std::size_t length) {
    Dice dice(seed);
    std::vector<Step> steps;
    for (int i = 0; i < 4; ++i) steps.push_back({Kind::create, dice.next(), dice.next()});
    while (steps.size() < length) {
        // Of two steps more than one is a run.
        const auto kind = dice.below(names.size() + 5);
        steps.push_back({kind < names.size() ? static_cast<Kind>(kind) : Kind::organize, dice.next(), dice.next()});
    }
    return steps;
}

/// Leaves out steps, one by one, as long as the rest still fails.
std::vector<Step> shrunk(std::vector<Step> steps) {
    for (std::size_t i = 0; i < steps.size();) {
        std::vector<Step> fewer = steps;
        fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
        if (play(fewer).empty()) {
            ++i;
        } else {
            steps = std::move(fewer);
            i = 0;
        }
    }
    return steps;
}

TEST(RandomKills, LoseNothingAndLeaveWhatCanBeTakenBack) {
    const std::size_t count = rounds(80, 40'000);
    const char* only = std::getenv("ORDOVAN_SEED");
    for (std::uint64_t i = 1; i <= count; ++i) {
        const std::uint64_t seed = only != nullptr ? std::strtoull(only, nullptr, 10) : i;
        const std::vector<Step> all = sequence(seed, 20);
        if (const std::string wrong = play(all); !wrong.empty()) {
            std::string text = "seed " + std::to_string(seed) + ": " + wrong + "\nshrunk:\n";
            const std::vector<Step> few = shrunk(all);
            for (const Step& step : few) {
                text += std::string("  ") + names[static_cast<std::size_t>(step.kind)] + " " + std::to_string(step.a) +
                        " " + std::to_string(step.b) + "\n";
            }
            FAIL() << text << play(few) << "\nrepeat with ORDOVAN_SEED=" << seed;
        }
        if (only != nullptr) return;
    }
    std::size_t kills = killedTwice;
    for (const Kind kind : {Kind::organize, Kind::undo, Kind::trashExtras, Kind::trashSome, Kind::restore}) {
        const std::size_t number = killedIn[static_cast<std::size_t>(kind)];
        EXPECT_GT(number, count / 20) << names[static_cast<std::size_t>(kind)];
        kills += number;
    }
    EXPECT_GT(killedTwice, count / 20);
    tell("kills in random sequences", kills,
         "kills, each with a new start, in " + std::to_string(count) + " sequences");
}

}  // namespace
