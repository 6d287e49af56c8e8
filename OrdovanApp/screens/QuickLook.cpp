#include "OrdovanApp/screens/QuickLook.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/theme/AccessibleRole.h"
#include "OrdovanApp/theme/ElidedLabel.h"
#include "OrdovanApp/theme/Glyph.h"
#include "OrdovanApp/theme/StyleSheet.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QFontDatabase>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <memory>

using namespace Qt::StringLiterals;
using StyleSheet::LabelType;

namespace {

constexpr QSize usualSize(720, 600);
constexpr QSize leastSize(360, 320);
constexpr int margin = 20;
constexpr int iconSize = 96;

OrdovanFileCategory kindOf(const Url& file) {
    return OrdovanFileCategories::forExtension(file.pathExtension());
}

}  // namespace

/// A picture in the middle of its room, never larger than it is.
class QuickLook::Picture : public QWidget {
public:
    using QWidget::QWidget;
    void setImage(const QImage& image) {
        image_ = image;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        if (image_.isNull()) return;
        const QSize whole = (QSizeF(image_.size()) / devicePixelRatioF()).toSize();
        const bool fits = whole.width() <= width() && whole.height() <= height();
        const QSize size = fits ? whole : whole.scaled(this->size(), Qt::KeepAspectRatio);
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRect(QPoint((width() - size.width()) / 2, (height() - size.height()) / 2), size), image_);
    }

private:
    QImage image_;
};

QuickLook::QuickLook(const AppContext& context, QWidget* parent)
    : QWidget(parent, Qt::Dialog), context_(context), pages_(new QStackedWidget(this)), picture_(new Picture(pages_)) {
    setObjectName(u"quickLook"_s);
    setAccessibleRole(this, QAccessible::Dialog);
    setMinimumSize(leastSize);
    resize(usualSize);
    picture_->setObjectName(u"quickLookPicture"_s);
    pages_->addWidget(picture_);
    pages_->addWidget(makeText());
    pages_->addWidget(makeIcon());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(16);
    layout->addWidget(pages_, 1);
    layout->addWidget(makeFacts());
    connect(&context_.theme, &ThemeEnvironment::changed, this, &QuickLook::recolor);
}

QWidget* QuickLook::makeText() {
    textPage_ = new QWidget(pages_);
    text_ = new QPlainTextEdit(textPage_);
    text_->setObjectName(u"quickLookText"_s);
    text_->setAccessibleName(tr("The beginning of the file"));
    text_->setReadOnly(true);
    // The keys belong to the window: they move through the list.
    text_->setFocusPolicy(Qt::NoFocus);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    cut_ = new QLabel(tr("Only the beginning of this file is shown."), textPage_);
    StyleSheet::setType(cut_, LabelType::caption);
    auto* layout = new QVBoxLayout(textPage_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addWidget(text_, 1);
    layout->addWidget(cut_);
    return textPage_;
}

QWidget* QuickLook::makeIcon() {
    iconPage_ = new QWidget(pages_);
    icon_ = new QLabel(iconPage_);
    icon_->setAlignment(Qt::AlignCenter);
    message_ = new QLabel(iconPage_);
    message_->setObjectName(u"quickLookMessage"_s);
    message_->setAlignment(Qt::AlignCenter);
    message_->setWordWrap(true);
    StyleSheet::setType(message_, LabelType::second);
    auto* layout = new QVBoxLayout(iconPage_);
    layout->addStretch(1);
    layout->addWidget(icon_);
    layout->addSpacing(12);
    layout->addWidget(message_);
    layout->addStretch(1);
    return iconPage_;
}

QWidget* QuickLook::makeFacts() {
    auto* box = new QWidget(this);
    auto* layout = new QGridLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setHorizontalSpacing(16);
    layout->setVerticalSpacing(4);
    layout->setColumnStretch(1, 1);
    name_ = new ElidedLabel(box);
    name_->setObjectName(u"quickLookName"_s);
    StyleSheet::setType(name_, LabelType::heading);
    layout->addWidget(name_, 0, 0, 1, 2);
    const std::array names = {tr("Kind"), tr("Size"), tr("Last changed"), tr("Where")};
    for (std::size_t i = 0; i < names.size(); ++i) {
        auto* name = new QLabel(names[i], box);
        StyleSheet::setType(name, LabelType::second);
        facts_[i] = new ElidedLabel(box);
        layout->addWidget(name, static_cast<int>(i) + 1, 0);
        layout->addWidget(facts_[i], static_cast<int>(i) + 1, 1);
    }
    return box;
}

void QuickLook::showFile(const OrdovanInventoryEntry& file, const Url& root) {
    if (isVisible() && file.url == file_) return;
    file_ = file.url;
    showFacts(file, root);
    showIcon({});
    if (!isVisible()) comeUp();
    auto preview = std::make_shared<FilePreview>();
    const QSize room = (QSizeF(pages_->size()) * devicePixelRatioF()).toSize();
    context_.model.looks().look(
        file_, FilePreview::bytesWanted(file_),
        [preview, room](const FileBeginning& beginning) { *preview = FilePreview::of(beginning, room); },
        [self = QPointer(this), preview] {
            if (self && self->isVisible()) self->showPreview(*preview);
        });
}

/// In the middle of the window that it belongs to, wherever that is now.
void QuickLook::comeUp() {
    if (parentWidget() != nullptr) {
        QRect place(QPoint(), size());
        place.moveCenter(parentWidget()->window()->geometry().center());
        move(place.topLeft());
    }
    show();
}

void QuickLook::showFacts(const OrdovanInventoryEntry& file, const Url& root) {
    const QString name = Formats::fileName(file.url);
    setWindowTitle(name);
    setAccessibleName(name);
    name_->setText(name);
    facts_[0]->setText(EngineTexts::category(kindOf(file.url)));
    facts_[1]->setText(Formats::byteSize(file.byteSize));
    facts_[2]->setText(file.modifiedEpoch ? Formats::moment(*file.modifiedEpoch) : tr("Not known"));
    facts_[3]->setText(Formats::folderOf(file.url, root));
    facts_[3]->setFullToolTip(Formats::path(file.url));
}

void QuickLook::showIcon(const QString& message) {
    recolor();
    message_->setText(message);
    pages_->setCurrentWidget(iconPage_);
}

void QuickLook::showPreview(const FilePreview& preview) {
    switch (preview.kind) {
        case FilePreview::Kind::picture:
            picture_->setImage(preview.picture);
            picture_->setAccessibleName(tr("Picture: %1").arg(name_->text()));
            pages_->setCurrentWidget(picture_);
            break;
        case FilePreview::Kind::text:
            text_->setPlainText(preview.text);
            cut_->setVisible(!preview.isWhole);
            pages_->setCurrentWidget(textPage_);
            break;
        case FilePreview::Kind::empty:
            showIcon(tr("This file is empty."));
            break;
        case FilePreview::Kind::none:
            showIcon(tr("There is no preview for this kind of file."));
            break;
        case FilePreview::Kind::unreadable:
            showIcon(tr("This file can't be read right now."));
            break;
    }
}

void QuickLook::recolor() {
    const OrdovanFileCategory kind = kindOf(file_);
    icon_->setPixmap(Glyphs::pixmap(Glyphs::forCategory(kind), context_.theme.scaled(iconSize),
                                    context_.theme.colors().kind(kind), devicePixelRatioF()));
}

void QuickLook::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Space:
        case Qt::Key_Escape:
            close();
            return;
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            text_->verticalScrollBar()->triggerAction(event->key() == Qt::Key_PageUp
                                                          ? QAbstractSlider::SliderPageStepSub
                                                          : QAbstractSlider::SliderPageStepAdd);
            return;
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_Home:
        case Qt::Key_End:
            Q_EMIT steered(event->key());
            return;
        default:
            QWidget::keyPressEvent(event);
    }
}

void QuickLook::closeEvent(QCloseEvent* event) {
    context_.model.looks().cancel();
    QWidget::closeEvent(event);
}
