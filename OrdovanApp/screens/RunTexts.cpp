#include "OrdovanApp/screens/RunTexts.h"

#include "OrdovanApp/models/Formats.h"

using namespace Qt::StringLiterals;

namespace RunTexts {
namespace {

QString line(const OrdovanExecutionOutcome& outcome) {
    return Formats::fileName(outcome.source) + u" — "_s + Formats::text(outcome.message);
}

}  // namespace

QString done(quint64 files, quint64 total) {
    return Formats::count(static_cast<qint64>(files)) + u" of "_s + Formats::files(static_cast<qint64>(total));
}

QString leftBehind(std::size_t skipped, std::size_t failed) {
    QStringList parts;
    if (skipped > 0) parts += Formats::count(static_cast<qint64>(skipped)) + u" skipped"_s;
    if (failed > 0) parts += Formats::count(static_cast<qint64>(failed)) + u" failed"_s;
    return parts.join(u", "_s);
}

QString sentenceEnd(const OrdovanExecutionReport& report) {
    const QString rest = leftBehind(report.skippedCount(), report.failedCount());
    return rest.isEmpty() ? u"."_s : u"; "_s + rest + u'.';
}

QStringList sentences(std::span<const OrdovanExecutionOutcome> outcomes) {
    QStringList lines;
    for (const OrdovanExecutionOutcome& outcome : outcomes) lines += line(outcome);
    return lines;
}

QStringList problems(std::span<const OrdovanExecutionOutcome> outcomes) {
    QStringList lines;
    for (const OrdovanExecutionOutcome& outcome : outcomes) {
        if (outcome.status != OrdovanExecutionStatus::moved) lines += line(outcome);
    }
    return lines;
}

}  // namespace RunTexts
