#include "OrdovanCore/Json.h"

#include <boost/json/basic_parser_impl.hpp>

#include <algorithm>
#include <bit>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace ordovan::json {

namespace {

using boost::json::error_code;
using boost::json::string_view;

constexpr std::size_t maxDepth = 32;
constexpr std::size_t maxTextSize = std::size_t{1} << 20;
constexpr std::size_t maxNumberSize = 1024;
/// What the parser is given at once. It must not see more: it hands over the parts of texts and numbers, whose sizes
/// are limited, only at the end of what it is given.
constexpr std::size_t maxPiece = std::size_t{256} * 1024;

/// The value of one member: a plain value, or where in the common buffers its text or texts lie.
struct Slot {
    std::int64_t integer = 0;
    double number = 0;
    bool boolean = false;
    std::size_t begin = 0, end = 0;
};

/// An object being read: which of its known members were seen, and what they held.
class Level {
public:
    /// `extra` is the key of one more known member, behind the others; empty for none.
    Level(std::span<const Member> members, std::string_view extra)
        : members_(members), extra_(extra), slots_(members.size()) {
        assert(members.size() < 64);  // one bit each in `seen_`
        for (const Member& member : members) longestKey_ = std::max(longestKey_, member.key.size());
        longestKey_ = std::max(longestKey_, extra.size());
    }

    void restart() {
        seen_ = 0;
        next_ = 0;
    }

    /// The member of this key, `members().size()` for the extra one; nothing for a key that is not known.
    std::optional<std::size_t> find(std::string_view key) {
        const std::size_t count = members_.size();
        // Documents of our own list their members in the schema's order, so that the first guess nearly always holds.
        for (std::size_t tried = 0; tried < count; ++tried, ++next_) {
            if (next_ >= count) next_ = 0;
            if (members_[next_].key == key) return next_++;
        }
        if (!extra_.empty() && key == extra_) return count;
        return std::nullopt;
    }

    /// Marks a member as seen; false when it already was.
    bool see(std::size_t index) {
        const std::uint64_t bit = std::uint64_t{1} << index;
        if ((seen_ & bit) != 0) return false;
        seen_ |= bit;
        return true;
    }

    /// The key of the first known member that was not seen; empty when all were.
    [[nodiscard]] std::string_view missing() const {
        const auto index = static_cast<std::size_t>(std::countr_one(seen_));
        return index <= members_.size() ? keyOf(index) : std::string_view();
    }

    [[nodiscard]] std::string_view keyOf(std::size_t index) const {
        return index < members_.size() ? members_[index].key : extra_;
    }
    [[nodiscard]] std::span<const Member> members() const { return members_; }
    [[nodiscard]] std::size_t longestKey() const { return longestKey_; }
    [[nodiscard]] Slot& slot(std::size_t index) { return slots_[index]; }

private:
    std::span<const Member> members_;
    std::string_view extra_;
    std::vector<Slot> slots_;
    std::size_t longestKey_ = 0;
    std::uint64_t seen_ = 0;
    std::size_t next_ = 0;
};

std::string quoted(std::string_view key) {
    return "\"" + std::string(key) + "\"";
}

std::string_view typeName(Type type) {
    switch (type) {
        case Type::text:
            return "a text";
        case Type::integer:
            return "a whole number of 64 bits";
        case Type::number:
            return "a number";
        case Type::boolean:
            return "true or false";
        case Type::texts:
            return "a list of texts";
    }
    return {};
}

/// Takes the parser's events and turns them into the receiver's values. What belongs to unknown members is counted
/// through (`skipping_` containers are open) and never stored.
class Handler {
public:
    static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();

    Handler(const Schema& schema, Receiver& receiver)
        : receiver_(receiver),
          top_(schema.members, schema.recordsKey),
          record_(schema.recordMembers, {}),
          hasRecords_(!schema.recordsKey.empty()) {
        values_.reserve(schema.recordMembers.size());
    }

    /// Why an event was refused; empty when none was.
    [[nodiscard]] const std::string& error() const { return error_; }

    bool on_document_begin(error_code&) { return true; }
    bool on_document_end(error_code&) { return true; }

    bool on_object_begin(error_code& ec) {
        if (ignoresValue()) {
            ++skipping_;
        } else if (place_ == Place::document) {
            place_ = Place::top;
        } else if (place_ == Place::records) {
            beginRecord();
        } else {
            return refuseValue(ec);
        }
        return true;
    }

    bool on_object_end(std::size_t, error_code& ec) {
        if (skipping_ > 0) {
            --skipping_;
            return true;
        }
        const std::string_view missing = level().missing();
        if (!missing.empty()) return refuse(ec, quoted(missing) + " is missing.");
        if (place_ == Place::record) return finishRecord(ec);
        place_ = Place::document;
        return true;
    }

    bool on_array_begin(error_code& ec) {
        if (ignoresValue()) {
            ++skipping_;
        } else if (atMember() && isRecordList()) {
            place_ = Place::records;
        } else if (expects(Type::texts)) {
            inTexts_ = true;
            slot().begin = texts_.size();
        } else {
            return refuseValue(ec);
        }
        return true;
    }

    bool on_array_end(std::size_t, error_code& ec) {
        if (skipping_ > 0) {
            --skipping_;
            return true;
        }
        if (inTexts_) {
            inTexts_ = false;
            slot().end = texts_.size();
            return finishValue(ec);
        }
        place_ = Place::top;
        return true;
    }

    bool on_key_part(string_view part, std::size_t, error_code&) {
        if (skipping_ == 0) appendKey(part);
        return true;
    }

    bool on_key(string_view part, std::size_t size, error_code& ec) {
        if (skipping_ > 0) return true;
        std::string_view key(part.data(), part.size());
        if (size != part.size()) {
            appendKey(part);
            key = key_;
        }
        current_ = level().find(key);
        key_.clear();
        return !current_ || level().see(*current_) || refuse(ec, quoted(level().keyOf(*current_)) + " stands twice.");
    }

    bool on_string_part(string_view part, std::size_t size, error_code& ec) {
        return ignoresValue() || appendText(part, size, ec);
    }

    bool on_string(string_view part, std::size_t size, error_code& ec) {
        if (ignoresValue()) return true;
        if (!appendText(part, size, ec)) return false;
        const std::size_t begin = text_.size() - size;
        if (inTexts_) {
            texts_.emplace_back(text_, begin);
            text_.resize(begin);
            return true;
        }
        slot().begin = begin;
        slot().end = text_.size();
        return finishValue(ec);
    }

    bool on_number_part(string_view part, error_code& ec) {
        if (number_.size() + part.size() > maxNumberSize) return refuse(ec, "A number is too long.");
        number_.append(part.data(), part.size());
        return true;
    }

    bool on_int64(std::int64_t value, string_view part, error_code& ec) {
        if (!expects(Type::integer)) return takeNumber(static_cast<double>(value), part, ec);
        number_.clear();
        slot().integer = value;
        return finishValue(ec);
    }

    bool on_uint64(std::uint64_t value, string_view part, error_code& ec) {
        return takeNumber(static_cast<double>(value), part, ec);
    }

    bool on_double(double value, string_view part, error_code& ec) { return takeNumber(value, part, ec); }

    bool on_bool(bool value, error_code& ec) {
        if (ignoresValue()) return true;
        if (!expects(Type::boolean)) return refuseValue(ec);
        slot().boolean = value;
        return finishValue(ec);
    }

    bool on_null(error_code& ec) { return ignoresValue() || refuseValue(ec); }

    bool on_comment_part(string_view, error_code&) { return true; }
    bool on_comment(string_view, error_code&) { return true; }

private:
    /// Where the next value stands.
    enum class Place { document, top, records, record };

    Level& level() { return place_ == Place::record ? record_ : top_; }
    Slot& slot() { return level().slot(*current_); }
    [[nodiscard]] bool atMember() const {
        return (place_ == Place::top || place_ == Place::record) && !inTexts_ && skipping_ == 0;
    }
    [[nodiscard]] bool ignoresValue() const { return skipping_ > 0 || (atMember() && !current_); }
    [[nodiscard]] bool isRecordList() const {
        return hasRecords_ && place_ == Place::top && current_ == top_.members().size();
    }
    /// True when the next value is a known member's, and that has this type.
    bool expects(Type type) {
        return atMember() && current_ && !isRecordList() && level().members()[*current_].type == type;
    }

    void beginRecord() {
        place_ = Place::record;
        record_.restart();
        text_.clear();
        texts_.clear();
        ++recordCount_;
    }

    bool finishRecord(error_code& ec) {
        values_.clear();
        for (std::size_t index = 0; index < record_.members().size(); ++index) {
            values_.push_back(valueOf(record_.members()[index].type, record_.slot(index)));
        }
        std::string error;
        if (!receiver_.record(values_, error)) return refuse(ec, std::move(error));
        place_ = Place::records;
        return true;
    }

    /// Hands over the top object's member that was just read. A record's members wait for the whole record.
    bool finishValue(error_code& ec) {
        if (place_ == Place::record) return true;
        std::string error;
        if (!receiver_.member(*current_, valueOf(top_.members()[*current_].type, slot()), error)) {
            return refuse(ec, std::move(error));
        }
        text_.clear();
        texts_.clear();
        return true;
    }

    Value valueOf(Type type, const Slot& slot) const {
        switch (type) {
            case Type::text:
                return std::string_view(text_).substr(slot.begin, slot.end - slot.begin);
            case Type::integer:
                return slot.integer;
            case Type::number:
                return slot.number;
            case Type::boolean:
                return slot.boolean;
            case Type::texts:
                return std::span(texts_).subspan(slot.begin, slot.end - slot.begin);
        }
        return {};
    }

    void appendKey(string_view part) {
        // Once it is longer than every known key it is unknown, whatever follows.
        if (key_.size() <= level().longestKey()) key_.append(part.data(), part.size());
    }

    /// `size` is the text's, this part and the ones before it together.
    bool appendText(string_view part, std::size_t size, error_code& ec) {
        if (!inTexts_ && !expects(Type::text)) return refuseValue(ec);
        if (size > maxTextSize) return refuse(ec, quoted(level().keyOf(*current_)) + " is too long.");
        if (part.find('\0') != string_view::npos) {
            return refuse(ec, quoted(level().keyOf(*current_)) + " holds a NUL character.");
        }
        text_.append(part.data(), part.size());
        return true;
    }

    /// `rough` is near the number, not always the double next to it, so the digits are read again where it matters.
    bool takeNumber(double rough, string_view part, error_code& ec) {
        if (!on_number_part(part, ec)) return false;
        const std::string digits = std::exchange(number_, {});
        if (ignoresValue()) return true;
        if (!expects(Type::number)) return refuseValue(ec);
        double& number = slot().number;
        const auto [end, status] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (status == std::errc::result_out_of_range) {
            if (std::abs(rough) > 1) return refuse(ec, quoted(level().keyOf(*current_)) + " is too large a number.");
            number = 0;
        }
        return finishValue(ec);
    }

    bool refuseValue(error_code& ec) {
        if (place_ == Place::document) return refuse(ec, "The document is not an object.");
        if (place_ == Place::records) return refuse(ec, quoted(top_.keyOf(*current_)) + " is not a list of objects.");
        if (isRecordList()) return refuse(ec, quoted(top_.keyOf(*current_)) + " is not a list of objects.");
        const Member& member = level().members()[*current_];
        return refuse(ec, quoted(member.key) + " is not " + std::string(typeName(member.type)) + ".");
    }

    bool refuse(error_code& ec, std::string reason) {
        error_ = place_ == Place::record ? "Record " + std::to_string(recordCount_) + ": " + reason : std::move(reason);
        ec = boost::json::error::syntax;  // stops the parser; the reason is `error_`
        return false;
    }

    Receiver& receiver_;
    Level top_, record_;
    const bool hasRecords_;
    Place place_ = Place::document;
    bool inTexts_ = false;                ///< inside a member's list of texts
    std::size_t skipping_ = 0;            ///< containers open inside an unknown member
    std::optional<std::size_t> current_;  ///< the member whose value comes; nothing for an unknown one
    std::size_t recordCount_ = 0;
    std::string key_, number_;        ///< what has come of a key or number so far
    std::string text_;                ///< the texts of the record or member being read, one behind the other
    std::vector<std::string> texts_;  ///< likewise its lists of texts
    std::vector<Value> values_;
    std::string error_;
};

std::string syntaxError(const error_code& ec) {
    if (ec == boost::json::error::incomplete) return "The document ends too early.";
    if (ec == boost::json::error::too_deep) return "The document is nested too deep.";
    return "The document is not well-formed JSON (" + ec.message() + ").";
}

}  // namespace

struct Reader::State {
    State(const Schema& schema, Receiver& receiver) : parser(options(), schema, receiver) {}

    static boost::json::parse_options options() {
        boost::json::parse_options options;
        options.max_depth = maxDepth;
        return options;
    }

    void write(bool more, std::string_view piece) {
        error_code ec;
        const std::size_t taken = parser.write_some(more, piece.data(), piece.size(), ec);
        if (ec) {
            error = parser.handler().error().empty() ? syntaxError(ec) : parser.handler().error();
        } else if (taken < piece.size()) {
            error = "Something follows the document.";
        }
    }

    boost::json::basic_parser<Handler> parser;
    std::optional<std::string> error;
};

Reader::Reader(const Schema& schema, Receiver& receiver) : state_(std::make_unique<State>(schema, receiver)) {}

Reader::~Reader() = default;

std::expected<void, std::string> Reader::feed(std::string_view piece) {
    while (!piece.empty() && !state_->error) {
        const std::size_t size = std::min(piece.size(), maxPiece);
        state_->write(true, piece.substr(0, size));
        piece.remove_prefix(size);
    }
    if (state_->error) return std::unexpected(*state_->error);
    return {};
}

std::expected<void, std::string> Reader::finish() {
    if (!state_->error) state_->write(false, std::string_view(""));
    if (state_->error) return std::unexpected(*state_->error);
    return {};
}

std::expected<void, std::string> read(std::string_view document, const Schema& schema, Receiver& receiver) {
    Reader reader(schema, receiver);
    if (auto fed = reader.feed(document); !fed) return fed;
    return reader.finish();
}

}  // namespace ordovan::json
