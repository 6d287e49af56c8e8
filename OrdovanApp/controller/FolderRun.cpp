#include "OrdovanApp/controller/FolderRun.h"

#include "OrdovanApp/stores/RecordErrors.h"
#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/Text.h"
#include "OrdovanCore/TrashPlace.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <limits>
#include <memory>
#include <span>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace FolderRun {

namespace {

/// The notes of a run without a record.
class NoNotes final : public ordovan::RunNotes {
public:
    OrdovanResult<void> append(std::string_view) override { return std::unexpected(OrdovanSystemError::posix(EBADF)); }
    OrdovanResult<void> sync() override { return {}; }
};

/// From so many files on, a second thread looks at half of them.
constexpr std::size_t enoughForTwo = 2048;

/// The files of a run, those of one folder together, which spares the ways to them; else in their order.
std::vector<OrdovanRunItem*> folderByFolder(std::vector<OrdovanRunItem>& items) {
    constexpr auto none = std::numeric_limits<std::size_t>::max();
    std::vector<std::size_t> next(items.size(), none);  // the next item in the same folder
    std::vector<std::size_t> firsts;
    std::unordered_map<std::string_view, std::size_t> lasts;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const auto [last, isFirst] = lasts.try_emplace(ordovan::parentPath(items[i].source), i);
        if (isFirst) {
            firsts.push_back(i);
        } else {
            next[std::exchange(last->second, i)] = i;
        }
    }
    std::vector<OrdovanRunItem*> result;
    result.reserve(items.size());
    for (const std::size_t first : firsts) {
        for (std::size_t i = first; i != none; i = next[i]) result.push_back(&items[i]);
    }
    return result;
}

/// The device of a folder. Empty where it is gone or that can not be told.
std::string deviceAt(const Url& folder, const ordovan::FactsFunction& factsOf) {
    const auto facts = factsOf(folder);
    return facts ? std::string(ordovan::deviceOf(facts->identity)) : std::string();
}

/// The folders inside a run's at which other volumes are mounted that its files are on or go to.
std::vector<Url> volumesOf(const OrdovanRunIntent& run, const ordovan::FactsFunction& factsOf) {
    std::vector<Url> found;
    const std::string below = std::string(run.root.path()) + "/";
    const std::string home = deviceAt(run.root, factsOf);
    std::unordered_set<std::string_view> known;
    const auto lookAt = [&](std::string_view folder) {
        if (!folder.starts_with(below) || !ordovan::isNormalPath(folder) || !known.insert(folder).second) return;
        std::string device = deviceAt(Url::file(folder), factsOf);
        // Up to the run's folder: where the device changes, a volume is mounted.
        while (device != home && folder.size() > run.root.path().size()) {
            const std::string_view above = ordovan::parentPath(folder);
            const std::string deviceAbove = deviceAt(Url::file(above), factsOf);
            const bool areTold = !device.empty() && !deviceAbove.empty();
            if (areTold && deviceAbove != device) found.push_back(Url::file(folder));
            if (!known.insert(above).second) break;
            folder = above;
            device = deviceAbove;
        }
    };
    for (const OrdovanRunItem& item : run.items) {
        // A file on the folder's own device spares a look. (An overlay may give its files other devices.)
        if (home.empty() || ordovan::deviceOf(item.identity) != home) lookAt(ordovan::parentPath(item.source));
        lookAt(ordovan::parentPath(item.destination));
    }
    return found;
}

/// Finds out how files stand before a run moves them. Used by one thread.
class Look {
public:
    /// `below` is what the paths in the run's folder begin with. Both outlive this object.
    Look(const RecordingPorts& ports, std::string_view below)
        : ports_(ports), below_(below), facts_(ports.makeFacts ? ports.makeFacts() : ports.facts) {}

    void at(OrdovanRunItem& item) {
        // A stored record may name any place; the run refuses those outside, and nothing is to touch them before it
        // does.
        const bool mayLook = item.source.view().starts_with(below_) || ordovan::isInTrash(item.source);
        const Url source = Url::file(item.source);
        auto facts = mayLook ? facts_(source) : std::unexpected(OrdovanSystemError{});
        if (!facts) return;
        item.byteSize = facts->byteSize;
        item.modifiedNs = facts->modifiedNs;
        if (!isAnotherName(*facts, Url::file(item.destination))) item.names = facts->names;
        const std::string_view device = ordovan::deviceOf(facts->identity);
        if (device != device_) {
            device_ = device;
            keepsInodes_ = !ports_.keepsInodes || ports_.keepsInodes(source);
        }
        if (keepsInodes_) item.identity = std::move(facts->identity);
    }

private:
    /// Whether a file may be one with what lies at its destination already. With a single name it can not.
    [[nodiscard]] bool isAnotherName(const ordovan::FileFacts& file, const Url& destination) const {
        if (file.names <= 1 || !destination.path().starts_with(below_)) return false;
        const auto there = facts_(destination);
        return there ? there->identity == file.identity : !ordovan::isAbsent(there.error());
    }

    const RecordingPorts& ports_;
    std::string_view below_;
    ordovan::FactsFunction facts_;
    std::string device_;       // the last file's, as identities name it
    bool keepsInodes_ = true;  // what that device does
};

}  // namespace

bool mayRead(const Url& file, const Url& root, OrdovanFileSystem& fs) {
    if (!ordovan::namesOnePlace(file)) return false;
    if (ordovan::isInTrash(file.path())) return true;
    const ordovan::Boundary boundary(root);
    return boundary.holds(file, fs) && !OrdovanHasSymlinkedParent(file, boundary.canonicalRoot(), fs);
}

std::vector<std::string> devicesOf(const OrdovanRunIntent& run, const ordovan::FactsFunction& factsOf) {
    std::vector<std::string> found = {deviceAt(run.root, factsOf)};
    for (const Url& volume : run.volumes) found.push_back(deviceAt(volume, factsOf));
    return found;
}

bool syncMoves(const TidyPorts& ports, const OrdovanRunIntent& run, const std::vector<Url>& arrivals,
               const std::vector<Url>& departures) {
    const auto& sync = ports.recording.syncMoves;
    if (!sync) return true;
    const auto isHeeded = [&](const Url& place) {
        Url volume = run.root;
        for (const Url& each : run.volumes) {
            const bool isOn = place.path().starts_with(std::string(each.path()) + "/");
            if (isOn && each.path().size() > volume.path().size()) volume = each;
        }
        return std::ranges::find(run.unflushable, volume) == run.unflushable.end();
    };
    const auto those = [&](const std::vector<Url>& places, bool areHeeded) {
        std::vector<Url> found;
        std::ranges::copy_if(places, std::back_inserter(found),
                             [&](const Url& place) { return isHeeded(place) == areHeeded; });
        return found;
    };
    if (run.unflushable.empty()) return sync(arrivals, departures);
    static_cast<void>(sync(those(arrivals, false), those(departures, false)));
    const std::vector<Url> heededArrivals = those(arrivals, true), heededDepartures = those(departures, true);
    return (heededArrivals.empty() && heededDepartures.empty()) || sync(heededArrivals, heededDepartures);
}

Record::Record(const TidyPorts& ports, OrdovanRunRecord::Kind kind, const Url& root, double nowEpoch)
    : ports_(ports),
      isKept_(ports.recording.runRecords != nullptr && root.path() != "/" && ordovan::isNormalPath(root.path()) &&
              ordovan::namesOnePlace(root)),
      below_(std::string(root.path()) + "/") {
    intent_.id = ordovan::Uuid::random();
    intent_.kind = kind;
    intent_.root = root;
    intent_.startedAtEpoch = nowEpoch;
    if (!isKept_) return;
    // Where the number of its device may be another's by then, what lies in the folder has to tell.
    const bool isLasting = !ports.recording.keepsIdentities || ports.recording.keepsIdentities(root);
    auto facts = isLasting ? ports.recording.facts(root) : std::unexpected(OrdovanSystemError{});
    if (facts) intent_.rootIdentity = std::move(facts->identity);
}

void Record::reserve(std::size_t files) {
    if (isKept_) intent_.items.reserve(files);
}

void Record::addOutputRoot(const Url& folder) {
    if (folder.path().starts_with(below_)) intent_.outputRoots.push_back(folder);
}

void Record::add(const Url& source, const Url& destination, std::int64_t knownSize, std::string_view knownHash) {
    // What a record can not name is not moved.
    const bool isNamed =
        ordovan::namesOnePlace(source) && (destination.path().empty() || ordovan::namesOnePlace(destination));
    if (!isKept_ || !isNamed) return;
    intent_.items.push_back({.source = source.sharedPath(),
                             .destination = destination.sharedPath(),
                             .byteSize = knownSize,
                             .identity = {},
                             .contentHash = std::string(knownHash)});
}

void Record::lookAtAll() {
    if (!isKept_ || std::exchange(areLookedAt_, true)) return;
    const std::vector<OrdovanRunItem*> files = folderByFolder(intent_.items);
    const auto look = [this](std::span<OrdovanRunItem* const> part) {
        Look looking(ports_.recording, below_);
        for (OrdovanRunItem* const file : part) looking.at(*file);
    };
    const std::span all(files);
    const std::size_t ours = all.size() < enoughForTwo || !ports_.recording.makeFacts ? all.size() : all.size() / 2;
    std::jthread second;
    try {
        if (ours < all.size()) second = std::jthread([&] { look(all.subspan(ours)); });
    } catch (const std::system_error&) {
        look(all.subspan(ours));  // no more threads to be had
    }
    look(all.first(ours));
}

OrdovanFileSystem& Record::begin(OrdovanFileSystem& fs, ordovan::StepwiseMoves* disk) {
    if (!isKept_) return fs;
    lookAtAll();
    intent_.volumes = volumesOf(intent_, ports_.recording.facts);
    intent_.unflushable = unflushable();
    devices_ = devicesOf(intent_, ports_.recording.facts);
    if (auto begun = ports_.recording.runRecords->begin(intent_)) {
        place_ = begun->place;
        notes_ = std::move(begun->notes);
    } else {
        notes_ = std::make_unique<NoNotes>();
    }
    return recorded_.emplace(fs, intent_, *notes_, disk);
}

void Record::endNotes() {
    if (recorded_) {
        const bool isFlushed = syncMoves();
        // The volumes are looked at behind the flush: where one is gone, that found nothing to do.
        isOnDisk_ = recorded_->changes().empty() || (isFlushed && areVolumesThere());
        leavesSomething_ = recorded_->leavesSomething();
    }
    recorded_.reset();
}

std::vector<Url> Record::unflushable() const {
    if (!ports_.recording.canFlush) return {};
    std::vector<Url> folders = intent_.volumes;
    folders.push_back(intent_.root);
    std::erase_if(folders, [&](const Url& folder) { return ports_.recording.canFlush(std::span(&folder, 1)); });
    return folders;
}

bool Record::isChangedBelow(const Url& folder) const {
    const std::string below = std::string(folder.path()) + "/";
    return std::ranges::any_of(recorded_->changes(), [&](const auto& change) {
        const OrdovanRunItem& item = intent_.items[change.item];
        return item.destination.view().starts_with(below) ||
               (change.isSourceToo && item.source.view().starts_with(below));
    });
}

bool Record::areVolumesThere() const {
    const std::vector<std::string> now = devicesOf(intent_, ports_.recording.facts);
    if (now.front() != devices_.front()) return false;
    for (std::size_t i = 1; i < now.size(); ++i) {
        if (now[i] != devices_[i] && isChangedBelow(intent_.volumes[i - 1])) return false;
    }
    return true;
}

/// What was moved has to be on the disk before a record that says so: the record may lie on another volume, and not
/// every file system keeps the order.
bool Record::syncMoves() const {
    if (!ports_.recording.syncMoves || recorded_->changes().empty()) return true;
    std::vector<Url> arrivals, departures;
    arrivals.reserve(recorded_->changes().size());
    departures.reserve(recorded_->changes().size());
    for (const auto& change : recorded_->changes()) {
        const OrdovanRunItem& item = intent_.items[change.item];
        const bool goesToTrash = item.destination.empty();
        if (!goesToTrash && !item.destination.view().starts_with(below_)) continue;
        if (!goesToTrash) arrivals.push_back(Url::file(item.destination));
        if (!change.isSourceToo) continue;
        if (item.source.view().starts_with(below_) || ordovan::isInTrash(item.source)) {
            departures.push_back(Url::file(item.source));
        }
    }
    addTrashPlaces(arrivals);
    return FolderRun::syncMoves(ports_, intent_, arrivals, departures);
}

/// Of the info files one for each Trash, which stands for its folder.
void Record::addTrashPlaces(std::vector<Url>& arrivals) const {
    std::string_view folder;
    for (const Url& place : recorded_->trashedTo()) {
        arrivals.push_back(place);
        if (ordovan::parentPath(place.path()) == folder) continue;
        folder = ordovan::parentPath(place.path());
        if (const auto info = ordovan::trashInfoPath(place.path())) arrivals.push_back(Url::file(*info));
    }
}

bool Record::remove() {
    if (!place_ || leavesSomething_) return true;
    return isOnDisk_ && ports_.recording.runRecords->remove(intent_.root, *place_);
}

}  // namespace FolderRun
