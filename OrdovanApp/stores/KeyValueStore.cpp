#include "OrdovanApp/stores/KeyValueStore.h"

namespace ordovan {

std::optional<QVariant> MemoryKeyValueStore::value(const QString& key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

bool MemoryKeyValueStore::setValue(const QString& key, const QVariant& value) {
    values_.insert_or_assign(key, value);
    return true;
}

}  // namespace ordovan
