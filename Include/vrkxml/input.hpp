// libvrkxml C++ layer: the caller's text.  Bytes (UTF-8, or UTF-16 in either
// byte order) or 16-bit units with a length are checked and turned into the
// native UTF-16 the library parses; places the library reports in units of
// that text are turned back into places in the caller's own text.
#ifndef VRKXML_INPUT_HPP
#define VRKXML_INPUT_HPP

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

#include "messages.hpp"
#include "result.hpp"
#include "text.hpp"

namespace vrkxml {

// How bytes are to be read.  `detect` takes a byte order mark, else a zero
// byte among the first two (which UTF-8 text never has there) for UTF-16
// in the order that zero shows, else UTF-8.
enum class InputEncoding { detect, utf8, utf16le, utf16be };

// What a text turned out to be: bytes in one of three encodings, or units.
enum class TextForm { utf8, utf16le, utf16be, units };

namespace detail {

// The text as the library is given it: native units behind one byte order
// mark, the caller's own or one put there by the layer, so that the
// library's detection (two bytes, no length) always finds UTF-16.
struct Decoded {
    std::u16string buffer;
    bool markAdded = false;
    TextForm form = TextForm::utf8;

    // The caller's text, its own mark included.
    std::u16string_view text() const noexcept { return std::u16string_view(buffer).substr(markAdded ? 1 : 0); }
};

// Fills the place of unit `at` of text in error: offset in the caller's
// units, line, column and excerpt.  The one place where lines and columns
// are counted.
inline void place(Error &error, std::u16string_view text, TextForm form, std::size_t at) {
    if (at > text.size()) at = text.size();
    int64_t line = 1;
    std::size_t lineStart = 0;
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < at;) {
        const CodePoint c = codePointAt(text, i);
        bytes += utf8Length(c.value);
        i += c.units;
        const bool crlf = c.value == '\r' && i < text.size() && text[i] == '\n';
        if (c.value == '\n' || (c.value == '\r' && !crlf)) {
            ++line;
            lineStart = i;
        }
    }
    if (lineStart == 0 && !text.empty() && text[0] == 0xFEFF) lineStart = 1;  // a mark takes no column
    int64_t column = 1;
    for (std::size_t i = lineStart; i < at; i += codePointAt(text, i).units) ++column;

    // The excerpt: up to 60 characters ahead of the place and 60 behind it.
    constexpr int64_t kAround = 60;
    std::size_t from = lineStart;
    int64_t skipped = 0;
    for (; column - 1 - skipped > kAround; ++skipped) from += codePointAt(text, from).units;
    std::size_t to = from;
    for (int64_t n = 0; to < text.size() && text[to] != '\n' && text[to] != '\r' && n < 2 * kAround; ++n) {
        to += codePointAt(text, to).units;
    }
    error.excerpt = (skipped > 0 ? "..." : "") + toUtf8(text.substr(from, to - from));
    if (to < text.size() && text[to] != '\n' && text[to] != '\r') error.excerpt += "...";
    error.excerptColumn = column - skipped + (skipped > 0 ? 3 : 0);

    const std::size_t units = form == TextForm::utf8 ? bytes : form == TextForm::units ? at : 2 * at;
    error.offset = static_cast<int64_t>(units);
    error.line = line;
    error.column = column;
}

// An Error at unit `at` of the decoded text, with its hint.
inline Error errorAt(int32_t code, std::string message, const Decoded &decoded, std::size_t at) {
    Error error = failure(code, std::move(message));
    error.hint = hintFor(code, decoded.text(), at);
    place(error, decoded.text(), decoded.form, at);
    return error;
}

inline Decoded startDecoded(TextForm form, bool marked, std::size_t units) {
    Decoded decoded;
    decoded.form = form;
    decoded.markAdded = !marked;
    decoded.buffer.reserve(units + 1);
    if (!marked) decoded.buffer.push_back(u'\uFEFF');
    return decoded;
}

inline Error zeroAt(const Decoded &decoded) {
    return errorAt(errZeroCharacter, describe(errZeroCharacter), decoded, decoded.text().size());
}

inline Result<Decoded> decodeUtf8(std::string_view bytes) {
    Decoded decoded = startDecoded(TextForm::utf8, bytes.substr(0, 3) == "\xEF\xBB\xBF", bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (byte != 0 && byte < 0x80) {  // the common case, without the general step
            decoded.buffer.push_back(byte);
            ++i;
            continue;
        }
        const Utf8Step step = decodeUtf8At(bytes, i);
        if (step.length == 0) {
            return errorAt(errMalformedText,
                           "byte 0x" + hexOf(byte).substr(2) + " begins no well-formed UTF-8 sequence", decoded,
                           decoded.text().size());
        }
        if (step.value == 0) return zeroAt(decoded);
        appendUtf16(decoded.buffer, step.value);
        i += step.length;
    }
    return decoded;
}

inline Result<Decoded> decodeUtf16(std::string_view bytes, bool bigEndian) {
    const std::string_view mark = bigEndian ? std::string_view("\xFE\xFF") : std::string_view("\xFF\xFE");
    Decoded decoded =
        startDecoded(bigEndian ? TextForm::utf16be : TextForm::utf16le, bytes.substr(0, 2) == mark, bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        const auto unit = static_cast<char16_t>(bigEndian ? (first << 8) | second : (second << 8) | first);
        if (unit == 0) return zeroAt(decoded);
        decoded.buffer.push_back(unit);
    }
    if (bytes.size() % 2 != 0) {
        return errorAt(errMalformedText, "the UTF-16 text ends inside a unit (an odd number of bytes)", decoded,
                       decoded.text().size());
    }
    return decoded;
}

inline Result<Decoded> decodeBytes(std::string_view bytes, InputEncoding encoding) {
    if (encoding == InputEncoding::detect && bytes.size() >= 2 && bytes.substr(0, 3) != "\xEF\xBB\xBF") {
        const bool zeroFirst = bytes[0] == '\0' && bytes[1] != '\0';
        const bool zeroSecond = bytes[0] != '\0' && bytes[1] == '\0';
        if (bytes.substr(0, 2) == "\xFE\xFF" || zeroFirst) encoding = InputEncoding::utf16be;
        if (bytes.substr(0, 2) == "\xFF\xFE" || zeroSecond) encoding = InputEncoding::utf16le;
    }
    if (encoding == InputEncoding::utf16le || encoding == InputEncoding::utf16be) {
        return decodeUtf16(bytes, encoding == InputEncoding::utf16be);
    }
    return decodeUtf8(bytes);
}

inline Result<Decoded> decodeUnits(std::u16string_view units) {
    Decoded decoded = startDecoded(TextForm::units, !units.empty() && units[0] == 0xFEFF, units.size());
    const std::size_t zero = units.find(u'\0');
    decoded.buffer.append(units.substr(0, zero));
    if (zero != std::u16string_view::npos) return zeroAt(decoded);
    return decoded;
}

// Beyond this many bytes no text can be parsed: the library takes at most
// 2,147,483,647 units, and UTF-8 has at most three bytes per unit.
constexpr std::uint64_t kMostInputBytes = 3ull * 2147483647ull;

inline Error readFailure(const std::string &what, int number) {
    return failure(errRead, "cannot read " + what + ": " + std::strerror(number));
}

}  // namespace detail

// All bytes of an open stream (standard input, a pipe, a file), read until
// its end.  `what` names it in an error (ERR_READ with the system's
// reason, or ERR_TEXT_TOO_LONG past what the library can parse).
inline Result<std::string> readStream(std::FILE *stream, const std::string &what) {
    return detail::guarded([&]() -> Result<std::string> {
        std::string bytes;
        char chunk[65536];
        for (;;) {
            errno = 0;
            const std::size_t got = std::fread(chunk, 1, sizeof chunk, stream);
            bytes.append(chunk, got);
            if (bytes.size() > detail::kMostInputBytes) {
                return detail::failure(ERR_TEXT_TOO_LONG, what + ": too long for libvrkxml");
            }
            if (got < sizeof chunk) break;
        }
        if (std::ferror(stream)) return detail::readFailure(what, errno != 0 ? errno : EIO);
        return bytes;
    });
}

// All bytes of the file at path.  A directory fails with the system's
// reason (EISDIR) like any other unreadable path.
inline Result<std::string> readFile(const std::filesystem::path &path) {
    std::FILE *stream = std::fopen(path.c_str(), "rb");
    if (stream == nullptr) {
        const int number = errno;
        return detail::guarded([&]() -> Result<std::string> { return detail::readFailure(path.string(), number); });
    }
    Result<std::string> bytes = readStream(stream, path.string());
    std::fclose(stream);
    return bytes;
}

}  // namespace vrkxml

#endif  // VRKXML_INPUT_HPP
