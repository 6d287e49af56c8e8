#pragma once

#include "OrdovanApp/theme/Glyph.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QList>
#include <QWidget>

#include <utility>

class QHBoxLayout;
class QLabel;
class QPushButton;

/// What a screen shows in place of a list: a glyph, a title, a sentence, up to three points, buttons, a foot note.
/// Stands in the middle of its room, on a card where it is dashed (a place to drop something).
class EmptyState : public QWidget {
    Q_OBJECT

public:
    EmptyState(const ThemeEnvironment& theme, Glyph glyph, QWidget* parent = nullptr);

    void setGlyph(Glyph glyph);
    void setTitle(const QString& text);
    void setMessage(const QString& text);
    void setPoints(const QList<std::pair<Glyph, QString>>& points);
    /// Adds a button below. Takes it.
    void addButton(QPushButton* button);
    /// A quiet line below the buttons.
    void setFootnote(const QString& text);
    /// Whether it is a drop card: a card with a dashed outline.
    void setDashed(bool dashed);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    class DropCard;

    void recolor();

    const ThemeEnvironment& theme_;
    Glyph glyph_;
    DropCard* card_;
    QLabel* picture_;
    QLabel* title_;
    QLabel* message_;
    QWidget* points_;
    QHBoxLayout* pointLayout_;
    QHBoxLayout* buttons_;
    QLabel* footnote_;
    QList<std::pair<Glyph, QString>> pointTexts_;
};
