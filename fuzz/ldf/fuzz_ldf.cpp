// Any bytes as a LDF file: decoded, read and written as JSON. Start it with the LDF files of the
// corpus as seeds.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "ldf/LdfJson.h"
#include "ldf/LdfReader.h"
#include "quill_textencoding/TextDecoding.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    namespace dbjson = quill::dbjson;
    std::string bytes(reinterpret_cast<const char*>(data), size);
    if (quill::text::refuseAsText(bytes)) return 0;
    const std::string text = quill::text::decodeText(std::move(bytes));
    dbjson::Diagnostics diagnostics;
    const auto model = dbjson::ldf::readLdf(text, diagnostics);
    if (diagnostics.failed()) return 0;
    dbjson::JsonWriter json;
    dbjson::ldf::writeLdfJson(model, json);
    if (!quill::text::isValidUtf8(json.text())) std::abort();
    return 0;
}
