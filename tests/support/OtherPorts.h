#pragma once

#include "OrdovanApp/controller/TidyPorts.h"

namespace ordovan::test {

/// The same ports, but for their file system and their tasks. (They refer to these, so that a copy of them can not be
/// given others.)
inline TidyPorts withOthers(const TidyPorts& ports, OrdovanFileSystem& fileSystem, TaskRunner& tasks) {
    return {.fileSystem = fileSystem,
            .makeRunFileSystem = ports.makeRunFileSystem,
            .hashAhead = ports.hashAhead,
            .contents = ports.contents,
            .makeDirectoryReader = ports.makeDirectoryReader,
            .supportsCaseSensitiveNames = ports.supportsCaseSensitiveNames,
            .removeEmptyFolders = ports.removeEmptyFolders,
            .writeDocument = ports.writeDocument,
            .resolveExisting = ports.resolveExisting,
            .ownFolders = ports.ownFolders,
            .tryLockFolder = ports.tryLockFolder,
            .clock = ports.clock,
            .timeZone = ports.timeZone,
            .tasks = tasks,
            .journals = ports.journals,
            .history = ports.history,
            .trashRecords = ports.trashRecords,
            .recentFolders = ports.recentFolders,
            .settings = ports.settings,
            .rules = ports.rules,
            .recording = ports.recording};
}

}  // namespace ordovan::test
