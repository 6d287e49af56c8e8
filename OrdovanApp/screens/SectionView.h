#pragma once

#include "OrdovanApp/screens/AppContext.h"

#include <QList>
#include <QString>
#include <QWidget>

#include <functional>

class EmptyState;
class ProgressStrip;
class QStackedWidget;
class ScreenHeader;
class Sheet;

/// The frame of a section: its header, the lines about runs, the pages of which one is in sight, and at the foot how
/// far a run of the section is.
class SectionView : public QWidget {
    Q_OBJECT

protected:
    SectionView(const AppContext& context, const QString& title, QWidget* parent);

    /// Lays the frame out, once. `notices`: the lines between header and pages.
    void assemble(QWidget* notices);

    /// A page that shows progress in its middle; `strip` is made for it.
    QWidget* makeProgressPage(const QString& name, ProgressStrip*& strip);
    /// What stands for a list in which nothing matches a search; its button is to show all again.
    EmptyState* makeNoMatch(QWidget* parent, const QString& message, const std::function<void()>& showAll);
    /// A question over the whole content of the window.
    Sheet* makeSheet(const QString& name);

    /// A line of progress at the foot, hidden; `strip` is made for it. Before `assemble`.
    QWidget* makeFoot(const QString& name, ProgressStrip*& strip);

    /// Shows or hides the foot of runs. When it comes, it starts anew, with `text` for what is being done.
    void showRun(bool isShown, const QString& text);
    /// `done` of `total`, any unit; `detail` says it in words.
    void showRunProgress(const QString& detail, quint64 done, quint64 total);
    /// Has the foot follow the runs with the Trash, by their files and bytes.
    void followTrashProgress();

    AppContext context_;
    ScreenHeader* header_;
    QStackedWidget* pages_;

private:
    QList<QWidget*> feet_;
    QWidget* foot_ = nullptr;
    ProgressStrip* run_ = nullptr;
    QString runText_;
};
