#include "OrdovanApp/stores/KeyValueStore.h"

namespace ordovan {

std::optional<QVariant> MemoryKeyValueStore::value(const QString& key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

bool MemoryKeyValueStore::update(const std::function<void(Values& values)>& edit) {
    edit(values_);
    return true;
}

}  // namespace ordovan
