#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QTextDocument>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr auto style =
    "<style>body{max-width:50em;margin:2em auto;padding:0 1em;font-family:sans-serif;line-height:1.45}"
    "img{max-width:100%}table{border-collapse:collapse}td{border:1px solid #bbb;padding:.3em "
    ".6em;vertical-align:top}td p{margin:0}"
    "pre{overflow-x:auto;margin:0}:root{color-scheme:light dark}</style>"_L1;

/// What follows "#" in a link to a heading.
QString anchorOf(const QString& heading) {
    QString text = heading.toLower();
    text.remove(QRegularExpression(u"<[^>]*>|&[^;]*;"_s)).remove(QRegularExpression(u"[^\\w\\s-]"_s));
    return text.trimmed().replace(u' ', u'-');
}

/// Calls `replace` for each match and puts its answer in the match's place.
template <class Replace>
QString replaced(const QString& text, const QString& pattern, Replace replace) {
    const QRegularExpression expression(pattern, QRegularExpression::DotMatchesEverythingOption);
    QString result;
    qsizetype end = 0;
    for (const QRegularExpressionMatch& match : expression.globalMatch(text)) {
        result += QStringView(text).sliced(end, match.capturedStart() - end);
        result += replace(match);
        end = match.capturedEnd();
    }
    result += QStringView(text).sliced(end);
    return result;
}

/// What of the style of an element a page needs.
QString keptOf(const QString& declarations, bool isText) {
    if (declarations.contains("monospace"_L1)) return u" style=\"font-family:monospace\""_s;
    if (isText && declarations.contains("font-weight"_L1)) return u" style=\"font-weight:bold\""_s;
    return {};
}

/// A page for a browser: without the typefaces of whoever builds it, with places to link to.
QString page(const QString& markdown, const QString& title) {
    QTextDocument document;
    document.setMarkdown(markdown);
    QString html = document.toHtml();
    html.remove(QRegularExpression(u"<style.*?</style>"_s, QRegularExpression::DotMatchesEverythingOption));
    html = replaced(html, u"<(p|body|h[1-6]|li|ul|ol|table|td|a|span|pre)\\b([^>]*?) style=\"([^\"]*)\""_s,
                    [](const QRegularExpressionMatch& match) {
                        return u'<' + match.captured(1) + match.captured(2) +
                               keptOf(match.captured(3), match.captured(1) == "span"_L1);
                    });
    html = replaced(html, u"<(h[1-6])([^>]*)>(.*?)</h"_s, [](const QRegularExpressionMatch& match) {
        return u'<' + match.captured(1) + " id=\""_L1 + anchorOf(match.captured(3)) + u'"' + match.captured(2) + u'>' +
               match.captured(3) + "</h"_L1;
    });
    html.replace(QRegularExpression(u"(href=\"[^\":]*)\\.md([#\"])"_s), u"\\1.html\\2"_s);
    html.replace(QRegularExpression(u"^<!DOCTYPE[^>]*>"_s), u"<!DOCTYPE html>"_s);
    return html.replace("</head>"_L1, "<title>"_L1 + title.toHtmlEscaped() + "</title>"_L1 + style + "</head>"_L1);
}

/// The first link of a page that leads to nothing which is made, or nothing.
QString brokenLink(const QString& html, const QString& source, const QStringList& names) {
    QString broken;
    const QDir from = QFileInfo(source).dir();
    replaced(html, u"(?:href|src)=\"([^\":#]+)[#\"]"_s, [&](const QRegularExpressionMatch& match) {
        const QString target = QDir::cleanPath(from.filePath(match.captured(1)));
        const bool isPage = target.endsWith(".html"_L1) && names.contains(target.chopped(5));
        if (!isPage && !target.endsWith(".png"_L1)) broken = target;
        return QString();
    });
    return broken;
}

}  // namespace

/// Renders pages of documentation for a browser: FOLDER/NAME.html of each SOURCES/NAME.md.
///     ordovan-guide FOLDER SOURCES NAME...
int main(int argc, char** argv) {
    if (argc < 4) return std::fputs("usage: ordovan-guide FOLDER SOURCES NAME...\n", stderr), 2;
    qputenv("QT_QPA_PLATFORM", "minimal");
    const QGuiApplication application(argc, argv);
    const QDir target(QString::fromLocal8Bit(argv[1]));
    const QDir sources(QString::fromLocal8Bit(argv[2]));
    const QStringList names = QGuiApplication::arguments().sliced(3);
    for (const QString& name : names) {
        QFile source(sources.filePath(name + ".md"_L1));
        if (!source.open(QIODevice::ReadOnly))
            return std::fprintf(stderr, "ordovan-guide: no %s\n", qPrintable(name)), 1;
        const QString text = QString::fromUtf8(source.readAll());
        const QString html = page(text, "ordovan+: "_L1 + text.section(u'\n', 0, 0).remove(0, 2));
        if (const QString broken = brokenLink(html, name, names); !broken.isEmpty()) {
            return std::fprintf(stderr, "ordovan-guide: %s links to %s\n", qPrintable(name), qPrintable(broken)), 1;
        }
        QFile made(target.filePath(name + ".html"_L1));
        if (!target.mkpath(QFileInfo(name).path()) || !made.open(QIODevice::WriteOnly) ||
            made.write(html.toUtf8()) < 0 || !made.flush()) {
            return std::fprintf(stderr, "ordovan-guide: can not write %s\n", qPrintable(made.fileName())), 1;
        }
    }
    return 0;
}
