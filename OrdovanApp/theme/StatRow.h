#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QList>
#include <QString>
#include <QWidget>

/// A row of figures, each on a card of its own; where it is narrow, what they count takes a second line. A card reads
/// "FIGURE LABEL" to assistive technologies.
class StatRow : public QWidget {
    Q_OBJECT

public:
    struct Stat {
        QString figure;       ///< "124", "4.8 GB"
        QString label;        ///< "proposed, 121 ticked"
        bool accent = false;  ///< the figure in the theme's color
        friend bool operator==(const Stat&, const Stat&) = default;
    };

    explicit StatRow(const ThemeEnvironment& theme, QWidget* parent = nullptr);

    /// Shows these figures. The cards are updated in place; one is made or taken away only when their number changes.
    void setStats(const QList<Stat>& stats);

private:
    class StatCard;

    const ThemeEnvironment& theme_;
    QList<StatCard*> cards_;
};
