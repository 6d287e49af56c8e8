#include "OrdovanCore/RunHistory.h"

#include "OrdovanCore/Json.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace json = ordovan::json;

namespace {

using Kind = OrdovanRunRecord::Kind;

constexpr std::array<std::pair<Kind, std::string_view>, 4> kindNames{{
    {Kind::organize, "organize"},
    {Kind::undo, "undo"},
    {Kind::trash, "trash"},
    {Kind::restoreTrash, "restoreTrash"},
}};

constexpr std::array<json::Member, 7> recordMembers{{
    {"epoch", json::Type::number},
    {"failed", json::Type::integer},
    {"folderName", json::Type::text},
    {"id", json::Type::text},
    {"kind", json::Type::text},
    {"moved", json::Type::integer},
    {"skipped", json::Type::integer},
}};

constexpr json::Schema historySchema{{}, "records", recordMembers};

/// Checks every record and keeps the first ones.
class HistoryReceiver : public json::Receiver {
public:
    bool member(std::size_t, const json::Value&, std::string&) override { return true; }

    bool record(std::span<const json::Value> values, std::string& error) override {
        const auto id = ordovan::Uuid::parse(std::get<std::string_view>(values[3]));
        const auto kind = runKindFromRawValue(std::get<std::string_view>(values[4]));
        if (!id || !kind) {
            error = id ? "\"kind\" is not a kind of run." : "\"id\" is not a UUID.";
            return false;
        }
        if (history.records.size() == OrdovanRunHistory::maxRecords) return true;
        history.records.push_back(
            {*id, *kind, std::get<double>(values[0]), std::string(std::get<std::string_view>(values[2])),
             std::get<std::int64_t>(values[5]), std::get<std::int64_t>(values[6]), std::get<std::int64_t>(values[1])});
        return true;
    }

    OrdovanRunHistory history;
};

void appendRecord(std::string& out, const OrdovanRunRecord& record) {
    out += "    {\n      \"epoch\": ";
    json::appendNumber(out, record.epoch);
    out += ",\n      \"failed\": " + std::to_string(record.failed);
    out += ",\n      \"folderName\": ";
    json::appendText(out, record.folderName);
    out += ",\n      \"id\": ";
    json::appendText(out, record.id.text());
    out += ",\n      \"kind\": ";
    json::appendText(out, rawValue(record.kind));
    out += ",\n      \"moved\": " + std::to_string(record.moved);
    out += ",\n      \"skipped\": " + std::to_string(record.skipped);
    out += "\n    }";
}

}  // namespace

OrdovanRunRecord OrdovanRunRecord::make(Kind kind, const OrdovanExecutionReport& report, const Url& folder,
                                        double epoch) {
    return {ordovan::Uuid::random(),
            kind,
            epoch,
            std::string(folder.lastPathComponent()),
            static_cast<std::int64_t>(report.movedCount()),
            static_cast<std::int64_t>(report.skippedCount()),
            static_cast<std::int64_t>(report.failedCount())};
}

std::string OrdovanRunRecord::summary() const {
    const std::string count = std::to_string(moved);
    const std::string noun = moved == 1 ? "file" : "files";
    switch (kind) {
        case Kind::organize:
            return "Organized " + count + " " + noun + " in " + folderName;
        case Kind::undo:
            return "Restored " + count + " " + noun + " in " + folderName;
        case Kind::trash:
            return "Moved " + count + " duplicate " + noun + " to the Trash in " + folderName;
        case Kind::restoreTrash:
            return "Put back " + count + " " + noun + " from the Trash in " + folderName;
    }
    return {};
}

std::string_view rawValue(OrdovanRunRecord::Kind kind) {
    return std::ranges::find(kindNames, kind, &decltype(kindNames)::value_type::first)->second;
}

std::optional<OrdovanRunRecord::Kind> runKindFromRawValue(std::string_view name) {
    const auto found = std::ranges::find(kindNames, name, &decltype(kindNames)::value_type::second);
    return found == kindNames.end() ? std::nullopt : std::optional(found->first);
}

OrdovanRunHistory OrdovanRunHistory::adding(const OrdovanRunRecord& record) const {
    OrdovanRunHistory longer;
    const std::size_t kept = std::min(records.size(), maxRecords - 1);
    longer.records.reserve(kept + 1);
    longer.records.push_back(record);
    longer.records.insert(longer.records.end(), records.begin(), records.begin() + static_cast<std::ptrdiff_t>(kept));
    return longer;
}

std::int64_t OrdovanRunHistory::totalOrganized() const {
    // A stored count may be any number, and no history may end the program.
    using Limits = std::numeric_limits<std::int64_t>;
    std::int64_t total = 0;
    for (const OrdovanRunRecord& record : records) {
        if (record.kind != Kind::organize) continue;
        if (__builtin_add_overflow(total, record.moved, &total))
            total = record.moved < 0 ? Limits::min() : Limits::max();
    }
    return total;
}

std::string OrdovanRunHistory::encoded() const {
    std::string out = "{\n  \"records\": [";
    for (const OrdovanRunRecord& record : records) {
        out += &record == &records.front() ? "\n" : ",\n";
        appendRecord(out, record);
    }
    out += records.empty() ? "]\n}\n" : "\n  ]\n}\n";
    return out;
}

std::expected<OrdovanRunHistory, std::string> OrdovanRunHistory::decoded(std::string_view from) {
    HistoryReceiver receiver;
    if (auto read = json::read(from, historySchema, receiver); !read) return std::unexpected(std::move(read.error()));
    return std::move(receiver.history);
}
