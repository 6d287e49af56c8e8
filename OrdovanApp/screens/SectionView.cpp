#include "OrdovanApp/screens/SectionView.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/screens/RunTexts.h"
#include "OrdovanApp/screens/SpaceTexts.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "OrdovanApp/theme/ScreenHeader.h"
#include "OrdovanApp/theme/Sheet.h"

#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 28;
constexpr int progressWidth = 560;

}  // namespace

SectionView::SectionView(const AppContext& context, const QString& title, QWidget* parent)
    : QWidget(parent),
      context_(context),
      header_(new ScreenHeader(context.theme, title, this)),
      pages_(new QStackedWidget(this)) {
    foot_ = makeFoot(u"runProgress"_s, run_);
    connect(run_, &ProgressStrip::cancelled, &context_.model, &TidyViewModel::cancelRun);
    connect(&context_.model, &TidyViewModel::recoveryProgressed, run_, [this](quint64 done, quint64 total) {
        showRunProgress(RunTexts::done(done, total), done, total);
        run_->setText(RunTexts::recovering());
    });
}

QWidget* SectionView::makeFoot(const QString& name, ProgressStrip*& strip) {
    auto* foot = new QWidget(this);
    strip = new ProgressStrip(context_.theme, foot);
    strip->setObjectName(name);
    auto* layout = new QVBoxLayout(foot);
    layout->setContentsMargins(0, 8, 0, 12);
    layout->addWidget(strip);
    foot->hide();
    feet_.append(foot);
    return foot;
}

void SectionView::assemble(QWidget* notices) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, 0, margin, 0);
    layout->setSpacing(0);
    layout->addWidget(header_);
    layout->addWidget(notices);
    layout->addWidget(pages_, 1);
    for (QWidget* foot : feet_) layout->addWidget(foot);
}

QWidget* SectionView::makeProgressPage(const QString& name, ProgressStrip*& strip) {
    auto* page = new QWidget(pages_);
    page->setObjectName(name);
    strip = new ProgressStrip(context_.theme, page);
    strip->setMaximumWidth(progressWidth);
    auto* across = new QHBoxLayout;
    across->addStretch(1);
    across->addWidget(strip, 100);
    across->addStretch(1);
    auto* layout = new QVBoxLayout(page);
    layout->addStretch(2);
    layout->addLayout(across);
    layout->addStretch(3);
    return page;
}

EmptyState* SectionView::makeNoMatch(QWidget* parent, const QString& message, const std::function<void()>& showAll) {
    auto* state = new EmptyState(context_.theme, Glyph::search, parent);
    state->setObjectName(u"noMatch"_s);
    state->setTitle(tr("No matching files"));
    state->setMessage(message);
    QPushButton* all = Buttons::quiet(tr("Show All Files"));
    all->setObjectName(u"clearFilters"_s);
    connect(all, &QPushButton::clicked, this, showAll);
    state->addButton(all);
    return state;
}

Sheet* SectionView::makeSheet(const QString& name) {
    auto* sheet = new Sheet(context_.theme, parentWidget() != nullptr ? parentWidget() : this, this);
    sheet->setObjectName(name);
    return sheet;
}

void SectionView::showRun(bool isShown, const QString& text) {
    if (isShown && foot_->isHidden()) {
        runText_ = text;
        run_->reset();
        run_->setText(text);
    }
    foot_->setVisible(isShown);
}

void SectionView::showRunProgress(const QString& detail, quint64 done, quint64 total) {
    run_->setText(runText_);
    run_->setDetail(detail);
    run_->setProgress(static_cast<qint64>(done), static_cast<qint64>(total));
}

void SectionView::followTrashProgress() {
    connect(&context_.model, &TidyViewModel::trashProgressed, this,
            [this](quint64 files, quint64 filesTotal, quint64 bytes, quint64 bytesTotal) {
                showRunProgress(SpaceTexts::done(files, filesTotal, bytes, bytesTotal), bytes, bytesTotal);
            });
}
