#pragma once

#include "OrdovanApp/screens/Desktop.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

class QFileDialog;

/// The desktop that the program runs on.
class SystemDesktop final : public QObject, public Desktop {
    Q_OBJECT

public:
    /// `currentFolder` is where the choosers start.
    explicit SystemDesktop(std::function<std::optional<Url>()> currentFolder, QObject* parent = nullptr);

    void chooseFolder(QWidget* parent, std::function<void(const Url&)> chosen) override;
    void choosePlanFile(QWidget* parent, const QString& message, const QString& suggestedName,
                        std::function<void(const Url&, OrdovanPlanExportFormat)> chosen) override;
    void reveal(const Url& file) override;
    void showTrash(const Url& trashedFile) override;
    bool openAddress(const QString& address) override;
    [[nodiscard]] std::optional<Url> downloads() const override { return downloads_; }

private:
    [[nodiscard]] QFileDialog* dialog(QWidget* parent, const QString& title);
    void askFileManager(const QString& method, const QString& address, std::function<void()> otherwise);

    std::function<std::optional<Url>()> currentFolder_;
    std::optional<Url> downloads_;
    QPointer<QFileDialog> open_;
};

namespace PlanFile {

/// The format of a plan that is saved under this name: by its extension, else by the filter that was chosen.
[[nodiscard]] OrdovanPlanExportFormat format(QStringView name, QStringView filter);
/// The name with the extension of the chosen filter, where it has none or that of the other format.
[[nodiscard]] QString named(const QString& name, QStringView filter);
/// The filters offered, in order.
[[nodiscard]] QStringList filters();

}  // namespace PlanFile
