#pragma once

#include "OrdovanCLI/Format.h"
#include "OrdovanCLI/TextOutput.h"
#include "OrdovanCore/Url.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ordovan::cli {

/// A page of text in the making.
class Page {
public:
    Page(Output& output, const TextStyle& style) : output_(output), out_(output.buffer()), style_(style) {}

    Page& raw(std::string_view text) {
        out_ += text;
        return *this;
    }
    Page& safe(std::string_view text) {
        appendSafe(out_, text);
        return *this;
    }
    Page& count(std::size_t count, std::string_view noun) {
        appendCount(out_, count, noun);
        return *this;
    }
    Page& bold(std::string_view text) { return colored("\x1b[1m", text); }
    Page& dim(std::string_view text) { return colored("\x1b[2m", text); }
    /// Right-aligned in a column as wide as the widest size.
    Page& size(std::int64_t bytes) {
        constexpr std::size_t width = 9;  // "999 bytes"
        const std::size_t before = out_.size();
        appendSize(out_, bytes);
        const std::size_t length = out_.size() - before;
        if (length < width) out_.insert(before, width - length, ' ');
        return *this;
    }
    /// `dates` must stay the page's own; an unknown date is blank.
    Page& date(DateFormatter& dates, std::optional<double> epoch) {
        if (epoch)
            dates.append(out_, *epoch);
        else
            out_.append(DateFormatter::width, ' ');
        return *this;
    }
    void endLine() {
        out_.push_back('\n');
        output_.rowDone();
    }

    [[nodiscard]] std::string& out() { return out_; }

private:
    Page& colored(std::string_view code, std::string_view text) {
        if (style_.isColored) out_ += code;
        appendSafe(out_, text);
        if (style_.isColored) out_ += "\x1b[0m";
        return *this;
    }

    Output& output_;
    std::string& out_;
    const TextStyle& style_;
};

/// The part of a path below a folder; the whole path when it is not below it.
[[nodiscard]] inline std::string_view below(std::string_view path, std::string_view folder) {
    if (folder == "/") return path.substr(std::min<std::size_t>(1, path.size()));
    const bool isBelow = path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
    return isBelow ? path.substr(folder.size() + 1) : path;
}

}  // namespace ordovan::cli
