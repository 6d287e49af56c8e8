#pragma once

#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/Planner.h"
#include "OrdovanCore/Url.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace ordovan::cli {

/// A preview and the selection made in it, as every output form shows them.
struct PlanView {
    /// What the scan found out about a proposal's file.
    struct Facts {
        std::int64_t byteSize = 0;
        std::optional<double> modifiedEpoch;  ///< seconds since 1970
    };

    std::shared_ptr<const OrdovanPlanResult> plan;
    std::shared_ptr<const OrdovanInventory> inventory;
    Url root;
    Url outputRoot;
    bool caseInsensitive = false;
    bool partialScan = false;
    std::string status;                ///< the status line
    std::vector<Facts> facts = {};     ///< one for each proposal
    std::vector<bool> isLeftOut = {};  ///< one for each proposal
    std::size_t partialDownloads = 0;  ///< how many were left out by `leaveOutPartialDownloads`

    /// Fills `facts` and selects everything. Linear.
    void fill();
    /// Takes the proposals with these ids out of the selection.
    void leaveOut(const std::unordered_set<std::string>& proposalIDs);
    /// Takes the unfinished downloads out of the selection, as the window does.
    void leaveOutPartialDownloads();
    [[nodiscard]] std::size_t selectedCount() const;
    /// The ids of the proposals that are not selected.
    [[nodiscard]] std::unordered_set<std::string> leftOutIDs() const;
};

/// What a command line says about the names and places of the proposals to select. Every part narrows the selection.
struct Selection {
    std::optional<std::string_view> onlyFolder;
    std::vector<std::string_view> leftOutPaths;  ///< as typed: absolute, or relative to the current directory
};

/// Narrows the selection of a view. Refused with one sentence: a folder name that neither the built-in kinds, nor
/// `rules`, nor the plan know; a path that names no file of the plan, no folder that holds one and nothing that exists
/// in the previewed folder.
[[nodiscard]] std::expected<void, std::string> apply(const Selection& selection, const OrdovanRuleSet& rules,
                                                     PlanView& view);

/// The absolute, textually normal forms a typed path may have in a plan or a journal: as typed, and with the links
/// among its folders resolved. None for an empty text.
[[nodiscard]] std::vector<std::string> absoluteForms(std::string_view typed);

}  // namespace ordovan::cli
