#pragma once

#include "OrdovanApp/models/FilePreview.h"
#include "OrdovanApp/screens/AppContext.h"
#include "OrdovanCore/Inventory.h"

#include <QWidget>

#include <array>

class ElidedLabel;
class QLabel;
class QPlainTextEdit;
class QStackedWidget;

/// A small window that shows one file: its picture or the beginning of its text, and always what is known of it. The
/// inside is read in the background; until it is there, and where it can not be shown, the kind's icon stands for it.
///
/// Space and Esc close it. The keys that move through a list are handed on, so that it can follow the list.
class QuickLook : public QWidget {
    Q_OBJECT

public:
    QuickLook(const AppContext& context, QWidget* parent);

    /// Shows a file; the window opens where it is closed. `root`: the folder that the file's place is told from.
    void showFile(const OrdovanInventoryEntry& file, const Url& root);
    /// The file that is shown.
    [[nodiscard]] const Url& file() const { return file_; }

Q_SIGNALS:
    /// A key that moves through a list was pressed.
    void steered(int key);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    class Picture;

    QWidget* makeText();
    QWidget* makeIcon();
    QWidget* makeFacts();
    void comeUp();
    void showFacts(const OrdovanInventoryEntry& file, const Url& root);
    void showIcon(const QString& message);
    void showPreview(const FilePreview& preview);
    void recolor();

    AppContext context_;
    Url file_;
    QStackedWidget* pages_;
    Picture* picture_;
    QWidget* textPage_;
    QPlainTextEdit* text_;
    QLabel* cut_;
    QWidget* iconPage_;
    QLabel* icon_;
    QLabel* message_;
    ElidedLabel* name_;
    std::array<ElidedLabel*, 4> facts_{};
};
