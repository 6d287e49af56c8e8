#include "OrdovanApp/theme/Glyph.h"

#include "tests/support/WidgetTestMain.h"

#include <QImage>
#include <QPainter>

#include <set>

namespace {

/// How many pixels are drawn at all, and whether each of them is of one color.
struct Drawn {
    int pixels = 0;
    bool oneColor = true;
};

Drawn drawn(const QPixmap& pixmap, const QColor& color) {
    const QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
    Drawn result;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (pixel.alpha() < 200) continue;
            ++result.pixels;
            const int off = std::abs(pixel.red() - color.red()) + std::abs(pixel.green() - color.green()) +
                            std::abs(pixel.blue() - color.blue());
            if (off > 6) result.oneColor = false;
        }
    }
    return result;
}

TEST(Glyphs, AreAllDrawnInTheColorAsked) {
    const QColor color(0xC2491D);
    for (int glyph = 0; glyph <= static_cast<int>(Glyph::drop); ++glyph) {
        const Drawn result = drawn(Glyphs::pixmap(static_cast<Glyph>(glyph), 48, color, 1), color);
        EXPECT_GT(result.pixels, 60) << glyph;
        EXPECT_TRUE(result.oneColor) << glyph;
    }
}

TEST(Glyphs, AreAllDifferent) {
    std::set<QByteArray> seen;
    for (int glyph = 0; glyph <= static_cast<int>(Glyph::drop); ++glyph) {
        const QImage image = Glyphs::pixmap(static_cast<Glyph>(glyph), 32, Qt::black, 1).toImage();
        seen.insert(QByteArray(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()));
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(Glyph::drop) + 1);
}

TEST(Glyphs, HaveThePixelsOfTheScreen) {
    const QPixmap pixmap = Glyphs::pixmap(Glyph::folder, 18, Qt::black, 1.5);
    EXPECT_EQ(pixmap.size(), QSize(27, 27));
    EXPECT_EQ(pixmap.deviceIndependentSize(), QSizeF(18, 18));
}

TEST(Glyphs, OfCategoriesAreTheirOwn) {
    std::set<Glyph> seen;
    for (const OrdovanFileCategory category : OrdovanFileCategories::allCases)
        seen.insert(Glyphs::forCategory(category));
    EXPECT_EQ(seen.size(), OrdovanFileCategories::allCases.size());
}

TEST(Glyphs, ArePaintedIntoTheirRectangleAlone) {
    QImage image(64, 64, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    Glyphs::paint(painter, Glyph::grip, QRectF(20, 20, 24, 24), Qt::red);
    painter.end();
    int outside = 0;
    int inside = 0;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            if (image.pixelColor(x, y).alpha() == 0) continue;
            ++(QRect(20, 20, 24, 24).contains(x, y) ? inside : outside);
        }
    }
    EXPECT_EQ(outside, 0);
    EXPECT_GT(inside, 10);
}

TEST(Glyphs, AsIconsAreSharpAtEverySize) {
    const QIcon icon = Glyphs::icon(Glyph::search, Qt::blue);
    EXPECT_EQ(icon.pixmap(QSize(16, 16), 2.0).size(), QSize(32, 32));
    EXPECT_FALSE(icon.isNull());
}

TEST(Glyphs, HaveAnApplicationIconInTheSizesOfTrays) {
    const QIcon icon = Glyphs::application();
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
        EXPECT_TRUE(icon.availableSizes().contains(QSize(size, size))) << size;
        const QImage image = icon.pixmap(QSize(size, size), 1.0).toImage();
        EXPECT_EQ(image.size(), QSize(size, size));
        // The ground is the accent, its corners are round.
        EXPECT_GT(image.pixelColor(size / 2, size - 1 - size / 8).green(),
                  image.pixelColor(size / 2, size - 1 - size / 8).red());
        EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
    }
}

}  // namespace
