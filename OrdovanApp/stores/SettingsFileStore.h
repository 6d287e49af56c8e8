#pragma once

#include "OrdovanApp/stores/KeyValueStore.h"
#include "OrdovanCore/Url.h"

#include <memory>

class QSettings;

namespace ordovan {

/// Values in an INI file (QSettings::IniFormat), written atomically at every change. The file is private to the user
/// (0600), and so is its folder (0700), which is made at the first write. Other processes' keys are kept.
class SettingsFileStore final : public KeyValueStore {
public:
    /// A path that is not UTF-8 can not be opened: nothing is stored then, and every write says so.
    explicit SettingsFileStore(const Url& file);
    ~SettingsFileStore() override;
    SettingsFileStore(const SettingsFileStore&) = delete;
    SettingsFileStore& operator=(const SettingsFileStore&) = delete;

    [[nodiscard]] std::optional<QVariant> value(const QString& key) const override;
    [[nodiscard]] bool setValue(const QString& key, const QVariant& value) override;
    void refresh() override;

private:
    bool makeFolder() const;

    QString path_;
    std::unique_ptr<QSettings> settings_;
};

}  // namespace ordovan
