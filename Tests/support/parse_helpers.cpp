#include "support/parse_helpers.h"

#include <cstring>

namespace vrktest {

namespace {

vrkParseError poisonedError() {
    vrkParseError error;
    std::memset(&error, 0x55, sizeof error);
    return error;
}

}  // namespace

Parsed parseUtf8(std::string_view text) {
    // A buffer of exactly the text and its terminator, so that a read past it
    // shows up under AddressSanitizer.
    std::unique_ptr<char[]> buffer(new char[text.size() + 1]);
    std::memcpy(buffer.get(), text.data(), text.size());
    buffer[text.size()] = 0;
    Parsed parsed{nullptr, poisonedError()};
    parsed.document.reset(vrkDOM_parse(buffer.get(), &parsed.error));
    return parsed;
}

Parsed parseUtf16(std::u16string_view text, Utf16Options options) {
    std::u16string units;
    if (options.byteOrderMark) units.push_back(u'\xFEFF');
    units.append(text);
    units.push_back(0);

    const std::size_t bytes = units.size() * 2;
    const std::size_t shift = options.oddAddress ? 1 : 0;
    std::unique_ptr<unsigned char[]> buffer(new unsigned char[bytes + shift]);
    for (std::size_t i = 0; i < units.size(); ++i) {
        const auto unit = static_cast<uint16_t>(units[i]);
        unsigned char first = static_cast<unsigned char>(unit & 0xFF);
        unsigned char second = static_cast<unsigned char>(unit >> 8);
        // Native order on this (little-endian) machine is low byte first.
        if (options.form == Utf16Form::Swapped) std::swap(first, second);
        buffer[shift + 2 * i] = first;
        buffer[shift + 2 * i + 1] = second;
    }
    Parsed parsed{nullptr, poisonedError()};
    parsed.document.reset(vrkDOM_parse(buffer.get() + shift, &parsed.error));
    return parsed;
}

}  // namespace vrktest
