#include "OrdovanApp/stores/RecentFoldersStore.h"

#include <QByteArray>
#include <QVariantList>

#include <algorithm>
#include <string_view>
#include <utility>

namespace ordovan {

namespace {

QString key() {
    return QStringLiteral("ordovan.recentFolders.v2");
}

QVariantList encoded(std::span<const Url> folders) {
    QVariantList paths;
    for (const Url& folder : folders) {
        paths.append(QByteArray(folder.path().data(), static_cast<qsizetype>(folder.path().size())));
    }
    return paths;
}

}  // namespace

RecentFoldersStore::RecentFoldersStore(KeyValueStore& store, std::function<bool(const Url&)> exists,
                                       std::function<Url(const Url&)> resolve)
    : store_(store), exists_(std::move(exists)), resolve_(std::move(resolve)) {}

std::vector<Url> RecentFoldersStore::load() const {
    return foldersIn(store_.value(key()));
}

RecentFoldersStore::Result RecentFoldersStore::reload(std::span<const Url> known) {
    const std::lock_guard order(order_);
    store_.refresh();
    return {.folders = joined({load(), known}), .revision = ++revision_};
}

RecentFoldersStore::Result RecentFoldersStore::add(const Url& folder, std::span<const Url> known) {
    const std::lock_guard order(order_);
    const std::vector<Url> first = {resolve_(folder)};
    std::vector<Url> folders;
    const bool saved = store_.update([&](KeyValueStore::Values& values) {
        const auto found = values.find(key());
        const std::vector<Url> before =
            found == values.end() ? std::vector<Url>() : foldersIn(std::optional(found->second));
        folders = joined({first, before, known});
        if (folders != before) values.insert_or_assign(key(), encoded(folders));
    });
    if (!saved) folders = joined({first, known});
    return {.folders = std::move(folders), .revision = ++revision_};
}

std::vector<Url> RecentFoldersStore::foldersIn(const std::optional<QVariant>& stored) const {
    std::vector<Url> folders;
    if (!stored) return folders;
    for (const QVariant& item : stored->toList()) {
        const QByteArray path = item.toByteArray();
        Url folder = Url::file(std::string_view(path.constData(), static_cast<std::size_t>(path.size())));
        if (!path.startsWith('/') || !exists_(folder)) continue;
        folders.push_back(std::move(folder));
        if (folders.size() == maxFolders) break;
    }
    return folders;
}

/// The folders of these lists in order, without repeats and without those that are gone.
std::vector<Url> RecentFoldersStore::joined(std::initializer_list<std::span<const Url>> lists) const {
    std::vector<Url> folders, resolved;
    for (const std::span<const Url> list : lists) {
        for (const Url& folder : list) {
            if (folders.size() == maxFolders) return folders;
            if (!exists_(folder)) continue;
            Url place = resolve_(folder);
            if (std::ranges::find(resolved, place) != resolved.end()) continue;
            folders.push_back(folder);
            resolved.push_back(std::move(place));
        }
    }
    return folders;
}

}  // namespace ordovan
