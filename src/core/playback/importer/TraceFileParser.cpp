#include "core/playback/importer/TraceFileParser.h"

#include "core/log/Log.h"
#include "quill_os/paths.h"

namespace playback {

TraceFileParser::TraceFileParser(std::wstring path, std::wstring mode, uint32_t option)
    : m_path(std::move(path)), m_mode(std::move(mode)), m_option(option) {
    openFile();
}

TraceFileParser::~TraceFileParser() { closeFile(); }

size_t TraceFileParser::CountingSource::read(uint8_t* target, size_t room) {
    if (m_owner.m_file == nullptr) return 0;
    const size_t got = std::fread(target, 1, room, m_owner.m_file);
    m_owner.m_bytesRead += got;
    return got;
}

bool TraceFileParser::openFile() {
    closeFile();
    const std::string path = quill::os::utf8FromWide(m_path);
    m_file = quill::os::openFile(path, quill::os::utf8FromWide(m_mode).c_str());
    if (m_file == nullptr) {
        QUILL_ERROR(quill::log::kImporter,
                    "open file failed(Not present or file occupied), file name {}", path);
        return false;
    }
    // The readers take large pieces; a buffer of the C library in between would only copy them.
    (void)std::setvbuf(m_file, nullptr, _IONBF, 0);
    return true;
}

void TraceFileParser::closeFile() {
    if (m_file != nullptr) (void)std::fclose(m_file);
    m_file = nullptr;
}

const quill::traceformats::DamageLog* TraceFileParser::damage() const {
    return m_reader ? &m_reader->damage() : nullptr;
}

std::optional<quill::traceformats::TraceHeader> TraceFileParser::readHeaderWith(
    std::unique_ptr<quill::traceformats::UnitReader> reader) {
    if (!isOpen()) return std::nullopt;
    quill::traceformats::TraceHeader header;
    m_reader = std::move(reader);
    if (!m_reader->readHeader(header)) return std::nullopt;
    return header;
}

void TraceFileParser::fillBatch(quill::traceformats::UnitBatch& batch) {
    if (m_reader) m_reader->nextUnits(batch, m_option == 0 ? kUnitsPerBatch : m_option);
}

bool TraceFileParser::readerAtEnd() { return !isOpen() || !m_reader || m_reader->atEnd(); }

}  // namespace playback
