// Turning a generated UTF-8 document into native UTF-16.
#include <bit>
#include <cstdint>

#include "shapes.h"

namespace vrkperf {
namespace {

void appendUnit(std::string &out, std::uint16_t unit) {
    const auto low = static_cast<char>(unit & 0xFF);
    const auto high = static_cast<char>(unit >> 8);
    if constexpr (std::endian::native == std::endian::little) {
        out += low;
        out += high;
    } else {
        out += high;
        out += low;
    }
}

}  // namespace

// The generators write well-formed UTF-8, so no sequence is checked here.
std::string toNativeUtf16(const std::string &utf8) {
    std::string out;
    out.reserve(2 * utf8.size() + 2);
    appendUnit(out, 0xFEFF);
    std::size_t i = 0;
    while (i < utf8.size()) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        std::uint32_t code = length == 1 ? lead : length == 2 ? lead & 0x1Fu : length == 3 ? lead & 0x0Fu : lead & 0x07u;
        for (std::size_t k = 1; k < length && i + k < utf8.size(); ++k) {
            code = (code << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3Fu);
        }
        i += length;
        if (code < 0x10000) {
            appendUnit(out, static_cast<std::uint16_t>(code));
        } else {
            code -= 0x10000;
            appendUnit(out, static_cast<std::uint16_t>(0xD800 + (code >> 10)));
            appendUnit(out, static_cast<std::uint16_t>(0xDC00 + (code & 0x3FF)));
        }
    }
    return out;
}

}  // namespace vrkperf
