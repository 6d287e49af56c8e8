#include "OrdovanApp/models/FilePreview.h"

#include "OrdovanCore/Categories.h"

#include <QBuffer>
#include <QImageReader>
#include <QStringDecoder>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t mostOfAPicture = std::size_t{64} << 20;
constexpr std::size_t mostOfAText = std::size_t{64} << 10;
constexpr int mostMegabytesDecoded = 256;

/// A picture, unless its format is not known or could make the decoder open other files.
QImage pictureIn(const FileBeginning& beginning, const QSize& room) {
    QByteArray bytes = QByteArray::fromRawData(beginning.bytes.data(), static_cast<qsizetype>(beginning.bytes.size()));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    const QByteArray format = QImageReader::imageFormat(&buffer);
    if (format.isEmpty() || format.startsWith("svg") || format == "pdf") return {};
    QImageReader reader(&buffer, format);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    const QSize fitting = turned ? room.transposed() : room;
    if (size.isValid() && (size.width() > fitting.width() || size.height() > fitting.height())) {
        reader.setScaledSize(size.scaled(fitting, Qt::KeepAspectRatio).expandedTo({1, 1}));
    }
    QImage image = reader.read();
    const bool isTooLarge = image.width() > room.width() || image.height() > room.height();
    if (!image.isNull() && isTooLarge) image = image.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image;
}

/// Whether a character hints at bytes that are no text.
bool isOdd(QChar character) {
    const char16_t c = character.unicode();
    return (c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r' && c != u'\f' && c != 0x1b) || c == 0x7f;
}

std::optional<QString> decoded(QByteArrayView bytes, QStringConverter::Encoding encoding) {
    QStringDecoder decoder(encoding);
    QString text = decoder.decode(bytes);
    if (decoder.hasError() || std::ranges::any_of(text, isOdd)) return std::nullopt;
    return text;
}

/// UTF-8, UTF-16 or UTF-32 by their byte order marks, UTF-8 without one, or else the Western one-byte encoding; a
/// character cut off at the end is left out.
std::optional<QString> textIn(const FileBeginning& beginning) {
    const QByteArrayView bytes(beginning.bytes.data(), static_cast<qsizetype>(beginning.bytes.size()));
    if (const auto marked = QStringConverter::encodingForData(bytes)) return decoded(bytes, *marked);
    if (auto found = decoded(bytes, QStringConverter::Utf8)) return found;
    return decoded(bytes, QStringConverter::Latin1);
}

}  // namespace

std::size_t FilePreview::bytesWanted(const Url& file) {
    const auto category = OrdovanFileCategories::forExtension(file.pathExtension());
    return category == OrdovanFileCategory::images ? mostOfAPicture : mostOfAText;
}

FilePreview FilePreview::of(const FileBeginning& beginning, const QSize& room) {
    if (!beginning.couldRead) return {.kind = Kind::unreadable};
    if (beginning.bytes.empty()) return {.kind = Kind::empty};
    [[maybe_unused]] static const bool isLimited = (QImageReader::setAllocationLimit(mostMegabytesDecoded), true);
    if (QImage image = pictureIn(beginning, room); !image.isNull()) {
        return {.kind = Kind::picture, .picture = std::move(image)};
    }
    const FileBeginning beginningOfText = {.bytes = beginning.bytes.substr(0, mostOfAText), .couldRead = true};
    if (auto found = textIn(beginningOfText)) {
        const bool isWhole = beginning.isWhole && beginning.bytes.size() <= mostOfAText;
        return {.kind = Kind::text, .text = std::move(*found), .isWhole = isWhole};
    }
    return {};
}
