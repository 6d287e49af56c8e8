#pragma once

#include "tests/support/TidyWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ordovan::test {

/// Thrown out of a run where the program shall end.
struct Killed {};

enum class Moment { before, after };

/// What has left the program of the notes that a run gathers.
enum class Notes { all, none };

/// A folder with three files and the program that works in it.
class KillableWorld : public TidyWorld {
public:
    KillableWorld() { tree({"x.pdf = 1", "y.jpg = 2", "z.txt = 2"}); }
    void TestBody() override {}

    /// The program is started and previews the folder.
    void start() { model = previewed({.repreviewsAfterRuns = false}); }
    void organize() {
        model->organize();
        tasks.finish();
    }
    /// Organizes, and the program ends before this move of it.
    void organizeUpToMove(std::size_t number) {
        std::size_t moves = 0;
        fs.setBeforeCall([&](const testing::FaultyFileSystem::Call& call) {
            if (call.operation == testing::Operation::move && ++moves == number) throw Killed();
        });
        EXPECT_THROW(organize(), Killed);
        fs.setBeforeCall({});
    }
    void undo() {
        model->undo();
        tasks.finish();
    }
    void search() {
        model->findDuplicates();
        tasks.finish();
    }
    void trash() {
        model->trashExtras();
        tasks.finish();
    }
    void restore() {
        model->restore();
        tasks.finish();
    }

    /// Does something, and ends the program at the n-th call of the disk or of the storage of records. False when
    /// there are fewer.
    bool isKilledAt(std::size_t number, Moment moment, Notes notes, const std::function<void(KillableWorld&)>& act) {
        std::size_t count = 0;
        const auto die = [&] {
            if (++count != number) return;
            if (notes == Notes::none) runStorage.failAll("append", EIO);
            throw Killed();
        };
        const auto onCall = [&](const testing::FaultyFileSystem::Call&) { die(); };
        moment == Moment::before ? fs.setBeforeCall(onCall) : fs.setAfterCall(onCall);
        records.observer = runStorage.observer = [&](const std::string& call) {
            if (!call.starts_with("append")) die();  // the last ones are handed over by a program that goes on
        };
        bool killed = false;
        try {
            act(*this);
        } catch (const Killed&) {
            killed = true;
        }
        fs.setBeforeCall({});
        fs.setAfterCall({});
        records.observer = runStorage.observer = [](const std::string&) {};
        runStorage.failAll("", 0);
        return killed;
    }

    /// Does something at the n-th call of the disk from now on. The returned flag tells whether it came to that.
    std::shared_ptr<const bool> atCall(std::size_t number, std::function<void()> act) {
        auto isReached = std::make_shared<bool>(false);
        const auto count = std::make_shared<std::size_t>(0);
        fs.setBeforeCall([count, number, act = std::move(act), isReached](const auto&) {
            if (++*count != number) return;
            *isReached = true;
            act();
        });
        return isReached;
    }

    /// The program is started, and its preview cancelled at the n-th call of the disk. False when there are fewer.
    bool isCancelledAt(std::size_t number) {
        model = make({.repreviewsAfterRuns = false});
        const auto isReached = atCall(number, [this] { model->cancelPreview(); });
        model->chooseFolder(Url::file("/r"));
        tasks.finish();
        fs.setBeforeCall({});
        return *isReached;
    }

    [[nodiscard]] bool hasRunRecord() const { return runRecord().has_value(); }
    [[nodiscard]] std::optional<std::string> runRecord() const {
        return memory.read(locations.runRecord(Url::file("/r")).path());
    }
    /// Files in the folder, by their path below it.
    [[nodiscard]] std::vector<std::string> files() const {
        std::vector<std::string> found;
        for (const auto& [path, description] : memory.snapshot("/r")) {
            if (description.starts_with("file")) found.push_back(path);
        }
        return found;
    }
    /// What the user's files hold, in the folder and in the Trash, each name counted.
    [[nodiscard]] std::vector<std::string> contents() const {
        std::vector<std::string> found;
        for (const auto& [path, description] : memory.snapshot()) {
            const bool isUsers = !path.starts_with("records/") && !path.ends_with(".trashinfo");
            if (isUsers && description.starts_with("file")) found.push_back(*memory.read("/" + path));
        }
        std::ranges::sort(found);
        return found;
    }
    [[nodiscard]] std::ptrdiff_t runsOf(OrdovanRunRecord::Kind kind) const {
        return std::ranges::count(model->history().records, kind, &OrdovanRunRecord::kind);
    }

    std::unique_ptr<TidyViewModel> model;
};

/// A world in which an organize run was interrupted after its first move.
class InterruptedWorld : public KillableWorld {
public:
    InterruptedWorld() {
        start();
        organizeUpToMove(2);
    }
};

}  // namespace ordovan::test
