#pragma once

namespace ordovan::test {

/// What is said when the record of what lies in the Trash could not be stored.
constexpr const char* trashNotRecorded =
    "Files were moved to the Trash, but the restore record couldn't be saved. Restore works until you quit; after "
    "that, use Put Back in the Finder Trash.";
constexpr const char* trashRecordNotUpdated =
    "The restore record couldn't be updated on disk. Files already put back may be listed again; putting them back "
    "again is refused safely.";

}  // namespace ordovan::test
