#include "command_line.h"

#include <algorithm>

namespace vrktool {

namespace {

constexpr std::size_t kWidestIndent = 16;

CommandLine usageError(std::string problem) {
    CommandLine line;
    line.problem = std::move(problem);
    return line;
}

// The options each command takes, with "=" for one that may take a value.
bool takes(const std::string &command, const std::string &option) {
    if (option == "--strict") return true;
    if (command == "check") return option == "--format=";
    if (command == "cat") return option == "--utf16" || option == "--indent" || option == "--indent=";
    return false;
}

// Applies one option; a problem, or empty.
std::string apply(CommandLine &line, const std::string &argument) {
    const std::size_t equals = argument.find('=');
    const std::string option = equals == std::string::npos ? argument : argument.substr(0, equals + 1);
    const std::string value = equals == std::string::npos ? "" : argument.substr(equals + 1);
    if (!takes(line.command, option)) return "unknown option '" + argument + "' for " + line.command;
    if (option == "--strict") {
        line.strict = true;
    } else if (option == "--utf16") {
        line.utf16 = true;
    } else if (option == "--format=") {
        if (value != "json" && value != "text") return "--format takes text or json";
        line.json = value == "json";
    } else {  // --indent, or --indent=N
        const bool given = option == "--indent=";
        const std::string problem = "--indent takes a number of blanks from 0 to 16";
        if (given &&
            (value.empty() || value.size() > 2 || value.find_first_not_of("0123456789") != std::string::npos)) {
            return problem;
        }
        const std::size_t width = given ? std::stoul(value) : 2;
        if (width > kWidestIndent) return problem;
        line.indent = width;
    }
    return "";
}

}  // namespace

CommandLine readCommandLine(const std::vector<std::string> &args) {
    if (args.empty()) return usageError("no command");
    const std::string &first = args.front();
    CommandLine line;
    if (first == "--help" || first == "-h" || first == "help") line.action = CommandLine::Action::help;
    if (first == "--version") line.action = CommandLine::Action::version;
    if (line.action != CommandLine::Action::usageError) return line;
    const std::vector<std::string> commands = {"check", "cat", "tree", "stats"};
    if (std::find(commands.begin(), commands.end(), first) == commands.end()) {
        return usageError((first.rfind('-', 0) == 0 ? "unknown option '" : "unknown command '") + first + "'");
    }
    line.command = first;
    bool options = true;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string &argument = args[i];
        if (options && argument == "--") {
            options = false;
        } else if (options && (argument == "--help" || argument == "-h")) {
            line.action = CommandLine::Action::help;
            return line;
        } else if (options && argument.size() > 1 && argument[0] == '-') {
            const std::string problem = apply(line, argument);
            if (!problem.empty()) return usageError(problem);
        } else {
            line.files.push_back(argument);
        }
    }
    if (line.files.empty()) return usageError(line.command + " needs a file (- for standard input)");
    if (line.command != "check" && line.files.size() > 1) return usageError(line.command + " takes one file");
    line.action = CommandLine::Action::run;
    return line;
}

}  // namespace vrktool
