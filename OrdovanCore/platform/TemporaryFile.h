#pragma once

#include "OrdovanCore/platform/Descriptor.h"

#include <sys/types.h>

#include <string>
#include <string_view>

namespace ordovan {

/// The file that a document is written to before it takes the document's name: hidden, in the same folder, named after
/// the document and a UUID. Removed at the end unless it became the document. While it is being written it is locked,
/// so that one left by a process that died can be told from one in use. Functions return 0 or the errno. Used by one
/// thread.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string_view document);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Creates it exclusively, with this mode as far as the umask allows.
    [[nodiscard]] int make(::mode_t mode);
    /// Gives it exactly this mode, whatever the umask.
    [[nodiscard]] int setMode(::mode_t mode) const;
    [[nodiscard]] int write(std::string_view bytes) const;
    /// Flushes it and renames it over the document, whatever stands there but a folder; flushes the folder.
    [[nodiscard]] int become(const char* document);
    /// Removes the document's temporaries that nobody holds: what a power cut or a killed process left.
    void removeStale() const;

private:
    std::string folder_;
    std::string prefix_;
    std::string path_;  // empty when there is nothing to remove
    Descriptor file_;
    Descriptor lock_;
};

}  // namespace ordovan
