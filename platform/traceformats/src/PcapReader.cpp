#include "quill_traceformats/PcapReader.h"

#include <algorithm>

#include "quill_traceformats/byte_order.h"

namespace quill::traceformats {
namespace {
constexpr size_t kFileHeaderBytes = 24;
// Largest snap length of the packet library. Captured lengths up to it are taken even where the
// file's own snap length is smaller: such files exist and their packets are whole.
constexpr uint32_t kUsualSnapLength = 262144;
constexpr uint32_t kLargestPacket = 16U << 20U;
// Two neighbouring packets more than this apart are not believed while looking for the next one.
constexpr uint32_t kLargestGapSeconds = 30 * 24 * 3600;

struct Magic {
    uint32_t value;  // read as big-endian
    bool bigEndian;
    bool nanoseconds;
    uint32_t recordHeaderBytes;
};
constexpr Magic kMagics[] = {
    {0xD4C3B2A1, false, false, 16}, {0xA1B2C3D4, true, false, 16},  {0x4D3CB2A1, false, true, 16},
    {0xA1B23C4D, true, true, 16},   {0x34CDB2A1, false, false, 24}, {0xA1B2CD34, true, false, 24},
};
}  // namespace

uint32_t PcapReader::word(std::span<const uint8_t> bytes, size_t offset) const {
    return bytes::any32(bytes.data() + offset, m_header.bigEndian);
}

bool PcapReader::readHeader(TraceHeader& header) {
    const auto bytes = m_input.ahead(kFileHeaderBytes);
    if (bytes.size() < kFileHeaderBytes) return false;
    const uint32_t magic = bytes::big32(bytes.data());
    const auto* found = std::find_if(std::begin(kMagics), std::end(kMagics),
                                     [&](const Magic& known) { return known.value == magic; });
    if (found == std::end(kMagics)) return false;
    m_header.bigEndian = found->bigEndian;
    m_header.nanoseconds = found->nanoseconds;
    m_header.recordHeaderBytes = found->recordHeaderBytes;
    m_header.snapLength = word(bytes, 16);
    m_header.linkType = word(bytes, 20) & 0xFFFFU;
    m_largest = std::clamp(m_header.snapLength, kUsualSnapLength, kLargestPacket);
    (void)m_input.skip(kFileHeaderBytes);
    header = m_header;
    return true;
}

bool PcapReader::plausible(std::span<const uint8_t> bytes) const {
    const uint32_t seconds = word(bytes, 0);
    const uint32_t gap =
        seconds > m_lastSeconds ? seconds - m_lastSeconds : m_lastSeconds - seconds;
    const uint32_t captured = word(bytes, 8);
    return word(bytes, 4) < (m_header.nanoseconds ? 1'000'000'000U : 1'000'000U) &&
           (m_lastSeconds == 0 || gap <= kLargestGapSeconds) && captured > 0 &&
           captured <= m_largest && captured <= word(bytes, 12);
}

void PcapReader::findNextRecord(const char* reason) {
    const uint64_t start = m_input.position();
    const size_t head = m_header.recordHeaderBytes;
    uint64_t lost = m_input.skip(1);
    while (true) {
        auto bytes = m_input.ahead(head);
        if (bytes.size() < head) break;
        size_t at = 0;
        for (; at + head <= bytes.size(); ++at) {
            if (!plausible(bytes.subspan(at))) continue;
            // One header alone may be chance; a second one behind it, or the end, is not.
            const size_t next = head + word(bytes, at + 8);
            lost += m_input.skip(at);
            at = 0;
            bytes = m_input.ahead(next + head);
            if (bytes.size() == next ||
                (bytes.size() >= next + head && plausible(bytes.subspan(next)))) {
                m_damage.add(start,
                             std::string(reason) + ", " + std::to_string(lost) + " bytes lost");
                return;
            }
        }
        lost += m_input.skip(std::max<size_t>(at, 1));
    }
    lost += m_input.skip(head);
    m_damage.add(start, std::string(reason) + ", " + std::to_string(lost) +
                            " bytes lost up to the end of the file");
}

void PcapReader::nextUnits(UnitBatch& batch, size_t maximum) {
    const size_t head = m_header.recordHeaderBytes;
    for (size_t count = 0; count < maximum;) {
        auto bytes = m_input.ahead(head);
        if (bytes.empty()) return;
        if (bytes.size() < head) {
            m_damage.add(m_input.position(), "file ends inside a packet header");
            (void)m_input.skip(head);
            return;
        }
        const uint32_t captured = word(bytes, 8);
        if (captured > m_largest) {
            findNextRecord("captured length is impossible");
            return;
        }
        if (m_input.ahead(head + captured).size() < head + captured) {
            m_damage.add(m_input.position(), "file ends inside a packet");
            (void)m_input.skip(head + captured);
            return;
        }
        m_lastSeconds = word(m_input.ahead(head), 0);
        m_input.cut(head + captured, batch);
        ++count;
    }
}

}  // namespace quill::traceformats
