#include "OrdovanApp/screens/SystemDesktop.h"

#include "OrdovanApp/stores/DownloadsFolder.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QStandardPaths>
#include <QUrl>

#include <array>
#include <cstddef>

using namespace Qt::StringLiterals;

namespace {

struct PlanFormat {
    OrdovanPlanExportFormat format;
    QStringView suffix;
    QStringView filter;
};

constexpr std::array planFormats = {
    PlanFormat{OrdovanPlanExportFormat::markdown, u"md", u"Markdown (*.md)"},
    PlanFormat{OrdovanPlanExportFormat::csv, u"csv", u"CSV (*.csv)"},
};

const PlanFormat& formatOfFilter(QStringView filter) {
    for (const PlanFormat& each : planFormats) {
        if (each.filter == filter) return each;
    }
    return planFormats.front();
}

/// The format whose extension a name has, or null.
const PlanFormat* formatOfName(QStringView name) {
    for (const PlanFormat& each : planFormats) {
        const bool has = name.endsWith(each.suffix, Qt::CaseInsensitive);
        if (has && name.chopped(each.suffix.size()).endsWith(u'.')) return &each;
    }
    return nullptr;
}

/// A file's address with its bytes as they are, percent-encoded.
QString address(const Url& file) {
    const QByteArray path(file.path().data(), static_cast<qsizetype>(file.path().size()));
    return u"file://"_s + QString::fromLatin1(path.toPercentEncoding("/"));
}

QString localPath(const Url& url) {
    return QFile::decodeName(QByteArray(url.path().data(), static_cast<qsizetype>(url.path().size())));
}

Url urlOf(const QString& path) {
    return Url::file(QFile::encodeName(path).toStdString());
}

}  // namespace

namespace PlanFile {

OrdovanPlanExportFormat format(QStringView name, QStringView filter) {
    const PlanFormat* own = formatOfName(name);
    return own != nullptr ? own->format : formatOfFilter(filter).format;
}

QString named(const QString& name, QStringView filter) {
    const PlanFormat& wanted = formatOfFilter(filter);
    const PlanFormat* own = formatOfName(name);
    if (own == &wanted) return name;
    const QString stem = own != nullptr ? name.chopped(own->suffix.size() + 1) : name;
    return stem + u'.' + wanted.suffix.toString();
}

QStringList filters() {
    QStringList result;
    for (const PlanFormat& each : planFormats) result.append(each.filter.toString());
    return result;
}

}  // namespace PlanFile

SystemDesktop::SystemDesktop(std::function<std::optional<Url>()> currentFolder, QObject* parent)
    : QObject(parent), currentFolder_(std::move(currentFolder)), downloads_(ordovan::downloadsFolder()) {}

/// One chooser at a time: null while one is open, which then comes forward.
QFileDialog* SystemDesktop::dialog(QWidget* parent, const QString& title) {
    if (open_ != nullptr) {
        open_->raise();
        open_->activateWindow();
        return nullptr;
    }
    open_ = new QFileDialog(parent, title);
    open_->setAttribute(Qt::WA_DeleteOnClose);
    return open_;
}

void SystemDesktop::chooseFolder(QWidget* parent, std::function<void(const Url&)> chosen) {
    QFileDialog* chooser = dialog(parent, tr("Choose Folder"));
    if (chooser == nullptr) return;
    chooser->setFileMode(QFileDialog::Directory);
    chooser->setOption(QFileDialog::ShowDirsOnly);
    if (const auto current = currentFolder_()) {
        chooser->setDirectory(localPath(*current));
    } else if (downloads_) {
        chooser->setDirectory(localPath(*downloads_));
    }
    connect(chooser, &QFileDialog::fileSelected, this, [chosen = std::move(chosen)](const QString& path) {
        if (!path.isEmpty()) chosen(urlOf(path));
    });
    chooser->open();
}

void SystemDesktop::choosePlanFile(QWidget* parent, const QString& message, const QString& suggestedName,
                                   std::function<void(const Url&, OrdovanPlanExportFormat)> chosen) {
    QFileDialog* chooser = dialog(parent, message);
    if (chooser == nullptr) return;
    chooser->setAcceptMode(QFileDialog::AcceptSave);
    chooser->setFileMode(QFileDialog::AnyFile);
    chooser->setNameFilters(PlanFile::filters());
    chooser->setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    const auto follow = [chooser](const QString& name, const QString& filter) {
        chooser->setDefaultSuffix(formatOfFilter(filter).suffix.toString());
        chooser->selectFile(PlanFile::named(name, filter));
    };
    connect(chooser, &QFileDialog::filterSelected, chooser, [chooser, follow](const QString& filter) {
        const QStringList selected = chooser->selectedFiles();
        if (!selected.isEmpty()) follow(selected.front().section(u'/', -1), filter);
    });
    connect(chooser, &QFileDialog::fileSelected, this, [chooser, chosen = std::move(chosen)](const QString& path) {
        if (!path.isEmpty()) chosen(urlOf(path), PlanFile::format(path, chooser->selectedNameFilter()));
    });
    follow(suggestedName, PlanFile::filters().front());
    chooser->open();
}

/// Calls a method of org.freedesktop.FileManager1 for one address; `otherwise` when nobody answers to it.
void SystemDesktop::askFileManager(const QString& method, const QString& address, std::function<void()> otherwise) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return otherwise();
    QDBusMessage call =
        QDBusMessage::createMethodCall(u"org.freedesktop.FileManager1"_s, u"/org/freedesktop/FileManager1"_s,
                                       u"org.freedesktop.FileManager1"_s, method);
    call << QStringList{address} << QString();
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, otherwise = std::move(otherwise)] {
        watcher->deleteLater();
        if (QDBusPendingReply<>(*watcher).isError()) otherwise();
    });
}

void SystemDesktop::reveal(const Url& file) {
    askFileManager(u"ShowItems"_s, address(file),
                   [folder = address(file.deletingLastPathComponent())] { QDesktopServices::openUrl(QUrl(folder)); });
}

void SystemDesktop::showTrash(const Url& trashedFile) {
    const QString trash = u"trash:///"_s;
    askFileManager(u"ShowFolders"_s, trash, [trash, folder = address(trashedFile.deletingLastPathComponent())] {
        if (!QDesktopServices::openUrl(QUrl(trash))) QDesktopServices::openUrl(QUrl(folder));
    });
}

bool SystemDesktop::openAddress(const QString& address) {
    return QDesktopServices::openUrl(QUrl(address));
}
