#include "OrdovanCore/TrashRecord.h"

#include "OrdovanCore/EntryRecord.h"
#include "OrdovanCore/Json.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>
#include <utility>

namespace json = ordovan::json;
namespace records = ordovan::records;
using Status = OrdovanExecutionStatus;

/// What stands in front of an entry's texts: original path, trashed path and content hash, one behind the other. The
/// last one's size is what remains. There is no padding, since entries are compared byte by byte.
struct OrdovanTrashEntry::Head {
    std::int64_t byteSize;
    std::uint32_t originalSize;
    std::uint32_t trashedSize;
};

OrdovanTrashEntry::OrdovanTrashEntry(std::string_view original, std::string_view trashed, std::int64_t byteSize,
                                     std::string_view contentHash) {
    static_assert(std::has_unique_object_representations_v<Head>);
    const Head head{byteSize, static_cast<std::uint32_t>(original.size()), static_cast<std::uint32_t>(trashed.size())};
    const std::string_view headBytes(reinterpret_cast<const char*>(&head), sizeof head);
    packed_ = ordovan::SharedText::joined({headBytes, original, trashed, contentHash});
}

OrdovanTrashEntry::Head OrdovanTrashEntry::head() const noexcept {
    Head head{};
    if (!packed_.empty()) std::memcpy(&head, packed_.view().data(), sizeof head);  // empty once moved from
    return head;
}

std::string_view OrdovanTrashEntry::original() const noexcept {
    if (packed_.empty()) return {};
    return packed_.view().substr(sizeof(Head), head().originalSize);
}

std::string_view OrdovanTrashEntry::trashed() const noexcept {
    if (packed_.empty()) return {};
    const Head head = this->head();
    return packed_.view().substr(sizeof(Head) + head.originalSize, head.trashedSize);
}

std::int64_t OrdovanTrashEntry::byteSize() const noexcept {
    return head().byteSize;
}

std::string_view OrdovanTrashEntry::contentHash() const noexcept {
    if (packed_.empty()) return {};
    const Head head = this->head();
    return packed_.view().substr(sizeof(Head) + head.originalSize + head.trashedSize);
}

namespace {

void appendEntry(std::string& out, const OrdovanTrashEntry& entry) {
    out += "    {\n      \"byteSize\": " + std::to_string(entry.byteSize()) + ",\n      \"contentHash\": ";
    json::appendText(out, entry.contentHash());
    out += ",\n      \"original\": ";
    json::appendText(out, entry.original());
    out += ",\n      \"trashed\": ";
    json::appendText(out, entry.trashed());
    out += "\n    }";
}

constexpr std::array<json::Member, 1> recordMembers{{
    {"version", json::Type::integer},
}};

constexpr std::array<json::Member, 4> entryMembers{{
    {"byteSize", json::Type::integer},
    {"contentHash", json::Type::text},
    {"original", json::Type::text},
    {"trashed", json::Type::text},
}};

constexpr json::Schema recordSchema{recordMembers, "entries", entryMembers};

/// Collects the entries up to the limit and counts those beyond it.
class RecordReceiver : public json::Receiver {
public:
    bool member(std::size_t, const json::Value& value, std::string&) override {
        result.version = std::get<std::int64_t>(value);
        return true;
    }

    bool record(std::span<const json::Value> values, std::string&) override {
        ++count;
        if (count > OrdovanTrashRecord::maxEntries) return true;
        result.entries.emplace_back(std::get<std::string_view>(values[2]), std::get<std::string_view>(values[3]),
                                    std::get<std::int64_t>(values[0]), std::get<std::string_view>(values[1]));
        return true;
    }

    OrdovanTrashRecord result;
    std::size_t count = 0;
};

std::size_t countOf(const std::vector<OrdovanExecutionOutcome>& outcomes, Status status) {
    return static_cast<std::size_t>(std::ranges::count(outcomes, status, &OrdovanExecutionOutcome::status));
}

}  // namespace

bool OrdovanTrashRecord::encode(const Sink& sink) const {
    const std::string end = ",\n  \"version\": " + std::to_string(version) + "\n}\n";
    return records::encode("{\n  \"entries\": [", entries, appendEntry, end, sink);
}

std::string OrdovanTrashRecord::encoded() const {
    return records::encoded(*this);
}

std::expected<OrdovanTrashRecord, OrdovanRecordError> OrdovanTrashRecord::decoded(std::string_view from) {
    return records::decoded<OrdovanTrashRecordDecoder>(from);
}

OrdovanTrashRecord OrdovanTrashRecord::appending(const OrdovanTrashRecord& other) const {
    return {version, records::joined(entries, other.entries)};
}

struct OrdovanTrashRecordDecoder::State {
    RecordReceiver receiver;
    json::Reader reader{recordSchema, receiver};
};

OrdovanTrashRecordDecoder::OrdovanTrashRecordDecoder() : state_(std::make_unique<State>()) {}

OrdovanTrashRecordDecoder::~OrdovanTrashRecordDecoder() = default;

bool OrdovanTrashRecordDecoder::feed(std::string_view piece) {
    return state_->reader.feed(piece).has_value();
}

std::expected<OrdovanTrashRecord, OrdovanRecordError> OrdovanTrashRecordDecoder::finish() {
    return records::finished(state_->reader, state_->receiver.result, state_->receiver.count);
}

std::size_t OrdovanTrashReport::movedCount() const {
    return countOf(outcomes, Status::moved);
}

std::size_t OrdovanTrashReport::skippedCount() const {
    return countOf(outcomes, Status::skippedRevalidation);
}

std::size_t OrdovanTrashReport::failedCount() const {
    return countOf(outcomes, Status::failed);
}

OrdovanExecutionReport OrdovanTrashReport::asExecutionReport() const {
    return {outcomes, {}};
}
