#include "OrdovanCore/Rules.h"

#include "OrdovanCore/Json.h"
#include "OrdovanCore/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace json = ordovan::json;
namespace text = ordovan::text;

std::string OrdovanRuleError::message() const {
    switch (kind) {
        case Case::invalidExtension:
            return "\"" + offendingExtension + "\" isn't a valid extension. Use letters and numbers only, like dmg.";
        case Case::emptyFolderName:
            return "Give the folder a name.";
        case Case::invalidFolderName:
            return "Folder names can't contain / or :, start with a dot, or be longer than 64 characters.";
        case Case::noExtensions:
            return "Add at least one file extension, like dmg or pkg.";
    }
    return {};
}

namespace {

constexpr std::string_view separators = ", ;";

bool isLetterOrDigit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

/// True for an extension in stored form; `lowerCased` is already in lower case.
bool isValidExtension(std::string_view lowerCased) {
    return !lowerCased.empty() && lowerCased.size() <= OrdovanRuleSet::maxExtensionLength &&
           std::ranges::all_of(lowerCased, isLetterOrDigit);
}

bool equalsIgnoringAsciiCase(std::string_view typed, std::string_view lowerCased) {
    return std::ranges::equal(typed, lowerCased, {}, [](char c) { return text::asciiLowercased(c); });
}

constexpr std::array<json::Member, 3> ruleMembers{{
    {"extensions", json::Type::texts},
    {"folderName", json::Type::text},
    {"id", json::Type::text},
}};

constexpr json::Schema ruleSetSchema{{}, "rules", ruleMembers};

class RuleReceiver : public json::Receiver {
public:
    bool member(std::size_t, const json::Value&, std::string&) override { return true; }

    bool record(std::span<const json::Value> values, std::string& error) override {
        const auto id = ordovan::Uuid::parse(std::get<std::string_view>(values[2]));
        if (!id) {
            error = "\"id\" is not a UUID.";
            return false;
        }
        const auto extensions = std::get<std::span<const std::string>>(values[0]);
        set.rules.push_back(
            {*id, {extensions.begin(), extensions.end()}, std::string(std::get<std::string_view>(values[1]))});
        return true;
    }

    OrdovanRuleSet set;
};

void appendRule(std::string& out, const OrdovanRule& rule) {
    out += "    {\n      \"extensions\": [";
    for (const std::string& extension : rule.extensions) {
        out += &extension == &rule.extensions.front() ? "\n        " : ",\n        ";
        json::appendText(out, extension);
    }
    out += rule.extensions.empty() ? "]" : "\n      ]";
    out += ",\n      \"folderName\": ";
    json::appendText(out, rule.folderName);
    out += ",\n      \"id\": ";
    json::appendText(out, rule.id.text());
    out += "\n    }";
}

}  // namespace

std::expected<std::vector<std::string>, OrdovanRuleError> OrdovanRuleSet::parseExtensions(std::string_view text) {
    std::vector<std::string> extensions;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(separators), text.size());
        std::string_view piece = text::trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (piece.empty()) continue;
        if (piece.starts_with('.')) piece.remove_prefix(1);
        std::string extension = text::lowercased(piece);
        if (!isValidExtension(extension)) {
            return std::unexpected(
                OrdovanRuleError{OrdovanRuleError::Case::invalidExtension, text::withReplacements(extension)});
        }
        if (std::ranges::find(extensions, extension) == extensions.end()) extensions.push_back(std::move(extension));
    }
    if (extensions.empty()) return std::unexpected(OrdovanRuleError{OrdovanRuleError::Case::noExtensions, {}});
    return extensions;
}

std::expected<std::string, OrdovanRuleError> OrdovanRuleSet::validateFolderName(std::string_view name) {
    name = text::trimmed(name);
    if (name.empty()) return std::unexpected(OrdovanRuleError{OrdovanRuleError::Case::emptyFolderName, {}});
    if (!text::isUtf8(name) || name.starts_with('.') || name.find_first_of("/:") != std::string_view::npos ||
        text::hasControlCharacter(name) || text::characterCount(name) > maxFolderNameLength) {
        return std::unexpected(OrdovanRuleError{OrdovanRuleError::Case::invalidFolderName, {}});
    }
    return text::composed(name);
}

std::expected<OrdovanRule, OrdovanRuleError> OrdovanRuleSet::make(std::string_view extensions,
                                                                  std::string_view folderName, ordovan::Uuid id) {
    auto parsed = parseExtensions(extensions);
    if (!parsed) return std::unexpected(std::move(parsed.error()));
    auto validated = validateFolderName(folderName);
    if (!validated) return std::unexpected(std::move(validated.error()));
    return OrdovanRule{id, std::move(*parsed), std::move(*validated)};
}

std::optional<std::string_view> OrdovanRuleSet::folder(std::string_view forExtension) const {
    // Asked for every file, so the usual extension is compared as it stands instead of being lowered first.
    const bool ascii = text::isAscii(forExtension);
    const std::string lowerCased = ascii || rules.empty() ? std::string() : text::lowercased(forExtension);
    for (const OrdovanRule& rule : rules) {
        for (const std::string& extension : rule.extensions) {
            if (ascii ? equalsIgnoringAsciiCase(forExtension, extension) : lowerCased == extension) {
                return rule.folderName;
            }
        }
    }
    return std::nullopt;
}

std::string OrdovanRuleSet::encoded() const {
    std::string out = "{\n  \"rules\": [";
    for (const OrdovanRule& rule : rules) {
        out += &rule == &rules.front() ? "\n" : ",\n";
        appendRule(out, rule);
    }
    out += rules.empty() ? "]\n}\n" : "\n  ]\n}\n";
    return out;
}

std::expected<OrdovanRuleSet, std::string> OrdovanRuleSet::decoded(std::string_view from) {
    RuleReceiver receiver;
    if (auto read = json::read(from, ruleSetSchema, receiver); !read) return std::unexpected(std::move(read.error()));
    return std::move(receiver.set);
}
