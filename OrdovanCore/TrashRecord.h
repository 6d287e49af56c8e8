#pragma once

#include "OrdovanCore/Executor.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/SharedText.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// One file in the Trash: where it was, where it lies and what it is.
///
/// Immutable. All fields lie in one block shared by the copies of an entry, as those of a journal entry do.
class OrdovanTrashEntry {
public:
    OrdovanTrashEntry(std::string_view original, std::string_view trashed, std::int64_t byteSize,
                      std::string_view contentHash);

    [[nodiscard]] std::string_view original() const noexcept;     ///< absolute path before it was trashed
    [[nodiscard]] std::string_view trashed() const noexcept;      ///< absolute path inside the Trash
    [[nodiscard]] std::int64_t byteSize() const noexcept;         ///< when it was trashed
    [[nodiscard]] std::string_view contentHash() const noexcept;  ///< SHA-256, 64 lower-case hexadecimal digits

    /// Two entries with one original path are the same entry.
    [[nodiscard]] std::string_view id() const noexcept { return original(); }
    friend bool operator==(const OrdovanTrashEntry& a, const OrdovanTrashEntry& b) noexcept {
        return a.packed_ == b.packed_;
    }

private:
    struct Head;
    [[nodiscard]] Head head() const noexcept;
    ordovan::SharedText packed_;
};

/// The files that can be put back from the Trash, oldest first. A value; any thread.
struct OrdovanTrashRecord {
    std::int64_t version = supportedVersion;
    std::vector<OrdovanTrashEntry> entries;

    static constexpr std::int64_t supportedVersion = 1;
    /// A tenth of a journal's: files are trashed by choice and not by the folder. A bound on what a damaged or hostile
    /// document can make of memory.
    static constexpr std::size_t maxEntries = 100'000;

    /// Takes the stored form piece by piece; false stops the writing.
    using Sink = std::function<bool(std::string_view piece)>;
    /// Writes the stored form (UTF-8 JSON, sorted keys, indented) in pieces of about 1 MiB; false when `sink` stopped
    /// it.
    bool encode(const Sink& sink) const;
    /// The stored form in memory.
    [[nodiscard]] std::string encoded() const;

    /// Reads the stored form. Checked in this order: strict JSON with every key; `version` is 1, else
    /// `unsupportedVersion`; at most `maxEntries` entries, else `tooLarge` (what lies beyond is counted, not kept).
    [[nodiscard]] static std::expected<OrdovanTrashRecord, OrdovanRecordError> decoded(std::string_view from);

    /// This record and a later one: this one's entries without those whose original path the other has as well (byte
    /// for byte), then the other's; this one's version. The limit is not applied here.
    [[nodiscard]] OrdovanTrashRecord appending(const OrdovanTrashRecord& other) const;

    friend bool operator==(const OrdovanTrashRecord&, const OrdovanTrashRecord&) = default;
};

/// Reads a stored record fed in pieces, as `OrdovanTrashRecord::decoded` does, without ever holding the whole text. One
/// object is used by one thread at a time.
class OrdovanTrashRecordDecoder {
public:
    OrdovanTrashRecordDecoder();
    ~OrdovanTrashRecordDecoder();
    /// False once the text is refused; `finish` then says why.
    bool feed(std::string_view piece);
    [[nodiscard]] std::expected<OrdovanTrashRecord, OrdovanRecordError> finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// What trashing or putting back did: one outcome for each file, in the order of processing. A value; any thread.
struct OrdovanTrashReport {
    std::vector<OrdovanExecutionOutcome> outcomes;
    /// After trashing: one entry for each file of this run that lies in the Trash. After putting back: the entries that
    /// are still to be put back.
    OrdovanTrashRecord record;

    [[nodiscard]] std::size_t movedCount() const;
    [[nodiscard]] std::size_t skippedCount() const;
    [[nodiscard]] std::size_t failedCount() const;

    /// The same outcomes with an empty journal, for whoever tells of runs without caring for their kind.
    [[nodiscard]] OrdovanExecutionReport asExecutionReport() const;

    friend bool operator==(const OrdovanTrashReport&, const OrdovanTrashReport&) = default;
};
