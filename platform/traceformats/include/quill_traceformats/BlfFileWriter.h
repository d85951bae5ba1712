#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "quill_traceformats/OutputFile.h"
#include "quill_traceformats/blf_layout.h"

namespace quill::traceformats {

// BLF file on disk: a header that is right at every moment and whole containers behind it.
class BlfFileWriter {
public:
    // What one container adds to the file's statistics.
    struct ContainerFacts {
        uint64_t contentSize = 0;  // uncompressed bytes
        uint32_t objects = 0;
        CalendarTime start;  // of the measurement; may change until the first container
        CalendarTime last;   // of the last object
    };

    // Creates the file with a header of these values; false with a reason and no file otherwise.
    [[nodiscard]] bool create(const std::string& utf8Path, const BlfHeader& header,
                              std::string& reason);

    // Appends a container (header, content, padding) and writes the file header again. False when
    // the container could not be written whole; the file then ends where it ended before.
    [[nodiscard]] bool append(std::span<const uint8_t> container, const ContainerFacts& facts);

    bool close() { return m_file.close(); }

    [[nodiscard]] uint64_t size() const { return m_file.size(); }
    [[nodiscard]] const std::string& errorText() const { return m_file.errorText(); }

private:
    OutputFile m_file;
    BlfHeader m_header;
};

}  // namespace quill::traceformats
