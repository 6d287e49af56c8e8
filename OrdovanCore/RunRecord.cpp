#include "OrdovanCore/RunRecord.h"

#include "OrdovanCore/Json.h"
#include "OrdovanCore/Text.h"
#include "OrdovanCore/TrashPlace.h"

#include <algorithm>
#include <array>
#include <utility>

namespace json = ordovan::json;
using ordovan::SharedText;

namespace {

/// Two paths of PATH_MAX bytes, all of them escaped, and what stands around them.
constexpr std::size_t longestLine = std::size_t{64} << 10;

/// The path below the root, or all of it where it does not lie there.
std::string_view relative(std::string_view path, std::string_view root) {
    const bool isBelow = path.size() > root.size() + 1 && path.starts_with(root) && path[root.size()] == '/' &&
                         path[root.size() + 1] != '/';
    return isBelow ? path.substr(root.size() + 1) : path;
}

/// The other way round; what is empty stays so.
SharedText absolute(std::string_view stored, std::string_view root) {
    if (stored.empty() || stored.front() == '/') return stored;
    return SharedText::joined({root, "/", stored});
}

constexpr std::array<std::pair<OrdovanRunNote::Kind, std::string_view>, 3> noteNames{{
    {OrdovanRunNote::Kind::begun, "begun"},
    {OrdovanRunNote::Kind::claimed, "claimed"},
    {OrdovanRunNote::Kind::done, "done"},
}};

std::string_view nameOf(OrdovanRunNote::Kind kind) {
    return std::ranges::find(noteNames, kind, &decltype(noteNames)::value_type::first)->second;
}

constexpr std::array<json::Member, 1> versionMembers{{{"version", json::Type::integer}}};
constexpr std::array<json::Member, 9> headMembers{{
    {"id", json::Type::text},
    {"items", json::Type::integer},
    {"kind", json::Type::text},
    {"outputRoots", json::Type::texts},
    {"root", json::Type::text},
    {"rootIdentity", json::Type::text},
    {"startedAtEpoch", json::Type::number},
    {"unflushable", json::Type::texts},
    {"volumes", json::Type::texts},
}};
constexpr std::array<json::Member, 7> itemMembers{{
    {"bytes", json::Type::integer},
    {"from", json::Type::text},
    {"hash", json::Type::text},
    {"identity", json::Type::text},
    {"modified", json::Type::integer},
    {"names", json::Type::integer},
    {"to", json::Type::text},
}};
constexpr std::array<json::Member, 1> endMembers{{{"end", json::Type::integer}}};
constexpr std::array<json::Member, 7> noteMembers{{
    {"bytes", json::Type::integer},
    {"hash", json::Type::text},
    {"identity", json::Type::text},
    {"item", json::Type::integer},
    {"note", json::Type::text},
    {"path", json::Type::text},
    {"sameVolume", json::Type::boolean},
}};

constexpr std::array<json::Member, 3> renamedMembers{{
    {"bytes", json::Type::integer},
    {"hash", json::Type::text},
    {"renamed", json::Type::integer},
}};

constexpr json::Schema versionSchema{versionMembers, {}, {}};
constexpr json::Schema headSchema{headMembers, {}, {}};
constexpr json::Schema itemSchema{itemMembers, {}, {}};
constexpr json::Schema endSchema{endMembers, {}, {}};
constexpr json::Schema noteSchema{noteMembers, {}, {}};
constexpr json::Schema renamedSchema{renamedMembers, {}, {}};

/// Hands the members of a line to a function, which says whether it takes them.
template <class Take>
class LineReceiver final : public json::Receiver {
public:
    explicit LineReceiver(Take take) : take_(std::move(take)) {}
    bool member(std::size_t index, const json::Value& value, std::string& error) override {
        if (take_(index, value)) return true;
        error = "A value of the run record can not be.";
        return false;
    }
    bool record(std::span<const json::Value>, std::string&) override { return false; }

private:
    Take take_;
};

template <class Take>
std::expected<void, std::string> readLine(std::string_view line, const json::Schema& schema, Take take) {
    LineReceiver<Take> receiver(std::move(take));
    return json::read(line, schema, receiver);
}

bool isHash(std::string_view text) {
    constexpr std::size_t digits = 64;
    return text.size() == digits &&
           std::ranges::all_of(text, [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

bool isRoot(std::string_view path) {
    return path != "/" && ordovan::isNormalPath(path);
}

std::string_view textOf(const json::Value& value) {
    return std::get<std::string_view>(value);
}

bool takeFolders(const json::Value& value, std::vector<Url>& folders) {
    for (const std::string& path : std::get<std::span<const std::string>>(value)) folders.push_back(Url::file(path));
    return true;
}

/// One member of the line about the run.
bool takeHead(std::size_t index, const json::Value& value, OrdovanRunIntent& intent, std::int64_t& count) {
    switch (index) {
        case 0: {
            const auto id = ordovan::Uuid::parse(textOf(value));
            if (id) intent.id = *id;
            return id.has_value();
        }
        case 1:
            count = std::get<std::int64_t>(value);
            return count >= 0;
        case 2: {
            const auto kind = runKindFromRawValue(textOf(value));
            if (kind) intent.kind = *kind;
            return kind.has_value();
        }
        case 3:
            return takeFolders(value, intent.outputRoots);
        case 4:
            intent.root = Url::file(textOf(value));
            return isRoot(textOf(value));
        case 5:
            intent.rootIdentity = textOf(value);
            return true;
        case 6:
            intent.startedAtEpoch = std::get<double>(value);
            return true;
        case 7:
            return takeFolders(value, intent.unflushable);
        default:
            return takeFolders(value, intent.volumes);
    }
}

/// One member of an item's line.
bool takeItem(std::size_t index, const json::Value& value, OrdovanRunItem& item, std::string_view root) {
    switch (index) {
        case 0:
            item.byteSize = std::get<std::int64_t>(value);
            return item.byteSize >= OrdovanRunItem::unknownSize;
        case 1:
            item.source = absolute(textOf(value), root);
            return !item.source.empty();
        case 2:
            item.contentHash = textOf(value);
            return item.contentHash.empty() || isHash(item.contentHash);
        case 3:
            item.identity = textOf(value);
            return true;
        case 4:
            item.modifiedNs = std::get<std::int64_t>(value);
            return true;
        case 5: {
            const std::int64_t names = std::get<std::int64_t>(value);
            item.names = static_cast<std::uint64_t>(names);
            return names >= 0;
        }
        default:
            item.destination = absolute(textOf(value), root);
            return true;
    }
}

/// One member of a note's line.
bool takeNote(std::size_t index, const json::Value& value, OrdovanRunNote& note, const OrdovanRunIntent& intent) {
    switch (index) {
        case 0:
            note.byteSize = std::get<std::int64_t>(value);
            return note.byteSize >= 0;
        case 1:
            note.contentHash = textOf(value);
            return isHash(note.contentHash);
        case 2:
            note.identity = textOf(value);
            return true;
        case 3: {
            const std::int64_t item = std::get<std::int64_t>(value);
            note.item = static_cast<std::size_t>(item);
            return item >= 0 && note.item < intent.items.size();
        }
        case 4: {
            const auto found = std::ranges::find(noteNames, textOf(value), &decltype(noteNames)::value_type::second);
            if (found != noteNames.end()) note.kind = found->first;
            return found != noteNames.end();
        }
        case 5:
            note.path = absolute(textOf(value), intent.root.path());
            return true;
        default:
            note.sameVolume = std::get<bool>(value);
            return true;
    }
}

/// One member of the line of a file that was renamed.
bool takeRenamed(std::size_t index, const json::Value& value, OrdovanRunNote& note, const OrdovanRunIntent& intent) {
    constexpr std::size_t itemIndex = 3;  // as among the members of other notes
    if (index < 2) return takeNote(index, value, note, intent);
    if (!takeNote(itemIndex, value, note, intent)) return false;
    note.kind = OrdovanRunNote::Kind::done;
    note.identity = intent.items[note.item].identity;
    note.sameVolume = true;
    return true;
}

/// Whether a run of this intent can have made a note: partial copies stand beside the item's destination, the hidden
/// name of a claim beside its source, and only the Trash chooses a place, its own.
bool isPossible(const OrdovanRunNote& note, const OrdovanRunIntent& intent) {
    const bool isTrash = intent.kind == OrdovanRunIntent::Kind::trash;
    if (note.kind == OrdovanRunNote::Kind::done) return isTrash ? ordovan::isInTrash(note.path) : note.path.empty();
    if (note.path.empty()) return true;
    const OrdovanRunItem& item = intent.items[note.item];
    const bool isClaim = note.kind == OrdovanRunNote::Kind::claimed;
    return (isClaim || !isTrash) && OrdovanPartialName::isPartial(note.path) &&
           ordovan::parentPath(note.path) == ordovan::parentPath(isClaim ? item.source : item.destination);
}

/// The note that a line tells, or nothing where a run of this intent can not have made it.
std::optional<OrdovanRunNote> noteOf(std::string_view line, const OrdovanRunIntent& intent) {
    OrdovanRunNote note;
    const bool isRenamed = line.contains("\"renamed\"");
    const auto read =
        readLine(line, isRenamed ? renamedSchema : noteSchema, [&](std::size_t index, const json::Value& value) {
            return isRenamed ? takeRenamed(index, value, note, intent) : takeNote(index, value, note, intent);
        });
    if (!read || !isPossible(note, intent)) return std::nullopt;
    return note;
}

void appendFolders(std::string& piece, std::span<const Url> folders) {
    piece += '[';
    for (const Url& folder : folders) {
        if (piece.back() != '[') piece += ',';
        json::appendText(piece, folder.path());
    }
    piece += ']';
}

}  // namespace

bool OrdovanRunIntent::encode(const Sink& sink) const {
    std::string piece;
    piece.reserve(json::encodedPieceSize + 16 * 1024);
    piece += "{\"id\":";
    json::appendText(piece, id.text());
    piece += ",\"items\":";
    json::appendInteger(piece, static_cast<std::int64_t>(items.size()));
    piece += ",\"kind\":";
    json::appendText(piece, rawValue(kind));
    piece += ",\"outputRoots\":";
    appendFolders(piece, outputRoots);
    piece += ",\"root\":";
    json::appendText(piece, root.path());
    piece += ",\"rootIdentity\":";
    json::appendText(piece, rootIdentity);
    piece += ",\"startedAtEpoch\":";
    json::appendNumber(piece, startedAtEpoch);
    piece += ",\"unflushable\":";
    appendFolders(piece, unflushable);
    piece += ",\"version\":";
    json::appendInteger(piece, supportedVersion);
    piece += ",\"volumes\":";
    appendFolders(piece, volumes);
    piece += "}\n";
    for (const OrdovanRunItem& item : items) {
        piece += "{\"bytes\":";
        json::appendInteger(piece, item.byteSize);
        piece += ",\"from\":";
        json::appendText(piece, relative(item.source, root.path()));
        piece += ",\"hash\":";
        json::appendText(piece, item.contentHash);
        piece += ",\"identity\":";
        json::appendText(piece, item.identity);
        piece += ",\"modified\":";
        json::appendInteger(piece, item.modifiedNs);
        piece += ",\"names\":";
        json::appendInteger(piece, static_cast<std::int64_t>(item.names));
        piece += ",\"to\":";
        json::appendText(piece, relative(item.destination, root.path()));
        piece += "}\n";
        if (piece.size() < json::encodedPieceSize) continue;
        if (!sink(piece)) return false;
        piece.clear();
    }
    piece += "{\"end\":";
    json::appendInteger(piece, static_cast<std::int64_t>(items.size()));
    piece += "}\n";
    return sink(piece);
}

OrdovanUnfinishedRun OrdovanUnfinishedRun::only(std::span<const std::size_t> items) const {
    OrdovanUnfinishedRun result;
    std::vector<OrdovanRunItem> kept;
    for (const std::size_t item : items) kept.push_back(intent.items[item]);
    result.intent = intent;
    result.intent.items = std::move(kept);
    for (const OrdovanRunNote& note : notes) {
        const auto found = std::ranges::lower_bound(items, note.item);
        if (found == items.end() || *found != note.item) continue;
        result.notes.push_back(note);
        result.notes.back().item = static_cast<std::size_t>(found - items.begin());
    }
    return result;
}

bool OrdovanUnfinishedRun::encode(const OrdovanRunIntent::Sink& sink) const {
    if (!intent.encode(sink)) return false;
    std::string lines;
    for (const OrdovanRunNote& note : notes) note.appendTo(lines, intent);
    return lines.empty() || sink(lines);
}

void OrdovanRunNote::appendTo(std::string& out, const OrdovanRunIntent& intent) const {
    out += "{\"bytes\":";
    json::appendInteger(out, byteSize);
    out += ",\"hash\":";
    json::appendText(out, contentHash);
    if (kind == Kind::done && sameVolume && path.empty() && identity == intent.items[item].identity) {
        out += ",\"renamed\":";
        json::appendInteger(out, static_cast<std::int64_t>(item));
        out += "}\n";
        return;
    }
    out += ",\"identity\":";
    json::appendText(out, identity);
    out += ",\"item\":";
    json::appendInteger(out, static_cast<std::int64_t>(item));
    out += ",\"note\":";
    json::appendText(out, nameOf(kind));
    out += ",\"path\":";
    json::appendText(out, relative(path, intent.root.path()));
    out += sameVolume ? ",\"sameVolume\":true}\n" : ",\"sameVolume\":false}\n";
}

std::expected<OrdovanUnfinishedRun, OrdovanRecordError> OrdovanUnfinishedRun::decoded(std::string_view from) {
    OrdovanRunRecordDecoder decoder;
    decoder.feed(from);
    return decoder.finish();
}

struct OrdovanRunRecordDecoder::State {
    enum class Place { head, items, end, notes, behindNotes };
    Place place = Place::head;
    OrdovanUnfinishedRun run;
    std::int64_t count = 0;
    std::string begun;  // the line whose end has not come yet
    std::optional<OrdovanRecordError> refusal;

    void refuse(std::string reason) { refusal = std::move(reason); }

    void takeLine(std::string_view line) {
        switch (place) {
            case Place::head:
                return readHead(line);
            case Place::items:
                return readItem(line);
            case Place::end:
                return readEnd(line);
            case Place::notes:
                return readNote(line);
            case Place::behindNotes:
                return;
        }
    }

    void readHead(std::string_view line) {
        std::int64_t version = 0;
        const auto readVersion = readLine(line, versionSchema, [&](std::size_t, const json::Value& value) {
            version = std::get<std::int64_t>(value);
            return true;
        });
        if (!readVersion) return refuse(readVersion.error());
        using enum OrdovanJournalError::Case;
        if (version != OrdovanRunIntent::supportedVersion) {
            refusal = OrdovanJournalError{unsupportedVersion, version};
            return;
        }
        OrdovanRunIntent& intent = run.intent;
        const auto read = readLine(line, headSchema, [&](std::size_t index, const json::Value& value) {
            return takeHead(index, value, intent, count);
        });
        if (!read) return refuse(read.error());
        if (static_cast<std::uint64_t>(count) > OrdovanRunIntent::maxItems) {
            refusal = OrdovanJournalError{tooLarge, count};
            return;
        }
        const std::string below = std::string(intent.root.path()) + "/";
        const auto isInside = [&](const Url& folder) {
            return ordovan::isNormalPath(folder.path()) && folder.path().starts_with(below);
        };
        if (!std::ranges::all_of(intent.outputRoots, isInside)) {
            return refuse("An output folder lies outside the folder of the run.");
        }
        if (!std::ranges::all_of(intent.volumes, isInside)) {
            return refuse("A volume lies outside the folder of the run.");
        }
        place = count == 0 ? Place::end : Place::items;
    }

    void readItem(std::string_view line) {
        OrdovanRunItem item;
        const auto read = readLine(line, itemSchema, [&](std::size_t index, const json::Value& value) {
            return takeItem(index, value, item, run.intent.root.path());
        });
        if (!read) return refuse(read.error());
        if (item.destination.empty() != (run.intent.kind == OrdovanRunIntent::Kind::trash)) {
            return refuse("An item of the run record has no destination, or one too many.");
        }
        run.intent.items.push_back(std::move(item));
        if (run.intent.items.size() == static_cast<std::size_t>(count)) place = Place::end;
    }

    void readEnd(std::string_view line) {
        std::int64_t told = -1;
        const auto read = readLine(line, endSchema, [&](std::size_t, const json::Value& value) {
            told = std::get<std::int64_t>(value);
            return true;
        });
        if (!read) return refuse(read.error());
        if (told != count) return refuse("The run record ends with another number of items than it begins with.");
        place = Place::notes;
    }

    void readNote(std::string_view line) {
        auto note = noteOf(line, run.intent);
        if (note) {
            run.notes.push_back(std::move(*note));
        } else {
            place = Place::behindNotes;
        }
    }

    /// A line so long can be none of ours.
    void checkLength() {
        if (begun.size() <= longestLine) return;
        if (place != Place::notes) return refuse("A line of the run record is too long.");
        place = Place::behindNotes;
    }
};

OrdovanRunRecordDecoder::OrdovanRunRecordDecoder() : state_(std::make_unique<State>()) {}

OrdovanRunRecordDecoder::~OrdovanRunRecordDecoder() = default;

bool OrdovanRunRecordDecoder::feed(std::string_view piece) {
    State& state = *state_;
    while (!piece.empty() && !state.refusal && state.place != State::Place::behindNotes) {
        const std::size_t end = piece.find('\n');
        state.begun += piece.substr(0, end);
        state.checkLength();
        if (end == std::string_view::npos || state.refusal) break;
        state.takeLine(state.begun);
        state.begun.clear();
        piece.remove_prefix(end + 1);
    }
    return !state.refusal;
}

std::expected<OrdovanUnfinishedRun, OrdovanRecordError> OrdovanRunRecordDecoder::finish() {
    State& state = *state_;
    const bool isWhole = state.place == State::Place::notes || state.place == State::Place::behindNotes;
    if (!state.refusal && !isWhole) state.refuse("The run record ends too early.");
    if (state.refusal) return std::unexpected(*state.refusal);
    return std::move(state.run);
}
