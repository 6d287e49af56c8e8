#pragma once

#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Url.h"

#include <memory>
#include <span>

/// What all runs that change a folder have in common. On background threads.
namespace FolderRun {

/// True for a file that a run in this folder may look into: one inside the folder with no link on the way, or one in a
/// Trash. A record may name others; the run refuses those, and nothing is to open them before it does.
[[nodiscard]] bool mayRead(const Url& file, const Url& root, OrdovanFileSystem& fs);

/// The file system that a run in a folder changes files through, told beforehand which files it will hash.
class FileSystem {
public:
    FileSystem(const TidyPorts& ports, const Url& root, std::span<const Url> toBeHashed)
        : own_(ports.makeRunFileSystem ? ports.makeRunFileSystem(root) : nullptr),
          disk_(own_ == nullptr ? ports.fileSystem : *own_),
          ahead_(ports.hashAhead ? ports.hashAhead(disk_, toBeHashed,
                                                   [root, &fs = ports.fileSystem](const Url& file) {
                                                       return mayRead(file, root, fs);
                                                   })
                                 : nullptr),
          port_(ahead_ == nullptr ? disk_ : *ahead_) {}
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;

    OrdovanFileSystem& port() { return port_; }

private:
    std::unique_ptr<OrdovanFileSystem> own_;  // null where the ports' own serves
    OrdovanFileSystem& disk_;
    std::unique_ptr<OrdovanFileSystem> ahead_;
    OrdovanFileSystem& port_;
};

/// Does `work` under the folder's lock; a result with `refused` set when another run holds it. A folder that can not be
/// locked for another reason (it is gone, say) is left to the checks that the run makes for each file.
template <class Work>
auto locked(const TidyPorts& ports, const Url& folder, Work work) {
    const auto lock = ports.tryLockFolder(folder);
    if (ordovan::isHeldElsewhere(lock)) {
        decltype(work()) refusal;
        refusal.refused = true;
        return refusal;
    }
    return work();
}

}  // namespace FolderRun
