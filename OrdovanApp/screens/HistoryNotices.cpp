#include "OrdovanApp/screens/HistoryNotices.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/EngineTexts.h"

using namespace Qt::StringLiterals;

HistoryNotices::HistoryNotices(const AppContext& context, QWidget* parent)
    : RunNotices(context, u"historyResult"_s, u"recordWarning"_s, parent) {
    connect(&context_.model, &TidyViewModel::historyCleared, this, [this](const QString& error) {
        result()->setKind(Banner::Kind::error);
        error.isEmpty() ? dismiss(result()) : tell(result(), EngineTexts::sentence(error.toStdString()));
    });
}
