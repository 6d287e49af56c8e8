#pragma once

#include "OrdovanCore/Uuid.h"

#include <cstddef>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Files with one of these extensions go to a folder of the user's naming.
struct OrdovanRule {
    ordovan::Uuid id;
    std::vector<std::string> extensions;  ///< lower case, no dots, ASCII letters and digits, no repeats, as typed
    std::string folderName;               ///< trimmed, in composed form (NFC)
    friend bool operator==(const OrdovanRule&, const OrdovanRule&) = default;
};

/// Why typed rule text was refused.
struct OrdovanRuleError {
    enum class Case { invalidExtension, emptyFolderName, invalidFolderName, noExtensions };
    Case kind;
    std::string offendingExtension;  ///< only for `invalidExtension`: lower case, one leading dot removed

    /// The sentence shown under the input field.
    [[nodiscard]] std::string message() const;
    friend bool operator==(const OrdovanRuleError&, const OrdovanRuleError&) = default;
};

/// The user's rules in priority order; the first that lists an extension decides. Pure; any thread.
struct OrdovanRuleSet {
    std::vector<OrdovanRule> rules;

    /// What typed rules are held to (reading the stored form is not). A list of 50 can still be looked through.
    static constexpr std::size_t maxRules = 50;
    /// Characters; longer than the extensions in use, so that pasted text is not taken for one.
    static constexpr std::size_t maxExtensionLength = 16;
    /// User-perceived characters: as many as can be read in a list. Of up to three bytes each they fit in the 255 bytes
    /// of a name (NAME_MAX, limits.h(0p)).
    static constexpr std::size_t maxFolderNameLength = 64;

    /// The extensions in typed text: split at commas, spaces and semicolons, trimmed, one leading dot removed,
    /// lower-cased, repeats dropped. The first bad piece refuses the whole text (`invalidExtension`); nothing but
    /// separators is `noExtensions`.
    static std::expected<std::vector<std::string>, OrdovanRuleError> parseExtensions(std::string_view text);

    /// The cleaned folder name (trimmed, NFC), or `emptyFolderName`, or `invalidFolderName` for a name of more than
    /// 64 characters, with a leading dot, a "/", a ":" or a control character, or one that is not UTF-8.
    static std::expected<std::string, OrdovanRuleError> validateFolderName(std::string_view name);

    /// One rule from typed text; when both are bad, the extensions' error wins.
    static std::expected<OrdovanRule, OrdovanRuleError> make(std::string_view extensions, std::string_view folderName,
                                                             ordovan::Uuid id);

    /// The folder of the first rule that lists the extension (given without its dot, any case), or nothing. The view
    /// stands as long as this rule set is not changed.
    [[nodiscard]] std::optional<std::string_view> folder(std::string_view forExtension) const;

    /// The stored form: UTF-8 JSON, one member "rules"; keys sorted, indented.
    [[nodiscard]] std::string encoded() const;
    /// Reads the stored form strictly; the error is a sentence for a developer. Never repairs.
    static std::expected<OrdovanRuleSet, std::string> decoded(std::string_view from);

    friend bool operator==(const OrdovanRuleSet&, const OrdovanRuleSet&) = default;
};
