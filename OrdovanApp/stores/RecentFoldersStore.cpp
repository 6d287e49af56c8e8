#include "OrdovanApp/stores/RecentFoldersStore.h"

#include <QByteArray>
#include <QVariantList>

#include <utility>

namespace ordovan {

namespace {

QString key() {
    return QStringLiteral("ordovan.recentFolders.v2");
}

}  // namespace

RecentFoldersStore::RecentFoldersStore(KeyValueStore& store, std::function<bool(const Url&)> exists)
    : store_(store), exists_(std::move(exists)) {}

std::vector<Url> RecentFoldersStore::load() const {
    std::vector<Url> folders;
    const std::optional<QVariant> stored = store_.value(key());
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

bool RecentFoldersStore::save(std::span<const Url> folders) {
    QVariantList paths;
    for (const Url& folder : folders) {
        if (!exists_(folder)) continue;
        paths.append(QByteArray(folder.path().data(), static_cast<qsizetype>(folder.path().size())));
    }
    return store_.setValue(key(), paths);
}

}  // namespace ordovan
