#pragma once

#include "OrdovanCore/Url.h"

#include <QLocale>
#include <QString>

#include <string_view>

/// How single values look in the window: sizes, numbers, dates, names. Numbers and dates by the user's locale, of which
/// "C" and "POSIX" stand for English; words in the language of the texts. Main thread.
namespace Formats {

/// The locale of numbers and dates.
[[nodiscard]] QLocale locale();

/// A size in decimal units with one decimal below 100: "1 byte", "999 bytes", "1.2 KB", "34.5 GB", "842 MB".
[[nodiscard]] QString byteSize(qint64 bytes);

/// A number with its digits grouped: "1,204".
[[nodiscard]] QString count(qint64 number);

/// "1 file", "1,204 files".
[[nodiscard]] QString files(qint64 number);

/// The local day of an instant (seconds since 1970-01-01 00:00 UTC) with its month abbreviated: "12 Nov 2026". Empty
/// for what no calendar shows (years before 1 and after 9999).
[[nodiscard]] QString day(double epoch);
/// The same with its weekday, and without the year where it is the current one: "Tuesday, 17 November".
[[nodiscard]] QString dayOfWeek(double epoch, double nowEpoch);
/// The local time of day of an instant, in hours and minutes: "14:02".
[[nodiscard]] QString time(double epoch);
/// Both: "12 Nov 2026, 14:02".
[[nodiscard]] QString moment(double epoch);

/// Bytes of a file name or path as text that stays on one line and shows what it holds: what is not UTF-8 becomes
/// U+FFFD, control characters their pictures (U+2400 and following), and characters that break the line or turn the
/// direction of writing over U+FFFD.
[[nodiscard]] QString text(std::string_view bytes);

/// The last component of a path, as `text`.
[[nodiscard]] QString fileName(const Url& url);
/// The whole path, as `text`.
[[nodiscard]] QString path(const Url& url);
/// Where a file lies, counted from the folder `root`: "Downloads / work" for one in its folder "work". Outside of
/// `root` the whole path of its folder.
[[nodiscard]] QString folderOf(const Url& file, const Url& root);
[[nodiscard]] QString folderOf(std::string_view filePath, std::string_view rootPath);

}  // namespace Formats
