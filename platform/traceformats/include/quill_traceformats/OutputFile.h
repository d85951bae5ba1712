#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace quill::traceformats {

// A file that grows by whole pieces only: a piece that cannot be written whole is taken back, so
// what is on disk stays readable. Nothing is buffered here: a written piece outlives the process.
// Used by one thread at a time.
class OutputFile {
public:
    // Creates or empties the file and writes its first piece. On failure false with a reason, and
    // no file is left behind.
    [[nodiscard]] bool create(const std::string& utf8Path, std::span<const uint8_t> firstPiece,
                              std::string& reason);

    // Appends a piece whole or not at all; false with errorText() set when it could not.
    [[nodiscard]] bool append(std::span<const uint8_t> piece);

    // Writes over the beginning of the file.
    [[nodiscard]] bool rewriteStart(std::span<const uint8_t> bytes);

    // Closes the file; false when the system reports a late failure. Closing twice is harmless.
    bool close();

    [[nodiscard]] bool isOpen() const { return m_file != nullptr; }
    [[nodiscard]] uint64_t size() const { return m_size; }
    [[nodiscard]] const std::string& errorText() const { return m_error; }

private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    bool fail(const char* action);

    std::unique_ptr<std::FILE, Closer> m_file;
    uint64_t m_size = 0;  // end of the last whole piece
    std::string m_error;
};

}  // namespace quill::traceformats
