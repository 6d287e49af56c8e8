#pragma once

#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Rules.h"
#include "OrdovanCore/RunHistory.h"
#include "OrdovanCore/RunRecord.h"
#include "OrdovanCore/TrashPlace.h"
#include "OrdovanCore/TrashRecord.h"
#include "OrdovanCore/Url.h"
#include "OrdovanCore/platform/TrashNaming.h"

#include <string>
#include <string_view>

/// What must hold for every input of a decoder. The fuzz targets and the replay of their corpus share these functions:
/// each takes any bytes and returns what is wrong with the decoder, or an empty text.
namespace ordovan::fuzz {

/// True when two readings of one text agree. The sentences of two refusals may differ: a text may be wrong in two ways,
/// and where it is cut decides which of them is seen first.
template <class Record>
bool agree(const std::expected<Record, OrdovanRecordError>& a, const std::expected<Record, OrdovanRecordError>& b) {
    if (a || b || !std::holds_alternative<std::string>(a.error())) return a == b;
    return std::holds_alternative<std::string>(b.error());
}

/// What a decoder makes of a text that comes in small pieces.
template <class Decoder>
auto fedInPieces(std::string_view input) {
    Decoder decoder;
    const std::size_t step = input.size() % 7 + 1;
    for (std::size_t at = 0; at < input.size(); at += step) decoder.feed(input.substr(at, step));
    return decoder.finish();
}

inline std::string journal(std::string_view input) {
    const auto whole = OrdovanJournal::decoded(input);
    if (!agree(fedInPieces<OrdovanJournalDecoder>(input), whole)) return "a journal fed in pieces is read differently";
    if (!whole) return describe(whole.error()).empty() ? "a refusal says nothing" : "";
    if (OrdovanJournal::decoded(whole->encoded()) != whole) return "a journal is not read back equal";
    for (const OrdovanJournalEntry& entry : whole->entries) {
        if (entry.source().contains('\0') || entry.destination().contains('\0')) return "a path holds a NUL character";
    }
    return whole->appending(*whole) == *whole ? "" : "a journal appended to itself is another one";
}

inline std::string trashRecord(std::string_view input) {
    const auto whole = OrdovanTrashRecord::decoded(input);
    if (!agree(fedInPieces<OrdovanTrashRecordDecoder>(input), whole))
        return "a Trash record fed in pieces is read differently";
    if (!whole) return describe(whole.error()).empty() ? "a refusal says nothing" : "";
    if (OrdovanTrashRecord::decoded(whole->encoded()) != whole) return "a Trash record is not read back equal";
    for (const OrdovanTrashEntry& entry : whole->entries) {
        if (entry.original().contains('\0') || entry.trashed().contains('\0')) return "a path holds a NUL character";
    }
    return whole->appending(*whole) == *whole ? "" : "a Trash record appended to itself is another one";
}

inline std::string history(std::string_view input) {
    const auto decoded = OrdovanRunHistory::decoded(input);
    if (!decoded) return decoded.error().empty() ? "a refusal says nothing" : "";
    if (decoded->records.size() > OrdovanRunHistory::maxRecords) return "a history is too long";
    if (OrdovanRunHistory::decoded(decoded->encoded()) != decoded) return "a history is not read back equal";
    static_cast<void>(decoded->totalOrganized());
    for (const OrdovanRunRecord& record : decoded->records) {
        if (record.summary().empty()) return "a run has no summary";
    }
    return "";
}

inline std::string rules(std::string_view input) {
    const auto decoded = OrdovanRuleSet::decoded(input);
    if (decoded && OrdovanRuleSet::decoded(decoded->encoded()) != decoded) return "rules are not read back equal";
    if (!decoded && decoded.error().empty()) return "a refusal says nothing";

    // The same bytes as typed text.
    const auto rule = OrdovanRuleSet::make(input, "Apps", {});
    if (rule && OrdovanRuleSet{{*rule}}.folder(rule->extensions.back()) != "Apps") return "an extension is not found";
    if (!rule && rule.error().message().empty()) return "a refusal says nothing";
    const auto name = OrdovanRuleSet::validateFolderName(input);
    if (name && OrdovanRuleSet::validateFolderName(*name) != name) return "a valid name is not valid again";
    return "";
}

inline std::string runRecord(std::string_view input) {
    const auto whole = OrdovanUnfinishedRun::decoded(input);
    if (!agree(fedInPieces<OrdovanRunRecordDecoder>(input), whole))
        return "a run's record fed in pieces is read differently";
    if (!whole) return describe(whole.error()).empty() ? "a refusal says nothing" : "";
    const OrdovanRunIntent& intent = whole->intent;
    if (!intent.root.path().starts_with('/') || intent.root.path() == "/") return "a run works nowhere";
    for (const OrdovanRunItem& item : intent.items) {
        if (!item.source.view().starts_with('/')) return "an item comes from no absolute place";
        if (item.source.view().contains('\0') || item.destination.view().contains('\0')) return "a path holds a NUL";
    }
    for (const OrdovanRunNote& note : whole->notes) {
        if (note.item >= intent.items.size()) return "a note is about no item";
        if (note.path.view().contains('\0')) return "a path holds a NUL";
    }
    std::string again;
    intent.encode([&](std::string_view piece) {
        again += piece;
        return true;
    });
    for (const OrdovanRunNote& note : whole->notes) note.appendTo(again, intent);
    return OrdovanUnfinishedRun::decoded(again) == whole ? "" : "a run's record is not read back equal";
}

/// The input is what an info file of a Trash holds, a path to be stored in one, and the name of an item.
inline std::string trashInfo(std::string_view input) {
    for (const std::string_view info :
         {"/home/user/.local/share/Trash/info/a.trashinfo", "/mnt/disk/.Trash-1000/info/a.trashinfo",
          "/mnt/disk/.Trash/1000/info/a.trashinfo"}) {
        const auto place = originalPlace(info, input);
        if (!place) continue;
        if (!place->starts_with('/') || !isNormalPath(*place)) return "an item came from no absolute place";
        if (place->contains('\0')) return "an item came from a place with a NUL character";
        if (originalPlace(info, trashInfoText(*place, 0)) != place) return "a place is not read back equal";
    }
    if (const auto info = trashInfoPath(input); info && !isNormalPath(*info)) return "an info file lies nowhere";
    if (input.empty() || input.contains('/') || input.contains('\0')) return "";
    for (const unsigned attempt : {1U, 2U, 1000U}) {
        const std::string name = trashedName(input, attempt, 255);
        if (name.empty() || name.size() + trashInfoSuffix.size() > 255) return "a name in the Trash does not fit";
        if (name.contains('/')) return "a name in the Trash is a path";
    }
    return "";
}

}  // namespace ordovan::fuzz
