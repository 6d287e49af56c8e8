#include "OrdovanApp/screens/RunNotices.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/theme/Announcer.h"

#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

RunNotices::RunNotices(const AppContext& context, const QString& result, const QString& warning, QWidget* parent)
    : QWidget(parent), context_(context) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 14);
    layout->setSpacing(8);
    refusal_ = addBanner(Banner::Kind::error, u"refusal"_s);
    result_ = addBanner(Banner::Kind::info, result);
    warning_ = addBanner(Banner::Kind::warning, warning);

    const TidyViewModel* model = &context_.model;
    connect(model, &TidyViewModel::journalWarningChanged, this, [this] { followWarning(true); });
    connect(model, &TidyViewModel::runRefusalChanged, this, [this] { followRefusal(true); });
    connect(model, &TidyViewModel::rootURLChanged, this, [this] { dismiss(result_); });
    followWarning(false);
    followRefusal(false);
}

Banner* RunNotices::addBanner(Banner::Kind kind, const QString& name) {
    auto* banner = new Banner(context_.theme, kind, this);
    banner->setObjectName(name);
    banner->hide();
    connect(banner, &Banner::closed, this, &RunNotices::refreshRoom);
    layout()->addWidget(banner);
    return banner;
}

void RunNotices::refreshRoom() {
    const auto banners = findChildren<Banner*>(Qt::FindDirectChildrenOnly);
    setVisible(std::ranges::any_of(banners, [](const Banner* banner) { return !banner->isHidden(); }));
}

void RunNotices::tell(Banner* banner, const QString& text) {
    banner->setText(text);
    banner->show();
    refreshRoom();
    context_.announcer.say(text);
}

void RunNotices::dismiss(Banner* banner) {
    banner->hide();
    refreshRoom();
}

void RunNotices::tellResult(const QString& summary, const QStringList& problems) {
    result_->setKind(problems.isEmpty() ? Banner::Kind::info : Banner::Kind::warning);
    result_->setDetails(problems);
    tell(result_, summary);
}

void RunNotices::follow(Banner* banner, const std::optional<std::string>& sentence, bool saysSo) {
    banner->setVisible(sentence.has_value());
    if (sentence) banner->setText(EngineTexts::sentence(*sentence));
    refreshRoom();
    if (sentence && saysSo) context_.announcer.say(banner->text());
}

void RunNotices::followWarning(bool saysSo) {
    follow(warning_, context_.model.journalWarning(), saysSo);
}

void RunNotices::followRefusal(bool saysSo) {
    follow(refusal_, context_.model.runRefusal(), saysSo);
}
