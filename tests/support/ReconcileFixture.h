#pragma once

#include "OrdovanCore/Reconcile.h"
#include "OrdovanCore/testing/FaultyFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/MemoryReconcile.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::test {

/// What the tests of interrupted runs name.
namespace interrupted {

using Kind = OrdovanRunRecord::Kind;
using NoteKind = OrdovanRunNote::Kind;

// Where what the run leaves of "/r/a" lies.
inline constexpr const char* partial = "/r/ordovan+/.a.ordovan-partial-00000000-0000-4000-8000-000000000000";
inline constexpr const char* aside = "/r/.a.ordovan-partial-00000000-0000-4000-8000-000000000000";
inline constexpr const char* inTrash = "/home/user/.local/share/Trash/files/a";
inline constexpr const char* info = "/home/user/.local/share/Trash/info/a.trashinfo";

// What is said of it.
inline constexpr const char* lost = "The file was moved or deleted while organizing.";
inline constexpr const char* notExamined = "The file could not be looked at after the interruption; left as it is.";

}  // namespace interrupted

/// A run in "/r" that was interrupted: first the tree and the intent, then what the run came to do.
class ReconcileFixture : public ::testing::Test {
protected:
    void tree(std::initializer_list<std::string_view> items) { testing::build(memory, "/r", items); }

    void intend(std::string_view from, std::string_view to,
                OrdovanRunRecord::Kind kind = OrdovanRunRecord::Kind::organize, std::string_view content = {}) {
        run.intent.kind = kind;
        run.intent.root = Url::file("/r");
        run.intent.startedAtEpoch = 100;
        run.intent.rootIdentity = factsIn(memory, Url::file("/r"))->identity;
        run.intent.outputRoots.clear();
        using Kind = OrdovanRunRecord::Kind;
        if (kind == Kind::organize || kind == Kind::undo) run.intent.outputRoots = {Url::file("/r/ordovan+")};
        OrdovanRunItem item{.source = from, .destination = to, .identity = {}, .contentHash = {}};
        if (const auto facts = factsIn(memory, Url::file(from))) {
            item.byteSize = facts->byteSize;
            item.modifiedNs = facts->modifiedNs;
            item.identity = facts->identity;
            const auto there = factsIn(memory, Url::file(to));
            if (!there || there->identity != facts->identity) item.names = facts->names;
        }
        if (!content.empty()) {
            item.byteSize = static_cast<std::int64_t>(content.size());
            item.contentHash = testing::digestOf(content);
        }
        run.intent.items.push_back(item);
    }

    void note(OrdovanRunNote::Kind kind, std::string_view content, std::string_view path = {}, bool sameVolume = true,
              std::size_t item = 0) {
        run.notes.push_back({.kind = kind,
                             .item = item,
                             .byteSize = static_cast<std::int64_t>(content.size()),
                             .contentHash = testing::digestOf(content),
                             .identity = run.intent.items[item].identity,
                             .sameVolume = sameVolume,
                             .path = path});
    }

    void move(std::string_view from, std::string_view to) {
        memory.makeDirectory(parentPath(to));
        ASSERT_TRUE(memory.move(Url::file(from), Url::file(to)));
    }
    void copy(std::string_view from, std::string_view to) {
        memory.makeDirectory(parentPath(to));
        ASSERT_TRUE(memory.copy(Url::file(from), Url::file(to)));
    }

    /// Reconciles, and once more: the second time tells the same of the records and changes nothing.
    OrdovanReconciliation reconcile() {
        auto found = OrdovanReconciler::reconcile(run, ports());
        const auto after = memory.snapshot();
        const auto again = OrdovanReconciler::reconcile(run, ports());
        EXPECT_EQ(again.journal, found.journal);
        EXPECT_EQ(again.restored, found.restored);
        EXPECT_EQ(again.trashed, found.trashed);
        EXPECT_EQ(again.putBack, found.putBack);
        EXPECT_EQ(memory.snapshot(), after);
        return found;
    }
    ReconcilePorts ports() { return reconcilePorts(memory, fs); }

    /// finished, untouched, put right, unsettled
    static std::vector<std::size_t> counts(const OrdovanReconciliation& found) {
        return {found.run.finished, found.run.untouched, found.run.putRight, found.run.unsettled};
    }
    static std::vector<std::string> sentences(const OrdovanReconciliation& found) {
        std::vector<std::string> result;
        for (const auto& outcome : found.run.outcomes) result.push_back(outcome.message);
        return result;
    }
    OrdovanJournalEntry entry(bool sameVolume, std::string_view content, std::string_view identity) const {
        return {
            "/r/a",  "/r/ordovan+/a", sameVolume, static_cast<std::int64_t>(content.size()), testing::digestOf(content),
            identity};
    }
    [[nodiscard]] std::string identity(std::string_view path) const {
        return factsIn(memory, Url::file(path))->identity;
    }

    testing::MemoryFileSystem memory;
    testing::FaultyFileSystem fs{memory};
    OrdovanUnfinishedRun run;
};

}  // namespace ordovan::test
