#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/RunNotes.h"

#include <functional>
#include <memory>
#include <string_view>

namespace ordovan {

/// The port through which records about the user's files (journals, history) are kept. The records are the program's
/// own; the user's files never pass through here.
///
/// Any thread, several at once. Two changes of one document are not coordinated here: whoever makes them holds a lock.
/// Errors are the system's, unchanged, beside those that an operation names.
class RecordStorage {
public:
    /// Takes a piece of a document; false stops the reading or writing.
    using Sink = std::function<bool(std::string_view piece)>;
    /// Produces a document by handing its pieces to a sink; false when it could not be produced.
    using Producer = std::function<bool(const Sink& sink)>;

    virtual ~RecordStorage() = default;

    /// Hands the document to `sink` piece by piece (about 256 KiB each). ENOENT when there is none; EINVAL when what
    /// stands there is not a regular file (a link to one is not); ECANCELED when the sink stopped it.
    virtual OrdovanResult<void> read(const Url& file, const Sink& sink) = 0;

    /// Writes the document whole or not at all: a temporary file in the same folder (made with all folders above it,
    /// mode 0700), mode 0600, flushed, renamed over the old document, the folder flushed. On any error the old
    /// document stands as it was and no temporary is left; only when that last flush fails does the new one stand
    /// already, and may be lost with the power. ECANCELED when the producer gave up.
    virtual OrdovanResult<void> write(const Url& file, const Producer& producer) = 0;

    /// Opens a document for notes at its end and holds it, as long as what is returned lives, against anybody else who
    /// asks for the same. EWOULDBLOCK when it is held; ENOENT when there is none; EINVAL when what stands there is not
    /// a regular file (a link to one is not). Where the file system has no locks (flock(2)), nobody holds anything.
    virtual OrdovanResult<std::unique_ptr<RunNotes>> openNotes(const Url& file) = 0;

    /// Removes the document; none there is no error. The folder is flushed, as far as it can be, so that no power cut
    /// brings the document back.
    virtual OrdovanResult<void> remove(const Url& file) = 0;

    /// Renames a document that can not be used to a free name in the same folder; EEXIST when that name is taken,
    /// ENOENT when there is no document. Not flushed.
    virtual OrdovanResult<void> setAside(const Url& file, const Url& to) = 0;
};

}  // namespace ordovan
