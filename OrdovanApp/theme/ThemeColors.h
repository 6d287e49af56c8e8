#pragma once

#include "OrdovanApp/stores/AppTheme.h"
#include "OrdovanCore/Categories.h"

#include <QColor>

#include <array>

/// Every color of the application, for one theme in light or in dark. The only place that holds colors.
///
/// Each text color reaches 4.5:1 on each surface that it is drawn on, and each line that carries meaning 3:1 (WCAG
/// 2.1, 1.4.3 and 1.4.11); a test computes them all.
struct ThemeColors {
    bool dark = false;
    QColor window;           ///< behind everything
    QColor sidebar;          ///< sidebar and menu bar
    QColor sidebarHover;     ///< a section of the sidebar below the pointer
    QColor sidebarSelected;  ///< the selected section: the accent laid thinly over the sidebar
    QColor card;             ///< cards, lists, fields and quiet buttons
    QColor groupHead;        ///< the head of a group in a list
    QColor hover;            ///< a card's row or a quiet button below the pointer
    QColor pressed;          ///< a quiet button held down
    QColor hairline;         ///< lines that only divide
    QColor control;          ///< the outline of what can be operated: tick boxes, the handle of a scroll bar
    QColor text;             ///< what is read first
    QColor secondText;       ///< what is read next
    QColor faintText;        ///< counts, placeholders, and what is disabled
    QColor accent;           ///< the theme's color: the primary button, ticks, the focus ring
    QColor accentText;       ///< the accent as text and icons: on a tint, on the selected section, anywhere
    QColor onAccent;         ///< text on the accent
    QColor accentHover;
    QColor accentPressed;
    QColor tint;        ///< a selected row: the accent laid thinly over a card, opaque
    QColor tintStrong;  ///< a mark on a selected row
    QColor warning;     ///< text and icon of a warning
    QColor danger;      ///< text of an error and of what takes something away
    QColor scrim;       ///< over the window while a sheet is open; translucent
    QColor shadow;      ///< below cards and sheets; translucent

    [[nodiscard]] static ThemeColors of(AppTheme theme, bool dark);

    /// The color of a kind of file: for its icon and its chip's text, lightened in dark.
    [[nodiscard]] QColor kind(OrdovanFileCategory category) const;
    /// The quiet surface that goes with such a color (or with `warning`, `danger`, `accentText`), laid over a card;
    /// opaque.
    [[nodiscard]] QColor surface(const QColor& kindColor) const;

private:
    std::array<QColor, OrdovanFileCategories::allCases.size()> kinds_;
};
