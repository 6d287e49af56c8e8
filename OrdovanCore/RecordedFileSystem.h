#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Relocator.h"
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
/// new place is going to be taken in more than one step. What has been moved is noted behind it, some 32 KiB at a time:
/// for files of which the end of the process takes the note away, the disk tells. Notes that can not be written are a
/// loss of certainty after an interruption and of nothing else: the run goes on without more of them.
///
/// An original whose copy is in place is renamed to a hidden name of ours, where nobody else replaces it or opens it
/// for writing. There it is hashed for the last time and, if it is what was copied and the copy still stands, removed;
/// else it gets its own name back, and the answer is `originalChanged` where it is that. That hash is the only one
/// behind the copy: asked for the content of an original that looks as it did, this port says what it was. (An item of
/// a Trash keeps its name, by which its info file knows it. It is hashed when that is asked for.)
///
/// A copy that has got its new name and is to go again is renamed back to its partial name, looked at there, and
/// removed. Where a volume has no room for another name, both are removed under the one they have.
///
/// Used by the run's one thread.
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

    /// Whether something of a file is left that the run meant to take away again, or that can not be told: a copy
    /// beside its original, a second name, an empty file in its new place, or a file under its hidden name. To be asked
    /// when the run is over.
    [[nodiscard]] bool leavesSomething();
    /// An item of which the run has changed something, or may have, as far as can be told.
    struct Change {
        std::size_t item;
        bool isSourceToo;  ///< where it was, not only where it goes
        friend bool operator==(const Change&, const Change&) = default;
    };
    /// These, in the order of the run.
    [[nodiscard]] const std::vector<Change>& changes() const noexcept { return changes_; }
    /// The places in the Trash to which files were moved, in their order.
    [[nodiscard]] const std::vector<Url>& trashedTo() const noexcept { return trashedTo_; }

private:
    /// What the run has found out about the file in work: what can be noted of it.
    struct Examined {
        SharedText path;
        bool isSized = false;
        OrdovanRunNote note;
        std::string identity;  // also where it can not be noted, because it does not last
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
    void noteRemains();
    template <class Done>
    void noteChange(const Change& change, const Done& done);
    void addChange(const Change& change);
    OrdovanResult<void> moveItem(const Change& change, const Url& from, const Url& to);

    [[nodiscard]] bool isOriginal(const Url& url) const;
    [[nodiscard]] bool looksUnchanged(const Url& original);
    [[nodiscard]] bool copyStands();
    OrdovanResult<void> prove(const Url& original);
    OrdovanResult<void> removeOriginal(const Url& original);
    OrdovanResult<void> removeHidden(const Url& original, const Url& aside);
    OrdovanResult<void> removeAsItIs(const Url& url);
    [[nodiscard]] bool giveBack(const Url& hidden, const Url& file);
    OrdovanResult<void> removePartial(const Url& partial);
    OrdovanResult<void> removePublished(const Url& copy);
    void endCopying();
    void handOver();

    OrdovanFileSystem& fs_;
    const OrdovanRunIntent& intent_;
    RunNotes& notes_;
    StepwiseMoves* disk_;
    std::optional<Change> moving_;  // what the move in work changes, of an item on its way to its new place
    std::string gathered_;
    bool takesNotes_ = true;

    std::size_t next_ = 0;                 // where the run is among the items
    std::vector<std::uint32_t> bySource_;  // made when it does not come to them in their order
    std::unordered_set<std::string_view> folders_;
    Examined examined_;

    struct Copying {
        enum class Stage {
            copied,     // there may be a copy beside the original
            published,  // the copy has its new name
            hidden,     // and the original has a hidden one
            settled,    // only one of them is left
        };
        std::size_t item;
        SharedText partial;
        Fingerprint was;       // the original
        std::string identity;  // the copy's, as far as it is known
        Stage stage = Stage::copied;
    };
    std::optional<Copying> copying_;  // the last file that was copied
    bool leavesSomething_ = false;
    struct Trashed {
        std::size_t item;
        SharedText place;
    };
    std::optional<Trashed> trashed_;  // the last file that was trashed
    std::vector<Url> trashedTo_;
    std::vector<Change> changes_;
};

}  // namespace ordovan
