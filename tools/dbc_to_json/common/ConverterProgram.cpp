#include "common/ConverterProgram.h"

#include <exception>
#include <new>

#include "common/InputFile.h"
#include "common/OutputFile.h"
#include "quill_textencoding/TextDecoding.h"

namespace quill::dbjson {

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;

int failFile(const std::string& path, const std::string& reason) {
    printFileError(path, reason);
    return kFailed;
}

int convertText(const std::string& inputPath, const std::string& outputPath, std::string_view text,
                const ConvertFunction& convert) {
    OutputFile output;
    if (!output.open(outputPath)) return failFile(outputPath, output.error());
    JsonWriter writer(output);
    Diagnostics diagnostics;
    convert(text, diagnostics, writer);
    diagnostics.print(inputPath, text);
    if (diagnostics.failed()) return kFailed;
    writer.lineBreak();
    if (!writer.flush() || !output.commit()) return failFile(outputPath, output.error());
    return kDone;
}

}  // namespace

int convertFile(const std::string& inputPath, const std::string& outputPath, InputText inputText,
                const ConvertFunction& convert) {
    try {
        std::string error;
        auto bytes = readInputFile(inputPath, error);
        if (!bytes) return failFile(inputPath, error);
        if (bytes->empty()) return failFile(inputPath, "the file is empty");
        if (inputText == InputText::Guessed) {
            if (const auto refusal = text::refuseAsText(*bytes))
                return failFile(inputPath, *refusal);
            *bytes = text::decodeText(std::move(*bytes));
        }
        return convertText(inputPath, outputPath, *bytes, convert);
    } catch (const std::bad_alloc&) {
        return failFile(inputPath, "not enough memory");
    } catch (const std::exception& e) {
        return failFile(inputPath, e.what());
    }
}

}  // namespace quill::dbjson
