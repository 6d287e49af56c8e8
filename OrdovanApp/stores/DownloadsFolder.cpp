#include "OrdovanApp/stores/DownloadsFolder.h"

#include "OrdovanCore/Proposals.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QString>

#include <string>

namespace ordovan {

namespace {

Url urlOf(const QByteArray& path) {
    return Url::file(path.toStdString()).standardized();
}

}  // namespace

std::optional<Url> downloadsFolder() {
    const QString path = QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation));
    const QString home = QDir::homePath();
    if (path.isEmpty() || path == home) return std::nullopt;
    // Qt reads the variable as text, and what is not UTF-8 in it would be lost.
    const QByteArray homeBytes = qEnvironmentVariableIsEmpty("HOME") ? QFile::encodeName(home) : qgetenv("HOME");
    const bool isBelow = path.startsWith(home + u'/');
    const Url folder = urlOf(isBelow ? homeBytes + QFile::encodeName(path.mid(home.size())) : QFile::encodeName(path));
    using OrdovanProposalPlanner::resolveExisting;
    if (resolveExisting(folder) == resolveExisting(urlOf(homeBytes))) return std::nullopt;
    return folder;
}

}  // namespace ordovan
