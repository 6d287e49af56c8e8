#pragma once

#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanApp/stores/KeyValueStore.h"
#include "OrdovanCore/Url.h"
#include "OrdovanCore/platform/FileRecordStorage.h"

#include <QDateTime>

#include <mutex>
#include <vector>

namespace ordovan {

/// Values in an INI file (QSettings::IniFormat), written atomically at every change. The file is private to the user
/// (0600), and so is its folder (0700), which is made at the first write. Other processes' keys are kept.
///
/// Any thread. Changes are made under a kernel-released lock on the file's folder; while another process has it they
/// wait for at most two seconds, or until a request to stop, and are then refused. A damaged file is set
/// aside before the first change; one that can not be read, or is no file, is left alone and changes are refused.
class SettingsFileStore final : public KeyValueStore {
public:
    /// A path that is not UTF-8 can not be opened: nothing is stored then, and every write says so.
    explicit SettingsFileStore(const Url& file);

    [[nodiscard]] std::optional<QVariant> value(const QString& key) const override;
    [[nodiscard]] bool update(const std::function<void(Values& values)>& edit) override;
    void refresh() override;

    /// False when there is a file that could not be read whole. Where there is none, the defaults are all there is.
    [[nodiscard]] bool isReadable() const;
    /// What of the file was set aside, as `FileRecordStorage::allSetAside`.
    [[nodiscard]] std::vector<FileRecordStorage::SetAside> allSetAside() const { return storage_.allSetAside(); }

private:
    /// What the file was found to be.
    enum class State { usable, damaged, closed };
    /// Tells whether the file has changed since it was read.
    struct Stamp {
        bool exists = false;
        qint64 size = 0;
        QDateTime modified;
        friend bool operator==(const Stamp&, const Stamp&) = default;
    };

    [[nodiscard]] Stamp stamp() const;
    void read();
    void parse();
    [[nodiscard]] bool write(const Values& values);
    [[nodiscard]] std::optional<QByteArray> encoded(const Values& values) const;

    mutable std::mutex mutex_;  // of everything below
    QString path_;
    Values values_;
    State state_ = State::usable;
    std::optional<Stamp> read_;
    FileRecordStorage storage_;
    const LockFunction lock_;
};

}  // namespace ordovan
