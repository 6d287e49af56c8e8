#include "OrdovanApp/stores/StorageLocations.h"

#include "OrdovanCore/Categories.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Proposals.h"

#include <QCryptographicHash>

#include <cmath>
#include <cstdlib>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace ordovan {

namespace {

/// The whole seconds of a time, its fraction cut off.
std::string wholeSeconds(double epoch) {
    return std::to_string(static_cast<long long>(std::trunc(epoch)));
}

/// The home folder of the user who runs the program, by the user database; "/" for a user it does not know.
std::string userDatabaseHome() {
    std::vector<char> buffer(16 * 1024);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) return "/";
    return found->pw_dir;
}

}  // namespace

StorageLocations StorageLocations::system() {
    const auto environment = [](const char* variable) -> std::optional<std::string> {
        const char* value = std::getenv(variable);
        if (value == nullptr) return std::nullopt;
        return value;
    };
    return fromEnvironment(environment, userDatabaseHome());
}

StorageLocations StorageLocations::fromEnvironment(
    const std::function<std::optional<std::string>(const char* variable)>& environment, std::string_view userHome) {
    const auto folder = [&](const char* variable, const Url& fallback) {
        const std::optional<std::string> value = environment(variable);
        return value && value->starts_with('/') ? Url::file(*value).standardized() : fallback;
    };
    const Url home = folder("HOME", Url::file(userHome));
    return {.recordsFolder = folder("XDG_DATA_HOME", home.appending(".local/share")).appending("ordovan"),
            .settingsFolder = folder("XDG_CONFIG_HOME", home.appending(".config")).appending("ordovan")};
}

Url StorageLocations::journal(const Url& root) const {
    const std::string canonical = OrdovanProposalPlanner::canonicalPath(root);
    const QByteArray digest = QCryptographicHash::hash(
        QByteArrayView(canonical.data(), static_cast<qsizetype>(canonical.size())), QCryptographicHash::Sha256);
    return recordsFolder.appending("journals").appending(digest.toHex().toStdString() + ".json");
}

Url StorageLocations::unreadableJournal(double epoch) const {
    return recordsFolder.appending("journals")
        .appending(".ordovan-journal.unreadable-" + wholeSeconds(epoch) + ".json");
}

std::array<Url, 2> StorageLocations::olderJournals(const Url& root) {
    return {root.appending(olderOutputFolderName).appending(OrdovanJournal::filename),
            root.appending(OrdovanOutput::folderName).appending(OrdovanJournal::filename)};
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

Url StorageLocations::settingsFile() const {
    return settingsFolder.appending("ordovan.conf");
}

}  // namespace ordovan
