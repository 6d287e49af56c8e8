#include "OrdovanCore/platform/SystemFileSystem.h"

#include "OrdovanCore/platform/ExclusiveMove.h"
#include "OrdovanCore/platform/Failure.h"
#include "OrdovanCore/platform/FileCopy.h"
#include "OrdovanCore/platform/FileHash.h"
#include "OrdovanCore/platform/Folders.h"
#include "OrdovanCore/platform/RegularFile.h"
#include "OrdovanCore/platform/SameFile.h"
#include "OrdovanCore/platform/SystemPath.h"
#include "OrdovanCore/platform/Trash.h"
#include "OrdovanCore/platform/TrashInfo.h"

#include <optional>
#include <string>

using ordovan::failure;
using ordovan::outcome;
using ordovan::SystemPath;

namespace {

std::unexpected<OrdovanSystemError> notExamined() {
    return std::unexpected(OrdovanSystemError::cocoa(OrdovanSystemError::fileReadNoSuchFile));
}

/// stat(2); false when the path can not be examined.
bool examine(const Url& url, struct ::stat& facts) {
    const SystemPath path(url);
    return path.error() == 0 && ::stat(path.text(), &facts) == 0;
}

/// The same for the item itself, lstat(2).
bool examineItself(const Url& url, struct ::stat& facts) {
    const SystemPath path(url);
    return path.error() == 0 && ::lstat(path.text(), &facts) == 0;
}

bool hasType(const Url& url, ::mode_t type) {
    struct ::stat facts;
    return examineItself(url, facts) && (facts.st_mode & S_IFMT) == type;
}

/// The device of the nearest existing ancestor, the item itself first.
std::optional<::dev_t> deviceOf(const Url& url) {
    SystemPath path(url);
    if (path.error() != 0) return std::nullopt;
    struct ::stat facts;
    do {
        if (::stat(path.text(), &facts) == 0) return facts.st_dev;
    } while (path.stepUp());
    return std::nullopt;
}

}  // namespace

bool SystemFileSystem::exists(const Url& url) {
    struct ::stat facts;
    return examine(url, facts);
}

bool SystemFileSystem::isRegularFile(const Url& url) {
    return hasType(url, S_IFREG);
}

bool SystemFileSystem::isSymlink(const Url& url) {
    return hasType(url, S_IFLNK);
}

bool SystemFileSystem::sameVolume(const Url& a, const Url& b) {
    const std::optional<::dev_t> device = deviceOf(a);
    return device.has_value() && device == deviceOf(b);
}

OrdovanResult<void> SystemFileSystem::createDirectory(const Url& url) {
    const SystemPath path(url);
    return outcome(path.error() != 0 ? path.error() : ordovan::makeFolders(path.view(), 0777));
}

OrdovanResult<void> SystemFileSystem::move(const Url& from, const Url& to) {
    const SystemPath source(from), target(to);
    if (source.error() != 0) return failure(source.error());
    if (target.error() != 0) return failure(target.error());
    if (!OrdovanPartialName::isPartial(source.view())) {
        const int error = ordovan::moveExclusively(source.text(), target.text());
        if (error == 0) ordovan::forgetTrashInfo(source.view(), target.view());
        return outcome(error);
    }
    return outcome(ordovan::moveDurably(source.text(), target.text(), {}, ordovan::syncFolderOf));
}

OrdovanResult<void> SystemFileSystem::copy(const Url& from, const Url& to) {
    const SystemPath source(from), target(to);
    if (source.error() != 0) return failure(source.error());
    if (target.error() != 0) return failure(target.error());
    return outcome(ordovan::copyExclusively(source.text(), target.text(), {.sync = ordovan::syncFolderOf}));
}

OrdovanResult<void> SystemFileSystem::remove(const Url& url) {
    const SystemPath path(url);
    if (path.error() != 0) return failure(path.error());
    if (::unlink(path.text()) != 0) return failure(errno);
    ordovan::forgetTrashInfo(path.view(), std::nullopt);
    return {};
}

OrdovanResult<std::int64_t> SystemFileSystem::fileSize(const Url& url) {
    struct ::stat facts;
    if (!examineItself(url, facts)) return notExamined();
    return facts.st_size;
}

OrdovanResult<std::string> SystemFileSystem::contentHash(const Url& url) {
    const SystemPath path(url);
    if (path.error() != 0) return failure(path.error());
    ordovan::RegularFile file;
    const int error = file.open(path.text());
    if (error != 0) return failure(error);
    return ordovan::hashOfOpenFile(file.descriptor.get());
}

OrdovanResult<std::string> SystemFileSystem::fileIdentity(const Url& url) {
    struct ::stat facts;
    if (!examine(url, facts)) return notExamined();
    return ordovan::identityText(facts);
}

OrdovanResult<Url> SystemFileSystem::trash(const Url& url) {
    return ordovan::moveToTrash(url);
}
