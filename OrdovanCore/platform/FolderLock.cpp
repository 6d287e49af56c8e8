#include "OrdovanCore/platform/FolderLock.h"

#include "OrdovanCore/platform/FileLock.h"
#include "OrdovanCore/platform/Folders.h"
#include "OrdovanCore/platform/SameFile.h"
#include "OrdovanCore/platform/SystemPath.h"

#include <sys/stat.h>

#include <ctime>

namespace ordovan {

namespace {

constexpr std::chrono::milliseconds betweenTries{20};

/// How often another folder may bear the name when a lock was had, or none.
constexpr int mostExchanges = 100;

/// True when the path still leads to the open folder.
bool leadsTo(const char* path, int folder) {
    struct ::stat there, opened;
    return ::stat(path, &there) == 0 && ::fstat(folder, &opened) == 0 && isSameFile(there, opened);
}

/// Sleeps until the next try, which a signal brings forward.
void pause() {
    const ::timespec time = {.tv_sec = 0, .tv_nsec = std::chrono::nanoseconds(betweenTries).count()};
    static_cast<void>(::nanosleep(&time, nullptr));
}

}  // namespace

OrdovanResult<FolderLock> FolderLock::tryAcquire(const Url& folder) {
    const SystemPath path(folder);
    if (path.error() != 0) return std::unexpected(OrdovanSystemError::posix(path.error()));
    Descriptor opened = Descriptor::open(path.text(), O_RDONLY | O_DIRECTORY);
    const int error = opened ? tryLock(opened.get()) : errno;
    if (error != 0) return std::unexpected(OrdovanSystemError::posix(error));
    return FolderLock(std::move(opened));
}

OrdovanResult<FolderLock> FolderLock::acquire(const Url& folder, const LockPatience& patience) {
    const SystemPath path(folder);
    if (path.error() != 0) return std::unexpected(OrdovanSystemError::posix(path.error()));
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + patience.longest;
    for (int exchanges = 0;;) {
        int error = makeFolders(path.view(), 0700);
        if (error != 0) return std::unexpected(OrdovanSystemError::posix(error));
        Descriptor opened = Descriptor::open(path.text(), O_RDONLY | O_DIRECTORY);
        error = opened ? tryLock(opened.get()) : errno;
        // While we waited, somebody may have put another folder in its place, which others would lock from now on.
        if (error == 0 && leadsTo(path.text(), opened.get())) return FolderLock(std::move(opened));
        if (error == 0 || error == ENOENT) {
            // Once is chance and wants no pause. Somebody who goes on with it is not to keep us here for ever.
            if (++exchanges == mostExchanges) {
                return std::unexpected(OrdovanSystemError::posix(error == 0 ? EWOULDBLOCK : error));
            }
            if (exchanges > 1) pause();
            continue;
        }
        if (error != EWOULDBLOCK || Clock::now() >= end) return std::unexpected(OrdovanSystemError::posix(error));
        if (patience.isEnded && patience.isEnded()) return std::unexpected(OrdovanSystemError::posix(EINTR));
        pause();
    }
}

}  // namespace ordovan
