#include "OrdovanCore/FileSystem.h"

#include "OrdovanCore/Uuid.h"

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

}  // namespace

namespace OrdovanPartialName {

Url beside(const Url& destination) {
    std::string name = ".";
    name += shortened(destination.lastPathComponent());
    name += mark;
    name += ordovan::Uuid::random().text();
    return destination.deletingLastPathComponent().appending(name);
}

bool isPartial(std::string_view path) {
    const std::string_view name = ordovan::lastPathComponent(path);
    if (name.size() <= 1 + mark.size() + uuidSize || name.front() != '.') return false;
    const std::size_t uuid = name.size() - uuidSize;
    return name.substr(uuid - mark.size(), mark.size()) == mark && ordovan::Uuid::parse(name.substr(uuid)).has_value();
}

}  // namespace OrdovanPartialName
