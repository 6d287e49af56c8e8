#include "OrdovanCore/platform/TrashNaming.h"

#include "OrdovanCore/Url.h"

#include <algorithm>
#include <array>

namespace ordovan {

namespace {

bool continuesSequence(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

/// At most `size` bytes from the front, cut between two UTF-8 sequences. Bytes that are not UTF-8 are cut anywhere.
std::string_view cutAtBoundary(std::string_view text, std::size_t size) {
    if (text.size() <= size) return text;
    constexpr std::size_t longestTail = 3;  // a sequence has at most four bytes (RFC 3629)
    std::size_t end = size;
    while (end > 0 && size - end < longestTail && continuesSequence(text[end])) --end;
    return text.substr(0, continuesSequence(text[end]) ? size : end);
}

}  // namespace

std::string trashedName(std::string_view name, unsigned attempt, std::size_t maxNameBytes) {
    const std::size_t room = maxNameBytes - trashInfoSuffix.size();
    const std::string number = attempt > 1 ? ' ' + std::to_string(attempt) : std::string();

    const std::string_view extension = pathExtension(name);
    std::string_view tail = extension.empty() ? std::string_view() : name.substr(name.size() - extension.size() - 1);
    if (tail.size() + number.size() >= room / 2) tail = {};  // no extension but a name with a dot early in it
    const std::string_view stem =
        cutAtBoundary(name.substr(0, name.size() - tail.size()), room - number.size() - tail.size());
    return std::string(stem).append(number).append(tail);
}

std::string trashInfoText(std::string_view path, std::time_t deleted) {
    constexpr std::string_view unreserved = "-_.!~*'()/";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text(trashInfoHead);
    text += "\nPath=";
    for (const char c : path) {
        const bool alphanumeric = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (alphanumeric || unreserved.contains(c)) {
            text += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            (text += '%') += digits[byte >> 4U];
            text += digits[byte & 15U];
        }
    }
    std::tm local{};
    static_cast<void>(localtime_r(&deleted, &local));
    std::array<char, 32> date{};
    text.append("\nDeletionDate=")
        .append(date.data(), std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local));
    return text += '\n';
}

}  // namespace ordovan
