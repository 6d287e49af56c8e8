#pragma once

#include "OrdovanCore/Executor.h"
#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/TrashRecord.h"

#include <cstdint>
#include <span>

/// Moves chosen files to the Trash, after each was examined again. Fail-closed, synchronous and without state, as
/// `OrdovanDuplicateTrasher` is; threads as there.
namespace OrdovanFileTrasher {

/// A file the user chose.
struct Item {
    Url url;
    std::int64_t expectedSize = 0;  ///< the size in bytes that the user saw
};

/// Moves the items to the Trash, each completely before the next; one outcome for each, in order. A file is moved only
/// with all that a record needs to put it back: one that can not be hashed, or whose path is not UTF-8, stays where it
/// is. In the record, `original` is the item's path in textually normal form, byte for byte. `contentHash` failing with
/// ECANCELED counts as a stop.
[[nodiscard]] OrdovanTrashReport trash(std::span<const Item> items, const Url& authorizedRoot, OrdovanFileSystem& fs,
                                       const OrdovanRunControl& control = {});

}  // namespace OrdovanFileTrasher
