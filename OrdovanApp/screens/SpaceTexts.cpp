#include "OrdovanApp/screens/SpaceTexts.h"

#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/RunTexts.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace SpaceTexts {

QString done(quint64 files, quint64 filesTotal, quint64 bytes, quint64 bytesTotal) {
    //: A size and a larger one
    const QString read =
        QCoreApplication::translate("SpaceTexts", "%1 of %2")
            .arg(Formats::byteSize(static_cast<qint64>(bytes)), Formats::byteSize(static_cast<qint64>(bytesTotal)));
    return RunTexts::done(files, filesTotal) + u" · "_s + read;
}

QString hashed(quint64 files, quint64 filesTotal, quint64 bytes, quint64 bytesTotal, double bytesPerSecond) {
    const QString text = done(files, filesTotal, bytes, bytesTotal);
    if (bytesPerSecond < 1) return text;
    //: A size read in a second
    return text + u" · "_s +
           QCoreApplication::translate("SpaceTexts", "%1/s")
               .arg(Formats::byteSize(static_cast<qint64>(bytesPerSecond)));
}

}  // namespace SpaceTexts
