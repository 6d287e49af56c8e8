#pragma once

#include <QString>

/// The sentences that Duplicates and Big Files share.
namespace SpaceTexts {

/// How far a run with the Trash is: "3 of 29 files · 1.2 GB of 6.4 GB".
[[nodiscard]] QString done(quint64 files, quint64 filesTotal, quint64 bytes, quint64 bytesTotal);
/// How far a search for duplicates is: the same and how fast it reads, " · 340 MB/s". Without a rate where that is not
/// known (0).
[[nodiscard]] QString hashed(quint64 files, quint64 filesTotal, quint64 bytes, quint64 bytesTotal,
                             double bytesPerSecond);

}  // namespace SpaceTexts
