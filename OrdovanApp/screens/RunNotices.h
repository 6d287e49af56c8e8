#pragma once

#include "OrdovanApp/screens/AppContext.h"
#include "OrdovanApp/theme/Banner.h"

#include <QString>
#include <QWidget>

#include <optional>
#include <string>

/// The lines above a section that runs something: why a run was refused, what the last one did with its problems, and
/// warnings about records. Takes no room without a line.
class RunNotices : public QWidget {
    Q_OBJECT

protected:
    /// `result` and `warning`: the object names of these banners.
    RunNotices(const AppContext& context, const QString& result, const QString& warning, QWidget* parent);

    /// Adds a hidden banner below the others.
    Banner* addBanner(Banner::Kind kind, const QString& name);
    /// Shows a text in a banner and says it to assistive technologies, also while another section is in sight.
    void tell(Banner* banner, const QString& text);
    void dismiss(Banner* banner);
    /// What a run did, as a warning where there are problems.
    void tellResult(const QString& summary, const QStringList& problems);
    [[nodiscard]] Banner* result() const { return result_; }

    AppContext context_;

private:
    void follow(Banner* banner, const std::optional<std::string>& sentence, bool saysSo);
    void followWarning(bool saysSo);
    void followRefusal(bool saysSo);
    void refreshRoom();

    Banner* refusal_;
    Banner* result_;
    Banner* warning_;
};
