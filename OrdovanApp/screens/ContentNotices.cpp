#include "OrdovanApp/screens/ContentNotices.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/RunTexts.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/Banner.h"

#include <QVBoxLayout>

using namespace Qt::StringLiterals;

ContentNotices::ContentNotices(const AppContext& context, QWidget* parent) : QWidget(parent), context_(context) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 14, 28, 0);
    layout->setSpacing(8);
    interrupted_ = addBanner(u"interruptedRun"_s);
    interrupted_->setDetailsTexts(tr("Files"), tr("Show Files"), tr("Hide Files"));
    notOpened_ = addBanner(u"folderNotOpened"_s);
    connect(interrupted_, &Banner::closed, &context_.model, &TidyViewModel::dismissInterruptedRun);
    connect(&context_.model, &TidyViewModel::interruptedRunChanged, this, &ContentNotices::followInterruptedRun);
    connect(&context_.model, &TidyViewModel::rootURLChanged, this, &ContentNotices::tellInterruptedRun);
    followInterruptedRun();
}

Banner* ContentNotices::addBanner(const QString& name) {
    auto* banner = new Banner(context_.theme, Banner::Kind::warning, this);
    banner->setObjectName(name);
    banner->hide();
    connect(banner, &Banner::closed, this, &ContentNotices::refreshRoom);
    layout()->addWidget(banner);
    return banner;
}

void ContentNotices::refreshRoom() {
    setVisible(!interrupted_->isHidden() || !notOpened_->isHidden());
}

/// Stays until its user has seen it, whatever folder is opened meanwhile.
void ContentNotices::followInterruptedRun() {
    const auto& run = context_.model.interruptedRun();
    interrupted_->setVisible(run != nullptr);
    refreshRoom();
    if (!run) return;
    const bool needsALook = run->isUnreadable || run->unsettled > 0 || !run->isRecorded;
    interrupted_->setKind(needsALook ? Banner::Kind::warning : Banner::Kind::info);
    tellInterruptedRun();
    interrupted_->setDetails(RunTexts::sentences(run->outcomes));
    context_.announcer.say(interrupted_->text());
}

/// The folder is named where it is not the one in sight.
void ContentNotices::tellInterruptedRun() {
    const auto& run = context_.model.interruptedRun();
    if (!run) return;
    const QString where = u' ' + tr("It worked in “%1”.").arg(Formats::fileName(run->root));
    interrupted_->setText(EngineTexts::summary(*run) + (run->root == context_.model.rootURL() ? QString() : where));
}

void ContentNotices::tellNotOpened(const Url& folder, const QString& reason) {
    warn(reason + u' ' +
         tr("“%1” was not opened; choose it again when that has finished.").arg(Formats::fileName(folder)));
}

void ContentNotices::tellNoFolder(const Url& item) {
    warn(tr("Only a folder can be previewed. “%1” was not opened.").arg(Formats::fileName(item)));
}

void ContentNotices::warn(const QString& sentence) {
    notOpened_->setText(sentence);
    notOpened_->show();
    refreshRoom();
    context_.announcer.say(notOpened_->text());
}

void ContentNotices::folderOpened() {
    notOpened_->hide();
    refreshRoom();
}
