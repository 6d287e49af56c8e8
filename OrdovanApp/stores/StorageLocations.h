#pragma once

#include "OrdovanCore/Url.h"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ordovan {

/// Where everything that outlives the program is kept. Pure, but for `system`; any thread.
struct StorageLocations {
    Url recordsFolder;  ///< holds the history, the trash record and the journals; also what the shared records' lock is
                        ///< taken on
    Url settingsFolder;  ///< holds the settings file

    /// By the XDG Base Directory Specification 0.8: `$XDG_DATA_HOME/ordovan` and `$XDG_CONFIG_HOME/ordovan`, by default
    /// `~/.local/share/ordovan` and `~/.config/ordovan`. Empty and relative values are ignored; the home folder is
    /// `$HOME`, else the user database's.
    static StorageLocations system();

    /// The same from a given environment (a variable's value, or nothing) and the user database's home folder, which
    /// is only asked for when it is needed.
    static StorageLocations fromEnvironment(
        const std::function<std::optional<std::string>(const char* variable)>& environment,
        const std::function<std::string()>& userHome);

    /// The undo journal of one folder: "journals/", the lower-case hexadecimal SHA-256 of the folder's canonical
    /// path, ".json".
    [[nodiscard]] Url journal(const Url& root) const;

    /// The name to which an unreadable journal is set aside by a run at this time (whole seconds since 1970).
    [[nodiscard]] Url unreadableJournal(double epoch) const;

    /// Where older versions kept a folder's journal, oldest first: in its folder "Organized", in its output folder.
    [[nodiscard]] static std::array<Url, 2> olderJournals(const Url& root);

    /// The record of a run that is going on in a folder: "runs/", the same name as the journal's, ".jsonl". Further
    /// ones of the folder are numbered from 2: ".2.jsonl".
    [[nodiscard]] Url runRecord(const Url& root, std::size_t number = 1) const;
    /// The name to which such a record is set aside at this time (whole seconds since 1970).
    [[nodiscard]] Url unusableRunRecord(const Url& root, double epoch) const;

    /// The documents that all folders share, and the names to which unreadable ones are set aside at this time (whole
    /// seconds since 1970).
    [[nodiscard]] Url history() const;
    [[nodiscard]] Url unreadableHistory(double epoch) const;
    [[nodiscard]] Url trashRecord() const;
    [[nodiscard]] Url unreadableTrashRecord(double epoch) const;
    /// The files by which it is tried whether records can be written: one in each folder that holds some.
    [[nodiscard]] std::array<Url, 2> probes() const;
    [[nodiscard]] Url settingsFile() const;
    /// The name to which a damaged settings file is set aside at this time (whole seconds since 1970).
    [[nodiscard]] static Url unreadableSettings(const Url& settingsFile, double epoch);
};

/// The folder name that an earlier version organized into, inside the chosen folder.
inline constexpr std::string_view olderOutputFolderName = "Organized";

}  // namespace ordovan
