#pragma once

#include <string>
#include <string_view>

namespace ordovan {

/// Removes one folder below `root` if nothing is in it but, at most, a regular file ".DS_Store", which is removed
/// (unlink(2)) with it. `relativePath` names the folder by plain pieces joined with "/".
///
/// Every folder from `root` on is opened relative to the one above it and without following a link (openat(2) with
/// O_NOFOLLOW), `root` included, so nothing outside it is ever touched. rmdir(2) has the last word: a folder that has
/// gained an item since it was listed stays. True when the folder was removed; every error is false. Any thread.
bool removeFolderIfEmpty(const std::string& root, std::string_view relativePath);

}  // namespace ordovan
