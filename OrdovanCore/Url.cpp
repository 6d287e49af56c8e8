#include "OrdovanCore/Url.h"

#include "OrdovanCore/Hex.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

using ordovan::SharedText;

namespace {

/// Percent-decoding (RFC 3986, section 2.1); a "%" that no two hexadecimal digits follow stays as it is.
std::string percentDecoded(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool mayBeByte = text[i] == '%' && i + 2 < text.size();
        const auto high = mayBeByte ? ordovan::hexValue(text[i + 1]) : std::nullopt;
        const auto low = mayBeByte ? ordovan::hexValue(text[i + 2]) : std::nullopt;
        if (high && low) {
            out += static_cast<char>(*high * 16 + *low);
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

/// The scheme in front of "://" (RFC 3986, section 3.1), or nothing where the text is a plain path.
std::string_view schemeOf(std::string_view text) {
    const std::size_t colon = text.find("://");
    if (colon == std::string_view::npos || colon == 0) return {};
    for (const char c : text.substr(0, colon)) {
        const bool allowed = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
                             c == '-' || c == '.';
        if (!allowed) return {};
    }
    return text.substr(0, colon);
}

}  // namespace

namespace ordovan {
namespace {

/// As `rfind`, which looks at one byte at a time.
std::size_t lastSlash(std::string_view path) noexcept {
    const void* const found = path.empty() ? nullptr : ::memrchr(path.data(), '/', path.size());
    return found == nullptr ? std::string_view::npos
                            : static_cast<std::size_t>(static_cast<const char*>(found) - path.data());
}

}  // namespace

std::string_view lastPathComponent(std::string_view path) noexcept {
    std::size_t end = path.size();
    while (end > 1 && path[end - 1] == '/') --end;
    path = path.substr(0, end);
    if (path == "/") return path;
    const std::size_t slash = lastSlash(path);
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view pathExtension(std::string_view path) noexcept {
    const std::string_view name = lastPathComponent(path);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size()) return {};
    return name.substr(dot + 1);
}

std::string_view parentPath(std::string_view path) noexcept {
    std::size_t end = path.size();
    while (end > 1 && path[end - 1] == '/') --end;
    const std::size_t slash = lastSlash(path.substr(0, end));
    if (slash == std::string_view::npos) return {};
    end = slash;
    while (end > 0 && path[end - 1] == '/') --end;
    return end == 0 ? path.substr(0, 1) : path.substr(0, end);
}

bool isNormalPath(std::string_view path) noexcept {
    if (path.empty() || path[0] != '/') return false;
    if (path.size() == 1) return true;
    if (path.back() == '/') return false;
    for (std::size_t slash = 0; slash != std::string_view::npos; slash = path.find('/', slash + 1)) {
        const std::string_view rest = path.substr(slash + 1);
        if (rest.starts_with('/')) return false;
        if (rest.starts_with('.') && (rest.size() == 1 || rest[1] == '/')) return false;
        if (rest.starts_with("..") && (rest.size() == 2 || rest[2] == '/')) return false;
    }
    return true;
}

std::string normalizedPath(std::string_view path) {
    std::vector<std::string_view> kept;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t slash = path.find('/', begin);
        const std::string_view piece =
            path.substr(begin, slash == std::string_view::npos ? std::string_view::npos : slash - begin);
        begin = slash == std::string_view::npos ? path.size() : slash + 1;
        if (piece.empty() || piece == ".") continue;
        if (piece != "..") {
            kept.push_back(piece);
        } else if (!kept.empty()) {
            kept.pop_back();
        }
    }
    std::string normal;
    normal.reserve(path.size() + 1);
    for (const std::string_view piece : kept) (normal += '/') += piece;
    if (normal.empty()) normal = "/";
    return normal;
}

}  // namespace ordovan

Url Url::file(SharedText path) {
    return Url(std::move(path), {});
}

Url Url::parse(std::string_view text) {
    const std::string_view scheme = schemeOf(text);
    if (scheme.empty()) return file(text);
    std::string_view rest = text.substr(scheme.size() + 3);
    if (scheme != "file") return Url(rest.substr(std::min(rest.find('/'), rest.size())), scheme);
    rest = rest.substr(std::min(rest.find('/'), rest.size()));  // the authority is this machine
    return file(percentDecoded(rest));
}

std::string_view Url::lastPathComponent() const noexcept {
    return ordovan::lastPathComponent(path());
}

std::string_view Url::pathExtension() const noexcept {
    return ordovan::pathExtension(path());
}

Url Url::appending(std::string_view component) const {
    const std::string_view slash = path().ends_with('/') ? "" : "/";
    return Url(SharedText::joined({path(), slash, component}), scheme_);
}

Url Url::deletingLastPathComponent() const {
    return Url(ordovan::parentPath(path()), scheme_);
}

Url Url::standardized() const {
    if (ordovan::isNormalPath(path())) return *this;
    return Url(ordovan::normalizedPath(path()), scheme_);
}
