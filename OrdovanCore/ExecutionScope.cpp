#include "OrdovanCore/ExecutionScope.h"

#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/Text.h"

#include <algorithm>

using ordovan::hasDotDotPiece;
using OrdovanProposalPlanner::canonicalPath;
using OrdovanProposalPlanner::containsCanonical;

namespace {

/// Bytes of a path that the system takes, the closing NUL included (PATH_MAX, limits.h(0p)).
constexpr std::size_t longestPath = 4096;

bool isCanonical(std::string_view path) {
    return ordovan::isNormalPath(path) && ordovan::text::isComposed(path);
}

}  // namespace

namespace ordovan {

bool hasDotDotPiece(std::string_view path) {
    for (std::size_t at = path.find(".."); at != std::string_view::npos; at = path.find("..", at + 1)) {
        const bool begins = at == 0 || path[at - 1] == '/';
        const bool ends = at + 2 == path.size() || path[at + 2] == '/';
        if (begins && ends) return true;
    }
    return false;
}

bool namesOnePlace(const Url& url) {
    const std::string_view path = url.path();
    return url.isFile() && path.size() < longestPath && path.starts_with('/') && !hasDotDotPiece(path) &&
           path.find('\0') == std::string_view::npos && text::isUtf8(path);
}

Boundary::Boundary(const Url& root)
    : root_(root),
      normal_(normalizedPath(root.path())),
      canonical_(canonicalPath(root)),
      usable_(namesOnePlace(root)) {}

bool Boundary::holds(const Url& item, OrdovanFileSystem& fs) const {
    if (!usable_ || !namesOnePlace(item)) return false;
    const std::string_view path = item.path();
    if (isCanonical(path)) return containsCanonical(path, canonical_) && isSpelledAlike(path, fs);
    return containsCanonical(canonicalPath(item), canonical_) && isSpelledAlike(normalizedPath(path), fs);
}

bool Boundary::isSpelledAlike(std::string_view normalPath, OrdovanFileSystem& fs) const {
    if (containsCanonical(normalPath, normal_)) return true;
    // Composition never reaches across a "/", so the root's counterpart is made of as many pieces as the root.
    std::size_t end = 0;
    for (auto pieces = std::ranges::count(normal_, '/'); pieces > 0; --pieces) end = normalPath.find('/', end + 1);
    const auto counterpart = fs.fileIdentity(Url::file(normalPath.substr(0, end)));
    const auto root = fs.fileIdentity(root_);
    return counterpart && root && *counterpart == *root;
}

ExecutionScope::ExecutionScope(const Url& authorizedRoot, const Url& outputRoot)
    : authorized_(authorizedRoot),
      output_(outputRoot),
      tooBroad_(OrdovanProposalPlanner::isTooBroad(authorizedRoot)),
      outputLiesInAuthorized_(containsCanonical(output_.canonicalRoot(), authorized_.canonicalRoot())) {}

bool ExecutionScope::holds(const Url& original, const Url& organized, OrdovanFileSystem& fs) const {
    return !tooBroad_ && authorized_.holds(original, fs) && output_.holds(organized, fs);
}

bool ExecutionScope::crossesLink(const Url& original, const Url& organized, OrdovanFileSystem& fs) const {
    const Boundary& organizedWalkEnd = outputLiesInAuthorized_ ? authorized_ : output_;
    return OrdovanHasSymlinkedParent(original, authorized_.canonicalRoot(), fs) ||
           OrdovanHasSymlinkedParent(organized, organizedWalkEnd.canonicalRoot(), fs);
}

}  // namespace ordovan

bool OrdovanHasSymlinkedParent(const Url& item, std::string_view canonicalRoot, OrdovanFileSystem& fs) {
    const bool canonical = isCanonical(item.path());
    // "link/.." is not the folder that holds the link, so such a way can not be judged by its text.
    if (!canonical && hasDotDotPiece(item.path())) return true;
    std::string_view folder = ordovan::parentPath(item.path());
    while (!folder.empty()) {
        const Url url = Url::file(folder);
        if (canonical ? folder == canonicalRoot : canonicalPath(folder) == canonicalRoot) return false;
        if (fs.isSymlink(url)) return true;
        const std::string_view above = ordovan::parentPath(folder);
        if (above == folder) return false;
        folder = above;
    }
    return false;
}
