#include "OrdovanApp/controller/SystemEnvironment.h"

#include "OrdovanApp/controller/SerialTasks.h"
#include "OrdovanApp/controller/ThreadTaskRunner.h"
#include "OrdovanApp/stores/SettingsFileStore.h"
#include "OrdovanCore/FolderCleanup.h"
#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/platform/ContentReader.h"
#include "OrdovanCore/platform/DirectoryReader.h"
#include "OrdovanCore/platform/DocumentWriter.h"
#include "OrdovanCore/platform/FileFacts.h"
#include "OrdovanCore/platform/FileRecordStorage.h"
#include "OrdovanCore/platform/Folders.h"
#include "OrdovanCore/platform/HashAhead.h"
#include "OrdovanCore/platform/Interrupts.h"
#include "OrdovanCore/platform/RunFileSystem.h"
#include "OrdovanCore/platform/StableIdentity.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/platform/TrashInfo.h"
#include "OrdovanCore/platform/TrashSearch.h"
#include "OrdovanCore/platform/UserDatabase.h"
#include "OrdovanCore/platform/Volumes.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

/// The longest anybody has the lock is the two seconds that a journal of a million entries takes.
constexpr std::chrono::seconds longestWait{10};

/// What a run moved must be recorded: a request to stop does not end the wait.
ordovan::LockFunction forTheRecordOfARun() {
    return ordovan::lockFolderWithin({.longest = longestWait});
}

/// A request to stop that came before the wait was for the run; one that comes during it is for the wait.
ordovan::LockFunction forTheHistory() {
    return [](const Url& folder) {
        const auto isEnded = [before = ordovan::interrupts::count()] { return ordovan::interrupts::count() != before; };
        return ordovan::lockFolderWithin({.longest = longestWait, .isEnded = isEnded})(folder);
    };
}

}  // namespace

/// In the order of dependence: the tasks are last, so that they end while everything they use is still there.
struct SystemEnvironment::State {
    explicit State(ordovan::StorageLocations where) : locations(std::move(where)) {}

    [[nodiscard]] std::vector<Url> ownFolders() const {
        return {OrdovanProposalPlanner::resolveExisting(locations.recordsFolder),
                OrdovanProposalPlanner::resolveExisting(locations.settingsFolder)};
    }

    [[nodiscard]] std::vector<Url> foldersToPassOver() const {
        std::vector<Url> folders = ownFolders();
        if (const std::string data = ordovan::userDataFolder(); !data.empty()) {
            folders.push_back(OrdovanProposalPlanner::resolveExisting(Url::file(data + "/Trash")));
        }
        return folders;
    }

    /// The program's own folders count as held: a run in one would wait for itself when it comes to save its record.
    OrdovanResult<ordovan::HeldLock> tryLock(const Url& folder) const {
        if (const auto own = ownFolders(); std::ranges::find(own, folder) != own.end()) {
            return std::unexpected(OrdovanSystemError::posix(EWOULDBLOCK));
        }
        return ordovan::tryLockFolder(folder);
    }

    const ordovan::StorageLocations locations;
    SystemFileSystem fileSystem;
    SystemContentReader contents;
    ordovan::FileRecordStorage records;
    ordovan::SettingsFileStore values{locations.settingsFile()};
    const bool couldReadSettings = values.isReadable();
    AppSettings settings{values};
    RuleStore rules{values};
    ordovan::JournalStore journals{records, locations, forTheRecordOfARun()};
    ordovan::HistoryStore history{records, locations, forTheHistory()};
    ordovan::TrashRecordStore trashRecords{records, locations, forTheRecordOfARun()};
    ordovan::RunRecordStore runRecords{records, locations};
    ordovan::RecentFoldersStore recentFolders{values, [this](const Url& folder) { return fileSystem.exists(folder); },
                                              OrdovanProposalPlanner::resolveExisting};
    ordovan::SerialTasks changes{tasks};
    ordovan::ThreadTaskRunner tasks;
};

SystemEnvironment::SystemEnvironment() : SystemEnvironment(ordovan::StorageLocations::system()) {}

SystemEnvironment::SystemEnvironment(ordovan::StorageLocations locations)
    : state_(std::make_unique<State>(std::move(locations))) {}

SystemEnvironment::~SystemEnvironment() = default;

TidyPorts SystemEnvironment::ports() {
    return {
        .fileSystem = state_->fileSystem,
        .makeRunFileSystem = [](const Url& root) { return std::make_unique<ordovan::RunFileSystem>(root); },
        .hashAhead =
            [](OrdovanFileSystem& fs, std::span<const Url> files, std::function<bool(const Url& file)> mayRead) {
                ordovan::HashAheadFileSystem::Options options;
                options.root = ordovan::RunFileSystem::rootOf(fs);
                options.mayRead = std::move(mayRead);
                options.vouch = ordovan::RunFileSystem::voucher(fs);
                return std::make_unique<ordovan::HashAheadFileSystem>(fs, files, std::move(options));
            },
        .contents = &state_->contents,
        .makeDirectoryReader = [] { return std::make_unique<FileManagerDirectoryReader>(); },
        .supportsCaseSensitiveNames = ordovan::supportsCaseSensitiveNames,
        .removeEmptyFolders = OrdovanFolderCleanup::removeEmptyFolders,
        .writeDocument = ordovan::writeDocument,
        .resolveExisting = OrdovanProposalPlanner::resolveExisting,
        .ownFolders = [state = state_.get()] { return state->foldersToPassOver(); },
        .tryLockFolder = [state = state_.get()](const Url& folder) { return state->tryLock(folder); },
        .clock = ordovan::systemTime,
        .timeZone = ordovan::text::TimeZone::current,
        .tasks = state_->tasks,
        .journals = state_->journals,
        .history = state_->history,
        .trashRecords = state_->trashRecords,
        .recentFolders = state_->recentFolders,
        .settings = state_->settings,
        .rules = state_->rules,
        .recording = {.runRecords = &state_->runRecords,
                      .facts = ordovan::factsOf,
                      .makeFacts = ordovan::factsOfMany,
                      .findInTrash = ordovan::findInTrash,
                      .removeTrashInfo = ordovan::removeTrashInfo,
                      .forgetTrashInfo =
                          [](const Url& item, const Url& putBackTo) {
                              ordovan::forgetTrashInfo(item.path(), putBackTo.path());
                          },
                      .syncMoves =
                          [records = std::string(state_->locations.trashRecord().deletingLastPathComponent().path())](
                              std::span<const Url> arrivals, std::span<const Url> departures) {
                              return ordovan::syncMoves(arrivals, departures, records);
                          },
                      .canFlush = ordovan::canFlush,
                      .keepsInodes = ordovan::keepsInodes,
                      .keepsIdentities = ordovan::keepsIdentities}};
}

void SystemEnvironment::storeInBackground() {
    state_->settings.storeThrough(background());
    state_->rules.storeThrough(background());
}

ordovan::BackgroundWork SystemEnvironment::background() {
    return [changes = &state_->changes](ordovan::TaskRunner::Call work, ordovan::TaskRunner::Call done) {
        changes->run(std::move(work), std::move(done));
    };
}

ordovan::KeyValueStore& SystemEnvironment::values() {
    return state_->values;
}

AppSettings& SystemEnvironment::settings() {
    return state_->settings;
}

RuleStore& SystemEnvironment::rules() {
    return state_->rules;
}

const ordovan::StorageLocations& SystemEnvironment::locations() const {
    return state_->locations;
}

bool SystemEnvironment::couldReadSettings() const {
    return state_->couldReadSettings;
}

std::vector<ordovan::FileRecordStorage::SetAside> SystemEnvironment::allSetAside() const {
    auto all = state_->records.allSetAside();
    std::ranges::move(state_->values.allSetAside(), std::back_inserter(all));
    return all;
}

bool SystemEnvironment::waitForWork(std::chrono::milliseconds longest) {
    return state_->tasks.waitForWork(longest);
}
