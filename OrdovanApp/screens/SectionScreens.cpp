#include "OrdovanApp/screens/SectionScreens.h"

#include "OrdovanApp/screens/BigFilesView.h"
#include "OrdovanApp/screens/DuplicatesView.h"
#include "OrdovanApp/screens/HistoryView.h"
#include "OrdovanApp/screens/RecoveryView.h"
#include "OrdovanApp/screens/SmartInboxView.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/ScreenHeader.h"

#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace Sections {
namespace {

SectionScreen makeInbox(const AppContext& context, QWidget* parent) {
    auto* view = new SmartInboxView(context, parent);
    return {.widget = view,
            .requestOrganize = [view] { view->requestOrganize(); },
            .requestExport = [view] { view->requestExport(); }};
}

/// A screen that takes no requests.
template <class View>
SectionScreen make(const AppContext& context, QWidget* parent) {
    return {.widget = new View(context, parent), .requestOrganize = {}, .requestExport = {}};
}

/// A screen that has nothing to show but what it is for.
SectionFactory empty(Section section, const QString& heading, const QString& message) {
    return [section, heading, message](const AppContext& context, QWidget* parent) {
        auto* page = new QWidget(parent);
        auto* layout = new QVBoxLayout(page);
        layout->setContentsMargins(28, 20, 28, 20);
        layout->addWidget(new ScreenHeader(context.theme, title(section), page));
        auto* state = new EmptyState(context.theme, glyph(section), page);
        state->setTitle(heading);
        state->setMessage(message);
        layout->addWidget(state, 1);
        return SectionScreen{.widget = page, .requestOrganize = {}, .requestExport = {}};
    };
}

}  // namespace

SectionFactories screens() {
    return {
        {Section::inbox, makeInbox},
        {Section::duplicates, make<DuplicatesView>},
        {Section::bigFiles, make<BigFilesView>},
        {Section::recovery, make<RecoveryView>},
        {Section::rules, empty(Section::rules, u"Your rules, in order"_s,
                               u"Send file types to folders you name, like .dmg and .pkg to Installers. Rules change "
                               u"the preview only; nothing moves until you apply."_s)},
        {Section::history, make<HistoryView>},
    };
}

}  // namespace Sections
