#include "OrdovanCore/Text.h"

#include <unicode/coll.h>
#include <unicode/tblcoll.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace ordovan::text {
namespace {

/// A digit run in a fast key: the class of digits, how many digits follow, the digits without leading zeros. A number
/// with more digits is thus the larger one. The count must fit in a byte.
constexpr std::size_t longestFastNumber = 254;

bool isDigit(unsigned char c) {
    return c >= '0' && c <= '9';
}

icu::Locale localeNamed(std::string_view name) {
    if (name.empty() || name == "C" || name == "POSIX" || name.starts_with("C.")) return icu::Locale::getRoot();
    return icu::Locale::createCanonical(std::string(name).c_str());
}

std::string_view environmentLocale() {
    for (const char* const variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return value;
    }
    return {};
}

/// Where a text stands in a sort: eight bytes of its key as a number (those that are being sorted by), the whole key
/// in an arena, and the text's position.
struct Keyed {
    std::uint64_t head;
    std::size_t offset;
    std::uint32_t length;
    std::uint32_t position;
};

constexpr std::size_t headSize = 8;

/// Up to eight bytes of a key, the first the most significant; zeros stand for what the key lacks. A key holds a zero
/// only as a digit count, where every key it could be taken for has one as well.
std::uint64_t headOf(const char* bytes, std::size_t length) {
    std::uint64_t head = 0;
    std::memcpy(&head, bytes, std::min(length, headSize));
    return __builtin_bswap64(head);
}

}  // namespace

struct Collation::State {
    std::unique_ptr<icu::Collator> collator;

    /// For plain ASCII text a key can be looked up byte by byte instead of being asked of ICU, at a seventh of the
    /// cost: `rank` holds the collation's order of the printable characters, equal for those that compare as equal.
    /// Only where the collation has no tailoring, so that no two ASCII characters sort as a unit.
    bool hasRanks = false;
    std::array<std::uint8_t, 128> rank{};  // 0: no fast key (control characters)

    explicit State(const icu::Locale& locale) {
        UErrorCode status = U_ZERO_ERROR;
        collator.reset(icu::Collator::createInstance(locale, status));
        if (U_FAILURE(status)) {
            status = U_ZERO_ERROR;
            collator.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
        }
        if (U_FAILURE(status)) std::abort();  // ICU's data is missing: nothing could be shown in order
        collator->setStrength(icu::Collator::SECONDARY);
        collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        const auto* const rules = dynamic_cast<const icu::RuleBasedCollator*>(collator.get());
        if (rules != nullptr && rules->getRules().isEmpty()) rankAscii();
    }

    /// ICU's own comparison disagrees with its sort keys in tailored collations (release 72: "0x" against a zero and a
    /// full-width one); the keys are right.
    [[nodiscard]] int compare(std::string_view a, std::string_view b) const {
        if (!hasRanks) return compareKeysOf(a, b);
        return compareDirectly(a, b);
    }

    [[nodiscard]] int compareDirectly(std::string_view a, std::string_view b) const {
        UErrorCode status = U_ZERO_ERROR;
        return collator->compareUTF8(icu::StringPiece(a.data(), static_cast<std::int32_t>(a.size())),
                                     icu::StringPiece(b.data(), static_cast<std::int32_t>(b.size())), status);
    }

    [[nodiscard]] int compareKeysOf(std::string_view a, std::string_view b) const {
        std::vector<char> keys;
        appendIcuKey(a, keys);
        const std::size_t middle = keys.size();
        appendIcuKey(b, keys);
        const std::string_view both(keys.data(), keys.size());
        return both.substr(0, middle).compare(both.substr(middle));
    }

    /// Ranks the printable ASCII characters by asking ICU; all digits share the rank of their class.
    void rankAscii() {
        std::string characters;
        for (char c = ' '; c < 0x7F; ++c) {
            if (!isDigit(static_cast<unsigned char>(c)) || c == '0') characters += c;
        }
        const auto compareOne = [this](const char& a, const char& b) { return compareDirectly({&a, 1}, {&b, 1}); };
        std::stable_sort(characters.begin(), characters.end(),
                         [&](const char& a, const char& b) { return compareOne(a, b) < 0; });
        std::uint8_t next = 1;
        for (std::size_t i = 0; i < characters.size(); ++i) {
            if (i > 0 && compareOne(characters[i - 1], characters[i]) != 0) ++next;
            rank[static_cast<unsigned char>(characters[i])] = next;
        }
        for (char c = '1'; c <= '9'; ++c) rank[static_cast<unsigned char>(c)] = rank['0'];
        hasRanks = true;
    }

    /// Appends the fast key of a text; false, with `arena` as it was, where it has none.
    [[nodiscard]] bool appendFastKey(std::string_view text, std::vector<char>& arena) const {
        const std::size_t start = arena.size();
        arena.resize(start + 3 * text.size());  // a lone digit takes three bytes
        char* to = arena.data() + start;
        for (std::size_t i = 0; i < text.size();) {
            const auto c = static_cast<unsigned char>(text[i]);
            const std::uint8_t r = c < 0x80 ? rank[c] : 0;
            if (r == 0) {
                arena.resize(start);
                return false;
            }
            *to++ = static_cast<char>(r);
            ++i;
            if (!isDigit(c)) continue;
            std::size_t first = i - 1;
            while (i < text.size() && isDigit(static_cast<unsigned char>(text[i]))) ++i;
            while (first < i && text[first] == '0') ++first;
            if (i - first > longestFastNumber) {
                arena.resize(start);
                return false;
            }
            *to++ = static_cast<char>(i - first);
            to = std::copy(text.data() + first, text.data() + i, to);
        }
        arena.resize(static_cast<std::size_t>(to - arena.data()));
        return true;
    }

    void appendIcuKey(std::string_view text, std::vector<char>& arena) const {
        const icu::UnicodeString wide =
            icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
        const std::size_t start = arena.size();
        std::int32_t room = 4 * wide.length() + 16;
        for (;;) {
            arena.resize(start + static_cast<std::size_t>(room));
            const std::int32_t needed =
                collator->getSortKey(wide, reinterpret_cast<std::uint8_t*>(arena.data() + start), room);
            if (needed <= room) {
                arena.resize(start + static_cast<std::size_t>(std::max(needed, 1)) - 1);  // without the closing NUL
                return;
            }
            room = needed;
        }
    }
};

Collation::Collation(std::string_view locale) : state_(std::make_unique<const State>(localeNamed(locale))) {}
Collation::~Collation() = default;

const Collation& Collation::system() {
    static const Collation collation(environmentLocale());
    return collation;
}

int Collation::compare(std::string_view a, std::string_view b) const {
    return state_->compare(a, b);
}

struct StandardSorter::State {
    const Collation::State& collation;
    std::vector<char> arena;
    std::vector<Keyed> fast, slow;  // texts with a fast key, and those with one of ICU's
    std::vector<std::uint32_t> order;
    std::vector<bool> equalToPrevious;  // for each place in `order`

    void addKey(std::vector<Keyed>& list, std::size_t start, std::size_t position) {
        list.push_back(
            {0, start, static_cast<std::uint32_t>(arena.size() - start), static_cast<std::uint32_t>(position)});
    }

    [[nodiscard]] bool haveEqualKeys(const Keyed& a, const Keyed& b) const {
        return a.length == b.length && std::memcmp(arena.data() + a.offset, arena.data() + b.offset, a.length) == 0;
    }

    /// Sorts by the key's bytes from `depth` on, eight at a time: paths share long beginnings, and so a comparison of
    /// whole keys would look at the same bytes over and over.
    void sortByKey(std::span<Keyed> list, std::size_t depth = 0) {
        for (Keyed& keyed : list) {
            keyed.head = headOf(arena.data() + keyed.offset + depth, keyed.length - depth);
        }
        std::sort(list.begin(), list.end(), [depth](const Keyed& a, const Keyed& b) {
            if (a.head != b.head) return a.head < b.head;
            const bool aEnds = a.length <= depth + headSize, bEnds = b.length <= depth + headSize;
            return aEnds != bEnds ? aEnds : a.position < b.position;
        });
        for (std::size_t begin = 0; begin < list.size();) {
            std::size_t end = begin;
            while (end < list.size() && list[end].head == list[begin].head) ++end;
            std::size_t longer = begin;  // keys that end here come first and are in order
            while (longer < end && list[longer].length <= depth + headSize) ++longer;
            if (end - longer > 1) sortByKey(list.subspan(longer, end - longer), depth + headSize);
            begin = end;
        }
    }

    void makeKeys(std::span<const std::string_view> texts) {
        arena.clear();
        fast.clear();
        slow.clear();
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const std::size_t start = arena.size();
            if (collation.hasRanks && collation.appendFastKey(texts[i], arena)) {
                addKey(fast, start, i);
            } else {
                collation.appendIcuKey(texts[i], arena);
                addKey(slow, start, i);
            }
        }
    }

    /// Keys of the two kinds can not be compared with each other: each kind is sorted by its keys, and the two sorted
    /// lists are merged by comparing texts.
    void sort(std::span<const std::string_view> texts) {
        makeKeys(texts);
        sortByKey(fast);
        sortByKey(slow);
        order.clear();
        equalToPrevious.clear();
        const Keyed* previous = nullptr;
        bool previousWasFast = false;
        auto f = fast.begin(), s = slow.begin();
        while (order.size() < texts.size()) {
            const bool isFast = s == slow.end() || (f != fast.end() && comesFirst(*f, *s, texts));
            const Keyed& next = isFast ? *f++ : *s++;
            equalToPrevious.push_back(previous != nullptr &&
                                      (isFast == previousWasFast
                                           ? haveEqualKeys(*previous, next)
                                           : collation.compare(texts[previous->position], texts[next.position]) == 0));
            order.push_back(next.position);
            previous = &next;
            previousWasFast = isFast;
        }
    }

    [[nodiscard]] bool comesFirst(const Keyed& a, const Keyed& b, std::span<const std::string_view> texts) const {
        const int difference = collation.compare(texts[a.position], texts[b.position]);
        return difference != 0 ? difference < 0 : a.position < b.position;
    }
};

StandardSorter::StandardSorter(const Collation& collation) : state_(new State{*collation.state_, {}, {}, {}, {}, {}}) {}
StandardSorter::~StandardSorter() = default;

std::span<const std::uint32_t> StandardSorter::order(std::span<const std::string_view> texts) {
    state_->sort(texts);
    return state_->order;
}

std::span<const std::uint32_t> StandardSorter::order(
    std::span<const std::string_view> texts, const std::function<std::string_view(std::size_t position)>& second) {
    state_->sort(texts);
    std::vector<std::uint32_t>& order = state_->order;
    for (std::size_t begin = 0; begin < order.size();) {
        std::size_t end = begin + 1;
        while (end < order.size() && state_->equalToPrevious[end]) ++end;
        std::stable_sort(
            order.begin() + static_cast<std::ptrdiff_t>(begin), order.begin() + static_cast<std::ptrdiff_t>(end),
            [&](std::uint32_t a, std::uint32_t b) { return state_->collation.compare(second(a), second(b)) < 0; });
        begin = end;
    }
    return order;
}

}  // namespace ordovan::text
