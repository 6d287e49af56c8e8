#pragma once

#include "OrdovanApp/controller/SystemEnvironment.h"
#include "OrdovanApp/controller/ThreadTaskRunner.h"
#include "OrdovanApp/stores/SettingsFileStore.h"
#include "OrdovanCore/platform/ContentReader.h"
#include "OrdovanCore/platform/DirectoryReader.h"
#include "OrdovanCore/platform/FileRecordStorage.h"
#include "OrdovanCore/platform/SystemFileSystem.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>

namespace ordovan::test {

/// Notes every call of a port: its name, and whether it came on the thread that made this.
class Watch {
public:
    void saw(const std::string& call) {
        const std::lock_guard guard(lock_);
        (std::this_thread::get_id() == home_ ? here_ : elsewhere_).insert(call);
    }
    [[nodiscard]] std::set<std::string> here() const {
        const std::lock_guard guard(lock_);
        return here_;
    }
    [[nodiscard]] std::set<std::string> elsewhere() const {
        const std::lock_guard guard(lock_);
        return elsewhere_;
    }

private:
    const std::thread::id home_ = std::this_thread::get_id();
    mutable std::mutex lock_;
    std::set<std::string> here_;
    std::set<std::string> elsewhere_;
};

class WatchedFileSystem final : public OrdovanFileSystem {
public:
    explicit WatchedFileSystem(Watch& watch) : watch_(watch) {}

    bool exists(const Url& url) override { return watched("exists").exists(url); }
    bool isRegularFile(const Url& url) override { return watched("isRegularFile").isRegularFile(url); }
    bool isSymlink(const Url& url) override { return watched("isSymlink").isSymlink(url); }
    bool sameVolume(const Url& a, const Url& b) override { return watched("sameVolume").sameVolume(a, b); }
    OrdovanResult<void> createDirectory(const Url& url) override {
        return watched("createDirectory").createDirectory(url);
    }
    OrdovanResult<void> move(const Url& from, const Url& to) override { return watched("move").move(from, to); }
    OrdovanResult<void> copy(const Url& from, const Url& to) override { return watched("copy").copy(from, to); }
    OrdovanResult<void> remove(const Url& url) override { return watched("remove").remove(url); }
    OrdovanResult<std::int64_t> fileSize(const Url& url) override { return watched("fileSize").fileSize(url); }
    OrdovanResult<std::string> contentHash(const Url& url) override { return watched("contentHash").contentHash(url); }
    OrdovanResult<std::string> fileIdentity(const Url& url) override {
        return watched("fileIdentity").fileIdentity(url);
    }
    OrdovanResult<Url> trash(const Url& url) override { return watched("trash").trash(url); }

private:
    OrdovanFileSystem& watched(const std::string& call) {
        watch_.saw(call);
        return fs_;
    }
    Watch& watch_;
    SystemFileSystem fs_;
};

class WatchedContents final : public OrdovanContentReading {
public:
    explicit WatchedContents(Watch& watch) : watch_(watch) {}
    OrdovanResult<std::unique_ptr<OrdovanOpenContent>> open(const Url& url) override {
        watch_.saw("open");
        return contents_.open(url);
    }

private:
    Watch& watch_;
    SystemContentReader contents_;
};

/// Also tells `listing` of each folder before it is listed, on the thread that lists it.
class WatchedReader final : public OrdovanDirectoryReading {
public:
    WatchedReader(Watch& watch, std::function<void(const Url& folder)> listing)
        : watch_(watch), listing_(std::move(listing)) {}
    OrdovanResult<std::vector<OrdovanInventoryEntry>> children(const Url& of) override {
        watch_.saw("children");
        listing_(of);
        return reader_.children(of);
    }
    std::string resolvedPath(const Url& directory) override {
        watch_.saw("resolvedPath");
        return reader_.resolvedPath(directory);
    }

private:
    Watch& watch_;
    std::function<void(const Url& folder)> listing_;
    FileManagerDirectoryReader reader_;
};

class WatchedRecords final : public RecordStorage {
public:
    explicit WatchedRecords(Watch& watch) : watch_(watch) {}
    OrdovanResult<void> read(const Url& file, const Sink& sink) override { return watched("read").read(file, sink); }
    OrdovanResult<void> write(const Url& file, const Producer& producer) override {
        return watched("write").write(file, producer);
    }
    OrdovanResult<std::unique_ptr<RunNotes>> openNotes(const Url& file) override {
        return watched("openNotes").openNotes(file);
    }
    OrdovanResult<void> remove(const Url& file) override { return watched("removeRecord").remove(file); }
    OrdovanResult<void> setAside(const Url& file, const Url& to) override {
        return watched("setAside").setAside(file, to);
    }

private:
    FileRecordStorage& watched(const std::string& call) {
        watch_.saw(call);
        return records_;
    }
    Watch& watch_;
    FileRecordStorage records_;
};

/// Looking a value up is no file work: it was read before.
class WatchedValues final : public KeyValueStore {
public:
    WatchedValues(Watch& watch, const Url& file) : watch_(watch), values_(file) {}
    [[nodiscard]] std::optional<QVariant> value(const QString& key) const override { return values_.value(key); }
    [[nodiscard]] bool update(const std::function<void(Values& values)>& edit) override {
        watch_.saw("update");
        return values_.update(edit);
    }
    void refresh() override {
        watch_.saw("refresh");
        values_.refresh();
    }

private:
    Watch& watch_;
    SettingsFileStore values_;
};

/// The ports of the real disk and of real threads, every one of them watched.
class WatchedPorts {
public:
    explicit WatchedPorts(StorageLocations locations) : locations_(std::move(locations)) {}

    [[nodiscard]] TidyPorts ports() {
        const TidyPorts real = environment_.ports();
        return {.fileSystem = fs_,
                .makeRunFileSystem = [this](const Url&) { return std::make_unique<WatchedFileSystem>(watch); },
                .hashAhead = {},
                .contents = &contents_,
                .makeDirectoryReader = [this] { return std::make_unique<WatchedReader>(watch, listing); },
                .supportsCaseSensitiveNames = watched("supportsCaseSensitiveNames", real.supportsCaseSensitiveNames),
                .removeEmptyFolders = watched("removeEmptyFolders", real.removeEmptyFolders),
                .writeDocument = watched("writeDocument", real.writeDocument),
                .resolveExisting = resolve_,
                .ownFolders = watched("ownFolders", real.ownFolders),
                .tryLockFolder = lock_,
                .clock = real.clock,
                .timeZone = watched("timeZone", real.timeZone),
                .tasks = tasks_,
                .journals = journals_,
                .history = history_,
                .trashRecords = trashRecords_,
                .recentFolders = recentFolders_,
                .settings = settings_,
                .rules = rules_,
                .recording = recording(real.recording)};
    }
    [[nodiscard]] AppSettings& settings() { return settings_; }
    [[nodiscard]] RuleStore& rules() { return rules_; }
    [[nodiscard]] ThreadTaskRunner& tasks() { return tasks_; }

    Watch watch;
    /// What a reader does before it lists a folder.
    std::function<void(const Url& folder)> listing = [](const Url&) {};

private:
    [[nodiscard]] RecordingPorts recording(const RecordingPorts& real) {
        return {.runRecords = &runRecords_,
                .facts = watched("facts", real.facts),
                .makeFacts = [this, make = real.makeFacts] { return watched("facts", make()); },
                .findInTrash = watched("findInTrash", real.findInTrash),
                .removeTrashInfo = watched("removeTrashInfo", real.removeTrashInfo),
                .forgetTrashInfo = watched("forgetTrashInfo", real.forgetTrashInfo),
                .syncMoves = watched("syncMoves", real.syncMoves),
                .canFlush = watched("canFlush", real.canFlush),
                .keepsInodes = watched("keepsInodes", real.keepsInodes),
                .keepsIdentities = watched("keepsIdentities", real.keepsIdentities)};
    }

    template <class Result, class... Arguments>
    std::function<Result(Arguments...)> watched(const char* name, std::function<Result(Arguments...)> call) {
        return [this, name, call](Arguments... arguments) {
            watch.saw(name);
            return call(std::forward<Arguments>(arguments)...);
        };
    }

    StorageLocations locations_;
    SystemEnvironment environment_{locations_};
    WatchedFileSystem fs_{watch};
    WatchedContents contents_{watch};
    WatchedRecords records_{watch};
    WatchedValues values_{watch, locations_.settingsFile()};
    LockFunction lock_ = watched("lock", LockFunction(tryLockFolder));
    std::function<Url(const Url&)> resolve_ = watched("resolve", environment_.ports().resolveExisting);
    AppSettings settings_{values_};
    RuleStore rules_{values_};
    JournalStore journals_{records_, locations_, lock_};
    HistoryStore history_{records_, locations_, lock_};
    TrashRecordStore trashRecords_{records_, locations_, lock_};
    RunRecordStore runRecords_{records_, locations_};
    RecentFoldersStore recentFolders_{values_, [this](const Url& folder) { return fs_.exists(folder); }, resolve_};
    ThreadTaskRunner tasks_;  // last: its work ends while all of this is still there
};

}  // namespace ordovan::test
