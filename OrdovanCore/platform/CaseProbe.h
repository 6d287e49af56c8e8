#pragma once

#include <optional>
#include <string>

namespace ordovan {

/// What the type of a file system says about names that differ only by case.
enum class CaseRule {
    sensitive,
    insensitive,
    ask,  ///< the type does not tell: it depends on the server, on how the volume was made or on how it is mounted
};

/// By the number that statfs(2) gives in f_type. Types that are not in the table have to be asked. Any thread.
CaseRule caseRuleOfType(unsigned long type);

/// A folder's names, as `namesDifferByCase` looks at them. Used by one thread.
class FolderNames {
public:
    enum class Lookup { found, missing, unknown };

    virtual ~FolderNames() = default;
    /// The next name in whatever order; nothing at the end.
    virtual std::optional<std::string> next() = 0;
    /// Starts over at the first name.
    virtual void rewind() = 0;
    /// Whether the folder answers to a name, be it listed so or not.
    virtual Lookup lookUp(const std::string& name) = 0;
};

/// Tells by looking names of the folder up in the other case: one that is missing so proves that names differ by case;
/// one that is found although it is not listed so proves that they do not. Nothing where no name tells (none among the
/// first 64 has an ASCII letter, or the look-ups fail). Without state; any thread, each with names of its own.
std::optional<bool> namesDifferByCase(FolderNames& names);

}  // namespace ordovan
