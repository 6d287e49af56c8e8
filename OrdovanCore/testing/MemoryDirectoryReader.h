#pragma once

#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/testing/MemoryFileSystem.h"

#include <initializer_list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::testing {

/// Lists the folders of a `MemoryFileSystem`, or of a tree of its own, and misreports as told. Children come in byte
/// order of their names. One thread.
class MemoryDirectoryReader final : public OrdovanDirectoryReading {
public:
    explicit MemoryDirectoryReader(const MemoryFileSystem& fs) : fs_(fs) {}
    /// Over a tree of its own, in the short form of TreeBuilder.h.
    explicit MemoryDirectoryReader(std::initializer_list<std::string_view> tree, std::string_view below = "/root");

    OrdovanResult<std::vector<OrdovanInventoryEntry>> children(const Url& of) override;
    std::string resolvedPath(const Url& directory) override;

    /// Makes listing this folder fail.
    void setUnreadable(std::string_view path, int errnoValue);
    /// Reports this folder as a package.
    void setPackage(std::string_view path) { packages_.emplace(path); }
    /// Lists this item as one whose attributes could not be read.
    void setWithoutAttributes(std::string_view path) { withoutAttributes_.emplace(path); }
    /// Reports this item, a link or not, as a plain folder.
    void setPlainDirectory(std::string_view path) { plainDirectories_.emplace(path); }
    /// Reports this size instead of the content's.
    void setByteSize(std::string_view path, std::int64_t byteSize) { sizes_[std::string(path)] = byteSize; }
    /// Answers `resolvedPath` with this instead of the truth.
    void setResolvedPath(std::string_view path, std::string_view resolved) { resolved_[std::string(path)] = resolved; }

    /// The folders that were listed, or would have been but for an error, in order.
    [[nodiscard]] const std::vector<std::string>& directoriesRead() const noexcept { return read_; }

private:
    std::unique_ptr<MemoryFileSystem> own_;
    const MemoryFileSystem& fs_;
    std::map<std::string, int, std::less<>> unreadable_;
    std::set<std::string, std::less<>> packages_;
    std::set<std::string, std::less<>> withoutAttributes_;
    std::set<std::string, std::less<>> plainDirectories_;
    std::map<std::string, std::int64_t, std::less<>> sizes_;
    std::map<std::string, std::string, std::less<>> resolved_;
    std::vector<std::string> read_;
};

}  // namespace ordovan::testing
