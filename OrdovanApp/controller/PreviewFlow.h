#pragma once

#include "OrdovanApp/controller/CancelFlag.h"
#include "OrdovanApp/controller/PreviewDepth.h"
#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Planner.h"
#include "OrdovanCore/Rules.h"
#include "OrdovanCore/Text.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

/// What a preview works from; nothing else is looked at while it runs.
struct PreviewInputs {
    PreviewDepth depth = PreviewDepth::plan;
    Url root;
    Url outputRoot;
    bool includeHidden = false;
    bool groupByMonth = false;
    OrdovanRuleSet rules;
    ordovan::text::TimeZone timeZone;
    ordovan::JournalStore::Journal unsavedJournal;
    ordovan::TrashRecordStore::Known knownTrash;
    std::shared_ptr<const CancelFlag> flag;
    /// Told of the files and folders met so far, after each folder and at the end, on the running thread; may be empty.
    std::function<void(std::uint64_t files, std::uint64_t folders, bool isLast)> progressed;
};

/// What a preview found. Of no meaning once its flag is set.
struct PreviewResult {
    std::shared_ptr<const OrdovanInventory> inventory;  ///< null when the root was not or could not be read
    std::shared_ptr<const OrdovanPlanResult> plan;      ///< null when the root was not or could not be read
    bool partial = false;
    bool caseInsensitive = true;
    ordovan::JournalStore::Loaded journal;
    ordovan::TrashRecordStore::Known trash;
};

namespace PreviewFlow {

/// Loads the folder's journal and the trash record, scans the folder and its output folder and plans, as far as the
/// depth goes. Runs on a background thread.
[[nodiscard]] PreviewResult run(const TidyPorts& ports, const PreviewInputs& inputs);

/// The folders directly inside `root` that a journal's files were organized into: the output folder, and the one of
/// an older version, each where an entry lies in it.
[[nodiscard]] std::vector<Url> outputRoots(const OrdovanJournal& journal, const Url& root);

}  // namespace PreviewFlow
