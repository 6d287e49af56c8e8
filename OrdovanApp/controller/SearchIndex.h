#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Finds rows by what a user types: upper and lower case, accents and width of letters make no difference, and every
/// word typed has to occur somewhere in a row's text. The texts are folded once, when they are added, and lie in one
/// block, so that a search of 50,000 of them is one pass over memory. While none changes it, any number of threads may
/// search.
class SearchIndex {
public:
    /// Forgets all texts; `texts` more are to come.
    void reset(std::size_t texts);
    /// Adds the text of the next row: a name, a path below the folder. Bytes that are not UTF-8 are found as U+FFFD.
    void add(std::string_view text);
    [[nodiscard]] std::size_t size() const { return ends_.size(); }

    /// The rows in which every word of the query occurs, ascending; all of them for a query without a word.
    [[nodiscard]] std::vector<std::uint32_t> rowsMatching(const QString& query) const;

    /// Text as it is compared: without accents (compatibility decomposition, marks taken away), case folded.
    [[nodiscard]] static std::string folded(std::string_view text);

private:
    [[nodiscard]] std::string_view text(std::uint32_t row) const;

    std::string texts_;                // each with a zero byte behind it
    std::vector<std::uint32_t> ends_;  // of each text, where its zero byte stands
};
