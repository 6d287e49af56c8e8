#include "OrdovanApp/models/EngineTexts.h"

#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/stores/AppTheme.h"
#include "OrdovanCore/Categories.h"
#include "OrdovanCore/KeepPolicy.h"
#include "OrdovanCore/PreviewStatus.h"
#include "OrdovanCore/Reconcile.h"
#include "OrdovanCore/RunHistory.h"
#include "tests/support/WidgetTestMain.h"

#include <QRegularExpression>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

using namespace Qt::StringLiterals;

namespace {

namespace fs = std::filesystem;

/// Files whose texts the window never shows as sentences, and why.
const std::map<std::string, const char*> notShown = {
    {"Json.cpp", "why a record can not be read: the user is told that it can not"},
    {"Journal.cpp", "the same"},
    {"RunRecord.cpp", "the same"},
    {"PlanExport.cpp", "reports are written in English"},
    {"Collation.cpp", "names of locales"},
    {"RunHistory.cpp", "composed by EngineTexts::summary, compared below"},
    {"Reconcile.cpp", "composed by EngineTexts::summary, compared below"},
    {"PreviewStatus.cpp", "composed by EngineTexts::status and announcement, compared below"},
    {"TrashNaming.h", "the head of a Trash info file"},
    {"Categories.cpp", "names of folders"},
    {"KeepPolicy.cpp", "compared below"},
    {"AppTheme.cpp", "compared below"},
};
const std::set<std::string> notSentences = {"\"id\" is not a UUID."};

std::string contentOf(const fs::path& file) {
    std::stringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

/// The string literals of a source file, those that follow each other as one.
std::vector<std::string> literalsOf(const std::string& source) {
    static const QRegularExpression token(
        uR"x((?<comment>//[^\n]*|/\*.*?\*/|^\s*#[^\n]*)|'(?:\\.|[^'\\])+'|"(?<text>(?:\\.|[^"\\])*)"|(?<other>\S))x"_s,
        QRegularExpression::DotMatchesEverythingOption | QRegularExpression::MultilineOption);
    std::vector<std::string> found;
    bool follows = false;
    auto matches = token.globalMatch(QString::fromStdString(source));
    while (matches.hasNext()) {
        const auto match = matches.next();
        if (match.hasCaptured(u"text")) {
            QString text = match.captured(u"text");
            text.replace(u"\\\""_s, u"\""_s).replace(u"\\n"_s, u"\n"_s);
            if (follows)
                found.back() += text.toStdString();
            else
                found.push_back(text.toStdString());
            follows = true;
        } else if (!match.hasCaptured(u"comment")) {
            follows = false;
        }
    }
    return found;
}

/// Whether a text could be a sentence or a part of one.
bool isLikeASentence(const QString& text) {
    static const QRegularExpression words(u"[A-Za-z'] [a-z]|^[A-Z][a-z]+\\.$"_s);
    return words.match(text).hasMatch();
}

bool isKnown(const QString& text) {
    return std::ranges::any_of(EngineTexts::known(),
                               [&](const char* known) { return QString::fromUtf8(known).contains(text.trimmed()); });
}

std::vector<fs::path> sources() {
    std::vector<fs::path> files;
    const fs::path root = ORDOVAN_SOURCE_DIR;
    for (const fs::path folder : {"OrdovanCore", "OrdovanApp/controller", "OrdovanApp/stores"}) {
        for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
            const bool isCode = entry.path().extension() == ".cpp" || entry.path().extension() == ".h";
            const bool isOfTests = entry.path().string().contains("/testing/");
            if (isCode && !isOfTests && !notShown.contains(entry.path().filename())) files.push_back(entry.path());
        }
    }
    return files;
}

TEST(EngineTexts, KnowEverySentenceThatTheEngineAndTheControllerHold) {
    QStringList unknown;
    std::size_t sentences = 0;
    for (const fs::path& file : sources()) {
        for (const std::string& literal : literalsOf(contentOf(file))) {
            const QString text = QString::fromStdString(literal);
            if (!isLikeASentence(text) || notSentences.contains(literal)) continue;
            ++sentences;
            if (!isKnown(text)) unknown += QString::fromStdString(file.filename()) + u": "_s + text;
        }
    }
    EXPECT_EQ(unknown.join(u'\n').toStdString(), "");
    EXPECT_GT(sentences, 80U);
}

TEST(EngineTexts, KnowNoSentenceThatNobodySays) {
    std::string all;
    for (const fs::path& file : sources()) {
        for (const std::string& literal : literalsOf(contentOf(file))) all += literal + "\n";
    }
    const QString said = QString::fromStdString(all);
    QStringList unsaid;
    for (const char* known : EngineTexts::known()) {
        static const QRegularExpression insertion(u"%[12]"_s);
        for (const QString& piece : QString::fromUtf8(known).split(insertion)) {
            if (piece.trimmed().size() > 3 && !said.contains(piece)) unsaid += QString::fromUtf8(known);
        }
    }
    unsaid.removeDuplicates();
    EXPECT_EQ(unsaid.join(u'\n').toStdString(), "");
}

TEST(EngineTexts, AreTheSentencesThemselvesInEnglish) {
    for (const char* known : EngineTexts::known()) EXPECT_EQ(EngineTexts::sentence(known), QString::fromUtf8(known));
    EXPECT_EQ(EngineTexts::sentence("A sentence of another version. With % and %1."),
              u"A sentence of another version. With % and %1."_s);
    EXPECT_EQ(EngineTexts::sentence("two\nlines"), u"two␊lines"_s);
}

TEST(EngineTexts, InsertNamesAndFollowOneSentenceByAnother) {
    const Language german({u"de"_s});
    EXPECT_EQ(EngineTexts::sentence("File type .pdf grouped as Documents. Preview only."),
              u"Dateityp .pdf, gehört zu Documents. Nur Vorschau."_s);
    EXPECT_EQ(EngineTexts::sentence("Your rule: .%2 → 100 %1. Preview only."),
              u"Ihre Regel: .%2 → 100 %1. Nur Vorschau."_s);
    EXPECT_EQ(EngineTexts::sentence("A verified copy of it lies at /r/v. 2/a. b.txt."),
              u"Eine geprüfte Kopie davon liegt unter /r/v. 2/a. b.txt."_s);
    EXPECT_EQ(
        EngineTexts::sentence("Could not move this file; it was left in place. The system reported an error (code 5)."),
        u"Diese Datei ließ sich nicht verschieben; sie liegt, wo sie war. Das System meldet einen Fehler (Code 5)."_s);
    EXPECT_EQ(EngineTexts::sentence("Moved. Something else."), u"Verschoben. Something else."_s);
    EXPECT_EQ(EngineTexts::sentence(""), QString());
}

TEST(EngineTexts, TranslateEverySentence) {
    const Language german({u"de"_s});
    for (const char* known : EngineTexts::known()) EXPECT_NE(EngineTexts::sentence(known), QString::fromUtf8(known));
}

OrdovanRunRecord run(OrdovanRunRecord::Kind kind, std::int64_t moved) {
    return {.id = {}, .kind = kind, .epoch = 0, .folderName = "Down%1loads", .moved = moved, .skipped = 0, .failed = 0};
}

TEST(EngineTexts, SummarizeRunsAsTheEngineDoes) {
    using Kind = OrdovanRunRecord::Kind;
    for (const Kind kind : {Kind::organize, Kind::undo, Kind::trash, Kind::restoreTrash}) {
        for (const std::int64_t moved : {0, 1, 2, 50'000}) {
            const OrdovanRunRecord record = run(kind, moved);
            EXPECT_EQ(EngineTexts::summary(record), QString::fromStdString(record.summary()));
        }
    }
}

TEST(EngineTexts, SummarizeRunsInGerman) {
    const Language german({u"de"_s});
    EXPECT_EQ(EngineTexts::summary(run(OrdovanRunRecord::Kind::organize, 0)),
              u"0 Dateien in „Down%1loads“ einsortiert"_s);
    EXPECT_EQ(EngineTexts::summary(run(OrdovanRunRecord::Kind::organize, 1)),
              u"1 Datei in „Down%1loads“ einsortiert"_s);
    EXPECT_EQ(EngineTexts::summary(run(OrdovanRunRecord::Kind::restoreTrash, 2)),
              u"2 Dateien aus dem Papierkorb zurück nach „Down%1loads“"_s);
}

OrdovanInterruptedRun interrupted(std::size_t finished, std::size_t untouched, std::size_t putRight,
                                  std::size_t unsettled) {
    OrdovanInterruptedRun run;
    run.finished = finished;
    run.untouched = untouched;
    run.putRight = putRight;
    run.unsettled = unsettled;
    return run;
}

TEST(EngineTexts, SummarizeInterruptedRunsAsTheEngineDoes) {
    for (unsigned counts = 0; counts < 81; ++counts) {  // 0, 1 or 2 of each
        auto run = interrupted(counts / 27, counts / 9 % 3, counts / 3 % 3, counts % 3);
        EXPECT_EQ(EngineTexts::summary(run), QString::fromStdString(run.summary()));
        run.isRecorded = false;
        EXPECT_EQ(EngineTexts::summary(run), QString::fromStdString(run.summary()));
    }
    OrdovanInterruptedRun unreadable;
    unreadable.isUnreadable = true;
    EXPECT_EQ(EngineTexts::summary(unreadable), QString::fromStdString(unreadable.summary()));
}

TEST(EngineTexts, SummarizeInterruptedRunsInGerman) {
    const Language german({u"de"_s});
    EXPECT_EQ(
        EngineTexts::summary(interrupted(3, 1, 0, 2)),
        u"Ein früherer Durchlauf wurde unterbrochen. 3 Dateien wurden fertig, 1 blieb unberührt und 2 sollten Sie "
        "ansehen."_s);
}

TEST(EngineTexts, TellWhereAPreviewStandsAsTheEngineDoes) {
    using Status = OrdovanPreviewStatus;
    for (const Status& status : {Status::idle(), Status::scanning(), Status::failed(), Status::ready(0, 0),
                                 Status::ready(1, 0), Status::ready(50'000, 1), Status::ready(2, 2)}) {
        EXPECT_EQ(EngineTexts::status(status), QString::fromStdString(status.pulseSummary()));
        const auto said = status.announcement();
        EXPECT_EQ(EngineTexts::announcement(status),
                  said ? std::optional(QString::fromStdString(*said)) : std::nullopt);
    }
}

TEST(EngineTexts, NameKindsAndPoliciesAsTheEngineDoes) {
    for (const auto category : OrdovanFileCategories::allCases) {
        EXPECT_EQ(EngineTexts::category(category), Formats::text(rawValue(category)));
    }
    for (const auto policy : OrdovanKeepPolicies::allCases) {
        EXPECT_EQ(EngineTexts::keepPolicy(policy), Formats::text(rawValue(policy)));
    }
}

TEST(EngineTexts, NameTheThemes) {
    QStringList names;
    for (const auto theme : AppThemes::allCases) names.append(EngineTexts::theme(theme));
    EXPECT_EQ(names, (QStringList{u"Teal"_s, u"Sunset"_s, u"Grape"_s, u"Forest"_s, u"Candy"_s}));
}

}  // namespace
