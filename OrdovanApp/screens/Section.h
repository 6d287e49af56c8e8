#pragma once

#include "OrdovanApp/theme/Glyph.h"

#include <QString>

#include <array>
#include <optional>

/// The sections of the window.
enum class Section { inbox, duplicates, bigFiles, rules, history, recovery };

namespace Sections {

inline constexpr std::array<Section, 6> allCases = {Section::inbox, Section::duplicates, Section::bigFiles,
                                                    Section::rules, Section::history,    Section::recovery};

/// From top to bottom.
inline constexpr std::array<Section, 6> sidebarOrder = {Section::inbox,    Section::duplicates, Section::bigFiles,
                                                        Section::recovery, Section::rules,      Section::history};

/// The section of this raw value, or nothing.
[[nodiscard]] std::optional<Section> fromRawValue(QStringView rawValue);
/// The case name: what is stored.
[[nodiscard]] QString rawValue(Section section);
/// The name shown.
[[nodiscard]] QString title(Section section);
[[nodiscard]] Glyph glyph(Section section);

}  // namespace Sections
