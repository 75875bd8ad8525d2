#include "check_report.h"

namespace vrktool {

namespace {

// A JSON string of text, whose malformed UTF-8 (a file name may hold any
// bytes) is written as U+FFFD.
std::string jsonString(const std::string &text) {
    std::string out = "\"";
    for (std::size_t i = 0; i < text.size();) {
        const vrkxml::detail::Utf8Step step = vrkxml::detail::decodeUtf8At(text, i);
        if (step.length == 0) {
            out += "\\ufffd";
            ++i;
            continue;
        }
        const char c = text[i];
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (step.value < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(step.value));
            out += escaped;
        } else {
            out.append(text, i, step.length);
        }
        i += step.length;
    }
    return out + '"';
}

std::string jsonNumber(int64_t value) { return value > 0 ? std::to_string(value) : "null"; }

}  // namespace

void reportAccepted(std::FILE *out, const std::string &file, bool strict) {
    std::fprintf(out, "%s: accepted by libvrkxml%s\n", file.c_str(), strict ? " (strict)" : "");
}

void reportError(std::FILE *out, const std::string &file, const vrkxml::Error &error) {
    if (error.line == 0) {
        std::fprintf(out, "vrkxml: %s\n", error.message.c_str());
        return;
    }
    std::fprintf(out, "%s:%lld:%lld: error: %s (code %d): %s\n", file.c_str(), static_cast<long long>(error.line),
                 static_cast<long long>(error.column), vrkxml::errorName(error.code), static_cast<int>(error.code),
                 error.message.c_str());
    if (!error.hint.empty()) std::fprintf(out, "  hint: %s\n", error.hint.c_str());
    // The caret keeps the excerpt's tabs so that it lines up.
    std::string caret;
    int64_t column = 1;
    for (std::size_t i = 0; i < error.excerpt.size() && column < error.excerptColumn; ++column) {
        const std::size_t length = vrkxml::detail::decodeUtf8At(error.excerpt, i).length;
        caret += error.excerpt[i] == '\t' ? '\t' : ' ';
        i += length == 0 ? 1 : length;
    }
    std::fprintf(out, "%s\n%s^\n", error.excerpt.c_str(), caret.c_str());
}

std::string jsonReport(const std::string &file, const vrkxml::Error *error) {
    std::string out = "{\"file\":" + jsonString(file) + ",\"accepted\":" + (error ? "false" : "true");
    if (error == nullptr) {
        return out +
               ",\"line\":null,\"column\":null,\"offset\":null,\"code\":0,\"name\":null,\"message\":null,"
               "\"hint\":null}";
    }
    const bool placed = error->line > 0;
    out += ",\"line\":" + jsonNumber(error->line) + ",\"column\":" + jsonNumber(error->column) +
           ",\"offset\":" + (placed ? std::to_string(error->offset) : "null") +
           ",\"code\":" + std::to_string(error->code) + ",\"name\":" + jsonString(vrkxml::errorName(error->code)) +
           ",\"message\":" + jsonString(error->message) +
           ",\"hint\":" + (error->hint.empty() ? "null" : jsonString(error->hint)) + "}";
    return out;
}

}  // namespace vrktool
