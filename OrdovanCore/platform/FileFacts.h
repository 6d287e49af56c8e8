#pragma once

#include "OrdovanCore/FileFacts.h"

namespace ordovan {

/// What lstat(2) tells of an item. Any thread.
[[nodiscard]] OrdovanResult<FileFacts> factsOf(const Url& item);

}  // namespace ordovan
