#include "OrdovanApp/models/Formats.h"

#include "OrdovanApp/models/Language.h"
#include "OrdovanCore/Text.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QRegularExpression>

#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace Formats {
namespace {

/// The local date and time of an instant, invalid outside the years 1 to 9999.
QDateTime localTime(double epoch) {
    constexpr double firstYear = -62'135'000'000.0;
    constexpr double lastYear = 253'402'000'000.0;
    if (!(epoch >= firstYear && epoch < lastYear)) return {};
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(epoch)));
}

/// The locale's full date without its weekday and with a short month; its short date where that can not be had.
QString dayFormat(const QLocale& locale) {
    static const QRegularExpression weekday(u"^dddd[,،、]?\\s*|[,،、]?\\s*dddd"_s);
    QString format = locale.dateFormat(QLocale::LongFormat);
    format.remove(weekday);
    format.replace("MMMM"_L1, "MMM"_L1);
    const bool whole = format.contains(u'd') && format.contains(u'M') && format.contains(u'y');
    return whole ? format : locale.dateFormat(QLocale::ShortFormat);
}

QString withoutYear(QString format) {
    static const QRegularExpression year(u"[,.،]?\\s*('[^']*'\\s*)?y{2,4}\\s*('[^']*')?$|^y{2,4}[^dM]*"_s);
    return format.remove(year);
}

/// Line and paragraph separators, controls above ASCII, and what embeds, overrides or isolates a direction of writing.
constexpr bool isTreacherous(char16_t c) {
    return (c >= 0x80 && c <= 0x9f) || (c >= 0x2028 && c <= 0x202e) || (c >= 0x2066 && c <= 0x2069);
}

}  // namespace

QLocale locale() {
    const QLocale own;
    return own.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedKingdom) : own;
}

QString byteSize(qint64 bytes) {
    if (bytes < 1000) {
        return QCoreApplication::translate("Formats", "%1 bytes", nullptr, pluralOf(bytes)).arg(count(bytes));
    }
    static constexpr std::array units = {
        QT_TRANSLATE_NOOP("Formats", "%1 KB"), QT_TRANSLATE_NOOP("Formats", "%1 MB"),
        QT_TRANSLATE_NOOP("Formats", "%1 GB"), QT_TRANSLATE_NOOP("Formats", "%1 TB"),
        QT_TRANSLATE_NOOP("Formats", "%1 PB"), QT_TRANSLATE_NOOP("Formats", "%1 EB"),
    };
    double size = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    while (size >= 999.5) {
        size /= 1000;
        ++unit;
    }
    const double tenths = std::round(size * 10);
    const bool decimal = tenths < 1000 && std::fmod(tenths, 10) != 0;
    const QString figure = locale().toString(size, 'f', decimal ? 1 : 0);
    return QCoreApplication::translate("Formats", units.at(unit)).arg(figure);
}

QString count(qint64 number) {
    return locale().toString(number);
}

QString files(qint64 number) {
    return QCoreApplication::translate("Formats", "%1 files", nullptr, pluralOf(number)).arg(count(number));
}

QString day(double epoch) {
    const QDateTime time = localTime(epoch);
    if (!time.isValid()) return {};
    static QLocale known;
    static QString format;
    const QLocale now = locale();
    if (format.isEmpty() || known != now) {
        known = now;
        format = dayFormat(now);
    }
    return now.toString(time.date(), format);
}

QString dayOfWeek(double epoch, double nowEpoch) {
    const QDateTime time = localTime(epoch);
    if (!time.isValid()) return {};
    QString format = locale().dateFormat(QLocale::LongFormat);
    if (time.date().year() == localTime(nowEpoch).date().year()) format = withoutYear(format);
    return locale().toString(time.date(), format);
}

QString time(double epoch) {
    const QDateTime time = localTime(epoch);
    return time.isValid() ? locale().toString(time.time(), QLocale::ShortFormat) : QString();
}

QString moment(double epoch) {
    //: A day and a time of day
    return QCoreApplication::translate("Formats", "%1, %2").arg(day(epoch), time(epoch));
}

QString text(std::string_view bytes) {
    QString text = ordovan::text::isUtf8(bytes) ? QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()))
                                                : QString::fromStdString(ordovan::text::withReplacements(bytes));
    for (QChar& character : text) {
        const char16_t c = character.unicode();
        if (c < 0x20)
            character = QChar(static_cast<char16_t>(0x2400 + c));
        else if (c == 0x7f)
            character = QChar(u'␡');
        else if (isTreacherous(c))
            character = QChar(QChar::ReplacementCharacter);
    }
    return text;
}

QString fileName(const Url& url) {
    return text(url.lastPathComponent());
}

QString path(const Url& url) {
    return text(url.path());
}

QString folderOf(const Url& file, const Url& root) {
    return folderOf(file.path(), root.path());
}

QString folderOf(std::string_view filePath, std::string_view rootPath) {
    const std::string_view folder = ordovan::parentPath(filePath);
    while (rootPath.size() > 1 && rootPath.ends_with('/')) rootPath.remove_suffix(1);
    const std::string_view below = rootPath == "/" ? std::string_view() : rootPath;
    const bool inside = folder.starts_with(below) && (folder.size() == below.size() || folder[below.size()] == '/');
    if (!inside) return text(folder);
    QString result = text(ordovan::lastPathComponent(rootPath));
    std::string_view rest = folder.substr(below.size());
    while (!rest.empty()) {
        rest.remove_prefix(1);
        const std::string_view component = rest.substr(0, rest.find('/'));
        if (!component.empty()) result += u" / "_s + text(component);
        rest.remove_prefix(component.size());
    }
    return result;
}

}  // namespace Formats
