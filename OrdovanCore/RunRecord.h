#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/RunHistory.h"
#include "OrdovanCore/SharedText.h"
#include "OrdovanCore/Uuid.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// One file that a run is going to move, as it stands when the run begins. A value, as intents, notes and records are:
/// any thread.
struct OrdovanRunItem {
    ordovan::SharedText source;       ///< absolute path at which the run finds it
    ordovan::SharedText destination;  ///< absolute path to which it goes; empty where the Trash chooses it
    std::int64_t byteSize = unknownSize;
    std::int64_t modifiedNs = unknownTime;  ///< nanoseconds since 1970-01-01 UTC
    std::string identity;     ///< as `OrdovanFileSystem::fileIdentity` tells it; empty where none is known to last
    std::string contentHash;  ///< where a journal or a Trash record tells it, else empty
    std::uint64_t names = 0;  ///< how many hard links there are, the destination not among them; 0 where not known

    static constexpr std::int64_t unknownSize = -1;
    static constexpr std::int64_t unknownTime = std::numeric_limits<std::int64_t>::min();
    friend bool operator==(const OrdovanRunItem&, const OrdovanRunItem&) = default;
};

/// What a run is about to do. It is stored before the first file is touched and removed when what was done is recorded
/// elsewhere, so that finding one tells of a run that was interrupted.
struct OrdovanRunIntent {
    using Kind = OrdovanRunRecord::Kind;

    ordovan::Uuid id;  ///< the run's, also in the history
    Kind kind = Kind::organize;
    double startedAtEpoch = 0;     ///< seconds since 1970-01-01 UTC
    Url root;                      ///< the folder the run works in: absolute, textually normal, not "/"
    std::string rootIdentity;      ///< that folder's, or empty
    std::vector<Url> outputRoots;  ///< folders inside `root` that files are organized into, or put back from
    /// The folders inside `root` at which other volumes are mounted that its files are on or go to.
    std::vector<Url> volumes;
    /// Those of these and `root` that could not be flushed when the run began. (Some file systems in user space refuse
    /// that always.) There a flush that fails tells nothing.
    std::vector<Url> unflushable;
    std::vector<OrdovanRunItem> items;  ///< in the order in which the run comes to them

    static constexpr std::int64_t supportedVersion = 1;
    static constexpr std::size_t maxItems = 1'000'000;  ///< as many as the entries of a journal, and for its reasons

    /// Takes the stored form piece by piece; false stops the writing.
    using Sink = std::function<bool(std::string_view piece)>;
    /// Writes the stored form in pieces of about 1 MiB; false when `sink` stopped it. Paths have to be UTF-8.
    bool encode(const Sink& sink) const;

    friend bool operator==(const OrdovanRunIntent&, const OrdovanRunIntent&) = default;
};

/// What a run has noted about one of its files.
struct OrdovanRunNote {
    enum class Kind {
        begun,    ///< the file is about to be moved and is this; with a `path`: first copied to that partial name
        claimed,  ///< the file is this, and its new place is about to be taken by a second name or an empty file;
                  ///< `path` is the hidden name by which it is then to lose its old one, or empty
        done,     ///< the file was this and has been moved; `path` is its place in the Trash
    };
    Kind kind = Kind::begun;
    std::size_t item = 0;  ///< its place among the intent's items
    std::int64_t byteSize = 0;
    std::string contentHash;  ///< SHA-256, 64 lower-case hexadecimal digits
    std::string identity;     ///< of the file where it was before
    bool sameVolume = false;  ///< moved within a volume, not copied
    ordovan::SharedText path;

    /// Appends the note's line, its end included.
    void appendTo(std::string& out, const OrdovanRunIntent& intent) const;

    friend bool operator==(const OrdovanRunNote&, const OrdovanRunNote&) = default;
};

/// The stored record of a run that has not come to its end.
///
/// UTF-8, one JSON object a line. First what the run is about to do, written whole or not at all: a line about the run
/// ("id", "items": their number, "kind", "outputRoots", "root", "rootIdentity", "startedAtEpoch", "unflushable",
/// "version", "volumes"), one for each item ("bytes", "from", "hash", "identity", "modified", "names", "to") and one
/// that ends this ("end": the number again). Then, as the run goes, notes ("bytes", "hash", "identity", "item", "note",
/// "path", "sameVolume"). The most common one, of an intended file that was renamed, says no more than it has to
/// ("bytes", "hash", "renamed": its item). Paths of items below the root are told relative to it.
struct OrdovanUnfinishedRun {
    OrdovanRunIntent intent;
    std::vector<OrdovanRunNote> notes;  ///< in the order in which they were made

    /// The same for some of its items, by their numbers in ascending order, and what was noted of them.
    [[nodiscard]] OrdovanUnfinishedRun only(std::span<const std::size_t> items) const;

    /// Writes the stored form in pieces; false when `sink` stopped it. Paths have to be UTF-8.
    bool encode(const OrdovanRunIntent::Sink& sink) const;

    /// Reads the stored form as `OrdovanRunRecordDecoder` does.
    [[nodiscard]] static std::expected<OrdovanUnfinishedRun, OrdovanRecordError> decoded(std::string_view from);

    friend bool operator==(const OrdovanUnfinishedRun&, const OrdovanUnfinishedRun&) = default;
};

/// Reads the stored record of a run fed in pieces of any size. One object is used by one thread at a time.
///
/// The lines up to the end of the intent are read strictly: a damaged one, a missing one or one too many refuses the
/// record; so do another version (`unsupportedVersion`) and more items than `OrdovanRunIntent::maxItems` (`tooLarge`).
/// The notes end at the first line that is torn, damaged or contradicts the intent: what stands on the disk decides
/// about everything after it.
class OrdovanRunRecordDecoder {
public:
    OrdovanRunRecordDecoder();
    ~OrdovanRunRecordDecoder();
    /// False once the record is refused; `finish` then says why.
    bool feed(std::string_view piece);
    [[nodiscard]] std::expected<OrdovanUnfinishedRun, OrdovanRecordError> finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};
