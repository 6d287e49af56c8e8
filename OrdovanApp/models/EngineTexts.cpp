#include "OrdovanApp/models/EngineTexts.h"

#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/stores/AppTheme.h"
#include "OrdovanCore/Categories.h"
#include "OrdovanCore/KeepPolicy.h"
#include "OrdovanCore/PreviewStatus.h"
#include "OrdovanCore/Reconcile.h"
#include "OrdovanCore/RunHistory.h"

#include <QCoreApplication>
#include <QHash>

#include <array>
#include <cstdint>
#include <vector>

using namespace Qt::StringLiterals;

namespace EngineTexts {
namespace {

/// A sentence with insertions.
struct Pattern {
    const char* text;
    QStringList pieces;  // what stands before, between and after them
};

struct Table {
    QHash<QString, const char*> exact;
    std::vector<Pattern> patterns;
};

Table makeTable() {
    Table table;
    for (const char* text : known()) {
        const QString english = QString::fromUtf8(text);
        if (english.contains(u"%1"_s))
            table.patterns.push_back({text, QString(english).replace(u"%2"_s, u"%1"_s).split(u"%1"_s)});
        else
            table.exact.insert(english, text);
    }
    return table;
}

const Table& table() {
    static const Table made = makeTable();
    return made;
}

QString translated(const char* text) {
    return QCoreApplication::translate("Engine", text);
}

/// What is inserted into a text of this pattern; nothing when it is not of it.
std::optional<QStringList> insertions(const Pattern& pattern, QStringView text) {
    if (!text.startsWith(pattern.pieces.front())) return std::nullopt;
    QStringView rest = text.sliced(pattern.pieces.front().size());
    if (!rest.endsWith(pattern.pieces.back())) return std::nullopt;
    rest.chop(pattern.pieces.back().size());
    QStringList found;
    for (qsizetype i = 1; i + 1 < pattern.pieces.size(); ++i) {
        const qsizetype at = rest.indexOf(pattern.pieces[i]);
        if (at < 0) return std::nullopt;
        found.append(rest.first(at).toString());
        rest = rest.sliced(at + pattern.pieces[i].size());
    }
    found.append(rest.toString());
    return found;
}

/// The whole of a text, where it is known.
std::optional<QString> whole(const QString& english) {
    if (const char* text = table().exact.value(english)) return translated(text);
    for (const Pattern& pattern : table().patterns) {
        const auto found = insertions(pattern, english);
        if (!found) continue;
        const QString text = translated(pattern.text);
        return found->size() == 1 ? text.arg(found->front()) : text.arg(found->front(), found->back());
    }
    return std::nullopt;
}

QString sentences(const QString& english) {
    if (const auto known = whole(english)) return *known;
    const QString gap = u". "_s;
    for (qsizetype at = english.lastIndexOf(gap); at > 0; at = english.lastIndexOf(gap, at - 1)) {
        if (const auto first = whole(english.first(at + 1))) {
            return *first + u' ' + sentences(english.sliced(at + gap.size()));
        }
    }
    return english;
}

/// "1", "50000": numbers in these sentences are not grouped.
QString plain(std::int64_t number) {
    return QString::number(number);
}

/// What became of this many files of an interrupted run.
QString share(std::size_t count, bool namesFiles, const char* withNoun, const char* alone) {
    const auto number = static_cast<qint64>(count);
    return QCoreApplication::translate("EngineTexts", namesFiles ? withNoun : alone, nullptr, pluralOf(number))
        .arg(plain(number));
}

}  // namespace

QString sentence(std::string_view english) {
    return sentences(Formats::text(english));
}

QString category(OrdovanFileCategory category) {
    static constexpr std::array names = {
        QT_TRANSLATE_NOOP("Category", "Documents"), QT_TRANSLATE_NOOP("Category", "Spreadsheets"),
        QT_TRANSLATE_NOOP("Category", "Images"),    QT_TRANSLATE_NOOP("Category", "Design"),
        QT_TRANSLATE_NOOP("Category", "Videos"),    QT_TRANSLATE_NOOP("Category", "Audio"),
        QT_TRANSLATE_NOOP("Category", "Archives"),  QT_TRANSLATE_NOOP("Category", "Installers"),
        QT_TRANSLATE_NOOP("Category", "Code"),      QT_TRANSLATE_NOOP("Category", "Fonts"),
        QT_TRANSLATE_NOOP("Category", "Books"),     QT_TRANSLATE_NOOP("Category", "Other"),
    };
    static_assert(names.size() == OrdovanFileCategories::allCases.size());
    return QCoreApplication::translate("Category", names.at(static_cast<std::size_t>(category)));
}

QString keepPolicy(OrdovanKeepPolicy policy) {
    static constexpr std::array names = {
        QT_TRANSLATE_NOOP("KeepPolicy", "Oldest"),
        QT_TRANSLATE_NOOP("KeepPolicy", "Newest"),
        QT_TRANSLATE_NOOP("KeepPolicy", "Shortest path"),
        QT_TRANSLATE_NOOP("KeepPolicy", "Deepest path"),
    };
    static_assert(names.size() == OrdovanKeepPolicies::allCases.size());
    return QCoreApplication::translate("KeepPolicy", names.at(static_cast<std::size_t>(policy)));
}

QString theme(AppTheme theme) {
    static constexpr std::array names = {
        QT_TRANSLATE_NOOP("Theme", "Teal"),   QT_TRANSLATE_NOOP("Theme", "Sunset"), QT_TRANSLATE_NOOP("Theme", "Grape"),
        QT_TRANSLATE_NOOP("Theme", "Forest"), QT_TRANSLATE_NOOP("Theme", "Candy"),
    };
    static_assert(names.size() == AppThemes::allCases.size());
    return QCoreApplication::translate("Theme", names.at(static_cast<std::size_t>(theme)));
}

QString summary(const OrdovanRunRecord& run) {
    const auto text = [&run](const char* pattern) {
        return QCoreApplication::translate("EngineTexts", pattern, nullptr, pluralOf(run.moved))
            .arg(plain(run.moved), Formats::text(run.folderName));
    };
    switch (run.kind) {
        case OrdovanRunRecord::Kind::organize:
            return text(QT_TRANSLATE_N_NOOP("EngineTexts", "Organized %1 files in %2"));
        case OrdovanRunRecord::Kind::undo:
            return text(QT_TRANSLATE_N_NOOP("EngineTexts", "Restored %1 files in %2"));
        case OrdovanRunRecord::Kind::trash:
            return text(QT_TRANSLATE_N_NOOP("EngineTexts", "Moved %1 duplicate files to the Trash in %2"));
        case OrdovanRunRecord::Kind::restoreTrash:
            return text(QT_TRANSLATE_N_NOOP("EngineTexts", "Put back %1 files from the Trash in %2"));
    }
    return {};
}

QString summary(const OrdovanInterruptedRun& run) {
    if (run.isUnreadable) {
        return QCoreApplication::translate(
            "EngineTexts", "An earlier run was interrupted, and its record could not be read. It was set aside.");
    }
    const QString interrupted = QCoreApplication::translate("EngineTexts", "An earlier run was interrupted.");
    QStringList parts;
    const auto add = [&parts](std::size_t count, const char* withNoun, const char* alone) {
        if (count > 0) parts.append(share(count, parts.isEmpty(), withNoun, alone));
    };
    add(run.finished, QT_TRANSLATE_N_NOOP("EngineTexts", "%1 files were finished"),
        QT_TRANSLATE_N_NOOP("EngineTexts", "%1 were finished"));
    add(run.untouched, QT_TRANSLATE_N_NOOP("EngineTexts", "%1 files were left untouched"),
        QT_TRANSLATE_N_NOOP("EngineTexts", "%1 were left untouched"));
    add(run.putRight, QT_TRANSLATE_N_NOOP("EngineTexts", "%1 files were put right"),
        QT_TRANSLATE_N_NOOP("EngineTexts", "%1 were put right"));
    add(run.unsettled, QT_TRANSLATE_N_NOOP("EngineTexts", "%1 files need a look"),
        QT_TRANSLATE_N_NOOP("EngineTexts", "%1 need a look"));
    QString text = interrupted;
    if (!parts.isEmpty()) {
        QString list = parts.takeLast();
        if (!parts.isEmpty()) {
            //: The end of a list: what comes before, and the last part
            list = QCoreApplication::translate("EngineTexts", "%1 and %2").arg(parts.join(u", "_s), list);
        }
        text += u' ' + list + u'.';
    }
    if (!run.isRecorded) {
        text += u' ' +
                QCoreApplication::translate("EngineTexts", "It could not be recorded yet and will be looked at again.");
    }
    return text;
}

QString status(const OrdovanPreviewStatus& status) {
    switch (status.kind()) {
        case OrdovanPreviewStatus::Case::ready:
            return QCoreApplication::translate("EngineTexts", "%1 proposed · %2 need review")
                .arg(plain(status.proposed()), plain(status.needReview()));
        case OrdovanPreviewStatus::Case::idle:
            return QCoreApplication::translate("EngineTexts", "No folder selected");
        case OrdovanPreviewStatus::Case::scanning:
            return QCoreApplication::translate("EngineTexts", "Previewing…");
        case OrdovanPreviewStatus::Case::failed:
            break;
    }
    return QCoreApplication::translate("EngineTexts", "Preview unavailable");
}

std::optional<QString> announcement(const OrdovanPreviewStatus& status) {
    switch (status.kind()) {
        case OrdovanPreviewStatus::Case::ready:
            if (status.needReview() == 0) {
                return QCoreApplication::translate("EngineTexts", "Preview ready. %1 proposed.")
                    .arg(plain(status.proposed()));
            }
            return QCoreApplication::translate("EngineTexts", "Preview ready. %1 proposed, %2 need review.")
                .arg(plain(status.proposed()), plain(status.needReview()));
        case OrdovanPreviewStatus::Case::idle:
        case OrdovanPreviewStatus::Case::scanning:
            return std::nullopt;
        case OrdovanPreviewStatus::Case::failed:
            break;
    }
    return QCoreApplication::translate("EngineTexts", "Preview unavailable. Check folder permissions and try again.");
}

}  // namespace EngineTexts
