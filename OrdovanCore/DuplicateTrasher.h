#pragma once

#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/TrashRecord.h"

/// Moves redundant copies to the Trash and puts trashed files back. Fail-closed: each file is examined again right
/// before it is touched, any doubt leaves it alone, nothing is ever overwritten or deleted. No call fails as a whole:
/// each file has an outcome, and the run goes on; nothing ends it but its control. Without state; synchronous, on the
/// calling thread, which may be any that may call `fs`.
namespace OrdovanDuplicateTrasher {

/// Moves every file of the group to the Trash whose canonical path is not that of `keeping`, each completely before
/// the next; one outcome for each, in group order.
///
/// First the kept copy is proved to be the content of the group, by its hash; if it is not, nothing is touched. Then
/// each extra is proved to be a separate file in `authorizedRoot` of that same content, and right before and after its
/// move the kept copy is seen to be there still, by identity and size. If it is not there after the move, the extra is
/// put back and reported as failed. So at no instant the Trash holds the last copy.
///
/// Left alone as well: a kept copy that itself lies in a Trash (then nothing moves), an extra that does, and an extra
/// whose path is not UTF-8, since the record could not name it (reported as failed). In the record, `original` is the
/// extra's path in textually normal form, byte for byte. `contentHash` failing with ECANCELED counts as a stop.
[[nodiscard]] OrdovanTrashReport trashExtras(const OrdovanDuplicateGroup& group, const Url& keeping,
                                             const Url& authorizedRoot, OrdovanFileSystem& fs,
                                             const OrdovanRunControl& control = {});

/// Puts files back from the Trash, newest entry first: only what lies in a Trash, is provably the content that was
/// trashed, and has a free original place inside `authorizedRoot` without a link on the way. Across volumes it is
/// copied under a partial name, verified, renamed, and only then removed from the Trash.
///
/// In each outcome, `source` is the place in the Trash and `destination` the original one. The report's record has the
/// given version and the entries that were not put back, in their order.
[[nodiscard]] OrdovanTrashReport restore(const OrdovanTrashRecord& record, const Url& authorizedRoot,
                                         OrdovanFileSystem& fs, const OrdovanRunControl& control = {});

}  // namespace OrdovanDuplicateTrasher
