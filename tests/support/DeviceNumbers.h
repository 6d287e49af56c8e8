#pragma once

#include "tests/support/TempFolder.h"

#include <sys/stat.h>

namespace ordovan::test {

inline constexpr const char* filesHaveOtherDevices =
    "NOT TESTED: below TMPDIR a file has another device number than its folder (an overlay whose layers are different "
    "file systems), so that every move is one between volumes. Set TMPDIR to a folder on an ordinary volume.";

/// True on every ordinary volume; false on an overlay whose layers are different file systems.
inline bool filesShareTheirFoldersDevice() {
    const TempFolder folder;
    folder.write("file", "");
    struct ::stat file, above;
    return ::lstat(folder.path("file").c_str(), &file) == 0 && ::lstat(folder.path().c_str(), &above) == 0 &&
           file.st_dev == above.st_dev;
}

}  // namespace ordovan::test
