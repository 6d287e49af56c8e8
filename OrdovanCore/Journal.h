#pragma once

#include "OrdovanCore/SharedText.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// What one organize run did with one file: where it was, where it went and what arrived.
///
/// Immutable. All fields lie in one block shared by the copies of an entry, so that a journal of a million entries
/// fits in memory once, however many lists it stands in. Copies may be used and destroyed on different threads.
class OrdovanJournalEntry {
public:
    OrdovanJournalEntry(std::string_view source, std::string_view destination, bool sameVolume, std::int64_t byteSize,
                        std::string_view contentHash, std::string_view fileID);

    [[nodiscard]] std::string_view source() const noexcept;       ///< absolute path before the run
    [[nodiscard]] std::string_view destination() const noexcept;  ///< absolute path after it
    [[nodiscard]] bool sameVolume() const noexcept;               ///< moved within a volume, not copied
    [[nodiscard]] std::int64_t byteSize() const noexcept;
    [[nodiscard]] std::string_view contentHash() const noexcept;  ///< SHA-256, 64 lower-case hexadecimal digits
    [[nodiscard]] std::string_view fileID() const noexcept;       ///< the source's identity, or empty

    /// Two entries with one destination are the same entry.
    [[nodiscard]] std::string_view id() const noexcept { return destination(); }
    friend bool operator==(const OrdovanJournalEntry& a, const OrdovanJournalEntry& b) noexcept {
        return a.packed_ == b.packed_;
    }

private:
    struct Head;
    [[nodiscard]] Head head() const noexcept;
    ordovan::SharedText packed_;
};

/// Why a stored record was refused as a whole.
struct OrdovanJournalError {
    enum class Case { unsupportedVersion, tooLarge };
    Case kind;
    std::int64_t value;  ///< the version found, or the number of entries found
    friend bool operator==(const OrdovanJournalError&, const OrdovanJournalError&) = default;
};

/// A refusal of a stored record: by the rules above, or by the decoder (a sentence for a developer).
using OrdovanRecordError = std::variant<OrdovanJournalError, std::string>;

/// The refusal in words. Any thread.
[[nodiscard]] std::string describe(const OrdovanRecordError& error);

/// Everything that can be undone in one folder, in the order in which it happened. A value; any thread.
struct OrdovanJournal {
    std::int64_t version = supportedVersion;
    double createdAtEpoch = 0;  ///< seconds since 1970-01-01 UTC
    std::vector<OrdovanJournalEntry> entries;

    /// What a journal is called where it lies inside the folder that it is of.
    static constexpr std::string_view filename = ".ordovan-journal.json";
    static constexpr std::int64_t supportedVersion = 1;
    /// Many times what one preview can move, and a bound on what a damaged or hostile document can make of memory: so
    /// many entries take some 240 MiB.
    static constexpr std::size_t maxEntries = 1'000'000;

    /// Takes the stored form piece by piece; false stops the writing.
    using Sink = std::function<bool(std::string_view piece)>;
    /// Writes the stored form (UTF-8 JSON, sorted keys, indented) in pieces of about 1 MiB; false when `sink` stopped
    /// it.
    bool encode(const Sink& sink) const;
    /// The stored form in memory.
    [[nodiscard]] std::string encoded() const;

    /// Reads the stored form. Checked in this order: strict JSON with every key; `version` is 1, else
    /// `unsupportedVersion`; at most `maxEntries` entries, else `tooLarge` (what lies beyond is counted, not kept).
    [[nodiscard]] static std::expected<OrdovanJournal, OrdovanRecordError> decoded(std::string_view from);

    /// This journal and a later one: this one's entries without those whose destination the other has as well, then
    /// the other's; the other's time, this one's version. The limit is not applied here.
    [[nodiscard]] OrdovanJournal appending(const OrdovanJournal& other) const;

    friend bool operator==(const OrdovanJournal&, const OrdovanJournal&) = default;
};

/// Reads a stored journal fed in pieces, as `OrdovanJournal::decoded` does, without ever holding the whole text. One
/// object is used by one thread at a time.
class OrdovanJournalDecoder {
public:
    OrdovanJournalDecoder();
    ~OrdovanJournalDecoder();
    /// False once the text is refused; `finish` then says why.
    bool feed(std::string_view piece);
    [[nodiscard]] std::expected<OrdovanJournal, OrdovanRecordError> finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};
