#include "CommandLine.h"

#include <cmath>
#include <cstdlib>

namespace quilltrace {
namespace {
const std::set<std::string> kFlags = {"help", "json", "quiet", "strict", "force", "version"};
const std::set<std::string> kValues = {"output",      "log",     "file",    "bitrate",
                                       "databitrate", "linrate", "ethrate", "top"};
}  // namespace

std::optional<std::string> CommandLine::value(const std::string& name) const {
    const auto found = values.find(name);
    if (found == values.end()) return std::nullopt;
    return found->second;
}

std::optional<double> CommandLine::number(const std::string& name, double otherwise) const {
    const auto text = value(name);
    if (!text) return otherwise;
    char* end = nullptr;
    const double parsed = std::strtod(text->c_str(), &end);
    if (end == text->c_str() || *end != '\0' || !std::isfinite(parsed) || parsed <= 0) {
        return std::nullopt;
    }
    return parsed;
}

std::optional<CommandLine> parseCommandLine(const std::vector<std::string>& words,
                                            std::string& reason) {
    CommandLine line;
    bool operandsOnly = false;
    for (size_t i = 0; i < words.size(); ++i) {
        std::string word = words[i];
        if (operandsOnly || word.size() < 2 || word[0] != '-') {
            if (line.command.empty()) {
                line.command = word;
            } else {
                line.operands.push_back(word);
            }
            continue;
        }
        if (word == "--") {
            operandsOnly = true;
            continue;
        }
        if (word == "-h") word = "--help";
        if (word == "-o") word = "--output";
        if (word == "-q") word = "--quiet";
        std::string name = word.substr(word[1] == '-' ? 2 : 1);
        std::optional<std::string> value;
        if (const size_t equals = name.find('='); equals != std::string::npos) {
            value = name.substr(equals + 1);
            name.resize(equals);
        }
        if (kFlags.count(name) != 0 && !value) {
            line.flags.insert(name);
        } else if (kValues.count(name) != 0) {
            if (!value && i + 1 < words.size()) value = words[++i];
            if (!value) {
                reason = "option " + word + " needs a value";
                return std::nullopt;
            }
            line.values[name] = *value;
        } else {
            reason = "unknown option " + word;
            return std::nullopt;
        }
    }
    return line;
}

}  // namespace quilltrace
