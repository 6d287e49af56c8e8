#pragma once

#include <sys/stat.h>

namespace ordovan {

/// Gives an open file the owner, extended attributes, access control list, mode and times of another one, whose
/// fstat(2) is given. What the target can not hold or we may not set is left out, see `copyExclusively`.
/// Returns 0 or the errno of a failure that is neither of these (a full disk, a device error). Nothing is flushed. Any
/// thread.
int copyAttributes(int from, const struct ::stat& facts, int to);

}  // namespace ordovan
