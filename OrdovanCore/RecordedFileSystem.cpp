#include "OrdovanCore/RecordedFileSystem.h"

#include "OrdovanCore/TrashPlace.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace ordovan {

namespace {

constexpr std::size_t notesAtATime = std::size_t{32} << 10;

std::unexpected<OrdovanSystemError> refused(int errnoValue) {
    return std::unexpected(OrdovanSystemError::posix(errnoValue));
}

std::unexpected<OrdovanSystemError> notIntended() {
    return refused(EPERM);
}

/// Where a volume is full, or allows shorter names only, a file may be removed though it can not be renamed.
bool isLackOfRoom(const OrdovanSystemError& error) {
    return error == OrdovanSystemError::posix(ENOSPC) || error == OrdovanSystemError::posix(EDQUOT) ||
           error == OrdovanSystemError::posix(ENAMETOOLONG);
}

}  // namespace

RecordedFileSystem::RecordedFileSystem(OrdovanFileSystem& fs, const OrdovanRunIntent& intent, RunNotes& notes,
                                       StepwiseMoves* disk)
    : fs_(fs), intent_(intent), notes_(notes), disk_(disk) {
    gathered_.reserve(notesAtATime + 1024);
    if (disk_ == nullptr) return;
    disk_->tellTo({.begins = [this](const Url&, const Url& hidden) { noteClaim(hidden); },
                   .leavesSomething = [this] { noteRemains(); }});
}

RecordedFileSystem::~RecordedFileSystem() {
    if (disk_ != nullptr) disk_->tellTo({});
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
    if (isPublishing) {
        auto published = moveItem({.item = copying_->item, .isSourceToo = false}, from, to);
        if (published) copying_->stage = Copying::Stage::published;
        return published;
    }
    if (isComingBack) return fs_.move(from, to);

    const auto item = itemWith(from.path(), to.path());
    if (!item || to.path().empty()) return notIntended();
    endCopying();
    noteOther(*item);
    auto moved = moveItem({.item = *item, .isSourceToo = true}, from, to);
    if (moved) note(OrdovanRunNote::Kind::done, *item, true, {});
    return moved;
}

OrdovanResult<void> RecordedFileSystem::copy(const Url& from, const Url& to) {
    const Examined* file = examined(from);
    if (file == nullptr || !OrdovanPartialName::isPartial(to.path())) return notIntended();
    const OrdovanRunItem& item = intent_.items[file->note.item];
    if (item.destination.empty() || parentPath(to.path()) != parentPath(item.destination)) return notIntended();
    endCopying();
    copying_ = {.item = file->note.item,
                .partial = to.sharedPath(),
                .was = {file->note.byteSize, file->note.contentHash, file->identity},
                .identity = {}};
    note(OrdovanRunNote::Kind::begun, file->note.item, false, to.sharedPath());
    handOver();
    if (takesNotes_ && !notes_.sync()) takesNotes_ = false;
    auto copied = fs_.copy(from, to);
    noteChange({.item = copying_->item, .isSourceToo = false}, copied);
    // A copy that fails leaves nothing, and what has taken its name is not the run's.
    const bool isTaken = !copied && copied.error() == OrdovanSystemError::posix(EEXIST);
    if (isTaken || (!copied && !fs_.isRegularFile(to))) copying_->stage = Copying::Stage::settled;
    return copied;
}

OrdovanResult<void> RecordedFileSystem::remove(const Url& url) {
    if (!copying_) return notIntended();
    const OrdovanRunItem& item = intent_.items[copying_->item];
    if (copying_->partial == url.path()) return removePartial(url);
    if (item.destination == url.path()) return removePublished(url);
    if (item.source != url.path() || copying_->stage != Copying::Stage::published) return notIntended();
    auto removed = removeOriginal(url);
    const bool isChanged = !removed && removed.error() == OrdovanSystemError::posix(EBUSY);
    if (isChanged && copying_->stage != Copying::Stage::hidden) return std::unexpected(originalChanged);
    if (removed) note(OrdovanRunNote::Kind::done, copying_->item, false, {});
    return removed;
}

OrdovanResult<void> RecordedFileSystem::moveItem(const Change& change, const Url& from, const Url& to) {
    moving_ = change;
    auto moved = fs_.move(from, to);
    moving_.reset();
    noteChange(change, moved);
    return moved;
}

/// A volume that could not be written to has nothing to lose.
template <class Done>
void RecordedFileSystem::noteChange(const Change& change, const Done& done) {
    if (done || done.error() != OrdovanSystemError::posix(EROFS)) addChange(change);
}

void RecordedFileSystem::addChange(const Change& change) {
    if (changes_.empty() || changes_.back().item != change.item) {
        changes_.push_back(change);
    } else {
        changes_.back().isSourceToo = changes_.back().isSourceToo || change.isSourceToo;
    }
}

bool RecordedFileSystem::isOriginal(const Url& url) const {
    return copying_ && intent_.items[copying_->item].source == url.path();
}

/// Whether the original that was copied can be taken for what it was until its removal looks closer.
bool RecordedFileSystem::looksUnchanged(const Url& original) {
    const Fingerprint& was = copying_->was;
    return !isInTrash(original.path()) && fs_.isRegularFile(original) && fs_.fileSize(original) == was.byteSize &&
           fs_.fileIdentity(original) == was.identity;
}

bool RecordedFileSystem::copyStands() {
    const Url copy = Url::file(intent_.items[copying_->item].destination);
    return !copying_->identity.empty() && fs_.isRegularFile(copy) && fs_.fileIdentity(copy) == copying_->identity;
}

/// That an original may go, whatever its name: it is what was copied, and the copy stands. Else why it may not. (That
/// it is the same file as well, the move to its hidden name has looked at.)
OrdovanResult<void> RecordedFileSystem::prove(const Url& original) {
    const Fingerprint& was = copying_->was;
    if (fs_.contentHash(original) != was.contentHash || fs_.fileSize(original) != was.byteSize) return refused(EBUSY);
    if (!copyStands()) return refused(ENOENT);
    return {};
}

OrdovanResult<void> RecordedFileSystem::removeOriginal(const Url& original) {
    // In a Trash an item belongs to its info file by its name, and keeps that.
    if (isInTrash(original.path())) return copyStands() ? removeAsItIs(original) : refused(ENOENT);
    const Url aside = OrdovanPartialName::asideOf(original, copying_->partial);
    const auto renamed = fs_.move(original, aside);
    noteChange({.item = copying_->item, .isSourceToo = true}, renamed);
    if (renamed) return removeHidden(original, aside);
    if (fs_.isRegularFile(aside)) {
        // The reply was lost, or a rename in steps has left a second name behind.
        if (!fs_.isRegularFile(original)) return removeHidden(original, aside);
        if (fs_.fileIdentity(aside) == fs_.fileIdentity(original)) (void)fs_.remove(aside);
        if (!isGone(aside, copying_->was.identity, fs_)) leavesSomething_ = true;
        return std::unexpected(renamed.error());
    }
    const bool isSeen = fs_.isRegularFile(original) || isGone(aside, copying_->was.identity, fs_);
    if (!isSeen) copying_->stage = Copying::Stage::hidden;  // for all that can be told
    if (!isSeen || !isLackOfRoom(renamed.error())) return std::unexpected(renamed.error());
    if (auto proved = prove(original); !proved) return proved;
    return removeAsItIs(original);
}

OrdovanResult<void> RecordedFileSystem::removeAsItIs(const Url& url) {
    auto removed = fs_.remove(url);
    noteChange({.item = copying_->item, .isSourceToo = isOriginal(url)}, removed);
    if (removed) copying_->stage = Copying::Stage::settled;
    return removed;
}

/// An original that does not go and does not get its name back stays where it is: the copy stays as well then.
OrdovanResult<void> RecordedFileSystem::removeHidden(const Url& original, const Url& aside) {
    copying_->stage = Copying::Stage::hidden;
    auto removed = prove(aside);
    if (removed) {
        removed = fs_.remove(aside);
        if (removed || isGone(aside, copying_->was.identity, fs_)) {
            copying_->stage = Copying::Stage::settled;
            return {};
        }
    }
    if (giveBack(aside, original)) copying_->stage = Copying::Stage::published;
    return removed;
}

/// Gives a file under a hidden name its own back, if that is free.
bool RecordedFileSystem::giveBack(const Url& hidden, const Url& file) {
    const auto identity = fs_.fileIdentity(hidden);
    auto moved = fs_.move(hidden, file);
    if (!moved && moved.error() == OrdovanSystemError::posix(EBUSY)) {
        // It is not what was hashed last, whatever it is.
        (void)fs_.contentHash(hidden);
        moved = fs_.move(hidden, file);
    }
    return moved || (identity && fs_.fileIdentity(file) == identity && !fs_.isRegularFile(hidden));
}

OrdovanResult<void> RecordedFileSystem::removePartial(const Url& partial) {
    auto removed = fs_.remove(partial);
    if (removed) {
        copying_->stage = Copying::Stage::settled;
    } else if (fs_.isRegularFile(partial)) {
        copying_->stage = Copying::Stage::copied;
    }
    return removed;
}

/// Another file that has taken the copy's place at the last instant gets its name back.
OrdovanResult<void> RecordedFileSystem::removePublished(const Url& copy) {
    const Url partial = Url::file(copying_->partial);
    const auto renamed = fs_.move(copy, partial);
    if (!renamed && !fs_.isRegularFile(partial)) {
        return isLackOfRoom(renamed.error()) ? removeAsItIs(copy) : renamed;
    }
    if (!renamed && fs_.isRegularFile(copy)) {
        if (fs_.fileIdentity(partial) == fs_.fileIdentity(copy)) (void)fs_.remove(partial);
        return renamed;
    }
    const bool isOurs =
        fs_.fileIdentity(partial) == copying_->identity || fs_.contentHash(partial) == copying_->was.contentHash;
    if (isOurs) return removePartial(partial);
    (void)giveBack(partial, copy);
    return refused(EBUSY);
}

/// The run turns to another file, or comes to its end. Where the original went away by itself, its copy is all there is
/// to be.
void RecordedFileSystem::endCopying() {
    if (copying_ && copying_->stage != Copying::Stage::settled) {
        const Url original = Url::file(intent_.items[copying_->item].source);
        // Not asked of this object, which would take that file for the one in work from then on.
        const bool wentAway =
            copying_->stage != Copying::Stage::hidden && copyStands() && isGone(original, copying_->was.identity, fs_);
        if (!wentAway) leavesSomething_ = true;
    }
    copying_.reset();
}

bool RecordedFileSystem::leavesSomething() {
    endCopying();
    return leavesSomething_;
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
    if (isOriginal(url)) {
        // Nothing that is found under its own name is the original.
        if (copying_->stage == Copying::Stage::hidden) return refused(EBUSY);
        if (copying_->stage == Copying::Stage::published && looksUnchanged(url)) return copying_->was.contentHash;
    }
    auto hash = fs_.contentHash(url);
    if (Examined* file = hash ? examined(url) : nullptr) file->note.contentHash = *hash;
    // A copy that its volume numbered anew when it got its name.
    const bool isCopy = copying_ && hash && intent_.items[copying_->item].destination == url.path();
    if (isCopy && *hash == copying_->was.contentHash) copying_->identity = fs_.fileIdentity(url).value_or("");
    return hash;
}

OrdovanResult<std::string> RecordedFileSystem::fileIdentity(const Url& url) {
    auto identity = fs_.fileIdentity(url);
    if (copying_ && identity && copying_->partial == url.path()) copying_->identity = *identity;
    if (Examined* file = identity ? examined(url) : nullptr) {
        file->identity = *identity;
        if (keepsIdentity(intent_.items[file->note.item])) file->note.identity = *identity;
    }
    return identity;
}

OrdovanResult<Url> RecordedFileSystem::trash(const Url& url) {
    const auto item = itemWith(url.path(), {});
    if (!item) return notIntended();
    endCopying();
    noteOther(*item);
    moving_ = {.item = *item, .isSourceToo = true};
    auto place = fs_.trash(url);
    noteChange(*std::exchange(moving_, std::nullopt), place);
    if (!place) return place;
    trashedTo_.push_back(*place);
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
    examined_.identity.clear();
    return &examined_;
}

/// False for a file that was looked at when the run began and has no identity: its volume keeps none.
bool RecordedFileSystem::keepsIdentity(const OrdovanRunItem& item) {
    return !item.identity.empty() || item.modifiedNs == OrdovanRunItem::unknownTime;
}

/// True when what the run found at an item's source is not the file of which the intent tells, or that tells too
/// little to recognize it: where no identity is kept, a file of the same size may be another.
bool RecordedFileSystem::isOther(std::size_t item) const {
    const OrdovanRunItem& intended = intent_.items[item];
    if (examined_.path != intended.source) return false;
    return examined_.note.identity != intended.identity ||
           (!keepsIdentity(intended) && examined_.note.contentHash != intended.contentHash);
}

void RecordedFileSystem::noteOther(std::size_t item) {
    if (!isOther(item)) return;
    note(OrdovanRunNote::Kind::begun, item, false, {});
    handOver();
}

/// Called where the port is about to take the new place in steps; `hidden` is the name by which the file may be left.
void RecordedFileSystem::noteClaim(const Url& hidden) {
    if (!moving_) return;
    note(OrdovanRunNote::Kind::claimed, moving_->item, false, hidden.sharedPath());
    handOver();
}

/// Called where the port has moved something and could not take all of that back: it may turn read-only in the middle.
void RecordedFileSystem::noteRemains() {
    leavesSomething_ = true;
    if (moving_) addChange(*moving_);
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
