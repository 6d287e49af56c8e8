#pragma once

#include "OrdovanApp/screens/RunNotices.h"

/// The lines above the history: those of every section, and why it could not be cleared.
class HistoryNotices : public RunNotices {
    Q_OBJECT

public:
    HistoryNotices(const AppContext& context, QWidget* parent);
};
