// dbc2json: one DBC file into the JSON document that the database items read.
#include "common/Arguments.h"
#include "common/ConverterProgram.h"
#include "dbc/DbcJson.h"
#include "dbc/DbcReader.h"
#include "quill_os/text.h"

namespace {

constexpr std::string_view kHelp = R"(usage: dbc2json INPUT OUTPUT.json [--jsonExportAll]

Converts a CAN database (DBC) into JSON. Text of the input may be UTF-8, UTF-16,
Windows-1252 or GB18030. Start bits in the output are those of the least
significant bit, for both byte orders.

  --jsonExportAll  also write attribute definitions, environment variables,
                   value tables, signal groups, relations and node details
  --help           print this text
  --version        print the version

Exit status: 0 done; 1 a file cannot be read or written, with
"path:line:column: message" on standard error; 2 wrong arguments.
)";

}  // namespace

int main(int argc, char** argv) {
    namespace dbjson = quill::dbjson;
    const dbjson::ArgumentSpec spec{"dbc2json", kHelp, {"--jsonExportAll"}, {}, 2};
    const auto parsed = dbjson::parseArguments(spec, quill::os::utf8Arguments(argc, argv));
    if (parsed.exitStatus) return *parsed.exitStatus;
    const auto scope = parsed.arguments.has("--jsonExportAll") ? dbjson::dbc::ExportScope::All
                                                               : dbjson::dbc::ExportScope::Messages;
    return dbjson::convertFile(
        parsed.arguments.positionals[0], parsed.arguments.positionals[1],
        dbjson::InputText::Guessed,
        [scope](std::string_view text, dbjson::Diagnostics& diagnostics, dbjson::JsonWriter& json) {
            const dbjson::dbc::Model model = dbjson::dbc::readDbc(text, diagnostics);
            if (!diagnostics.failed()) dbjson::dbc::writeDbcJson(model, scope, json);
        });
}
