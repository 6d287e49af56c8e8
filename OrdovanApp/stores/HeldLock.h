#pragma once

#include "OrdovanCore/FileSystem.h"

#include <functional>
#include <memory>

namespace ordovan {

/// A lock that is held until the last copy of this is gone.
using HeldLock = std::shared_ptr<const void>;

/// Takes the lock of a folder. Any thread.
using LockFunction = std::function<OrdovanResult<HeldLock>(const Url& folder)>;

/// `FolderLock::tryAcquire` and `FolderLock::acquire` as lock functions.
[[nodiscard]] OrdovanResult<HeldLock> tryLockFolder(const Url& folder);
[[nodiscard]] OrdovanResult<HeldLock> lockFolder(const Url& folder);

}  // namespace ordovan
