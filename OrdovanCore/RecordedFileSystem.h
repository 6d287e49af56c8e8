#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/RunNotes.h"
#include "OrdovanCore/RunRecord.h"
#include "OrdovanCore/StepwiseMoves.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace ordovan {

/// The file system of one run that has its intent recorded: it keeps the run to what is in that intent, and notes what
/// becomes of each file.
///
/// A changing call on anything but an item's source, its destination, a partial copy beside that, its place in the
/// Trash or the folders that hold the destinations fails with EPERM and touches nothing.
///
/// A file that is copied is noted, on disk, before its copy is begun: with what it is and the name of the copy. So is
/// one, though it may not reach the disk before the power goes, that is not the file the intent tells of, and one whose
/// new place is going to be taken in more than one step. What has been
/// moved is noted behind it, some 32 KiB at a time: for files of which the end of the process takes the note away, the
/// disk tells. Notes that can not be written are a loss of certainty after an interruption and of nothing else: the run
/// goes on without more of them.
///
/// An original whose copy is in place is renamed to a hidden name of ours, where nobody else replaces it, before it is
/// looked at for the last time and removed.
///
/// Used by one thread.
class RecordedFileSystem final : public OrdovanFileSystem {
public:
    /// All outlive this object. `disk` is what of `fs` moves in steps; null where nothing does.
    RecordedFileSystem(OrdovanFileSystem& fs, const OrdovanRunIntent& intent, RunNotes& notes,
                       StepwiseMoves* disk = nullptr);
    /// Hands over the notes gathered so far.
    ~RecordedFileSystem() override;
    RecordedFileSystem(const RecordedFileSystem&) = delete;
    RecordedFileSystem& operator=(const RecordedFileSystem&) = delete;

    bool exists(const Url& url) override { return fs_.exists(url); }
    bool isRegularFile(const Url& url) override { return fs_.isRegularFile(url); }
    bool isSymlink(const Url& url) override { return fs_.isSymlink(url); }
    bool sameVolume(const Url& a, const Url& b) override { return fs_.sameVolume(a, b); }
    OrdovanResult<void> createDirectory(const Url& url) override;
    OrdovanResult<void> move(const Url& from, const Url& to) override;
    OrdovanResult<void> copy(const Url& from, const Url& to) override;
    OrdovanResult<void> remove(const Url& url) override;
    OrdovanResult<std::int64_t> fileSize(const Url& url) override;
    OrdovanResult<std::string> contentHash(const Url& url) override;
    OrdovanResult<std::string> fileIdentity(const Url& url) override;
    OrdovanResult<Url> trash(const Url& url) override;

private:
    /// What the run has found out about the file in work: what can be noted of it.
    struct Examined {
        SharedText path;
        bool isSized = false;
        OrdovanRunNote note;
        [[nodiscard]] bool isWhole() const { return isSized && !note.contentHash.empty(); }
    };

    [[nodiscard]] std::optional<std::size_t> itemAt(std::string_view source);
    [[nodiscard]] std::optional<std::size_t> itemWith(std::string_view source, std::string_view destination);
    [[nodiscard]] bool holdsDestinations(std::string_view folder);
    /// The file in work, if it is this one; begun anew when it is another of the items. Null for any other file.
    [[nodiscard]] Examined* examined(const Url& url);
    [[nodiscard]] static bool keepsIdentity(const OrdovanRunItem& item);
    [[nodiscard]] bool isOther(std::size_t item) const;

    void note(OrdovanRunNote::Kind kind, std::size_t item, bool sameVolume, SharedText path);
    void noteOther(std::size_t item);
    void noteClaim(const Url& hidden);
    OrdovanResult<void> moveItem(std::size_t item, const Url& from, const Url& to);
    OrdovanResult<void> removeOriginal(const Url& original);
    void handOver();

    OrdovanFileSystem& fs_;
    const OrdovanRunIntent& intent_;
    RunNotes& notes_;
    StepwiseMoves* disk_;
    std::optional<std::size_t> claiming_;  // the item that is on its way to its new place
    std::string gathered_;
    bool takesNotes_ = true;

    std::size_t next_ = 0;                 // where the run is among the items
    std::vector<std::uint32_t> bySource_;  // made when it does not come to them in their order
    std::unordered_set<std::string_view> folders_;
    Examined examined_;

    struct Copying {
        std::size_t item;
        SharedText partial;
    };
    std::optional<Copying> copying_;  // the last file that was copied
    struct Trashed {
        std::size_t item;
        SharedText place;
    };
    std::optional<Trashed> trashed_;  // the last file that was trashed
};

}  // namespace ordovan
