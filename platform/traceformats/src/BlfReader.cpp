#include "quill_traceformats/BlfReader.h"

#include "BlfContainerSource.h"
#include "BlfScan.h"
#include "quill_traceformats/blf_layout.h"

namespace quill::traceformats {
namespace {
constexpr uint32_t kLargestFileHeader = 1U << 16U;
// Year 2200: later dates are damage, and the sum with a time stamp must not overflow.
constexpr uint64_t kLatestStart = 7'258'118'400'000'000'000U;
}  // namespace

BlfReader::BlfReader(ByteSource& source)
    : m_source(std::make_unique<BlfContainerSource>(source, m_damage)), m_input(*m_source) {}

BlfReader::~BlfReader() = default;

bool BlfReader::readHeader(TraceHeader& header) {
    const auto read = decodeBlfHeader(m_source->fileHead(kBlfFileHeaderSize));
    if (!read || read->headerSize > kLargestFileHeader) return false;
    header.apiNumber = read->apiNumber;
    header.objectCount = read->objectCount;
    // 0 for an impossible date: times then count from the start of measurement.
    const uint64_t start = epochFromCalendar(read->start, localOffsetSeconds(read->start));
    header.startNs = start > kLatestStart ? 0 : static_cast<int64_t>(start);
    return m_source->skipTo(read->headerSize);
}

void BlfReader::nextUnits(UnitBatch& batch, size_t maximum) {
    const size_t full = batch.size() + maximum;
    while (batch.size() < full) {
        if (!takeObject(batch)) return;
    }
}

// False at the end and behind damage, so that one call passes one damaged place at most.
bool BlfReader::takeObject(UnitBatch& batch) {
    auto bytes = m_input.ahead(blfscan::kBaseHeader + blfscan::kMostPadding);
    if (bytes.size() < blfscan::kBaseHeader) {
        dropTail();
        return false;
    }
    if (!blfscan::isSignature(bytes.data())) {
        const auto padding = blfscan::signatureNear(bytes);
        if (!padding) {
            findNextObject("no object where one should begin");
            return false;
        }
        (void)m_input.skip(*padding);
        bytes = m_input.ahead(blfscan::kBaseHeader);
        if (bytes.size() < blfscan::kBaseHeader) {
            dropTail();
            return false;
        }
    }
    const uint32_t headerSize = bytes::little16(bytes.data() + 4);
    const uint32_t size = bytes::little32(bytes.data() + 8);
    if (headerSize < blfscan::kBaseHeader || size < headerSize || size > blfscan::kLargestObject) {
        findNextObject("object length is impossible");
        return false;
    }
    const bool nested = bytes::little32(bytes.data() + 12) == blfscan::kContainerType;
    bytes = m_input.ahead(size + 4);
    if (bytes.size() < size) {
        findNextObject("object runs over the end of its containers");
        return false;
    }
    if (bytes.size() >= size + 4 && !blfscan::isSignature(bytes.data() + size) &&
        swallowsNext(size)) {
        findNextObject("object length runs over the next object");
        return false;
    }
    if (nested) {
        m_damage.add(m_input.position(), "container inside a container is not read");
        (void)m_input.skip(size);
        return true;
    }
    m_input.cut(size, batch);
    return true;
}

// Asked when no object follows directly: true when another object begins inside this one and leads
// to a third.
bool BlfReader::swallowsNext(uint32_t objectSize) {
    const auto bytes = m_input.ahead(objectSize + blfscan::kMostPadding + 4);
    if (blfscan::signatureNear(bytes.subspan(objectSize))) return false;
    const auto inner = blfscan::findHeader(bytes, blfscan::kBaseHeader);
    if (!inner || *inner >= objectSize) return false;
    const size_t behind = *inner + bytes::little32(bytes.data() + *inner + 8);
    return behind + 4 <= bytes.size() && blfscan::signatureNear(bytes.subspan(behind)).has_value();
}

// Gives up an incomplete object at a break or at the end of the file.
void BlfReader::dropTail() {
    const uint64_t position = m_input.position();
    const size_t size = m_input.ahead(1).size();
    (void)m_input.skip(size);
    if (size > blfscan::kMostPadding) {
        m_damage.add(position, "object is cut off, " + std::to_string(size) + " bytes lost");
    }
    if (!m_source->takeBreak()) m_ended = true;
}

void BlfReader::findNextObject(const char* reason) {
    const uint64_t start = m_input.position();
    uint64_t lost = m_input.skip(1);
    while (true) {
        const auto bytes = m_input.ahead(blfscan::kBaseHeader);
        if (const auto at = blfscan::findHeader(bytes, 0)) {
            lost += m_input.skip(*at);
            break;
        }
        if (bytes.size() >= blfscan::kBaseHeader) {
            lost += m_input.skip(bytes.size() - (blfscan::kBaseHeader - 1));
            continue;
        }
        lost += m_input.skip(bytes.size());
        if (m_source->takeBreak()) continue;
        m_ended = true;
        break;
    }
    m_damage.add(start, std::string(reason) + ", " + std::to_string(lost) +
                            " bytes of the joined content lost");
}

}  // namespace quill::traceformats
