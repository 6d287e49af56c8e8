#include "OrdovanCore/Proposals.h"

#include "OrdovanCore/Text.h"
#include "OrdovanCore/platform/RealPath.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>

using ordovan::SharedText;

std::string OrdovanFileProposal::id() const {
    std::string id;
    id.reserve(source.path().size() + destination.path().size() + 4);
    return id.append(source.path()).append(" -> ").append(destination.path());
}

std::string_view message(OrdovanProposalError error) {
    switch (error) {
        case OrdovanProposalError::nonFileURL:
            return "Not a local file.";
        case OrdovanProposalError::sourceOutsideAuthorizedRoot:
            return "Outside the folder you authorized.";
        case OrdovanProposalError::destinationOutsideOutputRoot:
            return "Would land outside the organized folder.";
        case OrdovanProposalError::sourceEqualsDestination:
            return "Already in the right place.";
        case OrdovanProposalError::sourceIsRoot:
            return "This is the folder itself.";
        case OrdovanProposalError::authorizedRootTooBroad:
            return "The chosen folder is too broad to organize safely.";
    }
    std::unreachable();
}

namespace OrdovanProposalPlanner {
namespace {

/// Top folders that belong to the system or to everybody, here and on the desktops whose disks are mounted here.
constexpr std::array<std::string_view, 27> systemFolders = {
    "System", "Users", "Volumes", "private", "Library",      "Network", "bin",  "sbin", "usr",
    "etc",    "var",   "cores",   "opt",     "Applications", "mnt",     "boot", "dev",  "home",
    "lib",    "lib32", "lib64",   "media",   "proc",         "run",     "srv",  "sys",  "snap",
};
constexpr std::array<std::string_view, 3> systemPaths = {"/System/Volumes/Data", "/private/var", "/private/tmp"};

/// Lets a map of strings be asked with a view.
struct ViewHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
};

}  // namespace

std::string canonicalPath(const Url& url) {
    return canonicalPath(url.path());
}

std::string canonicalPath(std::string_view path) {
    if (ordovan::isNormalPath(path)) return ordovan::text::composed(path);
    return ordovan::text::composed(ordovan::normalizedPath(path));
}

bool containsCanonical(std::string_view path, std::string_view within) {
    if (within == "/") return path.starts_with('/');
    return path.starts_with(within) && (path.size() == within.size() || path[within.size()] == '/');
}

bool contains(const Url& url, const Url& within) {
    return containsCanonical(canonicalPath(url), canonicalPath(within));
}

bool isTooBroad(const Url& root) {
    // Asked of the path both as given and resolved: "/bin" may be a link to a folder that is no top folder itself.
    const auto isSystems = [](const std::string& path) {
        if (path == "/" || std::ranges::find(systemPaths, path) != systemPaths.end()) return true;
        return std::ranges::find(systemFolders, std::string_view(path).substr(1)) != systemFolders.end();
    };
    const Url standardized = Url::file(ordovan::normalizedPath(root.path()));
    return isSystems(standardized.sharedPath().str()) || isSystems(resolveExisting(standardized).sharedPath().str());
}

Url resolveExisting(const Url& url) {
    const std::optional<std::string> resolved = ordovan::realPath(url.path());
    return resolved && url.isFile() ? Url::file(*resolved) : url;
}

struct Proposer::State {
    struct Folder {
        std::string path;
        std::string canonical;
        bool isInOutput;
    };
    template <class Value>
    using ByText = std::unordered_map<std::string, Value, ViewHash, std::equal_to<>>;

    /// Where files of one extension go.
    struct Target {
        OrdovanFileCategory category;
        std::optional<SharedText> ruleFolder;
        SharedText explanation;
        Folder folder;
        ByText<Folder> subfolders;  // by the subfolder's name as it was given
    };

    bool rootsAreFiles;
    bool rootIsTooBroad;
    std::string canonicalRoot;
    std::string output;  // standardized; byte for byte the folder on disk, also where its name is not in NFC
    std::string canonicalOutput;
    OrdovanRuleSet rules;

    ByText<Target> targets;  // by extension as it stands in the name

    // Files come folder by folder, so what was found out about the last one's folder mostly holds for the next.
    std::string parent, canonicalParent;
    bool parentIsInRoot = false;

    State(const Url& authorizedRoot, const Url& outputRoot, const OrdovanRuleSet& ruleSet)
        : rootsAreFiles(authorizedRoot.isFile() && outputRoot.isFile()),
          rootIsTooBroad(isTooBroad(authorizedRoot)),
          canonicalRoot(OrdovanProposalPlanner::canonicalPath(authorizedRoot)),
          output(outputRoot.standardized().path()),
          canonicalOutput(OrdovanProposalPlanner::canonicalPath(outputRoot)),
          rules(ruleSet) {}

    void enterFolder(std::string_view path) {
        if (path == parent) return;
        parent = path;
        canonicalParent = OrdovanProposalPlanner::canonicalPath(path);
        parentIsInRoot = containsCanonical(canonicalParent, canonicalRoot);
    }

    [[nodiscard]] Folder folderAt(std::string path) const {
        std::string canonical = OrdovanProposalPlanner::canonicalPath(path);
        const bool isInOutput = containsCanonical(canonical, canonicalOutput);
        return {std::move(path), std::move(canonical), isInOutput};
    }

    Target& targetFor(std::string_view extension) {
        const auto known = targets.find(extension);
        if (known != targets.end()) return known->second;

        Target target{OrdovanFileCategories::forExtension(extension), {}, {}, {}, {}};
        const std::string lowered = ordovan::text::lowercased(extension);
        if (const auto folder = rules.folder(extension)) {
            target.ruleFolder = SharedText(*folder);
            target.explanation = SharedText::joined({"Your rule: .", lowered, " → ", *folder, ". Preview only."});
        } else {
            target.explanation = SharedText::joined(
                {"File type .", lowered, " grouped as ", rawValue(target.category), ". Preview only."});
        }
        const std::string_view name = target.ruleFolder ? target.ruleFolder->view() : rawValue(target.category);
        target.folder = folderAt(ordovan::normalizedPath(output + "/" + std::string(name)));
        return targets.emplace(extension, std::move(target)).first->second;
    }

    const Folder& folderOf(Target& target, std::string_view subfolder) const {
        const auto known = target.subfolders.find(subfolder);
        if (known != target.subfolders.end()) return known->second;
        const auto valid = OrdovanRuleSet::validateFolderName(subfolder);
        Folder folder = valid ? folderAt(target.folder.path + "/" + *valid) : target.folder;
        return target.subfolders.emplace(subfolder, std::move(folder)).first->second;
    }

    std::expected<OrdovanFileProposal, OrdovanProposalError> preview(const Url& file,
                                                                     std::optional<std::string_view> subfolder) {
        using enum OrdovanProposalError;
        if (!rootsAreFiles || !file.isFile()) return std::unexpected(nonFileURL);
        if (rootIsTooBroad) return std::unexpected(authorizedRootTooBroad);

        // A normal path is its folder's path and a name, so that what holds for the folder need not be asked again.
        std::string normal;
        std::string_view path = file.path();
        if (!ordovan::isNormalPath(path)) path = normal = ordovan::normalizedPath(path);
        enterFolder(ordovan::parentPath(path));
        if (!parentIsInRoot) {
            const bool isRoot = OrdovanProposalPlanner::canonicalPath(path) == canonicalRoot;
            return std::unexpected(isRoot ? sourceIsRoot : sourceOutsideAuthorizedRoot);
        }

        const std::string_view name = ordovan::lastPathComponent(path);
        Target& target = targetFor(ordovan::pathExtension(name));
        const Folder& folder = subfolder ? folderOf(target, *subfolder) : target.folder;
        if (!folder.isInOutput) return std::unexpected(destinationOutsideOutputRoot);
        if (folder.canonical == canonicalParent) return std::unexpected(sourceEqualsDestination);
        return OrdovanFileProposal{file, Url::file(SharedText::joined({folder.path, "/", name})), target.category,
                                   target.explanation, target.ruleFolder};
    }
};

Proposer::Proposer(const Url& authorizedRoot, const Url& outputRoot, const OrdovanRuleSet& rules)
    : state_(std::make_unique<State>(authorizedRoot, outputRoot, rules)) {}
Proposer::~Proposer() = default;

std::expected<OrdovanFileProposal, OrdovanProposalError> Proposer::preview(const Url& file,
                                                                           std::optional<std::string_view> subfolder) {
    return state_->preview(file, subfolder);
}

std::expected<OrdovanFileProposal, OrdovanProposalError> preview(const Url& file, const Url& authorizedRoot,
                                                                 const Url& outputRoot, const OrdovanRuleSet& rules,
                                                                 std::optional<std::string_view> subfolder) {
    return Proposer(authorizedRoot, outputRoot, rules).preview(file, subfolder);
}

}  // namespace OrdovanProposalPlanner
