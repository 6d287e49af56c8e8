#pragma once

#include "OrdovanCore/Categories.h"
#include "OrdovanCore/Rules.h"
#include "OrdovanCore/Url.h"

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// One proposed move.
struct OrdovanFileProposal {
    Url source;                                                 ///< as the inventory gave it
    Url destination;                                            ///< standardized, inside the output folder
    OrdovanFileCategory category = OrdovanFileCategory::other;  ///< by extension, also when a rule decides the folder
    ordovan::SharedText explanation;                            ///< one sentence for the user
    std::optional<ordovan::SharedText> ruleFolder;              ///< the matching rule's folder

    /// The source path, " -> ", the destination path: the key of the user's selection.
    [[nodiscard]] std::string id() const;
    /// The top folder under the output folder: the rule's, else the category's.
    [[nodiscard]] std::string_view folderName() const noexcept {
        return ruleFolder ? ruleFolder->view() : rawValue(category);
    }
    friend bool operator==(const OrdovanFileProposal&, const OrdovanFileProposal&) = default;
};

/// Why a file gets no proposal.
enum class OrdovanProposalError {
    nonFileURL,
    sourceOutsideAuthorizedRoot,
    destinationOutsideOutputRoot,
    sourceEqualsDestination,
    sourceIsRoot,
    authorizedRootTooBroad,
};

/// The sentence shown for a refusal.
[[nodiscard]] std::string_view message(OrdovanProposalError error);

/// Where the organizer may act, and the making of one proposal. Every function may be called from any thread.
namespace OrdovanProposalPlanner {

/// The path in the one form in which all paths of the engine are compared: textually normal (`normalizedPath`) and in
/// Unicode NFC, so that composed and decomposed spellings are equal. Case is kept. Never touches the disk. A path
/// that is not UTF-8 is only made normal.
[[nodiscard]] std::string canonicalPath(const Url& url);
/// The same for a path.
[[nodiscard]] std::string canonicalPath(std::string_view path);

/// True when canonical `path` is `within` or lies below it.
[[nodiscard]] bool containsCanonical(std::string_view path, std::string_view within);

/// The same for two URLs.
[[nodiscard]] bool contains(const Url& url, const Url& within);

/// True for folders that are no single person's to tidy: "/", the system's own top folders and the like, judged after
/// resolving symbolic links. Home folders and volume roots are not too broad. Reads the disk for the links.
[[nodiscard]] bool isTooBroad(const Url& root);

/// The URL with every link resolved through the disk (realpath(3)); unchanged when it can not be.
[[nodiscard]] Url resolveExisting(const Url& url);

/// The proposal for one file, or the first reason against it, tested in this order: a URL that is no file URL; a root
/// that is too broad; a file outside the root; the root itself; a destination outside the output root; a file that is
/// already there. Whether the file exists or its destination is free is not asked here.
///
/// `subfolder` is one more folder below the category's or rule's; one that is no valid folder name is left out.
[[nodiscard]] std::expected<OrdovanFileProposal, OrdovanProposalError> preview(
    const Url& file, const Url& authorizedRoot, const Url& outputRoot, const OrdovanRuleSet& rules,
    std::optional<std::string_view> subfolder);

/// The same for many files of one scope: what depends on the roots, the rules and a folder alone is found out once.
/// Holds references to none of its arguments. One object is used by one thread at a time.
class Proposer {
public:
    Proposer(const Url& authorizedRoot, const Url& outputRoot, const OrdovanRuleSet& rules);
    ~Proposer();
    Proposer(const Proposer&) = delete;
    Proposer& operator=(const Proposer&) = delete;

    [[nodiscard]] std::expected<OrdovanFileProposal, OrdovanProposalError> preview(
        const Url& file, std::optional<std::string_view> subfolder);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace OrdovanProposalPlanner
