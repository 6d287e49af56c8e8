#pragma once

#include "OrdovanApp/screens/AppContext.h"
#include "OrdovanCore/Url.h"

#include <QWidget>

class Banner;

/// The lines above every section: what became of a run that had been interrupted, and why a folder was not opened.
/// Takes no room without a line.
class ContentNotices : public QWidget {
    Q_OBJECT

public:
    ContentNotices(const AppContext& context, QWidget* parent);

    /// Says that a folder was not opened because of a run (`reason`, a sentence); until it is closed or a folder is
    /// opened.
    void tellNotOpened(const Url& folder, const QString& reason);
    /// The same of something that is no folder.
    void tellNoFolder(const Url& item);
    void folderOpened();

private:
    Banner* addBanner(const QString& name);
    void followInterruptedRun();
    void tellInterruptedRun();
    void refreshRoom();
    void warn(const QString& sentence);

    AppContext context_;
    Banner* interrupted_;
    Banner* notOpened_;
};
