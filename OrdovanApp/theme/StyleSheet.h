#pragma once

#include <QString>

class ThemeEnvironment;
class QWidget;

/// The one style sheet of the application.
///
/// Widgets say what they are with two properties that it knows: "kind" of a push button (see `Buttons`), and "type" of
/// a label (see `setType`).
namespace StyleSheet {

/// The style sheet for a theme at its text scale.
[[nodiscard]] QString of(const ThemeEnvironment& theme);

/// What a label is, which decides its size, weight and color.
enum class LabelType { title, sheetTitle, heading, body, second, strong, caption, captionStrong, figure, figureAccent };
/// Makes a label of a type. At any time.
void setType(QWidget* label, LabelType type);

}  // namespace StyleSheet
