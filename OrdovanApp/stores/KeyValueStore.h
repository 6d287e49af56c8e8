#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

#include <map>
#include <optional>

namespace ordovan {

/// The user's small settings by name. Used on one thread.
class KeyValueStore {
public:
    virtual ~KeyValueStore() = default;

    /// The stored value, or nothing. Values written by other processes are seen after `refresh`.
    [[nodiscard]] virtual std::optional<QVariant> value(const QString& key) const = 0;

    /// Stores a value at once (a Boolean, a string, a byte array or a list of byte arrays). False when it could not be
    /// stored; readers then still get the old value.
    [[nodiscard]] virtual bool setValue(const QString& key, const QVariant& value) = 0;

    /// Reads what other processes have stored meanwhile.
    virtual void refresh() = 0;
};

/// Values that live as long as the object.
class MemoryKeyValueStore final : public KeyValueStore {
public:
    [[nodiscard]] std::optional<QVariant> value(const QString& key) const override;
    [[nodiscard]] bool setValue(const QString& key, const QVariant& value) override;
    void refresh() override {}

private:
    std::map<QString, QVariant> values_;
};

}  // namespace ordovan
