#include "OrdovanCore/EntryRecord.h"

namespace ordovan::records {

std::optional<OrdovanJournalError> refusal(const Found& found, const Limits& limits) {
    using enum OrdovanJournalError::Case;
    if (found.version != limits.version) return OrdovanJournalError{unsupportedVersion, found.version};
    if (found.entries > limits.entries) {
        return OrdovanJournalError{tooLarge, static_cast<std::int64_t>(found.entries)};
    }
    return std::nullopt;
}

}  // namespace ordovan::records
