#pragma once

#include "OrdovanApp/screens/AppContext.h"
#include "OrdovanApp/screens/Section.h"

#include <functional>
#include <map>

class QWidget;

/// What a section shows, and what commands can ask of it; empty where it takes no such request.
struct SectionScreen {
    QWidget* widget = nullptr;
    std::function<void()> requestOrganize;
    std::function<void()> requestExport;
};

/// Makes the screen of a section when it is first shown.
using SectionFactory = std::function<SectionScreen(const AppContext& context, QWidget* parent)>;
using SectionFactories = std::map<Section, SectionFactory>;

namespace Sections {

/// The application's own screens: one for each section.
[[nodiscard]] SectionFactories screens();

}  // namespace Sections
