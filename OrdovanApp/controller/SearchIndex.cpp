#include "OrdovanApp/controller/SearchIndex.h"

#include "OrdovanCore/Text.h"

#include <QStringList>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <span>
#include <utility>

namespace {

/// Characters that are only drawn on or around the one before them.
bool isMark(QChar c) {
    const QChar::Category category = c.category();
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing;
}

std::vector<std::string> wordsOf(const QString& query) {
    std::vector<std::string> words;
    for (const QString& word : query.simplified().split(QChar::Space, Qt::SkipEmptyParts)) {
        std::string folded = SearchIndex::folded(word.toStdString());
        std::erase(folded, '\0');
        if (!folded.empty()) words.push_back(std::move(folded));
    }
    return words;
}

}  // namespace

std::string SearchIndex::folded(std::string_view text) {
    if (ordovan::text::isAscii(text)) return ordovan::text::asciiLowercased(text);
    const QString whole = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    QString plain = whole.normalized(QString::NormalizationForm_KD);
    plain.removeIf(isMark);
    // Upper case first, so that "ß" is found as "ss".
    return plain.toUpper().toCaseFolded().toStdString();
}

void SearchIndex::reset(std::size_t texts) {
    texts_.clear();
    ends_.clear();
    ends_.reserve(texts);
}

void SearchIndex::add(std::string_view text) {
    if (ordovan::text::isAscii(text)) {
        for (const char c : text) texts_.push_back(ordovan::text::asciiLowercased(c));
    } else {
        texts_ += folded(text);
    }
    ends_.push_back(static_cast<std::uint32_t>(texts_.size()));
    texts_.push_back('\0');
}

std::string_view SearchIndex::text(std::uint32_t row) const {
    const std::size_t begin = row == 0 ? 0 : ends_[row - 1] + std::size_t{1};
    return std::string_view(texts_).substr(begin, ends_[row] - begin);
}

std::vector<std::uint32_t> SearchIndex::rowsMatching(const QString& query) const {
    std::vector<std::string> words = wordsOf(query);
    std::vector<std::uint32_t> rows;
    if (words.empty()) {
        rows.resize(size());
        std::iota(rows.begin(), rows.end(), std::uint32_t{0});
        return rows;
    }
    // The longest word is the rarest as a rule; the others are looked for only where it occurs.
    std::ranges::iter_swap(words.begin(), std::ranges::max_element(words, {}, &std::string::size));
    const std::string& rarest = words.front();
    const std::span others = std::span(words).subspan(1);
    const char* const end = texts_.data() + texts_.size();
    auto next = ends_.begin();
    for (const char* from = texts_.data(); from < end;) {
        const auto* const hit = static_cast<const char*>(
            ::memmem(from, static_cast<std::size_t>(end - from), rarest.data(), rarest.size()));
        if (hit == nullptr) break;
        const auto place = static_cast<std::uint32_t>(hit - texts_.data());
        // Where hits are many, the next one is in the next row.
        if (*next < place) next = std::lower_bound(next + 1, ends_.end(), place);
        const auto row = static_cast<std::uint32_t>(next - ends_.begin());
        const bool all = std::ranges::all_of(
            others, [&](const std::string& word) { return text(row).find(word) != std::string_view::npos; });
        if (all) rows.push_back(row);
        from = texts_.data() + *next + 1;
        ++next;
    }
    return rows;
}
