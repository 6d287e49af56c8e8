#pragma once

#include "OrdovanApp/screens/RunNotices.h"
#include "OrdovanCore/TrashRecord.h"

/// The lines above a section that moves files to the Trash; of runs only its own, with the way to where the files can
/// be put back.
class TrashNotices : public RunNotices {
    Q_OBJECT

public:
    /// What a section trashes.
    enum class What { files, extras };

    TrashNotices(const AppContext& context, What what, QWidget* parent);

    /// The run that starts next is this section's.
    void expectRun() { expected_ = true; }
    /// A run of this section is going on.
    [[nodiscard]] bool isOwnRun() const { return own_; }

    /// "3 files moved to the Trash · 2.1 GB", with what was left behind: " · 1 skipped, 2 failed".
    [[nodiscard]] static QString summary(const OrdovanTrashReport& report, What what);

Q_SIGNALS:
    /// What `isOwnRun` says may have changed.
    void runChanged();

private:
    void followRun();

    What what_;
    bool expected_ = false;
    bool own_ = false;
};
