// Documents as the converters write them: what the readers expect.
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "arxml/Convert.h"
#include "dbc/DbcJson.h"
#include "dbc/DbcReader.h"
#include "ldf/LdfJson.h"
#include "ldf/LdfReader.h"
#include "own_seeds.h"
#include "quill_textencoding/TextDecoding.h"

namespace quill::fuzz {

namespace {

std::string textOf(const char* name) {
    std::ifstream file(std::string(QUILL_SOURCE_DIR) + "/" + name, std::ios::binary);
    return quill::text::decodeText(std::string(std::istreambuf_iterator<char>(file), {}));
}

std::string convertDbc(const char* name, dbjson::Diagnostics& diagnostics) {
    dbjson::JsonWriter json;
    const std::string text = textOf(name);  // which the model points into
    const auto model = dbjson::dbc::readDbc(text, diagnostics);
    dbjson::dbc::writeDbcJson(model, dbjson::dbc::ExportScope::All, json);
    return json.text();
}

std::string convertLdf(const char* name, dbjson::Diagnostics& diagnostics) {
    dbjson::JsonWriter json;
    const std::string text = textOf(name);
    const auto model = dbjson::ldf::readLdf(text, diagnostics);
    dbjson::ldf::writeLdfJson(model, json);
    return json.text();
}

std::string convertXml(const char* name, arxml::Format format, dbjson::Diagnostics& diagnostics) {
    dbjson::JsonWriter json;
    arxml::convert(format, textOf(name), diagnostics, json);
    return json.text();
}

}  // namespace

std::vector<Seed> ownSeeds(std::string_view /*target*/) {
    dbjson::Diagnostics diagnostics;
    const std::array documents{
        convertDbc("fuzz/seeds/dbc/every_section.dbc", diagnostics),
        convertLdf("fuzz/seeds/ldf/window_lift.ldf", diagnostics),
        convertXml("tests/data/backbone.arxml", arxml::Format::kArxml, diagnostics),
        convertXml("tests/data/chassis_fibex.xml", arxml::Format::kFibex, diagnostics)};
    std::vector<Seed> seeds;
    for (const std::string& document : documents) {
        Seed seed{8};  // bytes of the payload that is decoded
        seed.insert(seed.end(), document.begin(), document.end());
        seeds.push_back(std::move(seed));
    }
    return seeds;
}

}  // namespace quill::fuzz
