#include "OrdovanApp/screens/SmartInboxTexts.h"

#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/screens/RunTexts.h"

#include <QCoreApplication>

namespace SmartInboxTexts {
QString organizeConfirm(qint64 files) {
    return QCoreApplication::translate("SmartInboxTexts", "Organize %1 Files", nullptr, pluralOf(files))
        .arg(Formats::count(files));
}

QString organizeButton(qint64 files) {
    return QCoreApplication::translate("SmartInboxTexts", "Organize %1 Files…", nullptr, pluralOf(files))
        .arg(Formats::count(files));
}

QString nothingTitle() {
    return QCoreApplication::translate("SmartInboxTexts", "Nothing to organize");
}

QString nothingMessage() {
    return QCoreApplication::translate("SmartInboxTexts", "This folder already looks tidy, or has no supported files.");
}

QString organizeSummary(const OrdovanExecutionReport& report) {
    return RunTexts::summary(report, QT_TRANSLATE_N_NOOP("RunTexts", "Last organize run moved %1 files."),
                             QT_TRANSLATE_N_NOOP("RunTexts", "Last organize run moved %1 files; %2."));
}

QString undoSummary(const OrdovanExecutionReport& report) {
    return RunTexts::summary(report, QT_TRANSLATE_N_NOOP("RunTexts", "Last undo run put back %1 files."),
                             QT_TRANSLATE_N_NOOP("RunTexts", "Last undo run put back %1 files; %2."));
}

QString scanning() {
    return QCoreApplication::translate("SmartInboxView", "Previewing — reading metadata only…");
}

QString scanned(quint64 files, quint64 folders) {
    const auto count = static_cast<qint64>(folders);
    //: "12 files", and the folders they are in
    return QCoreApplication::translate("SmartInboxTexts", "%1 in %2 folders", nullptr, pluralOf(count))
        .arg(Formats::files(static_cast<qint64>(files)), Formats::count(count));
}

}  // namespace SmartInboxTexts
