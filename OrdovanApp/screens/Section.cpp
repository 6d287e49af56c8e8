#include "OrdovanApp/screens/Section.h"

#include <QCoreApplication>

#include <cstddef>

using namespace Qt::StringLiterals;

namespace Sections {
namespace {

struct Facts {
    QStringView rawValue;
    const char* title;
    Glyph glyph;
};

/// In the order of the cases.
constexpr std::array<Facts, 6> table = {{
    {u"inbox", QT_TRANSLATE_NOOP("Sections", "Smart Inbox"), Glyph::inbox},
    {u"duplicates", QT_TRANSLATE_NOOP("Sections", "Duplicates"), Glyph::duplicates},
    {u"bigFiles", QT_TRANSLATE_NOOP("Sections", "Big Files"), Glyph::bigFiles},
    {u"rules", QT_TRANSLATE_NOOP("Sections", "Rules"), Glyph::rules},
    {u"history", QT_TRANSLATE_NOOP("Sections", "History"), Glyph::history},
    {u"recovery", QT_TRANSLATE_NOOP("Sections", "Recovery Center"), Glyph::recovery},
}};

const Facts& facts(Section section) {
    return table.at(static_cast<std::size_t>(section));
}

}  // namespace

std::optional<Section> fromRawValue(QStringView rawValue) {
    for (const Section section : allCases) {
        if (facts(section).rawValue == rawValue) return section;
    }
    return std::nullopt;
}

QString rawValue(Section section) {
    return facts(section).rawValue.toString();
}

QString title(Section section) {
    return QCoreApplication::translate("Sections", facts(section).title);
}

Glyph glyph(Section section) {
    return facts(section).glyph;
}

}  // namespace Sections
