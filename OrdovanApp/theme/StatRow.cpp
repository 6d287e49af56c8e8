#include "OrdovanApp/theme/StatRow.h"

#include "OrdovanApp/theme/AccessibleRole.h"
#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/ElidedLabel.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

using StyleSheet::LabelType;

class StatRow::StatCard : public Card {
public:
    StatCard(const ThemeEnvironment& theme, QWidget* parent) : Card(theme, parent) {
        setObjectName(QStringLiteral("statCard"));
        setAccessibleRole(this, QAccessible::Grouping);
        setMinimumWidth(0);
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(16, 11, 16, 12);
        layout->setSpacing(2);
        figure_ = new ElidedLabel(this);
        figure_->setElideMode(Qt::ElideRight);
        figure_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        label_ = new QLabel(this);
        label_->setTextFormat(Qt::PlainText);
        label_->setWordWrap(true);
        label_->setMinimumWidth(1);
        layout->addWidget(figure_);
        layout->addWidget(label_);
        layout->addStretch(1);
        StyleSheet::setType(figure_, LabelType::figure);
        StyleSheet::setType(label_, LabelType::caption);
    }
    void show(const Stat& stat) {
        if (stat == stat_) return;
        stat_ = stat;
        figure_->setText(stat.figure);
        label_->setText(stat.label);
        StyleSheet::setType(figure_, stat.accent ? LabelType::figureAccent : LabelType::figure);
        setAccessibleName(stat.figure + u' ' + stat.label);
    }

private:
    Stat stat_;
    ElidedLabel* figure_;
    QLabel* label_;
};

StatRow::StatRow(const ThemeEnvironment& theme, QWidget* parent) : QWidget(parent), theme_(theme) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void StatRow::setStats(const QList<Stat>& stats) {
    while (cards_.size() > stats.size()) delete cards_.takeLast();
    while (cards_.size() < stats.size()) {
        cards_.append(new StatCard(theme_, this));
        static_cast<QHBoxLayout*>(layout())->addWidget(cards_.last(), 1);
    }
    for (qsizetype i = 0; i < stats.size(); ++i) cards_[i]->show(stats[i]);
}
