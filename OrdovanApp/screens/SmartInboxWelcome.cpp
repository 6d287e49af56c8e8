#include "OrdovanApp/screens/SmartInboxWelcome.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/StyleSheet.h"
#include "OrdovanApp/theme/ToolTips.h"

#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

/// The recent folders side by side, newest first; the oldest are left out where there is no room.
class SmartInboxWelcome::Recent : public QWidget {
public:
    Recent(const AppContext& context, QWidget* parent)
        : QWidget(parent), context_(context), label_(new QLabel(SmartInboxWelcome::tr("Recent"), this)) {
        StyleSheet::setType(label_, StyleSheet::LabelType::second);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        connect(&context_.theme, &ThemeEnvironment::changed, this, &Recent::place);
        connect(&context_.model, &TidyViewModel::recentFoldersChanged, this, &Recent::fill);
        CommandAvailability::watch(context_.model, this, [this] { refreshActions(); });
        fill();
    }
    [[nodiscard]] QSize sizeHint() const override { return {0, context_.theme.scaled(66)}; }

protected:
    void resizeEvent(QResizeEvent*) override { place(); }

private:
    void fill() {
        qDeleteAll(pills_);
        pills_.clear();
        for (const Url& folder : context_.model.recentFolders()) {
            const QString name = Formats::fileName(folder);
            QPushButton* pill = Buttons::pill(context_.theme, Glyph::folder, QString(), this);
            const int room = context_.theme.scaled(widestName);
            const QString shown = pill->fontMetrics().elidedText(name, Qt::ElideMiddle, room);
            pill->setText(QString(shown).replace(u'&', u"&&"_s));
            Buttons::setGlyph(context_.theme, pill, Glyph::folder);  // with room before the text
            pill->setObjectName(u"recentFolder"_s);
            pill->setAccessibleName(name);
            pill->setProperty("path", Formats::path(folder));
            connect(pill, &QPushButton::clicked, this, [this, folder] { context_.model.chooseFolder(folder); });
            pills_.append(pill);
        }
        refreshActions();
        setVisible(!pills_.isEmpty());
        place();
    }
    void refreshActions() {
        const QString reason =
            CommandAvailability::reasonAgainst(Commands::chooseFolder, context_.model, context_.desktop);
        for (QPushButton* pill : pills_) {
            const QString path = pill->property("path").toString();
            Buttons::setAvailable(pill, reason, ToolTips::plain(path));
            pill->setAccessibleDescription(reason.isEmpty() ? path : reason);
        }
    }
    void place() {
        const auto put = [this](QWidget* widget, int left) {
            const QSize size = widget->sizeHint();
            widget->setGeometry(left, (height() - size.height()) / 2, size.width(), size.height());
            return left + size.width() + 12;
        };
        int left = put(label_, 0);
        bool fits = true;
        for (QPushButton* pill : pills_) {
            fits = fits && left + pill->sizeHint().width() <= width();
            pill->setVisible(fits);
            if (fits) left = put(pill, left);
        }
    }

    static constexpr int widestName = 160;
    AppContext context_;
    QLabel* label_;
    QList<QPushButton*> pills_;
};

SmartInboxWelcome::SmartInboxWelcome(const AppContext& context, QWidget* parent) : QWidget(parent), context_(context) {
    setObjectName(u"welcomePage"_s);
    auto* card = new EmptyState(context.theme, Glyph::inbox, this);
    card->setDashed(true);
    card->setTitle(tr("Start with your Downloads folder"));
    card->setMessage(
        tr("ordovan+ reads file names and types only, shows you a plan, and moves nothing until you say so."));
    card->setPoints({{Glyph::eye, tr("See where every file would go. Read-only.")},
                     {Glyph::check, tr("Untick anything you want left alone.")},
                     {Glyph::undo, tr("Every run is journaled and reversible.")}});
    QPushButton* choose = Buttons::primary(tr("Choose Folder…"));
    choose->setObjectName(u"welcomeChooseFolder"_s);
    CommandAvailability::bind(context_, choose, Commands::chooseFolder);
    card->addButton(choose);
    card->setFootnote(tr("or drag a folder here"));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(card, 1);
    layout->addWidget(new Recent(context, this));
}
