#include "OrdovanApp/screens/ContentNotices.h"

#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/Banner.h"

#include <QVBoxLayout>

using namespace Qt::StringLiterals;

ContentNotices::ContentNotices(const AppContext& context, QWidget* parent) : QWidget(parent), context_(context) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 14, 28, 0);
    layout->setSpacing(8);
    notOpened_ = addBanner(u"folderNotOpened"_s);
    refreshRoom();
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
    setVisible(!notOpened_->isHidden());
}

void ContentNotices::tellNotOpened(const Url& folder, const QString& reason) {
    notOpened_->setText(
        reason + u" “%1” was not opened; choose it again when that has finished."_s.arg(Formats::fileName(folder)));
    notOpened_->show();
    refreshRoom();
    context_.announcer.say(notOpened_->text());
}

void ContentNotices::folderOpened() {
    notOpened_->hide();
    refreshRoom();
}
