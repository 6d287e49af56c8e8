#include "OrdovanCore/TrashPlace.h"

#include "OrdovanCore/Url.h"
#include "OrdovanCore/platform/TrashNaming.h"

#include <algorithm>

namespace ordovan {

namespace {

/// ".Trash-1000"
bool isOwnTrash(std::string_view piece) {
    constexpr std::string_view prefix = ".Trash-";
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return piece.size() > prefix.size() && piece.starts_with(prefix) &&
           std::ranges::all_of(piece.substr(prefix.size()), isDigit);
}

bool holdsTrashPiece(std::string_view normalPath) {
    std::string_view before;
    for (std::size_t begin = 1; begin <= normalPath.size();) {
        const std::size_t end = std::min(normalPath.find('/', begin), normalPath.size());
        const std::string_view piece = normalPath.substr(begin, end - begin);
        if (isTrashName(piece)) return true;
        if (before == "Trash" && piece == "files") return true;
        before = piece;
        begin = end + 1;
    }
    return false;
}

}  // namespace

bool isTrashName(std::string_view name) {
    return name == ".Trash" || name == ".Trashes" || isOwnTrash(name);
}

bool isInTrash(std::string_view path) {
    if (!path.contains("Trash")) return false;
    return isNormalPath(path) ? holdsTrashPiece(path) : holdsTrashPiece(normalizedPath(path));
}

std::optional<std::string> trashInfoPath(std::string_view item) {
    const std::string_view files = parentPath(item);
    if (lastPathComponent(files) != "files" || !isNormalPath(item)) return std::nullopt;
    const std::string_view trash = parentPath(files);
    const std::string_view name = lastPathComponent(trash);
    const bool isTrash =
        name == "Trash" || isOwnTrash(name) || lastPathComponent(parentPath(trash)) == std::string_view(".Trash");
    if (!isTrash) return std::nullopt;
    return std::string(trash).append("/info/").append(lastPathComponent(item)).append(trashInfoSuffix);
}

std::optional<std::string> originalPlace(std::string_view infoPath, std::string_view infoText) {
    constexpr std::string_view key = "\nPath=";
    const std::size_t line = infoText.find(key);
    if (!infoText.starts_with(trashInfoHead) || line == std::string_view::npos) return std::nullopt;
    const std::size_t begin = line + key.size();
    const std::string_view stored = infoText.substr(begin, infoText.find('\n', begin) - begin);
    // No path holds a NUL byte; one that did would be taken for a shorter one by every system call.
    if (stored.empty() || stored.contains('\0') || stored.contains("%00")) return std::nullopt;
    if (stored.starts_with('/')) return normalizedPath(Url::parse("file://" + std::string(stored)).path());

    const std::string_view trash = parentPath(parentPath(infoPath));
    const bool isShared = lastPathComponent(parentPath(trash)) == std::string_view(".Trash");
    const std::string_view top = isShared ? parentPath(parentPath(trash)) : parentPath(trash);
    return normalizedPath(std::string(top) + Url::parse("file:///" + std::string(stored)).sharedPath().str());
}

}  // namespace ordovan
