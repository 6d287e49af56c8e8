#include "OrdovanApp/screens/SmartInboxTexts.h"

#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/RunTexts.h"

using namespace Qt::StringLiterals;

namespace SmartInboxTexts {
namespace {

QString moved(const OrdovanExecutionReport& report) {
    return Formats::files(static_cast<qint64>(report.movedCount()));
}

}  // namespace

QString organizeConfirm(qint64 files) {
    return u"Organize "_s + Formats::count(files) + (files == 1 ? u" File"_s : u" Files"_s);
}

QString organizeButton(qint64 files) {
    return organizeConfirm(files) + u'…';
}

QString nothingTitle() {
    return u"Nothing to organize"_s;
}

QString nothingMessage() {
    return u"This folder already looks tidy, or has no supported files."_s;
}

QString organizeSummary(const OrdovanExecutionReport& report) {
    return u"Last organize run moved "_s + moved(report) + RunTexts::sentenceEnd(report);
}

QString undoSummary(const OrdovanExecutionReport& report) {
    return u"Last undo run put back "_s + moved(report) + RunTexts::sentenceEnd(report);
}

QString scanned(quint64 files, quint64 folders) {
    return Formats::files(static_cast<qint64>(files)) + u" in "_s +
           Formats::counted(static_cast<qint64>(folders), u"folder");
}

}  // namespace SmartInboxTexts
