// Any bytes as an AUTOSAR or a FIBEX text, the way the program reads them: no crash, no hang, and
// either an error or a document with balanced brackets.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "arxml/Convert.h"
#include "quill_textencoding/TextDecoding.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    if (quill::text::refuseAsText(bytes)) return 0;
    const std::string text = quill::text::decodeText(bytes);
    for (const auto format : {quill::arxml::Format::kArxml, quill::arxml::Format::kFibex}) {
        quill::dbjson::Diagnostics diagnostics;
        quill::dbjson::JsonWriter json;
        quill::arxml::convert(format, text, diagnostics, json);
        if (diagnostics.failed()) continue;
        const std::string& written = json.text();
        if (written.empty() || written.front() != '{' || written.back() != '}') std::abort();
    }
    return 0;
}
