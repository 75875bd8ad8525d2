// libvrkxml C++ layer: results.  Every operation of the layer that can fail
// returns a Result: the value, or an Error with the code, plain words and,
// for a text, the place in the caller's own text.
#ifndef VRKXML_RESULT_HPP
#define VRKXML_RESULT_HPP

#include <cstdint>
#include <new>
#include <stdexcept>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "../vrkxml.h"

namespace vrkxml {

// Codes of the layer's own, beside the library's ERR_ codes (which stay
// below 100).  errorName() gives their names.
constexpr int32_t errMalformedText = 101;  // ERR_MALFORMED_TEXT: bytes that are not UTF-8 or UTF-16
constexpr int32_t errZeroCharacter = 102;  // ERR_ZERO_CHARACTER: a zero character inside the text
constexpr int32_t errLoneSurrogate = 103;  // ERR_LONE_SURROGATE: no UTF-8 form for it
constexpr int32_t errRead = 104;           // ERR_READ: a file or stream could not be read
// Found by the strict checks only (ParseOptions::strict):
constexpr int32_t errNotACharacter = 111;          // ERR_NOT_A_CHARACTER
constexpr int32_t errContentAfterRoot = 112;       // ERR_CONTENT_AFTER_ROOT
constexpr int32_t errAttributeSpace = 113;         // ERR_ATTRIBUTE_SPACE
constexpr int32_t errDuplicateExpandedName = 114;  // ERR_DUPLICATE_EXPANDED_NAME
constexpr int32_t errReservedName = 115;           // ERR_RESERVED_NAME
constexpr int32_t errEmptyNamespaceName = 116;     // ERR_EMPTY_NAMESPACE_NAME
constexpr int32_t errPITarget = 117;               // ERR_PI_TARGET
constexpr int32_t errEncodingMismatch = 118;       // ERR_ENCODING_MISMATCH

// A failure.  For a failure in a text, `offset` counts from the start of the
// caller's text in its own units (bytes for bytes, 16-bit units for a
// std::u16string_view); `line` and `column` count from 1, lines ending at a
// line feed, a carriage return or both, columns in characters (a surrogate
// pair is one; a byte order mark none).  `excerpt` is that line as UTF-8,
// cut to about 120 characters around the place, and `excerptColumn` the
// column of the place in it.  Without a place in a text (an edit, a
// write, a file that cannot be read) they are all 0 or empty.
struct Error {
    int32_t code = 0;
    std::string message;  // one line in plain words
    std::string hint;     // a likely cause and a remedy, or empty
    int64_t offset = 0;
    int64_t line = 0;
    int64_t column = 0;
    std::string excerpt;
    int64_t excerptColumn = 0;
};

// Either a value or an Error.  value() and error() require ok() and !ok().
template <class T>
class Result {
public:
    Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

    bool ok() const noexcept { return state_.index() == 0; }
    explicit operator bool() const noexcept { return ok(); }

    T &value() &noexcept { return *std::get_if<0>(&state_); }
    const T &value() const &noexcept { return *std::get_if<0>(&state_); }
    T &&value() &&noexcept { return std::move(*std::get_if<0>(&state_)); }
    const Error &error() const noexcept { return *std::get_if<1>(&state_); }

private:
    std::variant<T, Error> state_;
};

// Success without a value, or an Error.
template <>
class Result<void> {
public:
    Result() noexcept = default;
    Result(Error error) : error_(std::move(error)) {}

    bool ok() const noexcept { return !error_.has_value(); }
    explicit operator bool() const noexcept { return ok(); }
    const Error &error() const noexcept { return *error_; }

private:
    std::optional<Error> error_;
};
using Status = Result<void>;

namespace detail {

// An Error without a place.  The message of exhausted memory fits the
// string's own room, so reporting it allocates nothing.
inline Error failure(int32_t code, std::string message) {
    Error error;
    error.code = code;
    error.message = std::move(message);
    return error;
}
inline Error outOfMemory() noexcept {
    Error error;
    error.code = ERR_OUT_OF_MEMORY;
    error.message = "out of memory";
    return error;
}

// Runs work, which returns a Result; exhausted memory inside it (the
// standard containers' std::bad_alloc, or std::length_error for a size
// beyond their reach) becomes ERR_OUT_OF_MEMORY.
template <class Work>
auto guarded(Work &&work) noexcept -> decltype(work()) {
    try {
        return work();
    } catch (const std::bad_alloc &) {
        return outOfMemory();
    } catch (const std::length_error &) {
        return outOfMemory();
    }
}

}  // namespace detail

}  // namespace vrkxml

#endif  // VRKXML_RESULT_HPP
