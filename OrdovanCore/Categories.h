#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

/// The built-in kinds of files, in the order they are shown. A kind's raw value is the folder its files go to. Every
/// function here may be called from any thread.
enum class OrdovanFileCategory {
    documents,
    spreadsheets,
    images,
    design,
    videos,
    audio,
    archives,
    installers,
    code,
    fonts,
    books,
    other,
};

namespace OrdovanFileCategories {

/// Every category, in declaration order; `other` is the last.
inline constexpr std::array<OrdovanFileCategory, 12> allCases = {
    OrdovanFileCategory::documents, OrdovanFileCategory::spreadsheets, OrdovanFileCategory::images,
    OrdovanFileCategory::design,    OrdovanFileCategory::videos,       OrdovanFileCategory::audio,
    OrdovanFileCategory::archives,  OrdovanFileCategory::installers,   OrdovanFileCategory::code,
    OrdovanFileCategory::fonts,     OrdovanFileCategory::books,        OrdovanFileCategory::other,
};

/// One row of the extension table: extensions in lower case, without their dot.
struct KnownExtensions {
    OrdovanFileCategory category;
    std::span<const std::string_view> extensions;
};

/// The whole notion of file types: one row for each category but `other`, in `allCases` order.
[[nodiscard]] std::span<const KnownExtensions> knownExtensions();

/// The category of a file extension given without its dot. The extension is lower-cased (full Unicode) and looked up;
/// nothing else is done to it, so ".pdf", " pdf" and "tar.gz" are `other`, as is the empty extension.
[[nodiscard]] OrdovanFileCategory forExtension(std::string_view ext);

/// The category of exactly this raw value (case-sensitive), or nothing.
[[nodiscard]] std::optional<OrdovanFileCategory> fromRawValue(std::string_view rawValue);

}  // namespace OrdovanFileCategories

/// The folder name of a category, which is also the name shown for it.
[[nodiscard]] std::string_view rawValue(OrdovanFileCategory category);

namespace OrdovanOutput {
/// The folder made directly inside the folder being organized; every category and rule folder is made inside it.
inline constexpr std::string_view folderName = "ordovan+";
}  // namespace OrdovanOutput
