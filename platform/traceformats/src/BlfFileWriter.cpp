#include "quill_traceformats/BlfFileWriter.h"

#include <array>

namespace quill::traceformats {

bool BlfFileWriter::create(const std::string& utf8Path, const BlfHeader& header,
                           std::string& reason) {
    m_header = header;
    std::array<uint8_t, kBlfFileHeaderSize> bytes;
    encodeBlfHeader(m_header, bytes);
    return m_file.create(utf8Path, bytes, reason);
}

bool BlfFileWriter::append(std::span<const uint8_t> container, const ContainerFacts& facts) {
    if (!m_file.append(container)) return false;
    m_header.fileSize = m_file.size();
    m_header.uncompressedSize += kBlfContainerHeaderSize + facts.contentSize;
    m_header.objectCount += facts.objects;
    m_header.start = facts.start;
    m_header.last = facts.last;
    std::array<uint8_t, kBlfFileHeaderSize> bytes;
    encodeBlfHeader(m_header, bytes);
    // A header that cannot be written again is stale, not wrong: readers go by the objects.
    static_cast<void>(m_file.rewriteStart(bytes));
    return true;
}

}  // namespace quill::traceformats
