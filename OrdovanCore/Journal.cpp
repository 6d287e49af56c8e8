#include "OrdovanCore/Journal.h"

#include "OrdovanCore/EntryRecord.h"
#include "OrdovanCore/Json.h"

#include <array>
#include <cstring>
#include <utility>

namespace json = ordovan::json;
namespace records = ordovan::records;

/// What stands in front of an entry's texts: source, destination, content hash and file identity, one behind the
/// other. The last one's size is what remains. There is no padding, since entries are compared byte by byte.
struct OrdovanJournalEntry::Head {
    std::int64_t byteSize;
    std::uint32_t sourceSize;
    std::uint32_t destinationSize;
    std::uint32_t contentHashSize;
    std::uint32_t sameVolume;
};

OrdovanJournalEntry::OrdovanJournalEntry(std::string_view source, std::string_view destination, bool sameVolume,
                                         std::int64_t byteSize, std::string_view contentHash, std::string_view fileID) {
    static_assert(std::has_unique_object_representations_v<Head>);
    const Head head{byteSize, static_cast<std::uint32_t>(source.size()), static_cast<std::uint32_t>(destination.size()),
                    static_cast<std::uint32_t>(contentHash.size()), sameVolume ? 1U : 0U};
    const std::string_view headBytes(reinterpret_cast<const char*>(&head), sizeof head);
    packed_ = ordovan::SharedText::joined({headBytes, source, destination, contentHash, fileID});
}

OrdovanJournalEntry::Head OrdovanJournalEntry::head() const noexcept {
    Head head{};
    if (!packed_.empty()) std::memcpy(&head, packed_.view().data(), sizeof head);  // empty once moved from
    return head;
}

std::string_view OrdovanJournalEntry::source() const noexcept {
    if (packed_.empty()) return {};
    return packed_.view().substr(sizeof(Head), head().sourceSize);
}

std::string_view OrdovanJournalEntry::destination() const noexcept {
    if (packed_.empty()) return {};
    const Head head = this->head();
    return packed_.view().substr(sizeof(Head) + head.sourceSize, head.destinationSize);
}

bool OrdovanJournalEntry::sameVolume() const noexcept {
    return head().sameVolume != 0;
}

std::int64_t OrdovanJournalEntry::byteSize() const noexcept {
    return head().byteSize;
}

std::string_view OrdovanJournalEntry::contentHash() const noexcept {
    if (packed_.empty()) return {};
    const Head head = this->head();
    return packed_.view().substr(sizeof(Head) + head.sourceSize + head.destinationSize, head.contentHashSize);
}

std::string_view OrdovanJournalEntry::fileID() const noexcept {
    if (packed_.empty()) return {};
    const Head head = this->head();
    return packed_.view().substr(sizeof(Head) + head.sourceSize + head.destinationSize + head.contentHashSize);
}

std::string describe(const OrdovanRecordError& error) {
    if (const auto* sentence = std::get_if<std::string>(&error)) return *sentence;
    const auto& refusal = std::get<OrdovanJournalError>(error);
    if (refusal.kind == OrdovanJournalError::Case::unsupportedVersion) {
        return "The record has format version " + std::to_string(refusal.value) + "; only version " +
               std::to_string(OrdovanJournal::supportedVersion) + " can be read.";
    }
    return "The record has " + std::to_string(refusal.value) + " entries, which is more than can be read.";
}

namespace {

void appendEntry(std::string& out, const OrdovanJournalEntry& entry) {
    out += "    {\n      \"byteSize\": ";
    json::appendInteger(out, entry.byteSize());
    out += ",\n      \"contentHash\": ";
    json::appendText(out, entry.contentHash());
    out += ",\n      \"destination\": ";
    json::appendText(out, entry.destination());
    out += ",\n      \"fileID\": ";
    json::appendText(out, entry.fileID());
    out += entry.sameVolume() ? ",\n      \"sameVolume\": true" : ",\n      \"sameVolume\": false";
    out += ",\n      \"source\": ";
    json::appendText(out, entry.source());
    out += "\n    }";
}

constexpr std::array<json::Member, 2> journalMembers{{
    {"createdAtEpoch", json::Type::number},
    {"version", json::Type::integer},
}};

constexpr std::array<json::Member, 6> entryMembers{{
    {"byteSize", json::Type::integer},
    {"contentHash", json::Type::text},
    {"destination", json::Type::text},
    {"fileID", json::Type::text},
    {"sameVolume", json::Type::boolean},
    {"source", json::Type::text},
}};

constexpr json::Schema journalSchema{journalMembers, "entries", entryMembers};

/// Collects the entries up to the limit and counts those beyond it.
class JournalReceiver : public json::Receiver {
public:
    bool member(std::size_t index, const json::Value& value, std::string&) override {
        if (index == 0) journal.createdAtEpoch = std::get<double>(value);
        if (index == 1) journal.version = std::get<std::int64_t>(value);
        return true;
    }

    bool record(std::span<const json::Value> values, std::string&) override {
        ++count;
        if (count > OrdovanJournal::maxEntries) return true;
        journal.entries.emplace_back(std::get<std::string_view>(values[5]), std::get<std::string_view>(values[2]),
                                     std::get<bool>(values[4]), std::get<std::int64_t>(values[0]),
                                     std::get<std::string_view>(values[1]), std::get<std::string_view>(values[3]));
        return true;
    }

    OrdovanJournal journal;
    std::size_t count = 0;
};

}  // namespace

bool OrdovanJournal::encode(const Sink& sink) const {
    std::string begin = "{\n  \"createdAtEpoch\": ";
    json::appendNumber(begin, createdAtEpoch);
    begin += ",\n  \"entries\": [";
    std::string end = ",\n  \"version\": ";
    json::appendInteger(end, version);
    end += "\n}\n";
    return records::encode(std::move(begin), entries, appendEntry, end, sink);
}

std::string OrdovanJournal::encoded() const {
    return records::encoded(*this);
}

std::expected<OrdovanJournal, OrdovanRecordError> OrdovanJournal::decoded(std::string_view from) {
    return records::decoded<OrdovanJournalDecoder>(from);
}

OrdovanJournal OrdovanJournal::appending(const OrdovanJournal& other) const {
    return {version, other.createdAtEpoch, records::joined(entries, other.entries)};
}

struct OrdovanJournalDecoder::State {
    JournalReceiver receiver;
    json::Reader reader{journalSchema, receiver};
};

OrdovanJournalDecoder::OrdovanJournalDecoder() : state_(std::make_unique<State>()) {}

OrdovanJournalDecoder::~OrdovanJournalDecoder() = default;

bool OrdovanJournalDecoder::feed(std::string_view piece) {
    return state_->reader.feed(piece).has_value();
}

std::expected<OrdovanJournal, OrdovanRecordError> OrdovanJournalDecoder::finish() {
    return records::finished(state_->reader, state_->receiver.journal, state_->receiver.count);
}
