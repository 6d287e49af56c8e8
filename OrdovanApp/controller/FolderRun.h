#pragma once

#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/RecordedFileSystem.h"
#include "OrdovanCore/RunNotes.h"
#include "OrdovanCore/RunRecord.h"
#include "OrdovanCore/Url.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What all runs that change a folder have in common. On background threads.
namespace FolderRun {

/// True for a file that a run in this folder may look into: one inside the folder with no link on the way, or one in a
/// Trash. A record may name others; the run refuses those, and nothing is to open them before it does.
[[nodiscard]] bool mayRead(const Url& file, const Url& root, OrdovanFileSystem& fs);

/// The devices at a run's folder and at its volumes; empty texts where these are gone or that can not be told.
/// `factsOf` as `RecordingPorts::facts`.
[[nodiscard]] std::vector<std::string> devicesOf(const OrdovanRunIntent& run, const ordovan::FactsFunction& factsOf);

/// Puts the names of a run's items on the disk, as `RecordingPorts::syncMoves`. What a volume says that could not be
/// flushed when the run began is not heeded.
[[nodiscard]] bool syncMoves(const TidyPorts& ports, const OrdovanRunIntent& run, const std::vector<Url>& arrivals,
                             const std::vector<Url>& departures);

/// The file system that a run in a folder changes files through, told beforehand which files it will hash, where that
/// is known. Used by the run's one thread.
class FileSystem {
public:
    FileSystem(const TidyPorts& ports, const Url& root, std::span<const Url> toBeHashed = {})
        : own_(ports.makeRunFileSystem ? ports.makeRunFileSystem(root) : nullptr),
          disk_(own_ == nullptr ? ports.fileSystem : *own_),
          ahead_(toBeHashed.empty() || !ports.hashAhead
                     ? nullptr
                     : ports.hashAhead(
                           disk_, toBeHashed,
                           [root, &fs = ports.fileSystem](const Url& file) { return mayRead(file, root, fs); })),
          port_(ahead_ == nullptr ? disk_ : *ahead_),
          contents_(dynamic_cast<OrdovanContentReading*>(own_.get())),
          stepwise_(dynamic_cast<ordovan::StepwiseMoves*>(own_.get())) {
        if (contents_ == nullptr) contents_ = ports.contents;
    }
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;

    OrdovanFileSystem& port() { return port_; }
    /// Reads the files of the run in pieces, by the rules of its disk where that has its own; null for none.
    [[nodiscard]] OrdovanContentReading* contents() const { return contents_; }
    /// What of the disk of the run moves in steps; null for nothing.
    [[nodiscard]] ordovan::StepwiseMoves* stepwise() const { return stepwise_; }

private:
    std::unique_ptr<OrdovanFileSystem> own_;  // null where the ports' own serves
    OrdovanFileSystem& disk_;
    std::unique_ptr<OrdovanFileSystem> ahead_;
    OrdovanFileSystem& port_;
    OrdovanContentReading* contents_;
    ordovan::StepwiseMoves* stepwise_;
};

/// What a run is going to do, gathered before it begins, and the record of it. Stays where it is made.
///
/// Where this record can not be stored, the run goes on without it, kept to what it is going to do all the same. Only
/// where no records are kept at all, or none can name the folder, it is not. Used by the run's one thread.
class Record {
public:
    Record(const TidyPorts& ports, OrdovanRunRecord::Kind kind, const Url& root, double nowEpoch);
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    void reserve(std::size_t files);
    /// A folder inside the run's that files are organized into or put back from.
    void addOutputRoot(const Url& folder);
    /// A file that the run is going to move; `destination` is empty for one that goes to the Trash. What is known about
    /// it beforehand, its size and content, comes from a stored record.
    void add(const Url& source, const Url& destination, std::int64_t knownSize = OrdovanRunItem::unknownSize,
             std::string_view knownHash = {});

    /// Looks at the files, for which a run with many takes a second thread. Before anything else keeps the processor
    /// busy is a good time for it; else `begin` does it.
    void lookAtAll();
    /// Stores the record. The file system through which the run is to work from now on: `fs`, kept to what was added.
    /// `disk` is what of that moves in steps; null where nothing does.
    OrdovanFileSystem& begin(OrdovanFileSystem& fs, ordovan::StepwiseMoves* disk);
    /// To be called when the run is over and before what it did is stored: nothing more is noted, and what was moved is
    /// put on the disk.
    void endNotes();
    /// Once the notes have ended, whether that is certain. Not where a volume could not flush, or where another one, or
    /// none, has taken its place meanwhile: what was moved may be back when it is mounted anew.
    [[nodiscard]] bool isOnDisk() const { return isOnDisk_; }
    /// Removes the record, which is not needed any more; but where the run has left something that is to be put right
    /// (`RecordedFileSystem::leavesSomething`) it stays for the next preview. False when it could not be removed, or
    /// has to stay because what the run did may not last (`isOnDisk`).
    bool remove();

    /// The run's.
    [[nodiscard]] const ordovan::Uuid& id() const { return intent_.id; }
    [[nodiscard]] bool isStored() const { return place_.has_value(); }

private:
    [[nodiscard]] std::vector<Url> unflushable() const;
    [[nodiscard]] bool syncMoves() const;
    [[nodiscard]] bool isChangedBelow(const Url& folder) const;
    [[nodiscard]] bool areVolumesThere() const;
    void addTrashPlaces(std::vector<Url>& arrivals) const;

    const TidyPorts& ports_;
    bool isKept_;                       // the run is kept to what was added
    std::optional<std::size_t> place_;  // where the record is stored
    bool areLookedAt_ = false;
    bool leavesSomething_ = false;
    bool isOnDisk_ = true;
    OrdovanRunIntent intent_;
    std::vector<std::string> devices_;          // of the run's volumes, as it found them
    std::string below_;                         // what the paths in the run's folder begin with
    std::unique_ptr<ordovan::RunNotes> notes_;  // until the end of this: others know by it that the run goes on
    std::optional<ordovan::RecordedFileSystem> recorded_;
};

/// Does `work` under the folder's lock; a result with `refused` set when another run holds it. A folder that can not be
/// locked for another reason (it is gone, say) is left to the checks that the run makes for each file, and the record
/// of a run that goes on there keeps others out.
template <class Work>
auto locked(const TidyPorts& ports, const Url& folder, Work work) {
    const auto lock = ports.tryLockFolder(folder);
    if (ordovan::isHeldElsewhere(lock)) {
        decltype(work()) refusal;
        refusal.refused = true;
        return refusal;
    }
    return work();
}

}  // namespace FolderRun
