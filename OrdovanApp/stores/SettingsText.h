#pragma once

#include <string_view>

namespace ordovan {

/// Whether an INI file holds nothing but values of the kinds that are stored in it: texts, byte arrays, lists of them,
/// and none. QSettings makes an object of any type out of a value such as `@Variant(…)`, as large as the value says,
/// so a damaged file is looked through before QSettings reads it.
///
/// `ini` is the file's content, of any bytes. The rules are those of QSettings::IniFormat as its documentation gives
/// them: a type stands behind an `@` at the very beginning of a value (texts that begin with one are written with two),
/// "," separates the items of a list, and quotes and backslashes are as in C. Where content breaks these rules this
/// may find a value that QSettings does not see, but misses none. Any thread.
[[nodiscard]] bool holdsOnlyPlainValues(std::string_view ini);

}  // namespace ordovan
