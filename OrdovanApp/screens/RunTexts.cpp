#include "OrdovanApp/screens/RunTexts.h"

#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace RunTexts {
namespace {

/// The form of a text for a number.
QString translated(const char* text, qint64 number) {
    return QCoreApplication::translate("RunTexts", text, nullptr, pluralOf(number));
}

QString line(const OrdovanExecutionOutcome& outcome) {
    return Formats::fileName(outcome.source) + u" — "_s + EngineTexts::sentence(outcome.message);
}

}  // namespace

QString done(quint64 files, quint64 total) {
    const auto all = static_cast<qint64>(total);
    return translated(QT_TRANSLATE_N_NOOP("RunTexts", "%1 of %2 files"), all)
        .arg(Formats::count(static_cast<qint64>(files)), Formats::count(all));
}

QString recovering() {
    return QCoreApplication::translate("RunTexts", "Putting an interrupted run in order…");
}

QString leftBehind(std::size_t skipped, std::size_t failed) {
    QStringList parts;
    const auto add = [&parts](std::size_t count, const char* text) {
        const auto number = static_cast<qint64>(count);
        if (number > 0) parts += translated(text, number).arg(Formats::count(number));
    };
    add(skipped, QT_TRANSLATE_N_NOOP("RunTexts", "%1 skipped"));
    add(failed, QT_TRANSLATE_N_NOOP("RunTexts", "%1 failed"));
    return parts.join(u", "_s);
}

QString summary(const OrdovanExecutionReport& report, const char* whole, const char* withRest) {
    const auto moved = static_cast<qint64>(report.movedCount());
    const QString rest = leftBehind(report.skippedCount(), report.failedCount());
    if (rest.isEmpty()) return translated(whole, moved).arg(Formats::count(moved));
    return translated(withRest, moved).arg(Formats::count(moved), rest);
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
