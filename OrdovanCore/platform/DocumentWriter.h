#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Url.h"

#include <string_view>

namespace ordovan {

/// Writes a document of the user's where the user asked for it: whole or not at all, by a temporary file in the same
/// folder that is flushed and renamed. A regular file of that name is replaced and its permissions are kept; where the
/// name is a link to one, that file is. A new document has the permissions that the umask leaves of 0666.
///
/// Errors, after which nothing has changed unless it was the last flush, that of the folder: ENOENT without the folder;
/// EISDIR for a folder and EINVAL for anything else that is no regular file; EACCES for a file or a folder that may not
/// be written to; the system's (ENOSPC, EROFS). Any thread.
OrdovanResult<void> writeDocument(const Url& file, std::string_view content);

}  // namespace ordovan
