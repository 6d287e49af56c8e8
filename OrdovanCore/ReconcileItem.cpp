#include "OrdovanCore/ReconcileItem.h"

#include "OrdovanCore/TrashPlace.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace ordovan {

namespace {

using End = Settled::End;
using Kind = OrdovanRunRecord::Kind;

constexpr const char* outOfScope = "Path no longer within the authorized scope.";
constexpr const char* behindALink = "A parent folder is a symlink; skipped to stay in scope.";
constexpr const char* occupied = "A file already exists at the destination; left untouched.";
constexpr const char* lost = "The file was moved or deleted while organizing.";
constexpr const char* replaced = "The file was moved or deleted while organizing, and another is at its destination.";
constexpr const char* notExamined = "The file could not be looked at after the interruption; left as it is.";
constexpr const char* notRemoved =
    "What the interrupted run left of this file could not be removed; the file is whole.";
constexpr const char* nameTakenBack = "Its second name was taken away again; the file is where it was.";
constexpr const char* otherName = "The file has another name at the destination; left untouched.";
constexpr const char* otherNameInTrash = "The file has another name in the Trash; left untouched.";
constexpr const char* copyTakenBack = "Its verified copy was taken away again; the file is where it was.";
constexpr const char* leftoverRemoved = "An unfinished copy of it was removed; the file is where it was.";
constexpr const char* infoRemoved = "It had not reached the Trash; the file is where it was.";
constexpr const char* copyPublished = "Its verified copy was put in place.";
constexpr const char* placeholderRemoved = "The empty file that kept its place was removed; the file is where it was.";

/// SHA-256 of nothing (FIPS 180-4).
constexpr const char* hashOfNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

/// How coarse times of modification are (FAT: two seconds).
constexpr double coarsestTime = 2;

Settled untouched() {
    return {};
}

Settled unsettled(std::string sentence) {
    return {.end = End::unsettled, .sentence = std::move(sentence)};
}

Settled uncertain(const char* sentence) {
    return {.end = End::unsettled, .sentence = sentence, .isCertain = false};
}

Fingerprint noted(const OrdovanRunNote& note) {
    return {note.byteSize, note.contentHash, note.identity};
}

std::string copyLies(std::string_view path, bool isVerified) {
    const std::string what = isVerified ? "A verified copy of it lies at " : "An unfinished copy of it lies at ";
    return what + std::string(path) + ".";
}

std::string otherLies(const Url& place) {
    return "The file that was in its place lies at " + std::string(place.path()) + ".";
}

bool isAbsence(const OrdovanSystemError& error) {
    return error == OrdovanSystemError::posix(ENOENT) || error == OrdovanSystemError::posix(ENOTDIR);
}

}  // namespace

std::string_view inodeOf(std::string_view identity) {
    return identity.substr(identity.find(':') + 1);
}

ItemReconciler::ItemReconciler(const OrdovanUnfinishedRun& run, const ReconcilePorts& ports)
    : run_(run), ports_(ports), trashScope_(run.intent.root) {
    for (const Url& outputRoot : run.intent.outputRoots) scopes_.emplace_back(run.intent.root, outputRoot);
    notes_.reserve(run.notes.size());
    for (const OrdovanRunNote& note : run.notes) notes_.push_back(&note);
    std::ranges::stable_sort(notes_, {}, &OrdovanRunNote::item);
    if (run.intent.kind == Kind::trash) searchTrash();
}

bool ItemReconciler::seesAnything(RunProgress& progress) const {
    const auto isIt = [this](const Item& item, const Url& url) {
        return !url.path().empty() && isTheFile(item, url, look(url)) == Proof::proved;
    };
    for (std::size_t i = 0; i < run_.intent.items.size() && progress.mayContinue(); ++i) {
        const Item item = itemOf(i);
        if (refusal(item)) continue;
        // Nothing else bears the name of a partial copy.
        const auto stands = [this](const OrdovanRunNote* note) { return look(Url::file(note->path)).isRegular(); };
        const bool seesOurs = std::ranges::any_of(item.copies, stands) || std::ranges::any_of(item.hidden, stands);
        if (seesOurs || isIt(item, item.from) || isIt(item, item.to)) return true;
        if (item.done != nullptr && isIt(item, Url::file(item.done->path))) return true;
        if (std::ranges::any_of(inTrash(item), [&](const TrashedFile* file) { return isIt(item, file->item); })) {
            return true;
        }
    }
    return false;
}

Settled ItemReconciler::settle(std::size_t index) {
    const Item item = itemOf(index);
    if (auto refused = refusal(item)) {
        if (isBelowRoot(item)) keepNoted(item, *refused);
        return std::move(*refused);
    }
    std::optional<Settled> remains;
    for (const OrdovanRunNote* note : item.hidden) {
        if (auto left = settleHidden(item, Url::file(note->path))) remains = std::move(left);
        if (remains && !remains->isCertain) return *std::move(remains);
    }
    Settled settled = run_.intent.kind == Kind::trash ? settleTrash(item) : settleMove(item);
    settled.isTouched = settled.end != End::untouched || !settled.isCertain || item.isNoted();
    if (remains && settled.isCertain) {
        settled.end = End::unsettled;
        settled.sentence = std::move(remains->sentence);
    }
    if (settled.lies) movedOn_.insert(item.intended.source);
    return settled;
}

Settled ItemReconciler::leftAlone() {
    Settled settled = uncertain(notExamined);
    settled.isTouched = false;
    return settled;
}

/// Whether the run may have acted on an item, which is out of reach now.
bool ItemReconciler::isBelowRoot(const Item& item) const {
    const std::string below = std::string(run_.intent.root.path()) + "/";
    const auto isBelow = [&](const Url& url) { return namesOnePlace(url) && url.path().starts_with(below); };
    return isBelow(item.from) && (item.to.path().empty() || isBelow(item.to));
}

/// What was noted as moved has its entry, though it can not be looked at: undoing it looks again. What was not may have
/// been moved all the same, unless it is seen where it was; and what was noted as begun may lie there under a name that
/// only the run's record tells.
void ItemReconciler::keepNoted(const Item& item, Settled& settled) const {
    if (item.done == nullptr) {
        const bool isWhereItWas = looksLikeTheFile(item, look(item.from)) || wasNeverThere(item);
        settled.isCertain = isWhereItWas && item.copies.empty() && item.hidden.empty();
        return;
    }
    if (run_.intent.kind == Kind::organize) {
        settled.lies = {
            .place = item.to, .what = noted(*item.done), .sameVolume = item.done->sameVolume, .isSeen = false};
    } else if (run_.intent.kind == Kind::trash) {
        settled.lies = {
            .place = Url::file(item.done->path), .what = noted(*item.done), .sameVolume = true, .isSeen = false};
    }
}

ItemReconciler::Item ItemReconciler::itemOf(std::size_t index) const {
    const OrdovanRunItem& intended = run_.intent.items[index];
    Item item = {.intended = intended,
                 .from = Url::file(intended.source),
                 .to = Url::file(intended.destination),
                 .copies = {},
                 .hidden = {}};
    for (const OrdovanRunNote* note : std::ranges::equal_range(notes_, index, {}, &OrdovanRunNote::item)) {
        (note->kind == OrdovanRunNote::Kind::done ? item.done : item.begun) = note;
        if (note->kind == OrdovanRunNote::Kind::claimed) item.isClaimed = true;
        if (note->kind == OrdovanRunNote::Kind::claimed && !note->path.empty()) item.hidden.push_back(note);
        if (note->kind == OrdovanRunNote::Kind::begun && !note->path.empty()) item.copies.push_back(note);
    }
    return item;
}

ItemReconciler::Sight ItemReconciler::look(const Url& url) const {
    const auto facts = ports_.facts(url);
    if (facts) return {facts->isRegular ? Sight::Case::regular : Sight::Case::other, *facts};
    return {isAbsence(facts.error()) ? Sight::Case::absent : Sight::Case::unknown};
}

/// Why an item may not be acted on, as the run itself would not have.
std::optional<Settled> ItemReconciler::refusal(const Item& item) const {
    const bool isUndo = run_.intent.kind == Kind::undo;
    if (isUndo || run_.intent.kind == Kind::organize) {
        const Url& original = isUndo ? item.to : item.from;
        const Url& organized = isUndo ? item.from : item.to;
        const auto scope =
            std::ranges::find_if(scopes_, [&](const auto& each) { return each.holds(original, organized, ports_.fs); });
        if (scope == scopes_.end()) return unsettled(outOfScope);
        if (scope->crossesLink(original, organized, ports_.fs)) return unsettled(behindALink);
        return std::nullopt;
    }
    const bool isRestore = run_.intent.kind == Kind::restoreTrash;
    if (!trashScope_.holds(isRestore ? item.to : item.from, ports_.fs)) return unsettled(outOfScope);
    if (isRestore && !(namesOnePlace(item.from) && isInTrash(item.from.path()))) return unsettled(outOfScope);
    return std::nullopt;
}

ItemReconciler::Proof ItemReconciler::hasContent(const Url& url, const Sight& sight, std::int64_t byteSize,
                                                 const std::string& contentHash) const {
    if (!sight.isRegular() || sight.facts.byteSize != byteSize) return Proof::refuted;
    const auto hash = ports_.fs.contentHash(url);
    if (!hash) return Proof::unknown;
    return *hash == contentHash ? Proof::proved : Proof::refuted;
}

/// Whether what is seen is the file of the item by its identity, which a rename keeps; or by the number of its inode,
/// its size and its time, where the device has another number by now.
bool ItemReconciler::looksLikeTheFile(const Item& item, const Sight& sight) {
    if (!sight.isRegular()) return false;
    const OrdovanRunItem& intended = item.intended;
    const std::string& identity = sight.facts.identity;
    const auto bears = [&](const std::string& known) { return !known.empty() && known == identity; };
    if (bears(intended.identity) || (item.begun != nullptr && bears(item.begun->identity)) ||
        (item.done != nullptr && bears(item.done->identity))) {
        return true;
    }
    const bool isUnchanged = intended.modifiedNs != OrdovanRunItem::unknownTime &&
                             sight.facts.modifiedNs == intended.modifiedNs && sight.facts.byteSize == intended.byteSize;
    return isUnchanged && (intended.identity.empty() || inodeOf(intended.identity) == inodeOf(identity));
}

/// Whether what is seen at a place is the file of the item: as it looks, or by its content, where that is known.
ItemReconciler::Proof ItemReconciler::isTheFile(const Item& item, const Url& url, const Sight& sight) const {
    if (looksLikeTheFile(item, sight)) return Proof::proved;
    const OrdovanRunItem& intended = item.intended;
    if (const OrdovanRunNote* note = item.done != nullptr ? item.done : item.begun) {
        return hasContent(url, sight, note->byteSize, note->contentHash);
    }
    return intended.contentHash.empty() ? Proof::refuted
                                        : hasContent(url, sight, intended.byteSize, intended.contentHash);
}

/// Whether the file, which stands where it was, has got one name since the run began, as a move without a rename gives
/// it. A name that it had before is the user's.
bool ItemReconciler::hasOneNameMore(const Item& item, const Sight& from) const {
    const OrdovanRunItem& intended = item.intended;
    if (intended.names == 0 || from.facts.names != intended.names + 1) return false;
    // Where the volume keeps no identities, the run has told of it.
    return intended.identity.empty() ? item.isClaimed : inodeOf(intended.identity) == inodeOf(from.facts.identity);
}

/// Whether a file is the empty one by which the run was about to take a place.
ItemReconciler::Proof ItemReconciler::isPlaceholder(const Item& item, const Url& url, const Sight& sight) const {
    const double modified = static_cast<double>(sight.facts.modifiedNs) / 1e9;
    // It is made for its owner alone. The volumes that keep no identities include those that store no such thing.
    const bool mayBeOurs = sight.facts.isPrivate || item.intended.identity.empty();
    const bool mayBe = item.isClaimed && sight.isRegular() && sight.facts.byteSize == 0 && sight.facts.names == 1 &&
                       modified >= run_.intent.startedAtEpoch - coarsestTime && mayBeOurs;
    return mayBe ? hasContent(url, sight, 0, hashOfNothing) : Proof::refuted;
}

/// Whether there was no file when the run began, nor when it came to it.
bool ItemReconciler::wasNeverThere(const Item& item) {
    return item.intended.modifiedNs == OrdovanRunItem::unknownTime && item.begun == nullptr && item.done == nullptr;
}

/// Removes a file that the run has made. True when it is gone.
bool ItemReconciler::remove(const Url& url) const {
    return ports_.fs.remove(url).has_value() || look(url).kind == Sight::Case::absent;
}

// Runs that move files.

/// A file that had got its second name goes by a hidden one when it is looked at before it loses the old one. It gets
/// that back, as does what another program had saved there, and is then settled as if nothing had happened. One that
/// was noted as moved all the same (its volume turned read-only) only loses the hidden name. Says what is left.
std::optional<Settled> ItemReconciler::settleHidden(const Item& item, const Url& hidden) const {
    const Sight sight = look(hidden);
    const Sight from = sight.isKnown() ? look(item.from) : Sight{};
    if (!sight.isKnown() || !from.isKnown()) return uncertain(notExamined);
    if (!sight.isThere()) return std::nullopt;
    if (hasArrivedAs(item, sight)) return remove(hidden) ? std::nullopt : std::optional(uncertain(notRemoved));
    if (!from.isThere()) {
        if (ports_.fs.move(hidden, item.from) || look(item.from).isThere()) return std::nullopt;
        return uncertain(notExamined);
    }
    // Giving it back was cut; or another file has taken the old name since, and this one has the new one beside.
    const bool isSpare = sight.facts.identity == from.facts.identity || hasOneNameMore(item, sight);
    if (!isSpare) return unsettled(otherLies(hidden));
    if (!remove(hidden)) return uncertain(notRemoved);
    return std::nullopt;
}

/// Whether what was noted as moved is seen at its new place, and is this.
bool ItemReconciler::hasArrivedAs(const Item& item, const Sight& sight) const {
    if (item.done == nullptr) return false;
    const Sight there = look(item.done->path.empty() ? item.to : Url::file(item.done->path));
    return there.isRegular() && there.facts.identity == sight.facts.identity;
}

/// An original whose copy was in place goes by a hidden name when it is looked at for the last time. It gets its own
/// name back, and is then settled as if nothing had happened. Says why it can not.
std::optional<Settled> ItemReconciler::settleAside(const Item& item, const OrdovanRunNote& copy) const {
    const Url aside = OrdovanPartialName::asideOf(item.from, copy.path);
    const Sight sight = look(aside);
    const Sight from = sight.isKnown() ? look(item.from) : Sight{};
    if (!sight.isKnown() || !from.isKnown()) return uncertain(notExamined);
    if (!sight.isThere()) return std::nullopt;
    if (!from.isThere()) {
        if (ports_.fs.move(aside, item.from) || look(item.from).isThere()) return std::nullopt;
        return uncertain(notExamined);
    }
    // The rename takes steps on this volume, and was cut; or another file has taken the name since.
    const bool isOther = sight.facts.identity != from.facts.identity && sight.facts.byteSize != 0;
    const Sight to = look(item.to);
    if (!to.isKnown()) return uncertain(notExamined);
    const Proof isSpare = isOther ? hasContent(item.to, to, copy.byteSize, copy.contentHash) : Proof::proved;
    const Proof isOriginal = isOther ? hasContent(aside, sight, copy.byteSize, copy.contentHash) : Proof::proved;
    if (isSpare == Proof::unknown || isOriginal == Proof::unknown) return uncertain(notExamined);
    if (isSpare == Proof::refuted || isOriginal == Proof::refuted)
        return unsettled(isOriginal == Proof::proved ? copyLies(aside.path(), true) : otherLies(aside));
    if (!remove(aside)) return uncertain(notRemoved);
    return std::nullopt;
}

Settled ItemReconciler::settleMove(const Item& item) const {
    for (const OrdovanRunNote* copy : item.copies) {
        if (auto settled = settleAside(item, *copy)) return std::move(*settled);
    }
    const Sight from = look(item.from);
    const Sight to = look(item.to);
    if (!from.isKnown() || !to.isKnown()) return uncertain(notExamined);
    switch (isTheFile(item, item.from, from)) {
        case Proof::unknown:
            return uncertain(notExamined);
        case Proof::proved:
            return settleStanding(item, from, to);
        case Proof::refuted:
            break;
    }
    Settled gone = settleGone(item, from, to);
    if (gone.lies) gone.lies->isVacated = !from.isThere();
    return gone;
}

/// The file stands where it was: whatever else the run has made of it goes.
Settled ItemReconciler::settleStanding(const Item& item, const Sight& from, const Sight& to) const {
    Settled result = untouched();
    Sight destination = to;
    const auto isTakenAway = [&](bool isGone, const char* sentence) {
        if (!isGone) return false;
        destination = {};
        result = {.end = End::putRight, .sentence = sentence};
        return true;
    };
    if (to.isRegular() && to.facts.identity == from.facts.identity) {
        if (hasOneNameMore(item, from)) {
            if (!isTakenAway(remove(item.to), nameTakenBack)) return uncertain(notRemoved);
        } else if (from.facts.names > 1) {  // with a single name, both paths lead to that one
            result.sentence = otherName;
        }
    } else if (const Proof placeholder = isPlaceholder(item, item.to, to); placeholder != Proof::refuted) {
        if (placeholder == Proof::unknown) return uncertain(notExamined);
        if (!isTakenAway(remove(item.to), placeholderRemoved)) return uncertain(notRemoved);
    } else if (to.isThere()) {
        const Proof ours = isOurCopy(item, from, to);
        if (ours == Proof::unknown) return uncertain(notExamined);
        if (ours == Proof::proved && !isTakenAway(removeCopy(item, to), copyTakenBack)) return uncertain(notRemoved);
        if (ours == Proof::refuted) result.sentence = occupied;
    }
    for (const OrdovanRunNote* copy : item.copies) {
        Settled partial = settlePartial(item, *copy, from, destination);
        if (!partial.isCertain) return partial;
        if (!partial.sentence.empty()) result = std::move(partial);
    }
    return result;
}

/// Takes a copy away by way of its partial name, where nobody replaces it: another file that slipped in gets its own
/// back, and so does one that does not go. True when it is gone.
bool ItemReconciler::removeCopy(const Item& item, const Sight& seen) const {
    const Url partial = Url::file(item.copies.back()->path);
    if (!ports_.fs.move(item.to, partial)) return remove(item.to);
    const Sight there = look(partial);
    const bool isTheCopy = there.isRegular() && there.facts.byteSize == seen.facts.byteSize &&
                           there.facts.modifiedNs == seen.facts.modifiedNs;
    if (isTheCopy && remove(partial)) return true;
    (void)ports_.fs.move(partial, item.to);
    return false;
}

/// A partial copy of a file that stands where it was goes, if that one is whole.
Settled ItemReconciler::settlePartial(const Item& item, const OrdovanRunNote& copy, const Sight& from,
                                      const Sight& to) const {
    const Url url = Url::file(copy.path);
    const Sight sight = look(url);
    if (!sight.isKnown()) return uncertain(notExamined);
    if (!sight.isRegular()) return untouched();
    // Without it, the file at the destination could be taken for what became of it.
    const bool isWitness =
        to.isRegular() && to.facts.modifiedNs == from.facts.modifiedNs && to.facts.identity != from.facts.identity;
    const Proof whole = isWitness ? Proof::refuted : isWhole(item, from, copy);
    const Proof verified =
        whole == Proof::refuted ? hasContent(url, sight, copy.byteSize, copy.contentHash) : Proof::refuted;
    if (whole == Proof::unknown || verified == Proof::unknown) return uncertain(notExamined);
    if (whole == Proof::refuted) return unsettled(copyLies(copy.path, verified == Proof::proved));
    if (!remove(url)) return uncertain(notRemoved);
    return {.end = End::putRight, .sentence = leftoverRemoved};
}

/// Whether a file that stands where it was has all that its copy was to have: by its size and time, or its content.
ItemReconciler::Proof ItemReconciler::isWhole(const Item& item, const Sight& from, const OrdovanRunNote& copy) const {
    const OrdovanRunItem& intended = item.intended;
    const bool isUnchanged = intended.modifiedNs != OrdovanRunItem::unknownTime &&
                             from.facts.modifiedNs == intended.modifiedNs && from.facts.byteSize == intended.byteSize;
    return isUnchanged ? Proof::proved : hasContent(item.from, from, copy.byteSize, copy.contentHash);
}

/// Whether the file at the destination is the verified copy that the run has published: the partial name is free again
/// or another name of it, it kept the time of the file, and both have the content that was noted. What the records tell
/// of came there by another run.
ItemReconciler::Proof ItemReconciler::isOurCopy(const Item& item, const Sight& from, const Sight& to) const {
    if (item.copies.empty() || to.facts.modifiedNs != from.facts.modifiedNs) return Proof::refuted;
    const OrdovanRunNote& copy = *item.copies.back();
    const auto& isAnothers = ports_.isAnothers;
    if (isAnothers && isAnothers(item.intended, copy.contentHash, to.facts.identity)) return Proof::refuted;
    const Sight partial = look(Url::file(copy.path));
    if (!partial.isKnown()) return Proof::unknown;
    if (partial.isThere() && partial.facts.identity != to.facts.identity) return Proof::refuted;
    const Proof isCopy = hasContent(item.to, to, copy.byteSize, copy.contentHash);
    return isCopy == Proof::proved ? hasContent(item.from, from, copy.byteSize, copy.contentHash) : isCopy;
}

/// The file does not stand where it was.
Settled ItemReconciler::settleGone(const Item& item, const Sight& from, const Sight& to) const {
    switch (isTheFile(item, item.to, to)) {
        case Proof::unknown:
            return uncertain(notExamined);
        case Proof::proved:
            return arrived(item, to);
        case Proof::refuted:
            break;
    }
    const bool isMovedOn = movedOn_.contains(item.intended.destination);
    if (item.done == nullptr && !isMovedOn) return settleCopies(item, from, to);
    // Whatever became of it afterwards, the run had moved it.
    Settled gone = item.done != nullptr ? moved(item, End::finished, noted(*item.done), item.done->sameVolume)
                                        : moved(item, End::finished, {}, true);
    gone.lies->isSeen = false;
    return gone;
}

Settled ItemReconciler::arrived(const Item& item, const Sight& to) const {
    for (const OrdovanRunNote* copy : item.copies) {
        const Url partial = Url::file(copy->path);
        const Sight sight = look(partial);
        if (!sight.isKnown() || (sight.isRegular() && !remove(partial))) return uncertain(notRemoved);
    }
    if (run_.intent.kind == Kind::restoreTrash) ports_.forgetTrashInfo(item.from, item.to);
    const bool sameVolume = item.done != nullptr ? item.done->sameVolume : item.copies.empty();
    Fingerprint what;
    if (const OrdovanRunNote* note = item.done != nullptr ? item.done : item.begun) {
        what = noted(*note);
    } else if (run_.intent.kind == Kind::organize) {
        auto hash = ports_.fs.contentHash(item.to);
        if (!hash) return uncertain(notExamined);
        what = {to.facts.byteSize, std::move(*hash), {}};
    }
    if (sameVolume) what.identity = to.facts.identity;
    return moved(item, End::finished, std::move(what), sameVolume);
}

/// Neither the file nor what became of it is in sight, unless one of its copies tells.
Settled ItemReconciler::settleCopies(const Item& item, const Sight& from, const Sight& to) const {
    for (const OrdovanRunNote* copy : item.copies) {
        const Url partial = Url::file(copy->path);
        const Sight sight = look(partial);
        if (!sight.isKnown()) return uncertain(notExamined);
        if (!sight.isThere()) continue;
        const Proof isVerified = hasContent(partial, sight, copy->byteSize, copy->contentHash);
        if (isVerified == Proof::unknown) return uncertain(notExamined);
        bool isFree = !from.isThere() && !to.isThere();
        if (isVerified == Proof::proved && !from.isThere()) {
            const Proof placeholder = isPlaceholder(item, item.to, to);
            if (placeholder == Proof::unknown) return uncertain(notExamined);
            if (placeholder == Proof::proved) {
                if (!remove(item.to)) return uncertain(notRemoved);
                isFree = true;
            }
        }
        if (isVerified == Proof::refuted || !isFree) {
            return unsettled(copyLies(copy->path, isVerified == Proof::proved));
        }
        if (!ports_.fs.move(partial, item.to) && !look(item.to).isRegular()) return uncertain(notExamined);
        Settled published = moved(item, End::putRight, noted(*copy), false);
        published.sentence = copyPublished;
        return published;
    }
    return settleLost(item, from, to);
}

Settled ItemReconciler::settleLost(const Item& item, const Sight& from, const Sight& to) const {
    // The user has put another file there since; or none was there when the run began.
    if (from.isThere() || wasNeverThere(item)) return untouched();
    Settled result = unsettled(to.isThere() ? replaced : lost);
    // The run removes an original only when its copy stands verified at the destination. The entry does no harm where
    // somebody else removed it.
    if (run_.intent.kind == Kind::organize && !item.copies.empty()) {
        result.lies =
            Settled::Place{.place = item.to, .what = noted(*item.copies.back()), .sameVolume = false, .isSeen = false};
    }
    return result;
}

Settled ItemReconciler::moved(const Item& item, End end, Fingerprint what, bool sameVolume) const {
    std::string sentence = sameVolume ? "Moved." : "Copied, verified and moved.";
    if (run_.intent.kind == Kind::undo) sentence = "Restored.";
    if (run_.intent.kind == Kind::restoreTrash) sentence = "Put back.";
    return {.end = end,
            .sentence = std::move(sentence),
            .lies = Settled::Place{.place = item.to, .what = std::move(what), .sameVolume = sameVolume}};
}

// Runs that move files to the Trash.

void ItemReconciler::searchTrash() {
    std::vector<Url> originals;
    originals.reserve(run_.intent.items.size());
    for (const OrdovanRunItem& item : run_.intent.items) originals.push_back(Url::file(item.source));
    auto found = ports_.findInTrash(originals);
    isTrashKnown_ = found.has_value();
    if (found) inTrash_ = std::move(*found);
    std::ranges::sort(inTrash_, {}, [](const TrashedFile& file) { return file.original.path(); });
}

std::vector<const TrashedFile*> ItemReconciler::inTrash(const Item& item) const {
    std::vector<const TrashedFile*> files;
    const auto range = std::ranges::equal_range(inTrash_, item.from.path(), {},
                                                [](const TrashedFile& file) { return file.original.path(); });
    for (const TrashedFile& file : range) files.push_back(&file);
    return files;
}

Settled ItemReconciler::settleTrash(const Item& item) const {
    const Sight from = look(item.from);
    const Proof isStanding = from.isKnown() ? isTheFile(item, item.from, from) : Proof::unknown;
    if (isStanding == Proof::unknown) return uncertain(notExamined);
    if (isStanding == Proof::proved) return settleNotTrashed(item, from);
    if (item.done != nullptr) {
        // Putting it back refuses another file that has come to lie there.
        const Url place = Url::file(item.done->path);
        Settled gone = trashed(item, place, noted(*item.done));
        gone.lies->isSeen = isTheFile(item, place, look(place)) != Proof::refuted;
        return gone;
    }
    if (!isTrashKnown_) return uncertain(notExamined);
    for (const TrashedFile* file : inTrash(item)) {
        const Sight there = look(file->item);
        const Proof isThis = there.isKnown() ? isTheFile(item, file->item, there) : Proof::unknown;
        if (isThis == Proof::unknown) return uncertain(notExamined);
        if (isThis == Proof::proved) return trashedAsFound(item, file->item, there);
    }
    return from.isThere() || wasNeverThere(item) ? untouched() : unsettled(lost);
}

/// The file stands where it was: what the Trash has of it goes.
Settled ItemReconciler::settleNotTrashed(const Item& item, const Sight& from) const {
    // It may have a second name there, or be as it was.
    if (!isTrashKnown_) return hasOneNameMore(item, from) ? uncertain(notExamined) : untouched();
    Settled result = untouched();
    const TrashedFile* otherPlace = nullptr;
    std::size_t otherPlaces = 0;
    for (const TrashedFile* file : inTrash(item)) {
        const Sight there = look(file->item);
        if (!there.isKnown()) return uncertain(notExamined);
        if (there.kind == Sight::Case::absent) {
            if (!ports_.removeTrashInfo(*file) && look(file->info).kind != Sight::Case::absent) {
                return uncertain(notRemoved);
            }
            result = {.end = End::putRight, .sentence = infoRemoved};
        } else if (there.isRegular() && there.facts.identity == from.facts.identity) {
            otherPlace = file;
            ++otherPlaces;
        } else if (const Proof placeholder = isPlaceholder(item, file->item, there); placeholder != Proof::refuted) {
            const bool isGone = placeholder == Proof::proved && remove(file->item) &&
                                (ports_.removeTrashInfo(*file) || look(file->info).kind == Sight::Case::absent);
            if (!isGone) return uncertain(placeholder == Proof::proved ? notRemoved : notExamined);
            result = {.end = End::putRight, .sentence = infoRemoved};
        }
    }
    if (otherPlaces == 1 && hasOneNameMore(item, from)) {
        if (!remove(otherPlace->item)) return uncertain(notRemoved);
        return {.end = End::putRight, .sentence = nameTakenBack};
    }
    if (otherPlaces > 0 && result.sentence.empty()) result.sentence = otherNameInTrash;
    return result;
}

Settled ItemReconciler::trashed(const Item&, const Url& place, Fingerprint what) const {
    return {.end = End::finished,
            .sentence = "Moved to the Trash.",
            .lies = Settled::Place{.place = place, .what = std::move(what), .sameVolume = true}};
}

Settled ItemReconciler::trashedAsFound(const Item& item, const Url& place, const Sight& there) const {
    auto hash = ports_.fs.contentHash(place);
    if (!hash) return uncertain(notExamined);
    return trashed(item, place, {there.facts.byteSize, std::move(*hash), there.facts.identity});
}

}  // namespace ordovan
