// Reading the benchmark's own options from the command line and the
// environment.
#include "options.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vrkperf {
namespace {

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        if (end > start) parts.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::vector<int> parseSizes(std::string_view text) {
    std::vector<int> sizes;
    for (const std::string &part : split(text, ',')) {
        char *end = nullptr;
        const long mb = std::strtol(part.c_str(), &end, 10);
        if (end == part.c_str() || *end != '\0' || mb < 1 || mb > 2000) {
            throw std::invalid_argument("bad document size '" + part + "' (MB, 1 to 2000)");
        }
        sizes.push_back(static_cast<int>(mb));
    }
    if (sizes.empty()) throw std::invalid_argument("no document size given");
    return sizes;
}

bool takeValue(std::string_view argument, std::string_view flag, std::string_view &value) {
    if (!argument.starts_with(flag)) return false;
    value = argument.substr(flag.size());
    return true;
}

}  // namespace

BenchOptions takeOptions(int &argc, char **argv) {
    BenchOptions options;
    if (const char *sizes = std::getenv("VRKXML_BENCH_SIZES"); sizes != nullptr && *sizes != '\0') {
        options.corpus.sizesMB = parseSizes(sizes);
    }
    if (const char *files = std::getenv("VRKXML_BENCH_FILES"); files != nullptr) {
        options.corpus.files = split(files, ':');
    }
    if (const char *defaults = std::getenv("VRKXML_BENCH_MALLOC_DEFAULTS"); defaults != nullptr) {
        options.mallocDefaults = std::string_view(defaults) == "1";
    }
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        std::string_view value;
        if (takeValue(argument, "--sizes=", value)) {
            options.corpus.sizesMB = parseSizes(value);
        } else if (takeValue(argument, "--file=", value)) {
            options.corpus.files.emplace_back(value);
        } else if (takeValue(argument, "--write-documents=", value)) {
            options.writeDirectory = value;
        } else if (argument == "--malloc-defaults") {
            options.mallocDefaults = true;
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    argv[argc] = nullptr;
    return options;
}

}  // namespace vrkperf
