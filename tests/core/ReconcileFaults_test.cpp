// What holds whatever goes wrong while an interrupted run is settled: the N-th look, or the N-th call of the port,
// fails, for every N. Nothing is lost, nothing is said to be settled that is not, and the next time comes to the same
// end as if nothing had gone wrong.

#include "tests/support/ReconcileFixture.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

using ordovan::ReconcilePorts;
using ordovan::TrashedFile;
using ordovan::test::ReconcileFixture;
using ordovan::testing::digestOf;
using Moment = ordovan::testing::FaultyFileSystem::Moment;
using namespace ordovan::test::interrupted;

namespace {

/// What goes wrong at its N-th occasion.
enum class Fault { look, call, replyOfCall, infoRemoval, replyOfInfoRemoval };

class ReconcileFaults : public ReconcileFixture {
protected:
    using State = std::function<void()>;

    /// What lies where at the end, and which records tell of it.
    struct End {
        std::map<std::string, std::string> files;
        bool isInJournal = false, isInTrashRecord = false;
        std::size_t putBack = 0;
        friend bool operator==(const End&, const End&) = default;
        friend std::ostream& operator<<(std::ostream& out, const End& end) {
            return out << ::testing::PrintToString(end.files) << (end.isInJournal ? ", in the journal" : "")
                       << (end.isInTrashRecord ? ", in the Trash record" : "") << ", put back: " << end.putBack;
        }
    };

    void start(const State& state) {
        for (const char* folder : {"/r", "/home/user/.local"}) {
            if (memory.item(folder)) memory.removeTree(folder);
        }
        fs.reset();
        run = {};
        state();
    }
    [[nodiscard]] std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> all;
        for (const auto& [path, description] : memory.snapshot()) {
            if (!description.starts_with("file")) continue;
            all[path] = path.ends_with(".trashinfo") ? "" : memory.read("/" + path).value_or("");
        }
        return all;
    }
    [[nodiscard]] End endOf(const OrdovanReconciliation& found) const {
        return {files(), !found.journal.entries.empty(), !found.trashed.entries.empty(),
                found.putBack.size() + found.restored.size()};
    }

    /// The ports with one fault; `occasions` counts up.
    ReconcilePorts portsWith(Fault fault, std::size_t number, std::size_t& occasions) {
        ReconcilePorts faulty = ports();
        if (fault == Fault::look) {
            faulty.facts = [this, number, &occasions](const Url& url) -> OrdovanResult<ordovan::FileFacts> {
                if (++occasions == number) return std::unexpected(OrdovanSystemError::posix(EIO));
                return ordovan::test::factsIn(memory, url);
            };
        } else if (fault == Fault::infoRemoval || fault == Fault::replyOfInfoRemoval) {
            faulty.removeTrashInfo = [whole = faulty.removeTrashInfo, fault, number,
                                      &occasions](const TrashedFile& orphan) -> OrdovanResult<void> {
                if (++occasions != number) return whole(orphan);
                if (fault == Fault::replyOfInfoRemoval) static_cast<void>(whole(orphan));
                return std::unexpected(OrdovanSystemError::posix(EIO));
            };
        } else {
            fs.failCall(number, EIO, fault == Fault::call ? Moment::beforeEffect : Moment::afterEffect);
        }
        return faulty;
    }

    /// Settles a state with a fault at each of its occasions. Returns how many there were.
    std::size_t expectTheSameEnd(const State& state, Fault fault) {
        start(state);
        const End expected = endOf(reconcile());
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE("fault " + std::to_string(static_cast<int>(fault)) + ", occasion " + std::to_string(number));
            start(state);
            std::size_t occasions = 0;
            const auto found = OrdovanReconciler::reconcile(run, portsWith(fault, number, occasions));
            const bool isBeyondTheLast = fs.faultsDone() == 0 && occasions < number;
            for (const auto& [path, content] : expected.files) {
                EXPECT_TRUE(path.ends_with(".trashinfo") || memory.contents().contains(digestOf(content))) << path;
            }
            if (found.isComplete) {
                EXPECT_EQ(files(), expected.files);
            }
            fs.reset();
            const auto again = reconcile();
            EXPECT_TRUE(again.isComplete);
            EXPECT_EQ(endOf(again), expected);
            if (isBeyondTheLast || HasFailure()) return number - 1;
        }
    }
    void expectTheSameEndWhatever(const State& state, std::initializer_list<Fault> faults) {
        for (const Fault fault : faults) {
            if (HasFailure()) return;
            EXPECT_GT(expectTheSameEnd(state, fault), 0U) << "fault " << static_cast<int>(fault);
        }
    }

    void begin(Kind kind = Kind::organize) {
        tree({"a = one"});
        intend("/r/a", kind == Kind::trash ? "" : "/r/ordovan+/a", kind);
    }
    void beginAcross() {
        memory.addVolume("/r/ordovan+");
        begin();
        note(NoteKind::begun, "one", partial, false);
    }
    void placeholder(std::string_view path) {
        note(NoteKind::claimed, "one");
        memory.write(path, "");
        memory.setModified(path, 100'000'000'000);
    }
    void trashA() { ASSERT_TRUE(memory.trash(Url::file("/r/a"))); }
    void leaveInfo() { memory.write(info, "[Trash Info]\nPath=/r/a\nDeletionDate=2026-11-21T00:00:00\n"); }
};

TEST_F(ReconcileFaults, OfAMoveWithinAVolume) {
    expectTheSameEndWhatever(
        [&] {
            begin();
            move("/r/a", "/r/ordovan+/a");
        },
        {Fault::look, Fault::call, Fault::replyOfCall});
    expectTheSameEndWhatever(
        [&] {
            begin();
            memory.hardLink("/r/ordovan+/a", "/r/a");
        },
        {Fault::look, Fault::call, Fault::replyOfCall});
    expectTheSameEndWhatever(
        [&] {
            begin();
            placeholder("/r/ordovan+/a");
        },
        {Fault::look, Fault::call, Fault::replyOfCall});
}

TEST_F(ReconcileFaults, OfACopyWhoseOriginalStands) {
    const State states[] = {[&] {
                                beginAcross();
                                memory.write(partial, "on");
                            },
                            [&] {
                                beginAcross();
                                memory.write(partial, "one");
                                memory.write("/r/a", "new");
                            },
                            [&] {
                                beginAcross();
                                copy("/r/a", "/r/ordovan+/a");
                            },
                            [&] {
                                beginAcross();
                                memory.write(partial, "one");
                                placeholder("/r/ordovan+/a");
                            }};
    for (const State& state : states) {
        expectTheSameEndWhatever(state, {Fault::look, Fault::call, Fault::replyOfCall});
    }
}

TEST_F(ReconcileFaults, OfACopyWhoseOriginalIsGone) {
    const auto gone = [&](const State& state) {
        beginAcross();
        state();
        memory.removeTree("/r/a");
    };
    const State states[] = {
        [&] { gone([&] { memory.write(partial, "one"); }); },
        [&] { gone([&] { copy("/r/a", "/r/ordovan+/a"); }); },
        [&] {
            gone([&] {
                copy("/r/a", "/r/ordovan+/a");
                memory.hardLink(partial, "/r/ordovan+/a");
            });
        },
        [&] {
            gone([&] {
                memory.write(partial, "one");
                placeholder("/r/ordovan+/a");
            });
        },
    };
    for (const State& state : states) {
        expectTheSameEndWhatever(state, {Fault::look, Fault::call, Fault::replyOfCall});
    }
    expectTheSameEndWhatever([&] { gone([&] { memory.write(partial, "on"); }); }, {Fault::look});
}

TEST_F(ReconcileFaults, OfAnOriginalUnderItsHiddenName) {
    const auto hide = [&] {
        beginAcross();
        copy("/r/a", "/r/ordovan+/a");
        move("/r/a", aside);
    };
    const State states[] = {hide,
                            [&] {
                                hide();
                                memory.removeTree("/r/ordovan+/a");
                            },
                            [&] {
                                hide();
                                memory.write("/r/a", "new");
                            },
                            [&] {
                                hide();
                                memory.write("/r/a", "new");
                                memory.write("/r/ordovan+/a", "edited");
                            },
                            [&] {
                                hide();
                                memory.hardLink("/r/a", aside);
                            },
                            [&] {
                                hide();
                                memory.hardLink("/r/a", aside);
                                memory.write(aside, "");
                            }};
    for (const State& state : states) {
        expectTheSameEndWhatever(state, {Fault::look, Fault::call, Fault::replyOfCall});
    }
}

TEST_F(ReconcileFaults, OfAMoveToTheTrash) {
    expectTheSameEndWhatever(
        [&] {
            begin(Kind::trash);
            trashA();
        },
        {Fault::look, Fault::call});
    expectTheSameEndWhatever(
        [&] {
            begin(Kind::trash);
            leaveInfo();
        },
        {Fault::look, Fault::infoRemoval, Fault::replyOfInfoRemoval});
    expectTheSameEndWhatever(
        [&] {
            begin(Kind::trash);
            leaveInfo();
            memory.hardLink(inTrash, "/r/a");
        },
        {Fault::look, Fault::call, Fault::replyOfCall});
    expectTheSameEndWhatever(
        [&] {
            begin(Kind::trash);
            leaveInfo();
            placeholder(inTrash);
        },
        {Fault::look, Fault::call, Fault::replyOfCall, Fault::infoRemoval, Fault::replyOfInfoRemoval});
}

TEST_F(ReconcileFaults, OfPuttingBack) {
    expectTheSameEndWhatever(
        [&] {
            tree({"a = one"});
            trashA();
            intend(inTrash, "/r/a", Kind::restoreTrash, "one");
            move(inTrash, "/r/a");
        },
        {Fault::look});
    expectTheSameEndWhatever(
        [&] {
            tree({"ordovan+/a = one"});
            intend("/r/ordovan+/a", "/r/a", Kind::undo, "one");
            memory.hardLink("/r/a", "/r/ordovan+/a");
        },
        {Fault::look, Fault::call, Fault::replyOfCall});
}

}  // namespace
