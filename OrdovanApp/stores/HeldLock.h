#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/platform/FolderLock.h"

#include <functional>
#include <memory>

namespace ordovan {

/// A lock that is held until the last copy of this is gone.
using HeldLock = std::shared_ptr<const void>;

/// Takes the lock of a folder. Any thread.
using LockFunction = std::function<OrdovanResult<HeldLock>(const Url& folder)>;

/// `FolderLock::tryAcquire` as a lock function.
[[nodiscard]] OrdovanResult<HeldLock> tryLockFolder(const Url& folder);
/// A lock function by `FolderLock::acquire`.
[[nodiscard]] LockFunction lockFolderWithin(LockPatience patience);

/// True when a lock was not given because another has it: others would not expect a change now. (A lock that can not be
/// had for another reason is nobody's.)
[[nodiscard]] bool isHeldElsewhere(const OrdovanResult<HeldLock>& lock);

}  // namespace ordovan
