#pragma once

#include "OrdovanCore/platform/FolderEntry.h"
#include "OrdovanCore/platform/WriterProbe.h"

#include <sys/stat.h>

namespace ordovan {

/// The ways to bring a file's bytes over, in the order in which they are tried; reading and writing always works.
struct CopyWays {
    bool shareExtents = true;  ///< ioctl_ficlone(2), within one btrfs, xfs or the like
    bool copyRange = true;     ///< copy_file_range(2)
    /// Called with each folder entry to put on disk; 0 or an errno. See `syncFolderOf`.
    int (*sync)(FolderEntry item);
};

/// What a copy insists on beyond finding a regular file that stays what it is.
struct SourceTerms {
    const struct ::stat* was = nullptr;  ///< the file, untouched since it was examined so; null for any
    WriterProbe* writers = nullptr;      ///< with which to ask for programs that write the file; null for not at all
};

/// Copies a regular file to a name that must be free and returns 0 or the errno.
///
/// Content, holes, extended attributes, access control lists, mode and times (nanoseconds) are kept, and owner and
/// group where the system allows it. What the target's file system can not hold is left out: an attribute that it
/// refuses or that is too big for it, and rights that would mean more without the refused list or under another owner
/// (set-user-ID, the group's share of a list). Copy and folder entry are on disk when it returns, and the copy is
/// dropped from memory so that the next reading comes from the device.
///
/// EEXIST when anything bears the name; ELOOP for a link, EINVAL for anything else that is not a regular file; EBUSY
/// when the source changed or was replaced meanwhile, or is not what `terms` say. On any failure nothing is left at
/// `to`. Without state but for the probe's; any thread.
int copyExclusively(FolderEntry from, FolderEntry to, CopyWays ways, const SourceTerms& terms = {});

}  // namespace ordovan
