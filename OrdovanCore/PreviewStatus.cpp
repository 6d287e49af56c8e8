#include "OrdovanCore/PreviewStatus.h"

std::string OrdovanPreviewStatus::pulseSummary() const {
    switch (kind_) {
        case Case::ready:
            return std::to_string(proposed_) + " proposed · " + std::to_string(needReview_) + " need review";
        case Case::idle:
            return "No folder selected";
        case Case::scanning:
            return "Previewing…";
        case Case::failed:
            break;
    }
    return "Preview unavailable";
}

std::optional<std::string> OrdovanPreviewStatus::announcement() const {
    switch (kind_) {
        case Case::ready: {
            const std::string review = needReview_ == 0 ? "" : ", " + std::to_string(needReview_) + " need review";
            return "Preview ready. " + std::to_string(proposed_) + " proposed" + review + ".";
        }
        case Case::idle:
        case Case::scanning:
            return std::nullopt;
        case Case::failed:
            break;
    }
    return "Preview unavailable. Check folder permissions and try again.";
}
