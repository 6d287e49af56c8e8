#include "OrdovanCore/Categories.h"

#include "OrdovanCore/Text.h"

#include <string>
#include <unordered_map>

namespace {

using enum OrdovanFileCategory;
using Extensions = std::string_view;

constexpr Extensions documentExtensions[] = {"pdf",   "doc", "docx", "txt", "rtf", "md",
                                             "pages", "odt", "key",  "ppt", "pptx"};
constexpr Extensions spreadsheetExtensions[] = {"csv", "xls", "xlsx", "numbers", "ods", "tsv"};
constexpr Extensions imageExtensions[] = {"jpg",  "jpeg", "png", "heic", "heif", "webp", "gif",
                                          "tiff", "tif",  "bmp", "raw",  "dng",  "cr2",  "nef"};
constexpr Extensions designExtensions[] = {"psd", "ai", "fig", "sketch", "xd", "svg", "afdesign", "afphoto", "indd"};
constexpr Extensions videoExtensions[] = {"mp4", "mov", "m4v", "avi", "mkv", "webm"};
constexpr Extensions audioExtensions[] = {"mp3", "m4a", "wav", "aiff", "aif", "flac", "aac", "ogg"};
constexpr Extensions archiveExtensions[] = {"zip", "gz", "tgz", "tar", "7z", "rar", "bz2", "xz"};
constexpr Extensions installerExtensions[] = {"dmg", "pkg", "mpkg", "iso"};
constexpr Extensions codeExtensions[] = {"swift", "py",  "js",   "ts",   "tsx", "jsx", "java", "kt", "c",
                                         "h",     "cpp", "m",    "go",   "rs",  "rb",  "php",  "sh", "json",
                                         "yaml",  "yml", "toml", "html", "css", "sql", "ipynb"};
constexpr Extensions fontExtensions[] = {"ttf", "otf", "woff", "woff2", "ttc"};
constexpr Extensions bookExtensions[] = {"epub", "mobi", "azw3", "ibooks", "cbz"};

constexpr OrdovanFileCategories::KnownExtensions table[] = {
    {documents, documentExtensions}, {spreadsheets, spreadsheetExtensions},
    {images, imageExtensions},       {design, designExtensions},
    {videos, videoExtensions},       {audio, audioExtensions},
    {archives, archiveExtensions},   {installers, installerExtensions},
    {code, codeExtensions},          {fonts, fontExtensions},
    {books, bookExtensions},
};

constexpr std::string_view rawValues[] = {"Documents", "Spreadsheets", "Images", "Design", "Videos", "Audio",
                                          "Archives",  "Installers",   "Code",   "Fonts",  "Books",  "Other"};

const std::unordered_map<std::string_view, OrdovanFileCategory>& categoryByExtension() {
    static const std::unordered_map<std::string_view, OrdovanFileCategory> map = [] {
        std::unordered_map<std::string_view, OrdovanFileCategory> byExtension;
        for (const auto& [category, extensions] : table) {
            for (const std::string_view extension : extensions) byExtension[extension] = category;
        }
        return byExtension;
    }();
    return map;
}

}  // namespace

std::string_view rawValue(OrdovanFileCategory category) {
    return rawValues[static_cast<std::size_t>(category)];
}

std::span<const OrdovanFileCategories::KnownExtensions> OrdovanFileCategories::knownExtensions() {
    return table;
}

OrdovanFileCategory OrdovanFileCategories::forExtension(std::string_view ext) {
    const auto& map = categoryByExtension();
    const auto found = map.find(ordovan::text::lowercased(ext));
    return found == map.end() ? other : found->second;
}

std::optional<OrdovanFileCategory> OrdovanFileCategories::fromRawValue(std::string_view name) {
    for (const OrdovanFileCategory category : allCases) {
        if (rawValue(category) == name) return category;
    }
    return std::nullopt;
}
