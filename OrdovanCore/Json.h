#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>

/// Reading and writing of the stored documents. They all have one shape: an object of plain members and at most one
/// list of records, each record an object of plain members.
///
/// Functions may be called from any thread. The limits are far beyond what is ever written (a path has less than 4,096
/// bytes, PATH_MAX): they bound what a damaged or hostile document can take of memory and stack.
namespace ordovan::json {

/// The type a known member must have.
enum class Type {
    text,     ///< of at most 1 MiB, without the NUL character
    integer,  ///< no fraction, no exponent, within 64 bits signed
    number,   ///< any finite number; the double next to it is handed over
    boolean,
    texts,  ///< a list of such texts
};

/// One known member of an object. All known members are required; unknown ones are read over, whatever they hold.
struct Member {
    std::string_view key;
    Type type;
};

/// What a document must hold. The reader keeps what the spans and views point to.
struct Schema {
    std::span<const Member> members;        ///< of the top object; at most 63, as of each record (a set of 64 bits)
    std::string_view recordsKey;            ///< the member holding the list of records; empty for none
    std::span<const Member> recordMembers;  ///< of each record
};

/// The value of a member. Texts are only valid during the call that hands them over.
using Value = std::variant<std::string_view, std::int64_t, double, bool, std::span<const std::string>>;

/// Receives a document's values as they are read. Index = the member's position in the schema.
class Receiver {
public:
    virtual ~Receiver() = default;
    /// A member of the top object. False refuses the document with `error`.
    virtual bool member(std::size_t index, const Value& value, std::string& error) = 0;
    /// One whole record, its values in schema order. False refuses the document with `error`.
    virtual bool record(std::span<const Value> values, std::string& error) = 0;
};

/// A strict reader fed in pieces of any size. Refused with one sentence: anything that is not one well-formed JSON
/// text (RFC 8259) in valid UTF-8 without a byte order mark, a repeated known member, a missing one, one of another
/// type, an integer with a fraction or beyond 64 bits, a number of more than 1,024 characters or with an exponent
/// beyond 32 bits, nesting deeper than 32. No tree is built: memory is one record. Used by one thread at a time.
class Reader {
public:
    Reader(const Schema& schema, Receiver& receiver);
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /// Reads on. After an error, further calls return the same error.
    [[nodiscard]] std::expected<void, std::string> feed(std::string_view piece);
    /// Says that the document has ended.
    [[nodiscard]] std::expected<void, std::string> finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Reads a whole document in memory.
[[nodiscard]] std::expected<void, std::string> read(std::string_view document, const Schema& schema,
                                                    Receiver& receiver);

/// Appends a JSON string, quotes included. Bytes that are not UTF-8 become U+FFFD. Escaped are the quote, the
/// backslash and control characters (general category Cc, so that none reaches a terminal); "/" and everything else
/// stand as they are.
void appendText(std::string& out, std::string_view text);

/// Appends the shortest decimal that reads back as the same number; whole numbers below 10^21 (as far as ECMAScript's
/// Number::toString goes) as their digits alone. Infinities and NaN, which JSON lacks, are written as 0.
void appendNumber(std::string& out, double number);

/// Appends the decimal digits of a whole number.
void appendInteger(std::string& out, std::int64_t number);

/// About so much of a long document is put together before it is handed on, in bytes: few calls, and little memory.
inline constexpr std::size_t encodedPieceSize = std::size_t{1} << 20;

}  // namespace ordovan::json
