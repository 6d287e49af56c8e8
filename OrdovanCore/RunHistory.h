#pragma once

#include "OrdovanCore/Executor.h"
#include "OrdovanCore/Uuid.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// One line of the history: a run and its counts. A value, as the history is; any thread, as for all functions here.
struct OrdovanRunRecord {
    enum class Kind { organize, undo, trash, restoreTrash };
    ordovan::Uuid id;
    Kind kind;
    double epoch = 0;        ///< when it ran, seconds since 1970-01-01 UTC
    std::string folderName;  ///< the folder's last path component; not a full path
    std::int64_t moved = 0;
    std::int64_t skipped = 0;
    std::int64_t failed = 0;

    /// The record of a run, with a fresh id; `epoch` as above.
    static OrdovanRunRecord make(Kind kind, const OrdovanExecutionReport& report, const Url& folder, double epoch);

    /// "Organized 12 files in Downloads": one sentence without a full stop.
    [[nodiscard]] std::string summary() const;
    friend bool operator==(const OrdovanRunRecord&, const OrdovanRunRecord&) = default;
};

/// The case name.
[[nodiscard]] std::string_view rawValue(OrdovanRunRecord::Kind kind);
/// The kind of exactly this name, or nothing.
[[nodiscard]] std::optional<OrdovanRunRecord::Kind> runKindFromRawValue(std::string_view name);

/// The latest runs, newest first.
struct OrdovanRunHistory {
    std::vector<OrdovanRunRecord> records;

    /// The document is read and written whole at every run: so many records take some 60 KiB.
    static constexpr std::size_t maxRecords = 200;

    /// The record in front of the others; the oldest fall off beyond 200.
    [[nodiscard]] OrdovanRunHistory adding(const OrdovanRunRecord& record) const;
    /// Files moved by organize runs; an undo does not subtract. A sum beyond 64 bits is pinned to the last number
    /// there.
    [[nodiscard]] std::int64_t totalOrganized() const;

    /// UTF-8 JSON, sorted keys, indented.
    [[nodiscard]] std::string encoded() const;
    /// Reads the stored form strictly; a longer list is cut to its first 200 records. The error is a sentence for a
    /// developer.
    [[nodiscard]] static std::expected<OrdovanRunHistory, std::string> decoded(std::string_view from);

    friend bool operator==(const OrdovanRunHistory&, const OrdovanRunHistory&) = default;
};
