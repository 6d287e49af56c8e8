#include "OrdovanCore/FileSystem.h"

#include "OrdovanCore/Uuid.h"

#include <algorithm>

namespace {

constexpr std::string_view mark = ".ordovan-partial-";
constexpr std::size_t uuidSize = 36;
constexpr std::size_t longestName = 255;  // NAME_MAX
constexpr std::size_t longestPiece = longestName - 1 - mark.size() - uuidSize;

/// The name's beginning, at most `longestPiece` bytes, ending where a UTF-8 character ends. A name that is not UTF-8
/// is cut where it must be.
std::string_view shortened(std::string_view name) {
    if (name.size() <= longestPiece) return name;
    std::size_t end = longestPiece;
    const auto continues = [&](std::size_t i) { return (static_cast<unsigned char>(name[i]) & 0xC0) == 0x80; };
    while (end + 3 > longestPiece && continues(end)) --end;  // a character has at most three bytes after its first
    return name.substr(0, continues(end) ? longestPiece : end);
}

Url hiddenBeside(const Url& file, std::string_view uuid) {
    std::string name = ".";
    name += shortened(file.lastPathComponent());
    name += mark;
    name += uuid;
    return file.deletingLastPathComponent().appending(name);
}

}  // namespace

namespace OrdovanPartialName {

Url beside(const Url& destination) {
    return hiddenBeside(destination, ordovan::Uuid::random().text());
}

Url asideOf(const Url& original, std::string_view partial) {
    return hiddenBeside(original, partial.substr(partial.size() - std::min(uuidSize, partial.size())));
}

bool isPartial(std::string_view path) {
    const std::string_view name = ordovan::lastPathComponent(path);
    if (name.size() <= 1 + mark.size() + uuidSize || name.front() != '.') return false;
    const std::size_t uuid = name.size() - uuidSize;
    return name.substr(uuid - mark.size(), mark.size()) == mark && ordovan::Uuid::parse(name.substr(uuid)).has_value();
}

}  // namespace OrdovanPartialName
