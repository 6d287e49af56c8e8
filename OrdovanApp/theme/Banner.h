#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QStringList>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QListView;
class QPushButton;
class QStringListModel;

/// A message above a screen's list, with its own buttons and, where there are any, problems that can be unfolded.
class Banner : public QWidget {
    Q_OBJECT

public:
    enum class Kind { info, warning, error };

    Banner(const ThemeEnvironment& theme, Kind kind, QWidget* parent = nullptr);

    void setKind(Kind kind);
    void setText(const QString& text);
    [[nodiscard]] QString text() const;
    /// Adds a button beside the text. Takes it.
    void addButton(QPushButton* button);
    /// Lines to unfold with a button; any number. Empty: no such button. Folds up again.
    void setDetails(const QStringList& lines);
    /// What the lines are, and what the button says that unfolds them or folds them up. Default: "Problems", "Show
    /// Problems", "Hide Problems".
    void setDetailsTexts(const QString& name, const QString& show, const QString& hide);
    [[nodiscard]] bool detailsShown() const;
    void setDetailsShown(bool shown);

Q_SIGNALS:
    /// The close button was pressed; the banner has hidden itself.
    void closed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void recolor();
    void fitDetails();

    const ThemeEnvironment& theme_;
    Kind kind_;
    QLabel* glyph_;
    QLabel* text_;
    QHBoxLayout* buttons_;
    QPushButton* toggle_;
    QPushButton* close_;
    QListView* details_;
    QStringListModel* lines_;
    QString show_;
    QString hide_;
    int detailsWidth_ = 0;  ///< that they were fitted for
};
