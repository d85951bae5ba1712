#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quill::dbjson {

class OutputFile;

// Writes one compact JSON document piece by piece; the caller keeps objects and arrays balanced.
// Texts must be valid UTF-8. Doubles are written with the fewest digits that read back as the same
// value; infinities become the largest finite double and not-a-number becomes 0, since JSON has
// neither.
class JsonWriter {
public:
    // Collects the document in memory, for text().
    JsonWriter() = default;
    // Hands the document to the file in large pieces; call flush() at the end.
    explicit JsonWriter(OutputFile& file);

    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }
    void key(std::string_view name);

    void text(std::string_view value);
    void number(double value);
    void integer(int64_t value);
    void boolean(bool value);

    void beginObject(std::string_view name) { key(name), beginObject(); }
    void beginArray(std::string_view name) { key(name), beginArray(); }
    void text(std::string_view name, std::string_view value) { key(name), text(value); }
    void number(std::string_view name, double value) { key(name), number(value); }
    void integer(std::string_view name, int64_t value) { key(name), integer(value); }
    void boolean(std::string_view name, bool value) { key(name), boolean(value); }

    // Starts a new line in the text; call it between elements only.
    void lineBreak();

    // False when the file took less than the whole document; the file knows the reason.
    [[nodiscard]] bool flush();
    // What is written and not yet handed to a file.
    [[nodiscard]] const std::string& text() const { return m_text; }

private:
    void open(char bracket);
    void close(char bracket);
    void separate();
    void appendQuoted(std::string_view value);
    void drainWhenLarge();

    std::string m_text;
    OutputFile* m_file = nullptr;
    bool m_needsComma = false;
    bool m_good = true;
};

}  // namespace quill::dbjson
