#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "quill_traceformats/ByteSource.h"
#include "quill_traceformats/UnitReader.h"

namespace playback {

// Base of the file parsers: owns the open file and cuts it into units. Used by one thread at a
// time, except bytesRead.
class TraceFileParser {
public:
    // Opens the file at once. `option` is the number of units per batch, 0 for the default.
    TraceFileParser(std::wstring path, std::wstring mode, uint32_t option = 0);
    TraceFileParser(const TraceFileParser&) = delete;
    TraceFileParser& operator=(const TraceFileParser&) = delete;

    // Reads the file header; nothing when the file is not open or not of the format.
    [[nodiscard]] virtual std::optional<quill::traceformats::TraceHeader> parseHeader() = 0;
    // Fills one batch with the next units; none at the end.
    virtual void parseNextUnits(quill::traceformats::UnitBatch& batch) = 0;
    // True when no file is open or the file is at its end.
    [[nodiscard]] virtual bool atEnd() = 0;
    virtual ~TraceFileParser();

    // False, with a log line, when the file cannot be opened.
    bool openFile();
    void closeFile();
    [[nodiscard]] bool isOpen() const { return m_file != nullptr; }
    [[nodiscard]] uint64_t bytesRead() const { return m_bytesRead; }
    // What could not be used, and where; complete when the end is reached.
    [[nodiscard]] const quill::traceformats::DamageLog* damage() const;
    [[nodiscard]] virtual const char* formatName() const = 0;

    static constexpr uint32_t kUnitsPerBatch = 2048;

protected:
    // The parts that every format shares, once its reader exists.
    [[nodiscard]] std::optional<quill::traceformats::TraceHeader> readHeaderWith(
        std::unique_ptr<quill::traceformats::UnitReader> reader);
    void fillBatch(quill::traceformats::UnitBatch& batch);
    [[nodiscard]] bool readerAtEnd();
    [[nodiscard]] quill::traceformats::ByteSource& source() { return m_source; }

private:
    // Counts what is read, for whoever shows progress.
    class CountingSource final : public quill::traceformats::ByteSource {
    public:
        explicit CountingSource(TraceFileParser& owner) : m_owner(owner) {}
        size_t read(uint8_t* target, size_t room) override;

    private:
        TraceFileParser& m_owner;
    };

    std::wstring m_path;
    std::wstring m_mode;
    std::FILE* m_file = nullptr;
    uint32_t m_option;
    std::atomic<uint64_t> m_bytesRead{0};
    CountingSource m_source{*this};
    std::unique_ptr<quill::traceformats::UnitReader> m_reader;
};

}  // namespace playback
