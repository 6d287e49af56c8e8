#pragma once

#include "OrdovanApp/screens/SectionScreens.h"
#include "OrdovanCore/PreviewStatus.h"
#include "OrdovanCore/Url.h"

#include <QWidget>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

class ContentNotices;
class DropOverlay;
class FocusKeeper;
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
    ~ContentView() override;

    [[nodiscard]] Section section() const;
    void showSection(Section section);
    /// Shows the inbox with a preview of this folder. A question that is open is given up: it was about another plan.
    /// While files are being moved the folder stays the one it is, and a line says so.
    void previewFolder(const Url& folder);

    /// Whether a question waits for its answer. Commands are not heard meanwhile.
    [[nodiscard]] bool isAsking() const;
    /// Why a command (one of `Commands`) can not act now, as a sentence for the user; empty when it can.
    [[nodiscard]] QString reasonAgainst(QStringView command) const;

Q_SIGNALS:
    void askingChanged();

protected:
    bool event(QEvent* event) override;
    void childEvent(QChildEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void observe(const QString& command);
    void connectModel();
    void makeShortcuts();
    /// Gives the field in which the section in sight is searched the focus, where there is one.
    void goToSearch();
    void refreshCounts();
    void countRecoverable();
    void refreshStatus();
    void previewAgain();
    void dismissQuestions();
    [[nodiscard]] const SectionScreen& screen(Section section);
    void undo();

    using Items = std::shared_ptr<const std::vector<Url>>;
    /// What was dropped of what lies on this computer, as it is named; never null.
    [[nodiscard]] static Items dropped(const QMimeData& data);
    void findFolder(const Items& items, const std::function<void(const std::optional<Url>&)>& found,
                    std::size_t from = 0);
    /// Previews the first of these that is a folder. There is at least one.
    void examineDropped(const Items& items);

    AppContext context_;
    SectionFactories factories_;
    std::map<Section, SectionScreen> screens_;
    Sidebar* sidebar_;
    ContentNotices* notices_;
    QStackedLayout* stack_;
    DropOverlay* overlay_;
    std::uint64_t drags_ = 0;
    std::uint64_t drops_ = 0;  ///< grows when a folder is previewed as well
    bool isOutdated_ = false;  ///< a setting or rule changed during a run
    OrdovanPreviewStatus lastStatus_ = OrdovanPreviewStatus::idle();
    std::unique_ptr<FocusKeeper> focus_;  ///< goes before what it looks at
};
