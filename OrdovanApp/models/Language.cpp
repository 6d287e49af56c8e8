#include "OrdovanApp/models/Language.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

using namespace Qt::StringLiterals;

namespace {

const QString ownFolder = u":/translations"_s;

/// "de_AT.UTF-8@euro" as "de_AT".
QString withoutEncoding(const QString& locale) {
    return locale.section(u'.', 0, 0).section(u'@', 0, 0);
}

}  // namespace

Language::Language(const QStringList& wanted) {
    // Has the plural forms, for which the sources have one text each.
    install(u"ordovan_en"_s, ownFolder);
    for (const QString& name : wanted) {
        if (take(name)) break;
    }
}

Language::~Language() = default;

/// Whether texts are in the language of this name, or of its first part, from here on.
bool Language::take(const QString& name) {
    if (name.section(u'_', 0, 0) == u"en"_s) return true;
    auto own = std::make_unique<QTranslator>();
    if (!own->load(u"ordovan_"_s + name, ownFolder)) return false;
    // The toolkit's own texts, such as those of its dialogs, where they are installed.
    install(u"qtbase_"_s + name, QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    QCoreApplication::installTranslator(own.get());
    translators_.push_back(std::move(own));
    return true;
}

void Language::install(const QString& file, const QString& folder) {
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(file, folder)) return;
    QCoreApplication::installTranslator(translator.get());
    translators_.push_back(std::move(translator));
}

QStringList Language::wantedByEnvironment() {
    QString messages;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (messages.isEmpty()) messages = qEnvironmentVariable(variable);
    }
    if (messages.isEmpty() || messages == u"C"_s || messages == u"POSIX"_s) return {};
    QStringList names = qEnvironmentVariable("LANGUAGE").split(u':', Qt::SkipEmptyParts);
    names.append(messages);
    for (QString& name : names) name = withoutEncoding(name);
    return names;
}
