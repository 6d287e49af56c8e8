#pragma once

#include "OrdovanApp/models/BuiltInTypesModel.h"
#include "OrdovanApp/models/RulesModel.h"
#include "OrdovanApp/screens/AppContext.h"

#include <QWidget>

class Banner;
class EmptyState;
class FilterField;
class QLabel;
class QPushButton;
class QStackedWidget;
class RowsView;
class RuleForm;
class ScreenHeader;

/// The section of the user's rules: typing a new one, their order, and the types that need none.
class RulesView : public QWidget {
    Q_OBJECT

public:
    RulesView(const AppContext& context, QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* makeNoRules();
    QWidget* makeRules();
    QWidget* makeNote();
    QWidget* makeTypesBar();
    QWidget* makeTypes();
    void refreshRoom();
    void refresh();
    void showTypes(bool shown);
    void showTypesOrNothing();
    void moveRule(int row, int before);
    void removeRule(int row);
    void tellMoved(const QString& rule, int position, bool isDone);
    void tellRemoved(const QString& rule, int row, bool isDone);
    void tellProblem(const QString& text);

    AppContext context_;
    RulesModel model_;
    BuiltInTypesModel types_;
    ScreenHeader* header_;
    Banner* problem_;
    RuleForm* form_;
    QWidget* rest_;  ///< the room below, while the built-in types do not take it
    QWidget* noRules_;
    RowsView* list_;
    QLabel* note_;
    QPushButton* typesToggle_;
    FilterField* search_;
    QStackedWidget* typesStack_;
    RowsView* typesList_;
    EmptyState* noType_;
};
