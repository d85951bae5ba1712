#include <fmt/format.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include <cstdio>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "Commands.h"
#include "Help.h"
#include "core/log/Log.h"

namespace {
using quilltrace::CommandLine;
using quilltrace::ExitStatus;

// Without --log the pipeline's log lines go nowhere: the tool says what matters itself.
bool setUpLog(const CommandLine& line, std::string& reason) {
    if (const auto folder = line.value("log")) {
        return quill::log::setup("quilltrace", *folder, reason);
    }
    spdlog::set_default_logger(spdlog::null_logger_mt("quilltrace"));
    return true;
}

ExitStatus run(const CommandLine& line) {
    if (line.command == "import") return runImport(line);
    if (line.command == "info") return runInfo(line);
    if (line.command == "stats") return runStats(line);
    if (line.command == "export") return runExport(line);
    fmt::print(stderr, "quilltrace: unknown command {}\n\n{}", line.command,
               quilltrace::helpText(""));
    return ExitStatus::Usage;
}
}  // namespace

int main(int argc, char** argv) {
    std::string reason;
    const auto line =
        quilltrace::parseCommandLine(std::vector<std::string>(argv + 1, argv + argc), reason);
    if (!line) {
        fmt::print(stderr, "quilltrace: {}\n", reason);
        return static_cast<int>(ExitStatus::Usage);
    }
    if (line->has("version")) {
        fmt::print("quilltrace {}\n", QUILLTRACE_VERSION);
        return 0;
    }
    if (line->has("help") || line->command.empty()) {
        const bool asked = line->has("help");
        fmt::print(asked ? stdout : stderr, "{}", quilltrace::helpText(line->command));
        return static_cast<int>(asked ? ExitStatus::Done : ExitStatus::Usage);
    }
    if (!setUpLog(*line, reason)) {
        fmt::print(stderr, "quilltrace: {}\n", reason);
        return static_cast<int>(ExitStatus::WriteFailed);
    }
    return static_cast<int>(run(*line));
}
