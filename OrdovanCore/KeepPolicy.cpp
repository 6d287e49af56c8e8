#include "OrdovanCore/KeepPolicy.h"

#include "OrdovanCore/Text.h"

#include <algorithm>
#include <compare>
#include <cstddef>
#include <utility>

namespace {

/// What the policies look at of one file.
struct Candidate {
    const Url& url;
    std::optional<double> modified;

    Candidate(const Url& file, const std::unordered_map<std::string, double>& times) : url(file) {
        const auto time = times.find(file.sharedPath().str());
        if (time != times.end()) modified = time->second;
    }

    [[nodiscard]] std::size_t depth() const {
        std::size_t components = 0;
        char previous = '/';
        for (const char byte : url.path()) {
            if (byte != '/' && previous == '/') ++components;
            previous = byte;
        }
        return components;
    }
};

/// Less: `a` is rather kept than `b`.
std::strong_ordering byPath(const Candidate& a, const Candidate& b) {
    const std::size_t lengthOfA = ordovan::text::characterCount(a.url.path());
    const std::size_t lengthOfB = ordovan::text::characterCount(b.url.path());
    if (lengthOfA != lengthOfB) return lengthOfA <=> lengthOfB;
    return a.url.path() <=> b.url.path();
}

/// Whether the dates alone decide for `a`, and in which way; nothing where they do not tell the files apart.
std::optional<bool> byDate(const Candidate& a, const Candidate& b, bool earlierWins) {
    if (a.modified.has_value() != b.modified.has_value()) return a.modified.has_value();
    if (!a.modified || *a.modified == *b.modified) return std::nullopt;
    return (*a.modified < *b.modified) == earlierWins;
}

bool isBetter(OrdovanKeepPolicy policy, const Candidate& candidate, const Candidate& choice) {
    std::optional<bool> decided;
    switch (policy) {
        case OrdovanKeepPolicy::oldest:
        case OrdovanKeepPolicy::newest:
            decided = byDate(candidate, choice, policy == OrdovanKeepPolicy::oldest);
            break;
        case OrdovanKeepPolicy::shortestPath:
        case OrdovanKeepPolicy::deepestPath: {
            const std::size_t depth = candidate.depth(), other = choice.depth();
            if (depth != other) decided = (depth < other) == (policy == OrdovanKeepPolicy::shortestPath);
            break;
        }
    }
    return decided.value_or(byPath(candidate, choice) < 0);
}

}  // namespace

std::string_view rawValue(OrdovanKeepPolicy policy) {
    switch (policy) {
        case OrdovanKeepPolicy::oldest:
            return "Oldest";
        case OrdovanKeepPolicy::newest:
            return "Newest";
        case OrdovanKeepPolicy::shortestPath:
            return "Shortest path";
        case OrdovanKeepPolicy::deepestPath:
            return "Deepest path";
    }
    std::unreachable();
}

std::optional<OrdovanKeepPolicy> OrdovanKeepPolicies::fromRawValue(std::string_view rawValue) {
    const auto found =
        std::ranges::find_if(allCases, [&](OrdovanKeepPolicy policy) { return ::rawValue(policy) == rawValue; });
    if (found == allCases.end()) return std::nullopt;
    return *found;
}

std::optional<Url> OrdovanKeepPolicies::keep(OrdovanKeepPolicy policy, const OrdovanDuplicateGroup& in,
                                             const std::unordered_map<std::string, double>& modified) {
    if (in.files.empty()) return std::nullopt;
    std::size_t choice = 0;
    for (std::size_t i = 1; i < in.files.size(); ++i) {
        if (isBetter(policy, {in.files[i], modified}, {in.files[choice], modified})) choice = i;
    }
    return in.files[choice];
}
