#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QTranslator;

/// The language of the window's texts, which stand in English in the sources. From its making to its end; the one made
/// last counts. Main thread, after the application object.
class Language {
public:
    /// Takes the first of `wanted` that there is a translation to. Where there is none, or "en" comes before, texts are
    /// English. Names are those of locales: "de", "de_AT".
    explicit Language(const QStringList& wanted);
    ~Language();
    Language(const Language&) = delete;
    Language& operator=(const Language&) = delete;

    /// The languages that the environment asks for, best first, by the rules of gettext(3): LC_ALL, else LC_MESSAGES,
    /// else LANG names one; where that is not "C" or "POSIX", the list in LANGUAGE comes first.
    [[nodiscard]] static QStringList wantedByEnvironment();

private:
    bool take(const QString& name);
    void install(const QString& file, const QString& folder);

    std::vector<std::unique_ptr<QTranslator>> translators_;
};

/// Which plural form the text for a number has: what to hand to tr() in place of the number itself, which may be too
/// large for it.
[[nodiscard]] constexpr int pluralOf(qint64 number) {
    constexpr qint64 million = 1'000'000;  // no language's rules look at more than the last six digits
    return static_cast<int>(number < million ? number : million + number % million);
}
