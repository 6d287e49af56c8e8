#include "OrdovanApp/screens/ContentView.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/ContentNotices.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/screens/DropOverlay.h"
#include "OrdovanApp/screens/FocusKeeper.h"
#include "OrdovanApp/screens/Sidebar.h"
#include "OrdovanApp/stores/AppSettings.h"
#include "OrdovanApp/stores/RuleStore.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/FilterField.h"
#include "OrdovanApp/theme/Sheet.h"

#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QShortcut>
#include <QStackedLayout>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

ContentView::ContentView(const AppContext& context, SectionFactories factories, QWidget* parent)
    : QWidget(parent),
      context_(context),
      factories_(std::move(factories)),
      sidebar_(new Sidebar(context.theme, this)),
      notices_(new ContentNotices(context, this)),
      stack_(new QStackedLayout),
      overlay_(new DropOverlay(context.theme, this)) {
    setObjectName(u"content"_s);
    setAcceptDrops(true);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(sidebar_);
    auto* column = new QVBoxLayout;
    column->addWidget(notices_);
    column->addLayout(stack_, 1);
    layout->addLayout(column, 1);

    connect(&context_.commands, &CommandCenter::posted, this, &ContentView::observe);
    connect(sidebar_, &Sidebar::currentChanged, this,
            [this](Section section) { stack_->setCurrentWidget(screen(section).widget); });
    focus_ = std::make_unique<FocusKeeper>(
        context.theme, this, [this] { return stack_->currentWidget(); }, [this] { sidebar_->focusCurrent(); });
    connectModel();
    makeShortcuts();
    stack_->setCurrentWidget(screen(section()).widget);
    refreshStatus();
    refreshCounts();
    countRecoverable();
}

ContentView::~ContentView() = default;

void ContentView::connectModel() {
    const TidyViewModel* model = &context_.model;
    for (const auto signal : {&TidyViewModel::phaseChanged, &TidyViewModel::planChanged}) {
        connect(model, signal, this, &ContentView::refreshStatus);
    }
    for (const auto signal : {&TidyViewModel::planChanged, &TidyViewModel::duplicateReportChanged,
                              &TidyViewModel::recoverableCountChanged, &TidyViewModel::rootURLChanged}) {
        connect(model, signal, this, &ContentView::refreshCounts);
    }
    for (const auto signal : {&TidyViewModel::recoverableJournalChanged, &TidyViewModel::trashRecordChanged,
                              &TidyViewModel::rootURLChanged}) {
        connect(model, signal, this, &ContentView::countRecoverable);
    }
    connect(&context_.rules, &RuleStore::ruleSetChanged, this, [this] {
        refreshCounts();
        previewAgain();
    });
    for (const auto signal : {&TidyViewModel::isApplyingChanged, &TidyViewModel::isTrashingChanged}) {
        connect(model, signal, this, [this] {
            const bool isRunning = context_.model.isApplying() || context_.model.isTrashing();
            if (!isRunning && std::exchange(isOutdated_, false) && context_.model.runRefusal()) previewAgain();
        });
    }
    connect(&context_.settings, &AppSettings::groupByMonthChanged, this, &ContentView::previewAgain);
    connect(&context_.settings, &AppSettings::includeHiddenChanged, this, &ContentView::previewAgain);
    connect(&context_.settings, &AppSettings::themeChanged, this,
            [this] { context_.theme.setTheme(context_.settings.theme()); });
}

void ContentView::makeShortcuts() {
    int key = Qt::Key_1;
    for (const Section section : Sections::sidebarOrder) {
        auto* shortcut = new QShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(key++)), this);
        connect(shortcut, &QShortcut::activated, this, [this, section] {
            if (!isAsking()) showSection(section);
        });
    }
    auto* find = new QShortcut(QKeySequence(QKeySequence::Find), this);
    connect(find, &QShortcut::activated, this, &ContentView::goToSearch);
}

void ContentView::goToSearch() {
    if (isAsking()) return;
    const auto fields = stack_->currentWidget()->findChildren<FilterField*>();
    const auto shown = std::ranges::find_if(fields, &QWidget::isVisible);
    if (shown != fields.end()) (*shown)->setFocus(Qt::ShortcutFocusReason);
}

Section ContentView::section() const {
    return sidebar_->current();
}

void ContentView::showSection(Section section) {
    sidebar_->setCurrent(section);
}

const SectionScreen& ContentView::screen(Section section) {
    const auto known = screens_.find(section);
    if (known != screens_.end()) return known->second;
    SectionScreen made = factories_.at(section)(context_, this);
    // A folder dropped on a field is a folder to preview, not a text to search for.
    for (QLineEdit* field : made.widget->findChildren<QLineEdit*>()) field->setAcceptDrops(false);
    stack_->addWidget(made.widget);
    return screens_.emplace(section, std::move(made)).first->second;
}

void ContentView::observe(const QString& command) {
    if (!reasonAgainst(command).isEmpty()) return;
    if (command == Commands::chooseFolder) {
        context_.desktop.chooseFolder(this, [self = QPointer(this)](const Url& folder) {
            if (self) self->previewFolder(folder);
        });
    } else if (command == Commands::previewFolder) {
        previewFolder(*context_.desktop.downloads());
    } else if (command == Commands::previewAgain) {
        context_.model.preview();
    } else if (command == Commands::organize) {
        showSection(Section::inbox);
        if (const auto& request = screen(Section::inbox).requestOrganize) request();
    } else if (command == Commands::undoOrganize) {
        undo();
    } else if (command == Commands::findDuplicates) {
        showSection(Section::duplicates);
        context_.model.findDuplicates();
    } else if (command == Commands::exportPlan) {
        showSection(Section::inbox);
        if (const auto& request = screen(Section::inbox).requestExport) request();
    } else if (command == Commands::showRecovery) {
        showSection(Section::recovery);
    }
}

/// Shown where the progress and the report of an undo are.
void ContentView::undo() {
    if (section() != Section::recovery) showSection(Section::inbox);
    context_.model.undo();
}

void ContentView::previewFolder(const Url& folder) {
    const QString reason = CommandAvailability::againstRun(context_.model);
    if (!reason.isEmpty()) return notices_->tellNotOpened(folder, reason);
    ++drops_;
    notices_->folderOpened();
    dismissQuestions();
    showSection(Section::inbox);
    context_.model.chooseFolder(folder.standardized());
}

/// The end of a run previews anyway, with the settings as they are then; one that could not begin does not.
void ContentView::previewAgain() {
    isOutdated_ = context_.model.isApplying() || context_.model.isTrashing();
    if (isOutdated_) return;
    dismissQuestions();
    context_.model.preview();
}

bool ContentView::isAsking() const {
    const auto sheets = findChildren<Sheet*>();
    return std::any_of(sheets.begin(), sheets.end(), [](const Sheet* sheet) { return sheet->isVisible(); });
}

QString ContentView::reasonAgainst(QStringView command) const {
    if (isAsking()) return CommandAvailability::againstWhileAsking();
    return CommandAvailability::reasonAgainst(command, context_.model, context_.desktop);
}

void ContentView::childEvent(QChildEvent* event) {
    // What is added is not yet made whole: whether it is a question is seen when it is shown.
    if (event->added()) event->child()->installEventFilter(this);
    QWidget::childEvent(event);
}

bool ContentView::eventFilter(QObject* watched, QEvent* event) {
    const bool isShowOrHide = event->type() == QEvent::Show || event->type() == QEvent::Hide;
    if (isShowOrHide && qobject_cast<Sheet*>(watched) != nullptr) Q_EMIT askingChanged();
    return QWidget::eventFilter(watched, event);
}

void ContentView::dismissQuestions() {
    for (Sheet* sheet : findChildren<Sheet*>()) {
        if (sheet->isVisible()) sheet->cancelButton()->click();
    }
}

void ContentView::refreshStatus() {
    const OrdovanPreviewStatus status = context_.model.status();
    sidebar_->setStatus(EngineTexts::status(status));
    if (status == lastStatus_) return;
    lastStatus_ = status;
    if (const auto announcement = EngineTexts::announcement(status)) context_.announcer.say(*announcement);
}

void ContentView::refreshCounts() {
    const TidyViewModel& model = context_.model;
    // While another folder is scanned, or could not be read, what is known is the last folder's.
    const bool isOfFolder = model.planRoot() == model.rootURL();
    const auto& plan = model.plan();
    const auto& duplicates = model.duplicateReport();
    const auto proposed = static_cast<qint64>(plan && isOfFolder ? plan->proposals.size() : 0);
    const auto groups = static_cast<qint64>(duplicates && isOfFolder ? duplicates->groups.size() : 0);
    const auto recoverable = static_cast<qint64>(model.recoverableCount());
    const auto rules = static_cast<qint64>(context_.rules.ruleSet().rules.size());
    sidebar_->setCount(Section::inbox, proposed,
                       tr("%1 proposed", nullptr, pluralOf(proposed)).arg(Formats::count(proposed)));
    sidebar_->setCount(Section::duplicates, groups,
                       tr("%1 groups", nullptr, pluralOf(groups)).arg(Formats::count(groups)));
    sidebar_->setCount(Section::recovery, recoverable,
                       tr("%1 items to recover", nullptr, pluralOf(recoverable)).arg(Formats::count(recoverable)));
    sidebar_->setCount(Section::rules, rules, tr("%1 rules", nullptr, pluralOf(rules)).arg(Formats::count(rules)));
}

/// Once the screen of that section is made, it looks at the files itself, and the count comes of that.
void ContentView::countRecoverable() {
    if (!screens_.contains(Section::recovery)) context_.model.countRecoverable();
}

/// Other programs may have taken files away, or brought them back.
bool ContentView::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) countRecoverable();
    return QWidget::event(event);
}

ContentView::Items ContentView::dropped(const QMimeData& data) {
    std::vector<Url> items;
    const QList<QUrl> urls = data.urls();
    for (const QUrl& url : urls) {
        if (url.isLocalFile()) items.push_back(Url::parse(url.toEncoded().toStdString()));
    }
    return std::make_shared<const std::vector<Url>>(std::move(items));
}

/// Tells `found` of the first of these that is a folder, or of nothing where none is. What lies on a medium that does
/// not answer is not waited for.
void ContentView::findFolder(const Items& items, const std::function<void(const std::optional<Url>&)>& found,
                             std::size_t from) {
    if (from == items->size()) return found(std::nullopt);
    const Url& item = items->at(from);
    context_.model.findFolder(item.standardized(), [self = QPointer(this), items, found, from](bool isThere) {
        if (self) isThere ? found(items->at(from)) : self->findFolder(items, found, from + 1);
    });
}

void ContentView::dragEnterEvent(QDragEnterEvent* event) {
    const Items items = dropped(*event->mimeData());
    if (items->empty()) return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    overlay_->setRefusal(CommandAvailability::againstRun(context_.model));
    overlay_->setGeometry(rect());
    overlay_->raise();
    overlay_->show();
    if (!CommandAvailability::againstRun(context_.model).isEmpty()) return;
    findFolder(items, [this, drag = ++drags_](const std::optional<Url>& folder) {
        if (drag == drags_ && !folder) overlay_->setRefusal(tr("Only a folder can be previewed."));
    });
}

void ContentView::dragLeaveEvent(QDragLeaveEvent*) {
    overlay_->hide();
}

void ContentView::dropEvent(QDropEvent* event) {
    overlay_->hide();
    const Items items = dropped(*event->mimeData());
    if (items->empty()) return;
    // It stays where it is, whatever the source offers.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    examineDropped(items);
}

/// What is chosen while they are looked at comes first.
void ContentView::examineDropped(const Items& items) {
    if (!CommandAvailability::againstRun(context_.model).isEmpty()) return previewFolder(items->front());
    findFolder(items, [this, first = items->front(), drop = ++drops_](const std::optional<Url>& folder) {
        if (drop != drops_) return;
        folder ? previewFolder(*folder) : notices_->tellNoFolder(first);
    });
}

void ContentView::resizeEvent(QResizeEvent*) {
    overlay_->setGeometry(rect());
}
