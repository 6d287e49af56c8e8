#include "OrdovanCore/platform/DocumentWriter.h"

#include "OrdovanCore/platform/RealPath.h"
#include "OrdovanCore/platform/SystemPath.h"
#include "OrdovanCore/platform/TemporaryFile.h"

#include <sys/stat.h>

#include <optional>
#include <string>

namespace ordovan {

namespace {

/// Whether the document may take this name; then also the mode of the file it replaces.
int checkPlace(const char* path, std::optional<::mode_t>& replaced) {
    struct ::stat facts;
    if (::lstat(path, &facts) != 0) return errno == ENOENT ? 0 : errno;
    if (S_ISDIR(facts.st_mode)) return EISDIR;
    if (!S_ISREG(facts.st_mode)) return EINVAL;
    if (::faccessat(AT_FDCWD, path, W_OK, AT_EACCESS) != 0) return errno;
    replaced = facts.st_mode & 0777;
    return 0;
}

int write(const char* path, std::string_view content) {
    std::optional<::mode_t> mode;
    int error = checkPlace(path, mode);
    if (error != 0) return error;
    TemporaryFile temporary(path);
    error = temporary.make(mode ? 0600 : 0666);
    if (error == 0) error = temporary.write(content);
    if (error == 0 && mode) error = temporary.setMode(*mode);
    return error == 0 ? temporary.become(path) : error;
}

}  // namespace

OrdovanResult<void> writeDocument(const Url& file, std::string_view content) {
    const SystemPath path(file);
    int error = path.error();
    if (error == 0) error = write(realPath(path.view()).value_or(std::string(path.view())).c_str(), content);
    if (error != 0) return std::unexpected(OrdovanSystemError::posix(error));
    return {};
}

}  // namespace ordovan
