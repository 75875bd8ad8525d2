// vrkxml: the library's command-line tool.  `vrkxml --help` describes it.
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "check_report.h"
#include "command_line.h"
#include "tree_report.h"
#include "vrkxml.hpp"

namespace {

constexpr int kExitOk = 0;
constexpr int kExitRefused = 1;
constexpr int kExitTrouble = 2;

constexpr const char *kManual =
    "NAME\n"
    "    vrkxml - check, write back, outline and measure XML documents\n"
    "\n"
    "SYNOPSIS\n"
    "    vrkxml check [--strict] [--format=text|json] FILE...\n"
    "    vrkxml cat [--strict] [--utf16] [--indent[=N]] FILE\n"
    "    vrkxml tree [--strict] FILE\n"
    "    vrkxml stats [--strict] FILE\n"
    "    vrkxml --help | --version\n"
    "\n"
    "DESCRIPTION\n"
    "    Reads documents with libvrkxml's C++ layer: UTF-8, or UTF-16 in either\n"
    "    byte order (a byte order mark, else a zero byte among the first two,\n"
    "    tells), characters beyond U+FFFF included.  FILE may be - for standard\n"
    "    input; -- ends the options.\n"
    "\n"
    "COMMANDS\n"
    "    check   Says of each FILE \"accepted by libvrkxml\", or reports\n"
    "            FILE:LINE:COLUMN: error: NAME (code N): what is wrong, with a\n"
    "            hint where a common cause is recognised, the line and a caret\n"
    "            under the column (columns count characters).\n"
    "    cat     Writes the document back out as UTF-8, or as UTF-16 in the\n"
    "            machine's byte order with --utf16.\n"
    "    tree    Prints an indented outline of the tree.\n"
    "    stats   Prints node counts by kind, the depth, and the parse time\n"
    "            and throughput.\n"
    "\n"
    "OPTIONS\n"
    "    --strict        Also apply the rules below that the library does not\n"
    "                    examine, where they can be checked on the text or the\n"
    "                    tree.  A broken rule refuses the document.\n"
    "    --format=json   check: one JSON object a line for each FILE, on\n"
    "                    standard output: file, accepted, line, column, offset\n"
    "                    (bytes), code, name, message, hint (null when none).\n"
    "    --indent[=N]    cat: each child of an element that holds no text on a\n"
    "                    line of its own, N blanks a level (2; 0 to 16).\n"
    "\n"
    "NOT EXAMINED BY THE LIBRARY (checked with --strict)\n"
    "    - characters against XML's Char production (control characters,\n"
    "      U+FFFE, U+FFFF, unpaired surrogates);\n"
    "    - content after the root element (a second element, stray text);\n"
    "    - white space between attributes;\n"
    "    - attributes that repeat a namespace name and local name under\n"
    "      different prefixes;\n"
    "    - misuse of the prefixes xml and xmlns and of their namespace names,\n"
    "      and prefixes declared with an empty namespace name;\n"
    "    - processing instruction targets (xml in any case, a colon, white\n"
    "      space before the data);\n"
    "    - the declared encoding against the one the bytes are in.\n"
    "    Never accepted: document type declarations, entities beyond the five\n"
    "    predefined ones, character references beyond U+FFFF.\n"
    "\n"
    "EXIT STATUS\n"
    "    0  every document was accepted (and written, for cat)\n"
    "    1  a document was refused (or, for cat, holds an unpaired surrogate,\n"
    "       which UTF-8 cannot hold)\n"
    "    2  usage error, or a file could not be read (a directory, a missing\n"
    "       or unreadable file), or the output could not be written\n";

constexpr const char *kUsage =
    "usage: vrkxml check [--strict] [--format=text|json] FILE...\n"
    "       vrkxml cat [--strict] [--utf16] [--indent[=N]] FILE\n"
    "       vrkxml tree [--strict] FILE | stats [--strict] FILE | --help | --version\n";

// A parsed document, or the failure and the exit status it calls for.
struct Parsed {
    vrkxml::Result<vrkxml::Document> document = vrkxml::Error{};
    std::size_t bytes = 0;
    double seconds = 0;  // of the parse alone
    int status = kExitOk;
};

Parsed parseInput(const std::string &path, bool strict) {
    vrkxml::Result<std::string> bytes = path == "-" ? vrkxml::readStream(stdin, "standard input")
                                                    : vrkxml::readFile(path);
    Parsed parsed;
    if (!bytes) {
        parsed.document = bytes.error();
        parsed.status = kExitTrouble;
        return parsed;
    }
    vrkxml::ParseOptions options;
    options.strict = strict;
    const auto started = std::chrono::steady_clock::now();
    parsed.document = vrkxml::parse(bytes.value(), options);
    parsed.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    parsed.bytes = bytes.value().size();
    const int32_t code = parsed.document ? 0 : parsed.document.error().code;
    parsed.status = code == 0 ? kExitOk : code == ERR_OUT_OF_MEMORY ? kExitTrouble : kExitRefused;
    return parsed;
}

// Parses for a command that goes on with the tree; null after reporting why not.
const vrkNode *parseOrReport(const std::string &path, bool strict, Parsed &parsed) {
    parsed = parseInput(path, strict);
    if (parsed.document) return parsed.document.value().node();
    vrktool::reportError(stderr, path, parsed.document.error());
    return nullptr;
}

int outputStatus() {
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return kExitOk;
    std::fprintf(stderr, "vrkxml: cannot write standard output: %s\n", std::strerror(errno));
    return kExitTrouble;
}

int check(const vrktool::CommandLine &line) {
    int worst = kExitOk;
    for (const std::string &path : line.files) {
        const Parsed parsed = parseInput(path, line.strict);
        const vrkxml::Error *error = parsed.document ? nullptr : &parsed.document.error();
        if (line.json) {
            std::printf("%s\n", vrktool::jsonReport(path, error).c_str());
        } else if (error != nullptr) {
            vrktool::reportError(stderr, path, *error);
        } else {
            vrktool::reportAccepted(stdout, path, line.strict);
        }
        if (parsed.status > worst) worst = parsed.status;
    }
    const int written = outputStatus();
    return written > worst ? written : worst;
}

int cat(const vrktool::CommandLine &line) {
    Parsed parsed;
    if (parseOrReport(line.files.front(), line.strict, parsed) == nullptr) return parsed.status;
    vrkNode *document = parsed.document.value().node();
    vrkxml::Status laidOut = line.indent ? vrkxml::indent(document, *line.indent) : vrkxml::Status();
    const auto out = vrkxml::serialize(document, line.utf16 ? vrkxml::Encoding::utf16 : vrkxml::Encoding::utf8);
    const vrkxml::Error *error = !laidOut ? &laidOut.error() : !out ? &out.error() : nullptr;
    if (error != nullptr) {
        std::fprintf(stderr, "vrkxml: %s: %s\n", line.files.front().c_str(), error->message.c_str());
        return error->code == ERR_OUT_OF_MEMORY ? kExitTrouble : kExitRefused;
    }
    std::fwrite(out.value().data(), 1, out.value().size(), stdout);
    return outputStatus();
}

int tree(const vrktool::CommandLine &line) {
    Parsed parsed;
    const vrkNode *document = parseOrReport(line.files.front(), line.strict, parsed);
    if (document == nullptr) return parsed.status;
    vrktool::printOutline(document, stdout);
    return outputStatus();
}

int stats(const vrktool::CommandLine &line) {
    Parsed parsed;
    const vrkNode *document = parseOrReport(line.files.front(), line.strict, parsed);
    if (document == nullptr) return parsed.status;
    const vrktool::TreeCounts counts = vrktool::countTree(document);
    const double rate = parsed.seconds > 0 ? static_cast<double>(parsed.bytes) / parsed.seconds / 1e6 : 0.0;
    std::printf("%s\n  bytes           %zu\n  elements        %lld\n  attributes      %lld\n"
                "  text nodes      %lld\n  CDATA sections  %lld\n  instructions    %lld\n  depth           %lld\n"
                "  parse time      %.3f ms\n  throughput      %.1f MB/s\n",
                line.files.front().c_str(), parsed.bytes, counts.elements, counts.attributes, counts.texts,
                counts.cdataSections, counts.instructions, counts.maxDepth, parsed.seconds * 1e3, rate);
    return outputStatus();
}

int run(const std::vector<std::string> &args) {
    const vrktool::CommandLine line = vrktool::readCommandLine(args);
    switch (line.action) {
    case vrktool::CommandLine::Action::help: std::fputs(kManual, stdout); return outputStatus();
    case vrktool::CommandLine::Action::version:
        std::printf("vrkxml %s (libvrkxml)\n", VRKXML_TOOL_VERSION);
        return outputStatus();
    case vrktool::CommandLine::Action::usageError:
        std::fprintf(stderr, "vrkxml: %s\n%s", line.problem.c_str(), kUsage);
        return kExitTrouble;
    case vrktool::CommandLine::Action::run: break;
    }
    if (line.command == "check") return check(line);
    if (line.command == "cat") return cat(line);
    if (line.command == "tree") return tree(line);
    return stats(line);
}

}  // namespace

int main(int argc, char **argv) {
    // Nothing may end the tool but a status: exhausted memory anywhere
    // (the layer reports its own) is trouble like any other.
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "vrkxml: %s\n", exception.what());
        return kExitTrouble;
    }
}
