#pragma once

#include "OrdovanApp/controller/FileLooks.h"

#include <QImage>
#include <QSize>
#include <QString>

#include <cstddef>
#include <string_view>

/// What can be shown of the inside of a file: a picture, text, or nothing.
struct FilePreview {
    enum class Kind {
        picture,
        text,
        empty,       ///< a file without content
        none,        ///< no picture and no text
        unreadable,  ///< not to be read now
    };
    Kind kind = Kind::none;
    QImage picture{};
    QString text{};
    bool isWhole = true;  ///< of text: nothing follows

    /// How much of a file is read at most, in bytes: all of a picture of a usual size, 64 KiB of anything else.
    [[nodiscard]] static std::size_t bytesWanted(const Url& file);

    /// What the beginning of a file shows. A picture is no larger than `room` (in pixels) and keeps its proportions.
    /// Any thread; takes as long as decoding a picture takes.
    [[nodiscard]] static FilePreview of(const FileBeginning& beginning, const QSize& room);
};
