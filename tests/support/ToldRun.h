#pragma once

#include "OrdovanCore/Reconcile.h"
#include "OrdovanCore/RecordedFileSystem.h"
#include "OrdovanCore/platform/FileFacts.h"
#include "OrdovanCore/platform/RunFileSystem.h"
#include "OrdovanCore/platform/TrashInfo.h"
#include "OrdovanCore/platform/TrashSearch.h"

#include <optional>
#include <string>
#include <string_view>

namespace ordovan::test {

/// A run as the program makes it: it is kept to what its record tells, and whatever it leaves is put right by that.
class ToldRun {
public:
    ToldRun(OrdovanRunRecord::Kind kind, const Url& root) {
        intent_.id = Uuid::random();
        intent_.kind = kind;
        intent_.root = root;
        intent_.rootIdentity = factsOf(root)->identity;
    }
    void addOutputRoot(const Url& folder) { intent_.outputRoots.push_back(folder); }
    void add(const Url& source, const Url& destination, std::string_view knownHash = {}) {
        OrdovanRunItem item{.source = source.sharedPath(),
                            .destination = destination.sharedPath(),
                            .identity = {},
                            .contentHash = std::string(knownHash)};
        if (const auto facts = factsOf(source)) {
            item.byteSize = facts->byteSize;
            item.modifiedNs = facts->modifiedNs;
            item.identity = facts->identity;
            item.names = facts->names;
        }
        intent_.items.push_back(item);
    }

    OrdovanFileSystem& begin(RunFileSystem& disk) { return recorded_.emplace(disk, intent_, notes_, &disk); }

    /// What the next preview finds; nothing where the run came to its end and its record is gone.
    std::optional<OrdovanReconciliation> end() {
        const bool leavesSomething = recorded_->leavesSomething();
        recorded_.reset();
        if (!leavesSomething) return std::nullopt;
        std::string text;
        intent_.encode([&](std::string_view piece) {
            text += piece;
            return true;
        });
        RunFileSystem disk(intent_.root);
        return OrdovanReconciler::reconcile(
            OrdovanUnfinishedRun::decoded(text + notes_.all).value(),
            {.fs = disk,
             .facts = factsOf,
             .findInTrash = findInTrash,
             .removeTrashInfo = removeTrashInfo,
             .forgetTrashInfo = [](const Url& item, const Url& to) { forgetTrashInfo(item.path(), to.path()); }});
    }

private:
    struct Notes final : RunNotes {
        OrdovanResult<void> append(std::string_view text) override {
            all += text;
            return {};
        }
        OrdovanResult<void> sync() override { return {}; }
        std::string all;
    };

    OrdovanRunIntent intent_;
    Notes notes_;
    std::optional<RecordedFileSystem> recorded_;
};

}  // namespace ordovan::test
