#include "OrdovanCore/Text.h"

#include <unicode/brkiter.h>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstring>

namespace ordovan::text {
namespace {

const std::uint8_t* bytesOf(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

/// ICU counts in 32 bits. A longer text can only be an attack, and is treated as not being text at all.
bool isTooLong(std::string_view text) {
    return text.size() > 0x7FFF'FFFF;
}

icu::StringPiece pieceOf(std::string_view text) {
    return {text.data(), static_cast<std::int32_t>(text.size())};
}

const icu::Normalizer2* nfc() {
    static const icu::Normalizer2* const instance = [] {
        UErrorCode status = U_ZERO_ERROR;
        return icu::Normalizer2::getNFCInstance(status);
    }();
    return instance;
}

}  // namespace

bool isAscii(std::string_view bytes) noexcept {
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + i, 8);
        if ((word & 0x8080'8080'8080'8080U) != 0) return false;
    }
    for (; i < bytes.size(); ++i) {
        if ((static_cast<unsigned char>(bytes[i]) & 0x80U) != 0) return false;
    }
    return true;
}

std::string asciiLowercased(std::string_view text) {
    std::string lowered(text);
    for (char& c : lowered) c = asciiLowercased(c);
    return lowered;
}

bool isUtf8(std::string_view bytes) noexcept {
    if (isTooLong(bytes)) return isAscii(bytes);
    const std::uint8_t* const data = bytesOf(bytes);
    const auto size = static_cast<std::int32_t>(bytes.size());
    for (std::int32_t i = 0; i < size;) {
        if (i + 8 <= size && isAscii(bytes.substr(static_cast<std::size_t>(i), 8))) {
            i += 8;
            continue;
        }
        UChar32 point = 0;
        U8_NEXT(data, i, size, point);
        if (point < 0) return false;
    }
    return true;
}

bool isComposed(std::string_view utf8) {
    if (isAscii(utf8) || isTooLong(utf8)) return true;
    UErrorCode status = U_ZERO_ERROR;
    return nfc()->isNormalizedUTF8(pieceOf(utf8), status) != 0 || U_FAILURE(status) || !isUtf8(utf8);
}

std::string composed(std::string_view utf8) {
    if (isComposed(utf8)) return std::string(utf8);
    std::string result;
    icu::StringByteSink<std::string> sink(&result, static_cast<std::int32_t>(utf8.size()));
    UErrorCode status = U_ZERO_ERROR;
    nfc()->normalizeUTF8(0, pieceOf(utf8), sink, nullptr, status);
    return U_SUCCESS(status) ? result : std::string(utf8);
}

std::string lowercased(std::string_view utf8) {
    if (isAscii(utf8) || !isUtf8(utf8)) return asciiLowercased(utf8);
    std::string result;
    icu::StringByteSink<std::string> sink(&result, static_cast<std::int32_t>(utf8.size()));
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8ToLower("", 0, pieceOf(utf8), sink, nullptr, status);
    return U_SUCCESS(status) ? result : asciiLowercased(utf8);
}

std::size_t characterCount(std::string_view utf8) {
    if (isAscii(utf8)) {
        std::size_t count = utf8.size();
        for (std::size_t i = 0; i + 1 < utf8.size(); ++i) {
            if (utf8[i] == '\r' && utf8[i + 1] == '\n') --count;  // one grapheme cluster
        }
        return count;
    }
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    UText* const text = utext_openUTF8(nullptr, utf8.data(), static_cast<std::int64_t>(utf8.size()), &status);
    std::size_t count = 0;
    if (U_SUCCESS(status)) {
        breaks->setText(text, status);
        while (U_SUCCESS(status) && breaks->next() != icu::BreakIterator::DONE) ++count;
    }
    utext_close(text);
    return U_SUCCESS(status) ? count : utf8.size();
}

std::string_view trimmed(std::string_view utf8) {
    if (isTooLong(utf8)) return utf8;
    const std::uint8_t* const data = bytesOf(utf8);
    const auto size = static_cast<std::int32_t>(utf8.size());
    std::int32_t begin = size, end = size;  // around everything but the white space at both ends
    for (std::int32_t next = 0; next < size;) {
        const std::int32_t start = next;
        UChar32 point = 0;
        U8_NEXT(data, next, size, point);
        if (point >= 0 && u_isUWhiteSpace(point) != 0) continue;
        begin = std::min(begin, start);
        end = next;
    }
    return utf8.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

bool hasControlCharacter(std::string_view utf8) {
    if (isTooLong(utf8)) return true;
    const std::uint8_t* const data = bytesOf(utf8);
    const auto size = static_cast<std::int32_t>(utf8.size());
    for (std::int32_t i = 0; i < size;) {
        UChar32 point = 0;
        U8_NEXT(data, i, size, point);
        if (point >= 0 && u_charType(point) == U_CONTROL_CHAR) return true;
    }
    return false;
}

std::string withReplacements(std::string_view bytes) {
    if (isUtf8(bytes)) return std::string(bytes);
    if (isTooLong(bytes)) return "\uFFFD";
    std::string result;
    result.reserve(bytes.size() + 8);
    const std::uint8_t* const data = bytesOf(bytes);
    const auto size = static_cast<std::int32_t>(bytes.size());
    for (std::int32_t i = 0; i < size;) {
        const std::int32_t start = i;
        UChar32 point = 0;
        U8_NEXT(data, i, size, point);
        if (point < 0) {
            result += "\uFFFD";
        } else {
            result += bytes.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start));
        }
    }
    return result;
}

}  // namespace ordovan::text
