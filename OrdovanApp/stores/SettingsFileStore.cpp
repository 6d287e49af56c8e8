#include "OrdovanApp/stores/SettingsFileStore.h"

#include "OrdovanApp/stores/SetAside.h"
#include "OrdovanApp/stores/SettingsText.h"
#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/Text.h"
#include "OrdovanCore/platform/Interrupts.h"
#include "OrdovanCore/platform/RealPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>

#include <chrono>
#include <new>
#include <string>
#include <utility>

namespace ordovan {

namespace {

/// The file is only ever locked for the moment of a change.
LockPatience patience() {
    return {.longest = std::chrono::seconds(2), .isEnded = interrupts::requested};
}

/// Fifty rules of a hundred extensions take some 100 KiB; a file far beyond that is not ours and is not parsed.
constexpr qint64 maxFileBytes = 16 * 1024 * 1024;

Url urlOf(const QString& path) {
    return Url::file(path.toStdString());
}

/// Whether QSettings would make something of the file that is not stored in it. What can not be opened is for QSettings
/// to tell.
bool holdsForeignValues(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    const QByteArray content = file.read(maxFileBytes);
    return !holdsOnlyPlainValues({content.constData(), static_cast<std::size_t>(content.size())});
}

}  // namespace

SettingsFileStore::SettingsFileStore(const Url& file) : lock_(lockFolderWithin(patience())) {
    if (!text::isUtf8(file.path())) return;
    path_ = QString::fromUtf8(file.path().data(), static_cast<qsizetype>(file.path().size()));
    read();
}

std::optional<QVariant> SettingsFileStore::value(const QString& key) const {
    const std::lock_guard guard(mutex_);
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

bool SettingsFileStore::update(const std::function<void(Values& values)>& edit) {
    const std::lock_guard guard(mutex_);
    if (path_.isEmpty()) return false;
    const auto lock = lock_(urlOf(QFileInfo(path_).path()));
    if (!lock) return false;
    read();
    if (state_ == State::closed) return false;
    Values changed = values_;
    edit(changed);
    if (changed == values_) return true;
    if (!write(changed)) return false;
    values_ = std::move(changed);
    state_ = State::usable;
    read_ = stamp();
    return true;
}

bool SettingsFileStore::isReadable() const {
    const std::lock_guard guard(mutex_);
    return state_ == State::usable;
}

void SettingsFileStore::refresh() {
    const std::lock_guard guard(mutex_);
    if (!path_.isEmpty()) read();
}

SettingsFileStore::Stamp SettingsFileStore::stamp() const {
    const QFileInfo file(path_);
    if (!file.exists()) return {};
    return {.exists = true, .size = file.size(), .modified = file.lastModified()};
}

void SettingsFileStore::read() {
    // What QSettings has read of an unchanged file once, it does not read again, nor says again what was wrong with it.
    const Stamp now = stamp();
    if (read_ == now && state_ != State::closed) return;
    read_ = now;
    values_.clear();
    state_ = State::usable;
    if (!now.exists) return;
    // Opening a FIFO that somebody put there would wait for ever.
    if (!QFileInfo(path_).isFile()) {
        state_ = State::closed;
        return;
    }
    try {
        if (now.size <= maxFileBytes && !holdsForeignValues(path_)) return parse();
        state_ = State::damaged;
    } catch (const std::bad_alloc&) {
        state_ = State::damaged;
    }
}

/// Takes the values of a file that is there, and what QSettings says of it.
void SettingsFileStore::parse() {
    QSettings settings(path_, QSettings::IniFormat);
    settings.setFallbacksEnabled(false);
    for (const QString& key : settings.allKeys()) {
        if (!key.isEmpty()) values_.emplace(key, settings.value(key));
    }
    if (settings.status() == QSettings::FormatError) state_ = State::damaged;
    if (settings.status() == QSettings::AccessError) state_ = State::closed;
}

/// Puts a file of these values in the place of the present one. QSettings would keep writers apart by a lock file of
/// its own, and one that was left behind would hold everybody up.
bool SettingsFileStore::write(const Values& values) {
    const QFileInfo file(path_);
    if (file.exists() && !file.isWritable()) return false;
    const std::string path = path_.toStdString();
    const Url target = Url::file(realPath(path).value_or(path));
    const std::optional<QByteArray> content = encoded(values);
    if (!content) return false;
    const auto nameAt = [&](double epoch) { return StorageLocations::unreadableSettings(target, epoch); };
    const auto now = static_cast<double>(QDateTime::currentSecsSinceEpoch());
    const Stamp before = stamp();  // of a file that is set aside as well: it is what was read
    if (state_ == State::damaged && !setAside(storage_, target, nameAt, now)) return false;
    const auto produce = [&](const RecordStorage::Sink& sink) {
        return sink({content->constData(), static_cast<std::size_t>(content->size())});
    };
    if (!storage_.write(target, produce)) return false;
    if (before.exists && stamp().modified <= before.modified) {
        // By its time and size a reader tells whether there is something new, and time is told in milliseconds.
        QFile written(path_);
        if (written.open(QIODevice::ReadWrite)) {
            written.setFileTime(before.modified.addMSecs(1), QFileDevice::FileModificationTime);
        }
    }
    return true;
}

/// The values as an INI file; nothing when it could not be made. Under the lock.
std::optional<QByteArray> SettingsFileStore::encoded(const Values& values) const {
    const QDir folder(QFileInfo(path_).path());
    const QString scratchName = QStringLiteral(".ordovan-settings-");
    // The lock is ours, so one that is there was left by a process that died.
    const QStringList left =
        folder.entryList({scratchName + QStringLiteral("??????")}, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks);
    for (const QString& stale : left) QDir(folder.filePath(stale)).removeRecursively();
    const QTemporaryDir scratch(folder.filePath(scratchName + QStringLiteral("XXXXXX")));
    if (!scratch.isValid()) return std::nullopt;
    const QString draft = scratch.filePath(QStringLiteral("draft.conf"));
    {
        QSettings settings(draft, QSettings::IniFormat);
        for (const auto& [key, value] : values) settings.setValue(key, value);
        settings.sync();
        if (settings.status() != QSettings::NoError) return std::nullopt;
    }
    QFile file(draft);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    return file.readAll();
}

}  // namespace ordovan
