#pragma once

#include "OrdovanApp/stores/KeyValueStore.h"
#include "OrdovanCore/Url.h"

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace ordovan {

/// The folders chosen last, newest first, kept as path bytes. On the controller's thread.
class RecentFoldersStore {
public:
    static constexpr std::size_t maxFolders = 5;

    /// `exists` says whether a folder is still there.
    RecentFoldersStore(KeyValueStore& store, std::function<bool(const Url&)> exists);

    /// The stored folders that are still there.
    [[nodiscard]] std::vector<Url> load() const;

    /// Stores the list; folders that are gone are left out. False when it could not be stored.
    bool save(std::span<const Url> folders);

private:
    KeyValueStore& store_;
    std::function<bool(const Url&)> exists_;
};

}  // namespace ordovan
