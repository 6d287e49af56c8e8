#pragma once

#include "OrdovanApp/controller/SearchIndex.h"
#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/Planner.h"
#include "OrdovanCore/SharedText.h"
#include "OrdovanCore/Url.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// What a list of a plan needs besides the plan, and what takes too long to make where an interface waits for it: for
/// 50,000 files some fifty milliseconds. Immutable once made; it holds for the plan and the inventory it was made of.
///
/// The items of the list are numbered through: the proposals, the conflicts, the skips, each in plan order.
struct PlanIndex {
    /// A file or folder that is left where it is, and why.
    struct Skip {
        Url url;
        ordovan::SharedText reason;  ///< a sentence for the user
    };
    static constexpr std::uint32_t nowhere = 0xffffffff;

    /// The plan's, then the folders that the scan could not look into.
    std::vector<Skip> skips;
    /// Of each proposal and conflict, its place among the inventory's files, or `nowhere`.
    std::vector<std::uint32_t> entries;
    /// Of each proposal, its size in bytes; 0 where the inventory does not have it.
    std::vector<std::int64_t> byteSizes;
    /// Of each item, its path below `root`.
    SearchIndex names;

    /// Any thread. The plan is that of the inventory, which is that of the folder `root`.
    [[nodiscard]] static PlanIndex of(const OrdovanPlanResult& plan, const OrdovanInventory& inventory,
                                      const Url& root);
    /// What an item is about; `plan` is the one that the index was made of.
    [[nodiscard]] const Url& source(const OrdovanPlanResult& plan, std::size_t item) const;
};
