#pragma once

#include "OrdovanApp/stores/KeyValueStore.h"
#include "OrdovanCore/Url.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <span>
#include <vector>

namespace ordovan {

/// The folders chosen last, newest first, kept as path bytes; one list for all processes. As thread-safe as its store.
/// All operations look at the disk.
class RecentFoldersStore {
public:
    static constexpr std::size_t maxFolders = 5;  ///< as many as a menu can show at a glance

    /// The list as it was found or made.
    struct Result {
        std::vector<Url> folders;    ///< those that are still there
        std::uint64_t revision = 0;  ///< of two results of one store, the later one has the higher
    };

    /// `exists` says whether a folder is still there; `resolve` gives its path without links.
    RecentFoldersStore(KeyValueStore& store, std::function<bool(const Url&)> exists,
                       std::function<Url(const Url&)> resolve);

    /// The stored folders that are still there.
    [[nodiscard]] std::vector<Url> load() const;

    /// The same, with what other processes have stored meanwhile. `known` are the folders that the program lists; those
    /// that could not be stored go behind the stored ones.
    [[nodiscard]] Result reload(std::span<const Url> known);

    /// Puts a folder in front of the list as it is stored now, and stores it; `known` as for `reload`. A list that can
    /// not be stored is still good until the program ends.
    [[nodiscard]] Result add(const Url& folder, std::span<const Url> known);

private:
    [[nodiscard]] std::vector<Url> foldersIn(const std::optional<QVariant>& stored) const;
    [[nodiscard]] std::vector<Url> joined(std::initializer_list<std::span<const Url>> lists) const;

    KeyValueStore& store_;
    std::function<bool(const Url&)> exists_;
    std::function<Url(const Url&)> resolve_;
    std::mutex order_;
    std::uint64_t revision_ = 0;
};

}  // namespace ordovan
