#pragma once

#include "OrdovanApp/screens/RunNotices.h"
#include "OrdovanCore/TrashRecord.h"

/// The lines above a section that moves files to the Trash; of runs only its own, with the way to where the files can
/// be put back.
class TrashNotices : public RunNotices {
    Q_OBJECT

public:
    /// `noun`: what the section trashes, in the singular ("file").
    TrashNotices(const AppContext& context, const QString& noun, QWidget* parent);

    /// The run that starts next is this section's.
    void expectRun() { expected_ = true; }
    /// A run of this section is going on.
    [[nodiscard]] bool isOwnRun() const { return own_; }

    /// "3 files moved to the Trash · 2.1 GB", with what was left behind: " · 1 skipped, 2 failed".
    [[nodiscard]] static QString summary(const OrdovanTrashReport& report, const QString& noun);

Q_SIGNALS:
    /// What `isOwnRun` says may have changed.
    void runChanged();

private:
    void followRun();

    QString noun_;
    bool expected_ = false;
    bool own_ = false;
};
