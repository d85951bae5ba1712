// database-parser-ts: converts AUTOSAR and FIBEX descriptions of networks into JSON.

#include <cstdio>
#include <string>
#include <vector>

#include "arxml/Convert.h"
#include "common/Arguments.h"
#include "common/ConverterProgram.h"
#include "quill_os/text.h"

namespace {

constexpr std::string_view kProgram = "database-parser-ts";
constexpr std::string_view kOutputPath = "--outputPath";
constexpr std::string_view kHelp =
    "usage: database-parser-ts arxml-parse INPUT --outputPath OUTPUT.json\n"
    "       database-parser-ts fibex-parse INPUT --outputPath OUTPUT.json\n"
    "\n"
    "Converts the description of a network into one JSON document.\n"
    "\n"
    "  arxml-parse   AUTOSAR 3 or 4: CAN, FlexRay and Ethernet clusters, ECU configurations\n"
    "  fibex-parse   FIBEX: FlexRay and CAN clusters\n"
    "  --outputPath  file to write; an older one is replaced when all went well\n"
    "  --help        this text\n"
    "  --version     the version of the program\n"
    "\n"
    "Positions of signals name their least significant bit, 8 * byte + bit, for both byte\n"
    "orders. They count from the first bit of the frame, but from the first bit of the PDU for\n"
    "PDUs that stand behind a header in a container.\n"
    "\n"
    "Exit status: 0 done, 1 the file was not converted (path:line:column: message on standard\n"
    "error), 2 wrong arguments.\n";

constexpr int kWrongUsage = 2;

int wrongUsage(const std::string& message) {
    std::fprintf(stderr, "%s: %s\n%s", kProgram.data(), message.c_str(), kHelp.data());
    return kWrongUsage;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace quill;
    const std::vector<std::string> args = os::utf8Arguments(argc, argv);
    const dbjson::ArgumentSpec spec{kProgram, kHelp, {}, {kOutputPath}, 2};
    const auto parsed = dbjson::parseArguments(spec, args);
    if (parsed.exitStatus) return *parsed.exitStatus;
    const std::string& command = parsed.arguments.positionals[0];
    if (command != "arxml-parse" && command != "fibex-parse") {
        return wrongUsage("unknown command " + command);
    }
    const auto output = parsed.arguments.options.find(std::string(kOutputPath));
    if (output == parsed.arguments.options.end() || output->second.empty()) {
        return wrongUsage("--outputPath is missing");
    }
    const auto format = command == "fibex-parse" ? arxml::Format::kFibex : arxml::Format::kArxml;
    return dbjson::convertFile(
        parsed.arguments.positionals[1], output->second, dbjson::InputText::Guessed,
        [format](std::string_view text, dbjson::Diagnostics& diagnostics,
                 dbjson::JsonWriter& json) { arxml::convert(format, text, diagnostics, json); });
}
