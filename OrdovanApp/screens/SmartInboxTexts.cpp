#include "OrdovanApp/screens/SmartInboxTexts.h"

#include "OrdovanApp/models/Formats.h"

using namespace Qt::StringLiterals;

namespace SmartInboxTexts {
namespace {

/// "; 1 skipped, 2 failed." with what there is of it.
QString rest(const OrdovanExecutionReport& report) {
    QStringList parts;
    if (const auto skipped = report.skippedCount(); skipped > 0) {
        parts += Formats::count(static_cast<qint64>(skipped)) + u" skipped"_s;
    }
    if (const auto failed = report.failedCount(); failed > 0) {
        parts += Formats::count(static_cast<qint64>(failed)) + u" failed"_s;
    }
    return parts.isEmpty() ? u"."_s : u"; "_s + parts.join(u", "_s) + u'.';
}

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
    return u"Last organize run moved "_s + moved(report) + rest(report);
}

QString undoSummary(const OrdovanExecutionReport& report) {
    return u"Last undo run put back "_s + moved(report) + rest(report);
}

QStringList problems(const OrdovanExecutionReport& report) {
    QStringList lines;
    for (const OrdovanExecutionOutcome& outcome : report.outcomes) {
        if (outcome.status == OrdovanExecutionStatus::moved) continue;
        lines += Formats::fileName(outcome.source) + u" — "_s + Formats::text(outcome.message);
    }
    return lines;
}

QString scanned(quint64 files, quint64 folders) {
    return Formats::files(static_cast<qint64>(files)) + u" in "_s +
           Formats::counted(static_cast<qint64>(folders), u"folder");
}

QString done(quint64 files, quint64 total) {
    return Formats::count(static_cast<qint64>(files)) + u" of "_s + Formats::files(static_cast<qint64>(total));
}

}  // namespace SmartInboxTexts
