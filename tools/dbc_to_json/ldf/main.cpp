// ldf2json: one LIN description file into the JSON document that the database items read.
#include "common/Arguments.h"
#include "common/ConverterProgram.h"
#include "ldf/LdfJson.h"
#include "ldf/LdfReader.h"
#include "quill_os/text.h"

namespace {

constexpr std::string_view kHelp = R"(usage: ldf2json INPUT OUTPUT.json

Converts a LIN description file (LDF: LIN 1.3 to 2.2, ISO 17987, J2602) into JSON.
Text of the input may be UTF-8, UTF-16, Windows-1252 or GB18030. Times in the
output are in seconds, the speed is in bit/s.

  --help     print this text
  --version  print the version

Exit status: 0 done; 1 a file cannot be read or written, with
"path:line:column: message" on standard error; 2 wrong arguments.
)";

}  // namespace

int main(int argc, char** argv) {
    namespace dbjson = quill::dbjson;
    const dbjson::ArgumentSpec spec{"ldf2json", kHelp, {}, {}, 2};
    const auto parsed = dbjson::parseArguments(spec, quill::os::utf8Arguments(argc, argv));
    if (parsed.exitStatus) return *parsed.exitStatus;
    return dbjson::convertFile(
        parsed.arguments.positionals[0], parsed.arguments.positionals[1],
        dbjson::InputText::Guessed,
        [](std::string_view text, dbjson::Diagnostics& diagnostics, dbjson::JsonWriter& json) {
            const dbjson::ldf::Model model = dbjson::ldf::readLdf(text, diagnostics);
            if (!diagnostics.failed()) dbjson::ldf::writeLdfJson(model, json);
        });
}
