#include "OrdovanApp/screens/Section.h"

#include <cstddef>

using namespace Qt::StringLiterals;

namespace Sections {
namespace {

struct Facts {
    QStringView rawValue;
    QStringView title;
    Glyph glyph;
};

/// In the order of the cases.
constexpr std::array<Facts, 6> table = {{
    {u"inbox", u"Smart Inbox", Glyph::inbox},
    {u"duplicates", u"Duplicates", Glyph::duplicates},
    {u"bigFiles", u"Big Files", Glyph::bigFiles},
    {u"rules", u"Rules", Glyph::rules},
    {u"history", u"History", Glyph::history},
    {u"recovery", u"Recovery Center", Glyph::recovery},
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
    return facts(section).title.toString();
}

Glyph glyph(Section section) {
    return facts(section).glyph;
}

}  // namespace Sections
