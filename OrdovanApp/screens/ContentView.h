#pragma once

#include "OrdovanApp/screens/SectionScreens.h"
#include "OrdovanCore/PreviewStatus.h"
#include "OrdovanCore/Url.h"

#include <QWidget>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

struct OrdovanTrashRecord;
class ContentNotices;
class DropOverlay;
class QMimeData;
class QStackedLayout;
class Sidebar;

/// The content of the window: the sidebar and the screen of the chosen section. The one observer of the commands: it
/// turns each into a call of the controller or of a screen. It also keeps the sidebar's figures, says what assistive
/// technologies should hear of the preview, and previews again when a setting or a rule changed.
class ContentView : public QWidget {
    Q_OBJECT

public:
    /// A screen is made when its section is first shown.
    ContentView(const AppContext& context, SectionFactories factories, QWidget* parent = nullptr);

    [[nodiscard]] Section section() const;
    void showSection(Section section);
    /// Shows the inbox with a preview of this folder. A question that is open is given up: it was about another plan.
    /// While files are being moved the folder stays the one it is, and a line says so.
    void previewFolder(const Url& folder);

    /// The first of what was dropped that lies on this computer, as it is named; nothing where there is none.
    [[nodiscard]] static std::optional<Url> droppedFolder(const QMimeData& data);

Q_SIGNALS:
    void sectionChanged(Section section);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void observe(const QString& command);
    void connectModel();
    void makeShortcuts();
    void refreshCounts();
    void countRestorable();
    void refreshStatus();
    void previewAgain();
    void dismissQuestions();
    [[nodiscard]] bool isAsking() const;
    [[nodiscard]] const SectionScreen& screen(Section section);
    void undo();

    AppContext context_;
    SectionFactories factories_;
    std::map<Section, SectionScreen> screens_;
    Sidebar* sidebar_;
    ContentNotices* notices_;
    QStackedLayout* stack_;
    DropOverlay* overlay_;
    std::shared_ptr<const OrdovanTrashRecord> countedRecord_;
    std::optional<Url> countedRoot_;
    qint64 restorableCount_ = 0;  ///< of the trashed files, those that can be put back here
    std::uint64_t restorableCounts_ = 0;
    bool isOutdated_ = false;  ///< a setting or rule changed during a run
    OrdovanPreviewStatus lastStatus_ = OrdovanPreviewStatus::idle();
};
