#include "OrdovanCore/RecordedFileSystem.h"

#include "OrdovanCore/TrashPlace.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace ordovan {

namespace {

constexpr std::size_t notesAtATime = std::size_t{32} << 10;

std::unexpected<OrdovanSystemError> notIntended() {
    return std::unexpected(OrdovanSystemError::posix(EPERM));
}

}  // namespace

RecordedFileSystem::RecordedFileSystem(OrdovanFileSystem& fs, const OrdovanRunIntent& intent, RunNotes& notes,
                                       StepwiseMoves* disk)
    : fs_(fs), intent_(intent), notes_(notes), disk_(disk) {
    gathered_.reserve(notesAtATime + 1024);
    if (disk_ != nullptr) disk_->announceTo([this](const Url&, const Url& hidden) { noteClaim(hidden); });
}

RecordedFileSystem::~RecordedFileSystem() {
    if (disk_ != nullptr) disk_->announceTo({});
    handOver();
}

OrdovanResult<void> RecordedFileSystem::createDirectory(const Url& url) {
    return holdsDestinations(url.path()) ? fs_.createDirectory(url) : notIntended();
}

OrdovanResult<void> RecordedFileSystem::move(const Url& from, const Url& to) {
    // A verified copy takes its place, or a file comes back from the Trash that should not have gone there.
    const bool isPublishing =
        copying_ && copying_->partial == from.path() && intent_.items[copying_->item].destination == to.path();
    const bool isComingBack =
        trashed_ && trashed_->place == from.path() && intent_.items[trashed_->item].source == to.path();
    if (isPublishing) return moveItem(copying_->item, from, to);
    if (isComingBack) return fs_.move(from, to);

    const auto item = itemWith(from.path(), to.path());
    if (!item || to.path().empty()) return notIntended();
    copying_.reset();
    noteOther(*item);
    auto moved = moveItem(*item, from, to);
    if (moved) note(OrdovanRunNote::Kind::done, *item, true, {});
    return moved;
}

OrdovanResult<void> RecordedFileSystem::copy(const Url& from, const Url& to) {
    const Examined* file = examined(from);
    if (file == nullptr || !OrdovanPartialName::isPartial(to.path())) return notIntended();
    const OrdovanRunItem& item = intent_.items[file->note.item];
    if (item.destination.empty() || parentPath(to.path()) != parentPath(item.destination)) return notIntended();
    copying_ = {file->note.item, to.sharedPath()};
    note(OrdovanRunNote::Kind::begun, file->note.item, false, to.sharedPath());
    handOver();
    if (takesNotes_ && !notes_.sync()) takesNotes_ = false;
    return fs_.copy(from, to);
}

OrdovanResult<void> RecordedFileSystem::remove(const Url& url) {
    if (!copying_) return notIntended();
    const OrdovanRunItem& item = intent_.items[copying_->item];
    if (copying_->partial == url.path() || item.destination == url.path()) return fs_.remove(url);
    if (item.source != url.path()) return notIntended();
    auto removed = removeOriginal(url);
    if (removed) note(OrdovanRunNote::Kind::done, copying_->item, false, {});
    return removed;
}

OrdovanResult<void> RecordedFileSystem::moveItem(std::size_t item, const Url& from, const Url& to) {
    claiming_ = item;
    auto moved = fs_.move(from, to);
    claiming_.reset();
    return moved;
}

/// In a Trash an item belongs to its info file by its name, and keeps that.
OrdovanResult<void> RecordedFileSystem::removeOriginal(const Url& original) {
    if (isInTrash(original.path())) return fs_.remove(original);
    const Url aside = OrdovanPartialName::asideOf(original, copying_->partial);
    const auto renamed = fs_.move(original, aside);
    if (!renamed && !fs_.isRegularFile(aside)) {
        // A file that changed stays. Where a volume is full, say, removing may work though renaming does not.
        return renamed.error() == OrdovanSystemError::posix(EBUSY) ? renamed : fs_.remove(original);
    }
    if (!renamed && fs_.isRegularFile(original)) {
        // What was left behind by a rename in steps.
        if (fs_.fileIdentity(aside) == fs_.fileIdentity(original)) (void)fs_.remove(aside);
        return renamed;
    }
    auto removed = fs_.remove(aside);
    if (!removed) (void)fs_.move(aside, original);
    return removed;
}

OrdovanResult<std::int64_t> RecordedFileSystem::fileSize(const Url& url) {
    auto size = fs_.fileSize(url);
    if (Examined* file = size ? examined(url) : nullptr) {
        file->note.byteSize = *size;
        file->isSized = true;
    }
    return size;
}

OrdovanResult<std::string> RecordedFileSystem::contentHash(const Url& url) {
    auto hash = fs_.contentHash(url);
    if (Examined* file = hash ? examined(url) : nullptr) file->note.contentHash = *hash;
    return hash;
}

OrdovanResult<std::string> RecordedFileSystem::fileIdentity(const Url& url) {
    auto identity = fs_.fileIdentity(url);
    if (Examined* file = identity ? examined(url) : nullptr) {
        if (keepsIdentity(intent_.items[file->note.item])) file->note.identity = *identity;
    }
    return identity;
}

OrdovanResult<Url> RecordedFileSystem::trash(const Url& url) {
    const auto item = itemWith(url.path(), {});
    if (!item) return notIntended();
    copying_.reset();
    noteOther(*item);
    claiming_ = item;
    auto place = fs_.trash(url);
    claiming_.reset();
    if (!place) return place;
    trashed_ = {*item, place->sharedPath()};
    note(OrdovanRunNote::Kind::done, *item, true, place->sharedPath());
    return place;
}

/// The item with this source that the run comes to next. The run takes the items in their order, leaving some out.
std::optional<std::size_t> RecordedFileSystem::itemAt(std::string_view source) {
    constexpr std::size_t leap = 4;
    const auto& items = intent_.items;
    for (std::size_t i = next_; i < std::min(next_ + leap, items.size()); ++i) {
        if (items[i].source == source) return next_ = i;
    }
    const auto pathOf = [&](std::uint32_t i) { return items[i].source.view(); };
    if (bySource_.empty()) {
        bySource_.resize(items.size());
        for (std::uint32_t i = 0; i < bySource_.size(); ++i) bySource_[i] = i;
        std::ranges::stable_sort(bySource_, {}, pathOf);
    }
    const auto found = std::ranges::equal_range(bySource_, source, {}, pathOf);
    if (found.empty()) return std::nullopt;
    const auto ahead = std::ranges::find_if(found, [&](std::uint32_t i) { return i >= next_; });
    return next_ = ahead == found.end() ? found.front() : *ahead;
}

/// The same for an item that goes to this place; empty for the Trash.
std::optional<std::size_t> RecordedFileSystem::itemWith(std::string_view source, std::string_view destination) {
    const auto item = itemAt(source);
    if (!item || intent_.items[*item].destination == destination) return item;
    // Several entries of one record may name one place.
    for (std::size_t i = 0; i < intent_.items.size(); ++i) {
        if (intent_.items[i].source == source && intent_.items[i].destination == destination) return next_ = i;
    }
    return std::nullopt;
}

bool RecordedFileSystem::holdsDestinations(std::string_view folder) {
    if (folders_.empty()) {
        std::string_view previous;
        for (const OrdovanRunItem& item : intent_.items) {
            const std::string_view holding = parentPath(item.destination);
            if (!holding.empty() && holding != std::exchange(previous, holding)) folders_.insert(holding);
        }
    }
    return folders_.contains(folder);
}

RecordedFileSystem::Examined* RecordedFileSystem::examined(const Url& url) {
    if (!examined_.path.empty() && examined_.path == url.path()) return &examined_;
    const auto item = itemAt(url.path());
    if (!item) return nullptr;
    examined_.path = url.sharedPath();
    examined_.isSized = false;
    examined_.note.item = *item;
    examined_.note.contentHash.clear();
    examined_.note.identity.clear();
    return &examined_;
}

/// False for a file that was looked at when the run began and has no identity: its volume keeps none.
bool RecordedFileSystem::keepsIdentity(const OrdovanRunItem& item) {
    return !item.identity.empty() || item.modifiedNs == OrdovanRunItem::unknownTime;
}

/// True when what the run found at an item's source is not the file of which the intent tells, or that tells too
/// little to recognise it.
bool RecordedFileSystem::isOther(std::size_t item) const {
    const OrdovanRunItem& intended = intent_.items[item];
    if (examined_.path != intended.source) return false;
    return examined_.note.identity != intended.identity ||
           (!keepsIdentity(intended) && examined_.note.byteSize != intended.byteSize);
}

void RecordedFileSystem::noteOther(std::size_t item) {
    if (!isOther(item)) return;
    note(OrdovanRunNote::Kind::begun, item, false, {});
    handOver();
}

/// Called where the port is about to take the new place in steps; `hidden` is the name by which the file may be left.
void RecordedFileSystem::noteClaim(const Url& hidden) {
    if (!claiming_) return;
    note(OrdovanRunNote::Kind::claimed, *claiming_, false, hidden.sharedPath());
    handOver();
}

/// Only of a file that was examined whole: a note is to prove something.
void RecordedFileSystem::note(OrdovanRunNote::Kind kind, std::size_t item, bool sameVolume, SharedText path) {
    if (!takesNotes_ || examined_.path != intent_.items[item].source || !examined_.isWhole()) return;
    OrdovanRunNote& note = examined_.note;
    note.kind = kind;
    note.item = item;
    note.sameVolume = sameVolume;
    note.path = std::move(path);
    note.appendTo(gathered_, intent_);
    if (gathered_.size() >= notesAtATime) handOver();
}

void RecordedFileSystem::handOver() {
    if (!gathered_.empty() && takesNotes_ && !notes_.append(gathered_)) takesNotes_ = false;
    gathered_.clear();
}

}  // namespace ordovan
