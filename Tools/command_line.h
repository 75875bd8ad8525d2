// The tool's command line: a command, its options and its files.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vrktool {

struct CommandLine {
    enum class Action { run, help, version, usageError };
    Action action = Action::usageError;
    std::string problem;  // what is wrong, for a usage error
    std::string command;  // check, cat, tree or stats
    std::vector<std::string> files;
    bool strict = false;
    bool json = false;
    bool utf16 = false;
    std::optional<std::size_t> indent;  // blanks a level, for cat --indent
};

// Reads the arguments behind the program's name.  An option that the
// command does not take, a malformed value or a wrong number of files is a
// usage error; "--" ends the options, and "-" is a file (standard input).
CommandLine readCommandLine(const std::vector<std::string> &args);

}  // namespace vrktool
