#pragma once

#include "OrdovanCore/FileSystem.h"

namespace ordovan::test {

/// The code of a result's error, be it an errno or a file-manager code; 0 for a success.
template <class T>
int error(const OrdovanResult<T>& result) {
    return result ? 0 : result.error().code;
}

}  // namespace ordovan::test
