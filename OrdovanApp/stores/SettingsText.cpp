#include "OrdovanApp/stores/SettingsText.h"

#include "OrdovanCore/Text.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>

namespace ordovan {

namespace {

constexpr std::string_view blanks = " \t";
constexpr std::string_view lineEnds = "\r\n";

void skip(std::string_view& text, std::string_view characters) {
    text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
}

/// Takes the next line off the file and returns what stands behind its first "=". Quotes and backslashes take a line
/// beyond its end, and an "=" or a ";" in them has no meaning; any other ";" ends the line, and a comment begins.
std::string_view takeValue(std::string_view& file) {
    skip(file, " \t\r\n");
    if (file.starts_with(';')) {
        file.remove_prefix(std::min(file.find_first_of(lineEnds), file.size()));
        return {};
    }
    std::optional<std::size_t> begin;
    bool inQuotes = false;
    std::size_t end = 0;
    for (; end < file.size(); ++end) {
        const char c = file[end];
        if (!inQuotes && (c == ';' || lineEnds.contains(c))) break;
        if (c == '"') inQuotes = !inQuotes;
        if (c == '=' && !inQuotes && !begin) begin = end + 1;
        if (c != '\\' || ++end >= file.size()) continue;
        const std::string_view pair = file.substr(end, 2);
        if (pair == "\r\n" || pair == "\n\r") ++end;
    }
    end = std::min(end, file.size());
    const std::string_view value = begin ? file.substr(*begin, end - *begin) : std::string_view();
    file.remove_prefix(end);
    return value;
}

int digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 16;
}

/// Takes a number of any length off the text; like a QChar, it keeps the last sixteen bits.
char16_t takeNumber(std::string_view& text, int base) {
    char16_t number = 0;
    for (; !text.empty() && digit(text.front()) < base; text.remove_prefix(1)) {
        number = static_cast<char16_t>(number * base + digit(text.front()));
    }
    return number;
}

/// Takes what stands behind a backslash off the value and adds what it means to the item.
void takeEscape(std::string_view& value, std::u16string& item) {
    constexpr std::string_view names = "abfnrtv\"?'\\", meanings = "\a\b\f\n\r\t\v\"?'\\";
    if (value.empty()) return;
    const char c = value.front();
    if (digit(c) < 8) {
        item += takeNumber(value, 8);
        return;
    }
    value.remove_prefix(1);
    if (c == 'x' && !value.empty() && digit(value.front()) < 16) {
        item += takeNumber(value, 16);
    } else if (const std::size_t name = names.find(c); name != names.npos) {
        item += static_cast<char16_t>(meanings[name]);
    } else if (lineEnds.contains(c) && !value.empty() && lineEnds.contains(value.front()) && value.front() != c) {
        value.remove_prefix(1);
    }
}

/// Takes a character that is not ASCII off the value; all of them look the same in the item. A byte order mark and
/// bytes that are no UTF-8 are left out, for QSettings drops the one and may put off the others.
void takeWideCharacter(std::string_view& value, std::u16string& item) {
    const auto lead = static_cast<unsigned char>(value.front());
    const std::string_view bytes = value.substr(0, lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2);
    const bool isCharacter = text::isUtf8(bytes);
    if (isCharacter && bytes != "\xef\xbb\xbf") item += u'\ufffd';
    value.remove_prefix(isCharacter ? bytes.size() : 1);
}

/// Takes the next item of a list off a value, or all of one that is no list.
std::u16string takeItem(std::string_view& value) {
    std::u16string item;
    bool inQuotes = false;
    skip(value, blanks);
    while (!value.empty()) {
        const char c = value.front();
        if (static_cast<unsigned char>(c) >= 0x80) {
            takeWideCharacter(value, item);
            continue;
        }
        value.remove_prefix(1);
        if (c == ',' && !inQuotes) return item;
        if (c == '\\') {
            takeEscape(value, item);
        } else if (c == '"') {
            inQuotes = !inQuotes;
            if (!inQuotes) skip(value, blanks);
        } else {
            item += static_cast<char16_t>(c);
        }
    }
    return item;
}

/// Whether this is a list of one byte array, the only value that is stored in the binary form of QDataStream: a list
/// (type 9) of one item, a byte array (type 12), its size, and just as many bytes.
bool isListOfOneByteArray(std::u16string_view item) {
    constexpr std::u16string_view head(u"@Variant(\0\0\0\x09\0\0\0\x01\0\0\0\x0c", 21);
    if (!item.starts_with(head) || !item.ends_with(u')') || item.size() < head.size() + 5) return false;
    std::size_t size = 0;
    for (const char16_t byte : item.substr(head.size(), 4)) size = size << 8 | byte;
    return size == item.size() - head.size() - 5;
}

bool isPlain(std::u16string_view item) {
    if (!item.starts_with(u'@')) return true;
    for (const std::u16string_view form : {u"@@", u"@Invalid()", u"@ByteArray(", u"@String("}) {
        if (item.starts_with(form)) return true;
    }
    return isListOfOneByteArray(item);
}

}  // namespace

bool holdsOnlyPlainValues(std::string_view ini) {
    while (!ini.empty()) {
        std::string_view value = takeValue(ini);
        while (!value.empty()) {
            if (!isPlain(takeItem(value))) return false;
        }
    }
    return true;
}

}  // namespace ordovan
