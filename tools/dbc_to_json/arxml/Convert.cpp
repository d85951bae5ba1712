#include "arxml/Convert.h"

#include <algorithm>
#include <string>

#include "arxml/ArxmlReader.h"
#include "arxml/DatabaseJson.h"
#include "arxml/Document.h"
#include "arxml/FibexReader.h"

namespace quill::arxml {
namespace {

// Written out, a description takes about as much room as in XML; shared PDUs make it more.
constexpr size_t kAlwaysWritten = size_t{256} << 20;
constexpr size_t kLargestGrowth = 8;

size_t byteOf(std::ptrdiff_t offset) { return offset > 0 ? static_cast<size_t>(offset) : 0; }

}  // namespace

void convert(Format format, std::string_view text, dbjson::Diagnostics& diagnostics,
             dbjson::JsonWriter& json) {
    std::string buffer(text);  // parsing changes it, and positions are counted in the original
    Document document;
    Database database;
    auto error = document.parse(buffer);
    if (!error) {
        error = format == Format::kFibex ? readFibex(document, database)
                                         : readArxml(document, database);
    }
    for (auto& warning : database.warnings) {
        diagnostics.warn(byteOf(warning.offset), std::move(warning.text));
    }
    if (!error) {
        error =
            writeDatabase(database, std::max(kAlwaysWritten, kLargestGrowth * text.size()), json);
    }
    if (error) diagnostics.fail(byteOf(error->offset), std::move(error->text));
}

}  // namespace quill::arxml
