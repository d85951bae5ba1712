#include "common/Arguments.h"

#include <algorithm>
#include <cstdio>

namespace quill::dbjson {

namespace {

constexpr int kWrongUsage = 2;

bool isListed(const std::vector<std::string_view>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

int usageError(const ArgumentSpec& spec, const std::string& message) {
    std::fprintf(stderr, "%.*s: %s\n%.*s", static_cast<int>(spec.program.size()),
                 spec.program.data(), message.c_str(), static_cast<int>(spec.help.size()),
                 spec.help.data());
    return kWrongUsage;
}

// Takes one option with its value, if it has one; the error text is empty when all is well.
std::string takeOption(const ArgumentSpec& spec, const std::vector<std::string>& args, size_t& i,
                       Arguments& out) {
    const size_t equals = args[i].find('=');
    const std::string name = args[i].substr(0, equals);
    if (isListed(spec.flags, name)) {
        if (equals != std::string::npos) return name + " takes no value";
        out.options[name] = {};
        return {};
    }
    if (!isListed(spec.valueOptions, name)) return "unknown option " + name;
    if (equals != std::string::npos) {
        out.options[name] = args[i].substr(equals + 1);
    } else if (i + 1 < args.size()) {
        out.options[name] = args[++i];
    } else {
        return name + " needs a value";
    }
    return {};
}

}  // namespace

ArgumentResult parseArguments(const ArgumentSpec& spec, const std::vector<std::string>& args) {
    ArgumentResult result;
    bool optionsEnded = false;
    for (size_t i = 0; i < args.size(); ++i) {
        if (optionsEnded || args[i].size() < 2 || args[i][0] != '-') {
            result.arguments.positionals.push_back(args[i]);
        } else if (args[i] == "--") {
            optionsEnded = true;
        } else if (args[i] == "--help" || args[i] == "-h") {
            std::fwrite(spec.help.data(), 1, spec.help.size(), stdout);
            result.exitStatus = 0;
            return result;
        } else if (args[i] == "--version") {
            std::printf("%.*s %s\n", static_cast<int>(spec.program.size()), spec.program.data(),
                        QUILL_VERSION);
            result.exitStatus = 0;
            return result;
        } else if (const auto error = takeOption(spec, args, i, result.arguments); !error.empty()) {
            result.exitStatus = usageError(spec, error);
            return result;
        }
    }
    if (result.arguments.positionals.size() != spec.positionalCount) {
        result.exitStatus = usageError(
            spec, "expected " + std::to_string(spec.positionalCount) + " arguments, got " +
                      std::to_string(result.arguments.positionals.size()));
    }
    return result;
}

}  // namespace quill::dbjson
