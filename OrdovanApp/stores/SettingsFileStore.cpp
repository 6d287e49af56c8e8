#include "OrdovanApp/stores/SettingsFileStore.h"

#include "OrdovanCore/Text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

namespace ordovan {

namespace {

constexpr QFile::Permissions privateFile = QFile::ReadOwner | QFile::WriteOwner;
constexpr QFile::Permissions privateFolder = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

/// QFile reports the user's own permissions twice, as owner and as the user who asks.
constexpr QFile::Permissions ownAndOthers = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup |
                                            QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther |
                                            QFile::ExeOther;

}  // namespace

SettingsFileStore::SettingsFileStore(const Url& file) {
    if (!text::isUtf8(file.path())) return;
    path_ = QString::fromUtf8(file.path().data(), static_cast<qsizetype>(file.path().size()));
    refresh();
}

SettingsFileStore::~SettingsFileStore() = default;

std::optional<QVariant> SettingsFileStore::value(const QString& key) const {
    if (!settings_ || !settings_->contains(key)) return std::nullopt;
    return settings_->value(key);
}

bool SettingsFileStore::setValue(const QString& key, const QVariant& value) {
    if (path_.isEmpty() || !makeFolder()) return false;
    // An error stays with a QSettings object for good, so each write has an object of its own to ask.
    refresh();
    if (!settings_) return false;
    const std::optional<QVariant> before = this->value(key);
    settings_->setValue(key, value);
    settings_->sync();
    if (settings_->status() == QSettings::NoError) {
        if ((QFile::permissions(path_) & ownAndOthers) == privateFile) return true;
        return QFile::setPermissions(path_, privateFile);
    }
    before ? settings_->setValue(key, *before) : settings_->remove(key);
    return false;
}

void SettingsFileStore::refresh() {
    if (path_.isEmpty()) return;
    settings_.reset();
    // Opening a FIFO that somebody put there would wait for ever.
    const QFileInfo file(path_);
    if (file.exists() && !file.isFile()) return;
    settings_ = std::make_unique<QSettings>(path_, QSettings::IniFormat);
    settings_->setFallbacksEnabled(false);
    settings_->sync();
}

bool SettingsFileStore::makeFolder() const {
    const QFileInfo folder(QFileInfo(path_).path());
    if (folder.isDir()) return true;
    return QDir().mkpath(folder.path()) && QDir().mkdir(folder.filePath(), privateFolder);
}

}  // namespace ordovan
