#pragma once

#include "OrdovanCore/Executor.h"
#include "OrdovanCore/RecordedFileSystem.h"
#include "OrdovanCore/testing/FaultyFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/MemoryReconcile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::test {

/// Notes in memory, and in which order they came among the calls of the file system.
class GatheredNotes final : public RunNotes {
public:
    explicit GatheredNotes(std::vector<std::string>& events) : events_(events) {}
    OrdovanResult<void> append(std::string_view text) override {
        if (fails) return std::unexpected(OrdovanSystemError::posix(ENOSPC));
        all += text;
        events_.emplace_back("append");
        return {};
    }
    OrdovanResult<void> sync() override {
        events_.emplace_back("sync");
        return {};
    }
    std::string all;
    bool fails = false;

private:
    std::vector<std::string>& events_;
};

/// A run in "/r" whose files have the intent they need.
class RecordedRun : public ::testing::Test {
protected:
    void tree(std::initializer_list<std::string_view> items) { testing::build(memory, "/r", items); }

    void intend(std::string_view from, std::string_view to,
                OrdovanRunRecord::Kind kind = OrdovanRunRecord::Kind::organize) {
        intent.kind = kind;
        intent.root = Url::file("/r");
        OrdovanRunItem item{.source = from, .destination = to, .identity = {}, .contentHash = {}};
        if (const auto facts = factsIn(memory, Url::file(from))) {
            item.byteSize = facts->byteSize;
            item.modifiedNs = facts->modifiedNs;
            item.identity = facts->identity;
        }
        intent.items.push_back(item);
    }

    RecordedFileSystem& fs() {
        if (!recorded) {
            disk.setBeforeCall([this](const testing::FaultyFileSystem::Call& call) {
                using enum testing::Operation;
                if (call.operation == move) events.emplace_back("move");
                if (call.operation == copy) events.emplace_back("copy");
                if (call.operation == remove) events.emplace_back("remove");
                if (call.operation == trash) events.emplace_back("trash");
            });
            recorded = std::make_unique<RecordedFileSystem>(disk, intent, gathered);
        }
        return *recorded;
    }

    OrdovanExecutionReport organize() {
        std::vector<OrdovanFileProposal> proposals;
        for (const OrdovanRunItem& item : intent.items) {
            proposals.push_back({.source = Url::file(item.source),
                                 .destination = Url::file(item.destination),
                                 .category = OrdovanFileCategory::documents,
                                 .explanation = "",
                                 .ruleFolder = std::nullopt});
        }
        return OrdovanExecutor::apply(proposals, Url::file("/r"), Url::file("/r/ordovan+"), fs(), 1);
    }

    /// The notes so far, the gathered ones handed over.
    std::vector<OrdovanRunNote> notes() {
        recorded.reset();
        std::string text;
        intent.encode([&](std::string_view piece) {
            text += piece;
            return true;
        });
        const auto run = OrdovanUnfinishedRun::decoded(text + gathered.all);
        EXPECT_TRUE(run) << describe(run.error());
        return run ? run->notes : std::vector<OrdovanRunNote>();
    }

    testing::MemoryFileSystem memory;
    testing::FaultyFileSystem disk{memory};
    OrdovanRunIntent intent;
    std::vector<std::string> events;
    GatheredNotes gathered{events};
    std::unique_ptr<RecordedFileSystem> recorded;
};

}  // namespace ordovan::test
