#include "OrdovanApp/stores/StorageLocations.h"

#include "OrdovanCore/Categories.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/platform/Sha256.h"
#include "OrdovanCore/platform/UserDatabase.h"

#include <cmath>
#include <cstdlib>

namespace ordovan {

namespace {

/// The whole seconds of a time, its fraction cut off.
std::string wholeSeconds(double epoch) {
    return std::to_string(static_cast<long long>(std::trunc(epoch)));
}

/// What the records of one folder are named after: the SHA-256 of its canonical path.
std::string nameOf(const Url& root) {
    // Without a working library no file can be hashed, so none is ever moved and there is no record to name.
    return sha256(OrdovanProposalPlanner::canonicalPath(root)).value_or("none");
}

}  // namespace

StorageLocations StorageLocations::system() {
    const auto environment = [](const char* variable) -> std::optional<std::string> {
        const char* value = std::getenv(variable);
        if (value == nullptr) return std::nullopt;
        return value;
    };
    return fromEnvironment(environment, [] { return homeFromUserDatabase().value_or("/"); });
}

StorageLocations StorageLocations::fromEnvironment(
    const std::function<std::optional<std::string>(const char* variable)>& environment,
    const std::function<std::string()>& userHome) {
    const auto absolute = [&](const char* variable) -> std::optional<Url> {
        const std::optional<std::string> value = environment(variable);
        if (!value || !value->starts_with('/')) return std::nullopt;
        return Url::file(*value).standardized();
    };
    const auto folder = [&](const char* variable, std::string_view belowHome) {
        if (const auto set = absolute(variable)) return set->appending("ordovan");
        const auto home = absolute("HOME");
        return (home ? *home : Url::file(userHome())).appending(belowHome).appending("ordovan");
    };
    return {.recordsFolder = folder("XDG_DATA_HOME", ".local/share"),
            .settingsFolder = folder("XDG_CONFIG_HOME", ".config")};
}

Url StorageLocations::journal(const Url& root) const {
    return recordsFolder.appending("journals").appending(nameOf(root) + ".json");
}

Url StorageLocations::unreadableJournal(double epoch) const {
    return recordsFolder.appending("journals")
        .appending(".ordovan-journal.unreadable-" + wholeSeconds(epoch) + ".json");
}

std::array<Url, 2> StorageLocations::olderJournals(const Url& root) {
    return {root.appending(olderOutputFolderName).appending(OrdovanJournal::filename),
            root.appending(OrdovanOutput::folderName).appending(OrdovanJournal::filename)};
}

Url StorageLocations::runRecord(const Url& root, std::size_t number) const {
    const std::string suffix = number > 1 ? "." + std::to_string(number) : "";
    return recordsFolder.appending("runs").appending(nameOf(root) + suffix + ".jsonl");
}

Url StorageLocations::unusableRunRecord(const Url& root, double epoch) const {
    return recordsFolder.appending("runs").appending(nameOf(root) + ".set-aside-" + wholeSeconds(epoch) + ".jsonl");
}

Url StorageLocations::history() const {
    return recordsFolder.appending("history.json");
}

Url StorageLocations::unreadableHistory(double epoch) const {
    return recordsFolder.appending("history.unreadable-" + wholeSeconds(epoch) + ".json");
}

Url StorageLocations::trashRecord() const {
    return recordsFolder.appending("trash-record.json");
}

Url StorageLocations::unreadableTrashRecord(double epoch) const {
    return recordsFolder.appending("trash-record.unreadable-" + wholeSeconds(epoch) + ".json");
}

std::array<Url, 2> StorageLocations::probes() const {
    constexpr std::string_view name = ".ordovan-probe";
    return {recordsFolder.appending("journals").appending(name), recordsFolder.appending(name)};
}

Url StorageLocations::settingsFile() const {
    return settingsFolder.appending("ordovan.conf");
}

Url StorageLocations::unreadableSettings(const Url& settingsFile, double epoch) {
    return settingsFile.deletingLastPathComponent().appending(std::string(settingsFile.lastPathComponent()) +
                                                              ".unreadable-" + wholeSeconds(epoch));
}

}  // namespace ordovan
