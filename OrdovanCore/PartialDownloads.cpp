#include "OrdovanCore/PartialDownloads.h"

#include "OrdovanCore/Text.h"

#include <algorithm>
#include <array>

namespace {

/// The whole notion of partial downloads. Web browsers, download managers and file-sharing programs give these endings
/// to what they have not finished; most put them behind the name that the file will have.
constexpr std::array<std::string_view, 20> table = {
    "!bt",           // file sharing
    "!qb",           // file sharing
    "!ut",           // file sharing
    "aria2",         // a download manager's notes beside its file; without them it starts again
    "bc!",           // file sharing
    "crdownload",    // browsers
    "dctmp",         // file sharing
    "download",      // a browser; a folder of that name is none of these
    "dtapart",       // a download manager
    "fdmdownload",   // a download manager
    "filepart",      // file transfer over SSH
    "incomplete",    // file sharing
    "jc!",           // a download manager
    "ob!",           // a download manager
    "opdownload",    // a browser
    "part",          // browsers, download managers, video downloaders
    "partial",       // browsers, package managers
    "partprogress",  // file transfer
    "xltd",          // a download manager
    "ytdl",          // a video downloader's notes beside its file
};
static_assert(std::ranges::is_sorted(table));
constexpr std::size_t longest = 12;
static_assert(std::ranges::all_of(table, [](std::string_view ending) { return ending.size() <= longest; }));

}  // namespace

namespace OrdovanPartialDownloads {

bool isPartialDownload(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return false;
    const std::string_view ending = name.substr(dot + 1);
    if (ending.size() > longest) return false;
    std::array<char, longest> lowered{};
    std::ranges::transform(ending, lowered.begin(), [](char c) { return ordovan::text::asciiLowercased(c); });
    return std::ranges::binary_search(table, std::string_view(lowered.data(), ending.size()));
}

}  // namespace OrdovanPartialDownloads
