#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

#include <functional>
#include <map>
#include <optional>

namespace ordovan {

/// The user's small settings by name: Booleans, strings, byte arrays and lists of byte arrays. On which threads one may
/// be used, its class says.
class KeyValueStore {
public:
    using Values = std::map<QString, QVariant>;

    virtual ~KeyValueStore() = default;

    /// The stored value, or nothing. Values written by other processes are seen after `refresh`.
    [[nodiscard]] virtual std::optional<QVariant> value(const QString& key) const = 0;

    /// Changes the stored values in one step: `edit` is given them as they are stored now, and what it makes of them is
    /// stored at once. No other change, of this process or another, comes in between. False when it could not be
    /// stored; readers then still get the old values. `edit` is called once at most, and must not use the store.
    [[nodiscard]] virtual bool update(const std::function<void(Values& values)>& edit) = 0;

    /// Stores a value at once. False when it could not be stored; readers then still get the old one.
    [[nodiscard]] bool setValue(const QString& key, const QVariant& value) {
        return update([&](Values& values) { values.insert_or_assign(key, value); });
    }

    /// Reads what other processes have stored meanwhile.
    virtual void refresh() = 0;
};

/// Values that live as long as the object. Used on one thread.
class MemoryKeyValueStore final : public KeyValueStore {
public:
    [[nodiscard]] std::optional<QVariant> value(const QString& key) const override;
    [[nodiscard]] bool update(const std::function<void(Values& values)>& edit) override;
    void refresh() override {}

private:
    Values values_;
};

}  // namespace ordovan
