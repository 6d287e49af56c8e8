#include "OrdovanApp/theme/Glyph.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace {

// The file of each glyph, in the order of the enumeration.
constexpr std::array files = {
    "inbox",        "duplicates", "bigFiles",   "recovery", "rules",      "history",    "documents", "spreadsheets",
    "images",       "design",     "videos",     "audio",    "archives",   "installers", "code",      "fonts",
    "books",        "other",      "ruleFolder", "folder",   "folderGear", "search",     "check",     "warning",
    "error",        "info",       "eye",        "undo",     "trash",      "reveal",     "close",     "chevronDown",
    "chevronRight", "grip",       "plus",       "settings", "exportPlan", "filter",     "calendar",  "drop",
};
static_assert(files.size() == static_cast<std::size_t>(Glyph::drop) + 1);

QByteArray source(const QString& name) {
    QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The drawing `name`, its `currentColor` replaced, as an image of `pixels` device pixels; kept for the next time.
QPixmap rendered(const QString& name, const QColor& color, QSize pixels) {
    const QString key = QStringLiteral("ordovan/%1/%2/%3x%4")
                            .arg(name, color.name(QColor::HexArgb))
                            .arg(pixels.width())
                            .arg(pixels.height());
    QPixmap result;
    if (QPixmapCache::find(key, &result)) return result;
    result = QPixmap(pixels);
    result.fill(Qt::transparent);
    QByteArray svg = source(name);
    svg.replace("currentColor", color.name().toLatin1());
    QSvgRenderer renderer(svg);
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    QPainter painter(&result);
    painter.setOpacity(color.alphaF());
    renderer.render(&painter, QRectF(QPointF(), QSizeF(pixels)));
    painter.end();
    QPixmapCache::insert(key, result);
    return result;
}

QString nameOf(Glyph glyph) {
    return QString::fromLatin1(files[static_cast<std::size_t>(glyph)]);
}

// Strokes of the large drawing would run together at the sizes of trays and title bars.
QString applicationName(int pixels) {
    return pixels <= 24 ? QStringLiteral("applicationSmall") : QStringLiteral("application");
}

void paintAligned(QPainter& painter, const QRectF& rect, const auto& pixmapOf) {
    const QTransform toDevice = painter.deviceTransform();
    if (toDevice.type() > QTransform::TxScale) {
        painter.drawPixmap(rect, pixmapOf(rect.size().toSize()), QRectF());
        return;
    }
    // On whole device pixels, so that nothing is interpolated.
    const QRectF device = toDevice.mapRect(rect);
    const QSize pixels(std::max(1, qRound(device.width())), std::max(1, qRound(device.height())));
    const QRectF snapped(QPointF(std::round(device.x()), std::round(device.y())), QSizeF(pixels));
    const QPixmap pixmap = pixmapOf(pixels);
    painter.drawPixmap(toDevice.inverted().mapRect(snapped), pixmap, QRectF(pixmap.rect()));
}

/// Renders when asked, at the size asked: sharp on every screen.
class Engine final : public QIconEngine {
public:
    /// No glyph: the application's icon.
    Engine(std::optional<Glyph> glyph, QColor color) : glyph_(glyph), color_(color) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        paintAligned(*painter, QRectF(rect), [&](QSize pixels) { return at(pixels, mode); });
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override { return at(size, mode); }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override {
        QList<QSize> sizes;
        for (const int side : {16, 22, 24, 32, 48, 64, 128, 256}) sizes.append(QSize(side, side));
        return sizes;
    }
    [[nodiscard]] QIconEngine* clone() const override { return new Engine(*this); }

private:
    [[nodiscard]] QPixmap at(QSize pixels, QIcon::Mode mode) const {
        if (!glyph_) return rendered(applicationName(pixels.width()), QColor(), pixels);
        QColor color = color_;
        if (mode == QIcon::Disabled) color.setAlphaF(color.alphaF() * 0.55F);
        return rendered(nameOf(*glyph_), color, pixels);
    }

    std::optional<Glyph> glyph_;
    QColor color_;
};

}  // namespace

void Glyphs::paint(QPainter& painter, Glyph glyph, const QRectF& rect, const QColor& color) {
    paintAligned(painter, rect, [&](QSize pixels) { return rendered(nameOf(glyph), color, pixels); });
}

QPixmap Glyphs::pixmap(Glyph glyph, int size, const QColor& color, qreal devicePixelRatio) {
    const int side = qRound(size * devicePixelRatio);
    QPixmap result = rendered(nameOf(glyph), color, QSize(side, side));
    result.setDevicePixelRatio(devicePixelRatio);
    return result;
}

QIcon Glyphs::icon(Glyph glyph, const QColor& color) {
    return QIcon(new Engine(glyph, color));
}

Glyph Glyphs::forCategory(OrdovanFileCategory category) {
    switch (category) {
        case OrdovanFileCategory::documents:
            return Glyph::documents;
        case OrdovanFileCategory::spreadsheets:
            return Glyph::spreadsheets;
        case OrdovanFileCategory::images:
            return Glyph::images;
        case OrdovanFileCategory::design:
            return Glyph::design;
        case OrdovanFileCategory::videos:
            return Glyph::videos;
        case OrdovanFileCategory::audio:
            return Glyph::audio;
        case OrdovanFileCategory::archives:
            return Glyph::archives;
        case OrdovanFileCategory::installers:
            return Glyph::installers;
        case OrdovanFileCategory::code:
            return Glyph::code;
        case OrdovanFileCategory::fonts:
            return Glyph::fonts;
        case OrdovanFileCategory::books:
            return Glyph::books;
        case OrdovanFileCategory::other:
            return Glyph::other;
    }
    return Glyph::other;
}

QIcon Glyphs::application() {
    return QIcon(new Engine(std::nullopt, QColor()));
}
