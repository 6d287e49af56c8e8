#pragma once

#include <QString>

/// Texts of tool tips.
namespace ToolTips {

/// A tool tip that shows `text` letter for letter, with its line breaks, though a file's name in it looks like mark-up.
/// For every tool tip that holds a path or a name.
[[nodiscard]] QString plain(const QString& text);

}  // namespace ToolTips
