#include "quill_traceformats/PcapngReader.h"

#include <algorithm>

#include "quill_traceformats/byte_order.h"

namespace quill::traceformats {
namespace {
constexpr size_t kBlockHead = 12;  // type, length and, of a section, the byte order mark
constexpr uint32_t kSmallestBlock = 12;
constexpr uint32_t kLargestBlock = 16U << 20U;
constexpr uint32_t kOrderMark = 0x1A2B3C4D;
constexpr uint32_t kKnownTypes = 11;  // 1 to 10 are assigned to blocks that files hold

bool isSection(std::span<const uint8_t> bytes) {
    const uint8_t* p = bytes.data();
    return bytes.size() >= kBlockHead && bytes::little32(p) == PcapngReader::kSection &&
           (bytes::little32(p + 8) == kOrderMark || bytes::big32(p + 8) == kOrderMark);
}

bool sane(uint32_t length) {
    return length >= kSmallestBlock && length <= kLargestBlock && length % 4 == 0;
}
}  // namespace

bool PcapngReader::readHeader(TraceHeader& header) {
    const auto bytes = m_input.ahead(kBlockHead);
    if (!isSection(bytes)) return false;
    m_bigEndian = bytes::big32(bytes.data() + 8) == kOrderMark;
    header.bigEndian = m_bigEndian;
    return true;  // the section stays in front: it is the first unit
}

bool PcapngReader::plausible(std::span<const uint8_t> bytes) const {
    if (isSection(bytes)) return true;
    const uint32_t type = bytes::any32(bytes.data(), m_bigEndian);
    return type > 0 && type < kKnownTypes && sane(bytes::any32(bytes.data() + 4, m_bigEndian));
}

void PcapngReader::findNextBlock(const char* reason) {
    const uint64_t start = m_input.position();
    uint64_t lost = m_input.skip(1);
    while (true) {
        auto bytes = m_input.ahead(kBlockHead);
        if (bytes.size() < kBlockHead) break;
        size_t at = 0;
        for (; at + kBlockHead <= bytes.size(); ++at) {
            const auto here = bytes.subspan(at);
            if (!plausible(here)) continue;
            bool found = isSection(here);
            if (!found) {
                // The length stands at both ends of a block, which chance does not repeat.
                const uint32_t length = bytes::any32(here.data() + 4, m_bigEndian);
                lost += m_input.skip(at);
                at = 0;
                bytes = m_input.ahead(length);
                found = bytes.size() >= length &&
                        bytes::any32(bytes.data() + length - 4, m_bigEndian) == length;
            } else {
                lost += m_input.skip(at);
            }
            if (found) {
                m_damage.add(start,
                             std::string(reason) + ", " + std::to_string(lost) + " bytes lost");
                return;
            }
        }
        lost += m_input.skip(std::max<size_t>(at, 1));
    }
    lost += m_input.skip(kBlockHead);
    m_damage.add(start, std::string(reason) + ", " + std::to_string(lost) +
                            " bytes lost up to the end of the file");
}

// Answers false when a damaged place was passed, so that one call never runs through many of them.
bool PcapngReader::takeBlock(UnitBatch& batch, size_t& count) {
    auto bytes = m_input.ahead(kBlockHead);
    if (bytes.size() < kBlockHead) {
        m_damage.add(m_input.position(), "file ends inside a block header");
        (void)m_input.skip(kBlockHead);
        return false;
    }
    const bool section = isSection(bytes);
    if (section) m_bigEndian = bytes::big32(bytes.data() + 8) == kOrderMark;
    const uint32_t type = bytes::any32(bytes.data(), m_bigEndian);
    const uint32_t length = bytes::any32(bytes.data() + 4, m_bigEndian);
    if (!sane(length)) {
        findNextBlock("block length is impossible");
        return false;
    }
    bytes = m_input.ahead(length);
    if (bytes.size() < length) {
        // Either the file was cut here or the length is damaged and blocks follow.
        findNextBlock("file ends inside a block");
        return false;
    }
    if (bytes::any32(bytes.data() + length - 4, m_bigEndian) != length) {
        const auto behind = m_input.ahead(length + kBlockHead).subspan(length);
        if (behind.size() >= kBlockHead ? !plausible(behind) : !behind.empty()) {
            findNextBlock("the two lengths of a block differ");
            return false;
        }
        m_damage.add(m_input.position(), "the two lengths of a block differ");
    }
    if (section || type == kInterface || type == kOldPacket || type == kSimplePacket ||
        type == kEnhancedPacket) {
        m_input.cut(length, batch);
        ++count;
    } else {
        (void)m_input.skip(length);
    }
    return true;
}

void PcapngReader::nextUnits(UnitBatch& batch, size_t maximum) {
    size_t count = 0;
    while (count < maximum && !m_input.exhausted()) {
        if (!takeBlock(batch, count)) return;
    }
}

}  // namespace quill::traceformats
