#include "input_text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>

#include "vrkxml.h"

namespace vrktool {

bool readInput(const std::string &path, std::vector<char> &bytes) {
    if (path == "-") {
        bytes.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    } else {
        std::ifstream in(path, std::ios::binary);
        if (!in) return false;
        bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        if (in.bad()) return false;
    }
    bytes.insert(bytes.end(), 4, '\0');
    return true;
}

namespace {

// The text as the parser saw it: decoded UTF-8, or the UTF-16 units.
std::vector<UniChar> decodedUnits(const std::vector<char> &bytes) {
    std::vector<UniChar> units;
    const int32_t length = bytes[0] == 0 ? 1 : 2;
    const int32_t encoding = IdentifyCharacterEncoding(bytes.data(), length);
    if (encoding == ENCODING_UTF8) {
        UniChar *decoded = vrkUTF8ToUniCharString(bytes.data(), nullptr);
        if (decoded != nullptr) units.assign(decoded, decoded + vrkunistrlen(decoded));
        std::free(decoded);
    } else if (encoding == ENCODING_UTF16 || encoding == ENCODING_UTF16_SWAPPED) {
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            UniChar unit;
            std::memcpy(&unit, bytes.data() + i, sizeof unit);
            if (unit == 0) break;
            units.push_back(unit);
        }
    }
    return units;
}

std::string toUTF8(const UniChar *units, std::size_t count) {
    std::vector<UniChar> copy(units, units + count);
    copy.push_back(0);
    std::string out(static_cast<std::size_t>(vrkUniCharToUTF8Len(copy.data())) + 1, '\0');
    vrkUniCharStringToUTF8(copy.data(), out.data());
    out.pop_back();
    return out;
}

bool isLowSurrogate(UniChar unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

}  // namespace

Position locate(const std::vector<char> &bytes, int32_t offset) {
    Position position;
    const std::vector<UniChar> units = decodedUnits(bytes);
    const std::size_t at = std::min(static_cast<std::size_t>(offset < 0 ? 0 : offset), units.size());
    std::size_t lineStart = 0;
    for (std::size_t i = 0; i < at; ++i) {
        if (units[i] == '\n') {
            ++position.line;
            lineStart = i + 1;
        }
    }
    std::size_t lineEnd = lineStart;
    while (lineEnd < units.size() && units[lineEnd] != '\n' && units[lineEnd] != '\r') ++lineEnd;
    position.lineText = toUTF8(units.data() + lineStart, lineEnd - lineStart);
    // The caret keeps the line's tabs so that it lines up; a character
    // written as a surrogate pair takes one column.
    for (std::size_t i = lineStart; i < at; ++i) {
        if (isLowSurrogate(units[i])) continue;
        position.caret.push_back(units[i] == '\t' ? '\t' : ' ');
        ++position.column;
    }
    position.caret.push_back('^');
    return position;
}

}  // namespace vrktool
