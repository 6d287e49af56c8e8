#include "OrdovanApp/screens/SpaceTexts.h"

#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/RunTexts.h"

using namespace Qt::StringLiterals;

namespace SpaceTexts {

QString done(quint64 files, quint64 filesTotal, quint64 bytes, quint64 bytesTotal) {
    return RunTexts::done(files, filesTotal) + u" · "_s + Formats::byteSize(static_cast<qint64>(bytes)) + u" of "_s +
           Formats::byteSize(static_cast<qint64>(bytesTotal));
}

QString hashed(quint64 files, quint64 filesTotal, quint64 bytes, quint64 bytesTotal, double bytesPerSecond) {
    QString text = done(files, filesTotal, bytes, bytesTotal);
    if (bytesPerSecond >= 1) text += u" · "_s + Formats::byteSize(static_cast<qint64>(bytesPerSecond)) + u"/s"_s;
    return text;
}

}  // namespace SpaceTexts
