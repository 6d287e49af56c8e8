#include "OrdovanCore/testing/MemoryDirectoryReader.h"

#include "OrdovanCore/testing/TreeBuilder.h"

namespace ordovan::testing {

MemoryDirectoryReader::MemoryDirectoryReader(std::initializer_list<std::string_view> tree, std::string_view below)
    : own_(std::make_unique<MemoryFileSystem>()), fs_(*own_) {
    build(*own_, below, tree);
}

void MemoryDirectoryReader::setUnreadable(std::string_view path, int errnoValue) {
    unreadable_[std::string(path)] = errnoValue;
}

OrdovanResult<std::vector<OrdovanInventoryEntry>> MemoryDirectoryReader::children(const Url& of) {
    read_.emplace_back(of.path());
    if (const auto found = unreadable_.find(of.path()); found != unreadable_.end()) {
        return std::unexpected(OrdovanSystemError::posix(found->second));
    }
    const auto items = fs_.list(of.path());
    if (!items) return std::unexpected(items.error());
    std::vector<OrdovanInventoryEntry> entries;
    for (const MemoryItem& item : *items) {
        OrdovanInventoryEntry& entry = entries.emplace_back(OrdovanInventoryEntry{.url = of.appending(item.name)});
        const std::string_view path = entry.url.path();
        if (withoutAttributes_.contains(path)) continue;
        const bool plain = plainDirectories_.contains(path);
        entry.isDirectory = plain || item.type == ItemType::directory;
        entry.isSymbolicLink = !plain && item.type == ItemType::link;
        entry.isHidden = item.name.starts_with('.');
        entry.isPackage = packages_.contains(path);
        const auto size = sizes_.find(path);
        entry.byteSize = size == sizes_.end() ? item.byteSize : size->second;
        entry.modifiedEpoch = static_cast<double>(item.modifiedNs) / 1e9;
    }
    return entries;
}

std::string MemoryDirectoryReader::resolvedPath(const Url& directory) {
    if (const auto found = resolved_.find(directory.path()); found != resolved_.end()) return found->second;
    return fs_.realPath(directory.path()).value_or(std::string(directory.standardized().path()));
}

}  // namespace ordovan::testing
