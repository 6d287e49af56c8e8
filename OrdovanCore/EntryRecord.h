#pragma once

#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Json.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

/// What the stored records that are lists of entries have in common: the undo journal and the record of the Trash.
/// Without state; any thread.
namespace ordovan::records {

/// Writes such a record in pieces of about 1 MiB: `piece` holds its beginning up to the bracket of the entries,
/// `append` adds an entry's text to it, `end` is what follows the entries. False when `sink` stopped it.
template <class Entry, class Append, class Sink>
bool encode(std::string piece, const std::vector<Entry>& entries, Append append, std::string_view end,
            const Sink& sink) {
    piece.reserve(json::encodedPieceSize + 16 * 1024);
    bool first = true;
    for (const Entry& entry : entries) {
        piece += first ? "\n" : ",\n";
        first = false;
        append(piece, entry);
        if (piece.size() < json::encodedPieceSize) continue;
        if (!sink(piece)) return false;
        piece.clear();
    }
    piece += entries.empty() ? "]" : "\n  ]";
    piece += end;
    return sink(piece);
}

/// A record's stored form in memory.
template <class Record>
std::string encoded(const Record& record) {
    std::string text;
    record.encode([&text](std::string_view piece) {
        text += piece;
        return true;
    });
    return text;
}

/// Reads a stored form that lies in memory.
template <class Decoder>
auto decoded(std::string_view from) {
    Decoder decoder;
    decoder.feed(from);
    return decoder.finish();
}

/// The entries of a record without those of which the id occurs among the later ones, then these.
template <class Entry>
std::vector<Entry> joined(const std::vector<Entry>& entries, const std::vector<Entry>& later) {
    std::unordered_set<std::string_view> replaced;
    replaced.reserve(later.size());
    for (const Entry& entry : later) replaced.insert(entry.id());
    std::vector<Entry> all;
    all.reserve(entries.size() + later.size());
    for (const Entry& entry : entries) {
        if (!replaced.contains(entry.id())) all.push_back(entry);
    }
    all.insert(all.end(), later.begin(), later.end());
    return all;
}

/// What a stored record says of itself, or what it may say.
struct Found {
    std::int64_t version;
    std::size_t entries;
};
using Limits = Found;

/// Why a record is refused: another version than that of the limits, or more entries.
[[nodiscard]] std::optional<OrdovanJournalError> refusal(const Found& found, const Limits& limits);

/// The record that a reader has come to the end of, unless it is refused. `count`: its entries, also those that it does
/// not hold because there are more than there may be.
template <class Record>
std::expected<Record, OrdovanRecordError> finished(json::Reader& reader, Record& record, std::size_t count) {
    if (auto end = reader.finish(); !end) return std::unexpected(OrdovanRecordError(std::move(end.error())));
    const auto refused = refusal({record.version, count}, {Record::supportedVersion, Record::maxEntries});
    if (refused) return std::unexpected(*refused);
    return std::move(record);
}

}  // namespace ordovan::records
