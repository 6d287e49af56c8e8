#pragma once

#include "OrdovanApp/screens/AppContext.h"
#include "OrdovanApp/theme/Banner.h"
#include "OrdovanCore/TrashRecord.h"

#include <QString>
#include <QWidget>

/// The lines above a screen that moves files to the Trash: what its last run did with its problems and the way to where
/// they can be put back, warnings about records, and why a run was refused.
class TrashNotices : public QWidget {
    Q_OBJECT

public:
    /// `noun`: what the screen trashes, in the singular ("file").
    TrashNotices(const AppContext& context, const QString& noun, QWidget* parent);

    /// The run that starts next is this screen's.
    void expectRun() { expected_ = true; }
    /// A run of this screen is going on.
    [[nodiscard]] bool isOwnRun() const { return own_; }

    /// "3 files moved to the Trash · 2.1 GB", with what was left behind: " · 1 skipped, 2 failed".
    [[nodiscard]] static QString summary(const OrdovanTrashReport& report, const QString& noun);

Q_SIGNALS:
    /// What `isOwnRun` says may have changed.
    void runChanged();

private:
    Banner* addBanner(Banner::Kind kind, const QString& name);
    void followRun();
    void showReport();
    void showWarning();
    void showRefusal();
    void refreshRoom();

    AppContext context_;
    QString noun_;
    Banner* result_;
    Banner* warning_;
    Banner* refusal_;
    bool expected_ = false;
    bool own_ = false;
};
