#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace ordovan::cli {

/// The program's result on its way to a descriptor. Rows are appended to one buffer, which is written out whenever it
/// has grown large. After an error nothing more is written.
class Output {
public:
    explicit Output(int descriptor) : descriptor_(descriptor) {}

    /// To append to.
    [[nodiscard]] std::string& buffer() { return buffer_; }
    /// Call after each row: writes what has gathered once it is a large piece.
    void rowDone() {
        if (buffer_.size() >= pieceSize) flush();
    }
    /// Writes everything that has gathered.
    void flush();

    /// The errno of the first failed write. A reader that went away is no failure: what it does not want to read is
    /// dropped.
    [[nodiscard]] std::optional<int> error() const { return error_; }

private:
    static constexpr std::size_t pieceSize = 256 * 1024;

    int descriptor_;
    bool readerIsGone_ = false;
    std::optional<int> error_;
    std::string buffer_;
};

}  // namespace ordovan::cli
