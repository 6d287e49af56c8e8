#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/BigFilesView.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/theme/Banner.h"
#include "OrdovanApp/theme/BottomBar.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/FilterField.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/Segments.h"
#include "OrdovanApp/theme/StatRow.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <cstdint>

// The making of the pages of Big Files.

using namespace Qt::StringLiterals;

namespace {

struct SizeFilter {
    const char* text;
    std::int64_t minimumBytes;
};
constexpr std::array<SizeFilter, 4> sizeFilters = {{
    {QT_TRANSLATE_NOOP("BigFilesView", "Any size"), 0},
    {QT_TRANSLATE_NOOP("BigFilesView", "Over 10 MB"), 10'000'000},
    {QT_TRANSLATE_NOOP("BigFilesView", "Over 100 MB"), 100'000'000},
    {QT_TRANSLATE_NOOP("BigFilesView", "Over 1 GB"), 1'000'000'000},
}};

constexpr int sizeColumn = 84;
constexpr int dateColumn = 96;
constexpr int narrowList = 640;
constexpr int linkPadding = 7;
constexpr int lowPage = 400;
constexpr int leastListHeight = 60;

/// Holds two choices side by side: what the first does not need of its two thirds, the second has.
class FilterRow : public QWidget {
public:
    using QWidget::QWidget;
    /// `taken`: the room of what is not theirs.
    void share(Segments* first, Segments* second, int taken) {
        first_ = first;
        second_ = second;
        taken_ = taken;
        connect(first, &Segments::currentChanged, this, [this] { fit(); });
    }

protected:
    void resizeEvent(QResizeEvent*) override { fit(); }

private:
    void fit() {
        const int room = width() - taken_;
        const int share = std::min(2 * room / 3, room - second_->minimumSizeHint().width());
        first_->setMaximumWidth(first_->widthWithin(share));
    }

    Segments* first_ = nullptr;
    Segments* second_ = nullptr;
    int taken_ = 0;
};

}  // namespace

QWidget* BigFilesView::makeNoPreview() {
    noPreview_ = new EmptyState(context_.theme, Glyph::bigFiles, pages_);
    noPreview_->setObjectName(u"noPreviewPage"_s);
    noPreview_->setTitle(tr("Preview a folder first"));
    noPreview_->setMessage(tr("Big Files uses the sizes from your current preview."));
    chooseFirst_ = Buttons::primary(tr("Choose Folder…"));
    chooseFirst_->setObjectName(u"chooseFirstFolder"_s);
    CommandAvailability::bind(context_, chooseFirst_, Commands::chooseFolder);
    noPreview_->addButton(chooseFirst_);
    return noPreview_;
}

QWidget* BigFilesView::makeFiles() {
    files_ = new QWidget(pages_);
    files_->setObjectName(u"filesPage"_s);
    auto* layout = new QVBoxLayout(files_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeStats());
    layout->addSpacing(10);
    layout->addWidget(makeFilters());
    layout->addSpacing(12);
    layout->addWidget(makeInstallersHint());
    layout->addWidget(makeList(), 1);
    layout->addWidget(makeBar());
    files_->installEventFilter(this);
    return files_;
}

/// The figures; while it is not known what duplicates hold, a way to find out stands in the last place.
QWidget* BigFilesView::makeStats() {
    figures_ = new QWidget(files_);
    stats_ = new StatRow(context_.theme, figures_);
    findCard_ = new Card(context_.theme, figures_);
    find_ = Buttons::link(tr("Find Duplicates"), findCard_);
    find_->setObjectName(u"findDuplicates"_s);
    connect(find_, &QPushButton::clicked, this, [this] { context_.commands.post(Commands::findDuplicates); });
    auto* caption = new QLabel(tr("to see the space held in duplicate copies"), findCard_);
    caption->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    caption->setWordWrap(true);
    StyleSheet::setType(caption, StyleSheet::LabelType::caption);
    auto* card = new QVBoxLayout(findCard_);
    card->setContentsMargins(16 - linkPadding, 11, 16, 12);
    caption->setContentsMargins(linkPadding, 0, 0, 0);
    card->setSpacing(2);
    card->addWidget(find_, 1, Qt::AlignLeft | Qt::AlignVCenter);
    card->addWidget(caption);
    auto* layout = new QHBoxLayout(figures_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);
    layout->addWidget(stats_, 2);
    layout->addWidget(findCard_, 1);
    return figures_;
}

QWidget* BigFilesView::makeFilters() {
    auto* row = new FilterRow(files_);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    search_ = new FilterField(context_.theme, tr("Search big files"), row);
    search_->setObjectName(u"search"_s);
    sizes_ = new Segments(context_.theme, row);
    sizes_->setObjectName(u"sizeFilter"_s);
    sizes_->setAccessibleName(tr("Smallest size"));
    QStringList texts;
    for (const SizeFilter& filter : sizeFilters) texts += tr(filter.text);
    sizes_->setSegments(texts);
    kinds_ = new Segments(context_.theme, row);
    kinds_->setObjectName(u"kindFilter"_s);
    kinds_->setAccessibleName(tr("Kind of file"));
    layout->addWidget(search_);
    layout->addWidget(sizes_, 2);
    layout->addWidget(kinds_, 1);
    row->share(sizes_, kinds_, search_->sizeHint().width() + 2 * layout->spacing());
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
        model_.setQuery(text);
        showListOrNothing();
    });
    connect(sizes_, &Segments::currentChanged, this, &BigFilesView::chooseSize);
    connect(kinds_, &Segments::currentChanged, this, &BigFilesView::chooseKind);
    return row;
}

void BigFilesView::chooseSize(int segment) {
    model_.setMinimumBytes(sizeFilters.at(static_cast<std::size_t>(segment)).minimumBytes);
    refreshKinds();
}

QWidget* BigFilesView::makeInstallersHint() {
    installers_ = new QWidget(files_);
    installers_->setObjectName(u"installersHint"_s);
    auto* hint = new Banner(context_.theme, Banner::Kind::info, installers_);
    connect(hint, &Banner::closed, this, [this] {
        hintClosed_ = true;
        installers_->hide();
    });
    hint->setText(
        tr("Installers (.dmg, .pkg) are often safe to remove once the app is installed. Organize sends them to "
           "%1/Installers so you can review them in one place.")
            .arg(Formats::text(OrdovanOutput::folderName)));
    auto* layout = new QVBoxLayout(installers_);
    layout->setContentsMargins(0, 0, 0, 8);
    layout->addWidget(hint);
    return installers_;
}

QWidget* BigFilesView::makeList() {
    stack_ = new QStackedWidget(files_);
    stack_->setMinimumHeight(leastListHeight);  // less than what stands for an empty list would take
    list_ = new RowsView(context_.theme, RowsView::Style::sections, stack_);
    list_->setObjectName(u"bigFileList"_s);
    list_->setAccessibleName(tr("Largest files, biggest first"));
    list_->setAccessibleDescription(tr("Return selects a file for the Trash, Space shows what is in it."));
    list_->setModel(&model_);
    list_->installEventFilter(this);
    connect(list_, &RowsView::actionTriggered, this, &BigFilesView::act);
    connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& current) {
        if (quickLookIsOpen() && current.isValid()) lookAt(current.row());
    });
    noneOfSize_ = new EmptyState(context_.theme, Glyph::bigFiles, stack_);
    noneOfSize_->setObjectName(u"noneOfSize"_s);
    stack_->addWidget(list_);
    stack_->addWidget(noneOfSize_);
    noMatch_ = makeNoMatch(stack_, tr("None of the largest files matches the search."), [this] {
        clearFilters();
        list_->setFocus();
    });
    stack_->addWidget(noMatch_);
    return stack_;
}

QWidget* BigFilesView::makeBar() {
    bar_ = new BottomBar(context_.theme, files_);
    trash_ = Buttons::primary(tr("Move to Trash…"), bar_);
    trash_->setObjectName(u"trashTicked"_s);
    connect(trash_, &QPushButton::clicked, this, &BigFilesView::requestTrash);
    bar_->addButton(trash_);
    return bar_;
}

/// On little room the list comes first, and the figures go.
void BigFilesView::refreshRoom() {
    figures_->setVisible(files_->height() >= context_.theme.scaled(lowPage));
}

/// Where there is no room for both columns, no row has the second.
void BigFilesView::resizeEvent(QResizeEvent* event) {
    QList<int> widths = {sizeColumn};
    if (width() >= context_.theme.scaled(narrowList)) widths.append(dateColumn);
    list_->setColumnWidths(widths);
    QWidget::resizeEvent(event);
}
