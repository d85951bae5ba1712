#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quill::dbjson {

// What a program takes on its command line. Options may stand before, between or after the
// positional arguments; "--" ends them; "--name=value" is the same as "--name value".
struct ArgumentSpec {
    std::string_view program;                    // "dbc2json"
    std::string_view help;                       // whole text of --help, with its line end
    std::vector<std::string_view> flags;         // "--jsonExportAll"
    std::vector<std::string_view> valueOptions;  // "--outputPath"
    size_t positionalCount = 2;
};

struct Arguments {
    std::vector<std::string> positionals;
    std::map<std::string, std::string> options;  // flags have an empty value
    [[nodiscard]] bool has(const std::string& option) const { return options.contains(option); }
};

// Result of reading the command line: either arguments, or a status to end the program with
// (0 after --help and --version, 2 after a wrong command line, which is explained on standard
// error).
struct ArgumentResult {
    Arguments arguments;
    std::optional<int> exitStatus;
};

// args are in UTF-8 and without the program's name.
[[nodiscard]] ArgumentResult parseArguments(const ArgumentSpec& spec,
                                            const std::vector<std::string>& args);

}  // namespace quill::dbjson
