#pragma once

#include "OrdovanCore/FileFacts.h"

namespace ordovan {

/// What lstat(2) tells of an item. Any thread.
[[nodiscard]] OrdovanResult<FileFacts> factsOf(const Url& item);

/// The same for many items, folder by folder: the folder of the item before is kept open, so that its path is not
/// walked again. Used by one thread; destroy it soon, so that volumes can be unmounted.
[[nodiscard]] FactsFunction factsOfMany();

}  // namespace ordovan
