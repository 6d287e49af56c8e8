#include "OrdovanApp/screens/SectionScreens.h"

#include "OrdovanApp/screens/BigFilesView.h"
#include "OrdovanApp/screens/DuplicatesView.h"
#include "OrdovanApp/screens/HistoryView.h"
#include "OrdovanApp/screens/RecoveryView.h"
#include "OrdovanApp/screens/RulesView.h"
#include "OrdovanApp/screens/SmartInboxView.h"

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

}  // namespace

SectionFactories screens() {
    return {
        {Section::inbox, makeInbox},
        {Section::duplicates, make<DuplicatesView>},
        {Section::bigFiles, make<BigFilesView>},
        {Section::recovery, make<RecoveryView>},
        {Section::rules, make<RulesView>},
        {Section::history, make<HistoryView>},
    };
}

}  // namespace Sections
