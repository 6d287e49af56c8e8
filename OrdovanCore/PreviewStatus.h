#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Where a preview stands, in words. A value; any thread.
class OrdovanPreviewStatus {
public:
    enum class Case { ready, idle, scanning, failed };

    /// Why there is no preview of a folder that can not be listed.
    static constexpr std::string_view unreadableFolder =
        "We couldn't read that folder. Check permissions and try again.";

    static OrdovanPreviewStatus ready(std::int64_t proposed, std::int64_t needReview) {
        return {Case::ready, proposed, needReview};
    }
    static OrdovanPreviewStatus idle() { return {Case::idle, 0, 0}; }
    static OrdovanPreviewStatus scanning() { return {Case::scanning, 0, 0}; }
    static OrdovanPreviewStatus failed() { return {Case::failed, 0, 0}; }

    [[nodiscard]] Case kind() const noexcept { return kind_; }
    /// How many files would move, and how many conflict; 0 unless the preview is ready.
    [[nodiscard]] std::int64_t proposed() const noexcept { return proposed_; }
    [[nodiscard]] std::int64_t needReview() const noexcept { return needReview_; }
    /// The short line of the window.
    [[nodiscard]] std::string pulseSummary() const;
    /// What a screen reader should say when this state is reached, if anything.
    [[nodiscard]] std::optional<std::string> announcement() const;

    friend bool operator==(const OrdovanPreviewStatus&, const OrdovanPreviewStatus&) = default;

private:
    OrdovanPreviewStatus(Case kind, std::int64_t proposed, std::int64_t needReview)
        : kind_(kind), proposed_(proposed), needReview_(needReview) {}
    Case kind_;
    std::int64_t proposed_, needReview_;
};
