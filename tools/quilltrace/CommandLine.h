#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quilltrace {

// A command line taken apart: the command, its operands, options with a value and flags.
struct CommandLine {
    std::string command;
    std::vector<std::string> operands;
    std::map<std::string, std::string> values;  // by long name without dashes
    std::set<std::string> flags;

    [[nodiscard]] bool has(const std::string& flag) const { return flags.count(flag) != 0; }
    [[nodiscard]] std::optional<std::string> value(const std::string& name) const;
    // A positive number; `otherwise` when not given, empty when it is none.
    [[nodiscard]] std::optional<double> number(const std::string& name, double otherwise) const;
};

// Empty, with the mistake in `reason`, when an option is unknown or lacks its value.
[[nodiscard]] std::optional<CommandLine> parseCommandLine(const std::vector<std::string>& words,
                                                          std::string& reason);

}  // namespace quilltrace
