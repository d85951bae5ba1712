#include "BlfSink.h"

#include "quill_traceformats/BlfContainerPacker.h"
#include "quill_traceformats/blf_objects.h"

namespace rv {

namespace tf = quill::traceformats;

namespace {

void packInto(tf::BlfContainerPacker& packer, Block& block) {
    block.packedSize = packer.pack({block.content.data(), block.used}, block.packed);
}

}  // namespace

bool BlfSink::create(const std::string& utf8Path, uint64_t startNs, std::string& reason) {
    setStart(startNs);
    tf::BlfHeader header;
    header.compressionLevel = static_cast<uint8_t>(m_compressionLevel);
    header.start = tf::calendarFromEpoch(m_startNs, m_offsetSeconds);
    header.last = header.start;
    return m_file.create(utf8Path, header, reason);
}

void BlfSink::setStart(uint64_t startNs) {
    m_startNs = startNs;
    m_offsetSeconds = tf::localOffsetSeconds(startNs);
}

size_t BlfSink::roomFor(const tf::TraceFrame& frame) const { return tf::blfObjectSize(frame); }

size_t BlfSink::encode(const tf::TraceFrame& frame, std::span<uint8_t> out) const {
    tf::encodeBlfFrame(frame, out.data());
    return out.size();  // the room of an object is its size
}

std::vector<BlockPipeline::Pack> BlfSink::makePackers() const {
    std::vector<BlockPipeline::Pack> packers;
    for (int i = 0; i < m_threads; ++i) {
        auto packer = std::make_shared<tf::BlfContainerPacker>(m_compressionLevel);
        packers.emplace_back([packer](Block& block) { packInto(*packer, block); });
    }
    return packers;
}

void BlfSink::packPlain(Block& block) const {
    tf::BlfContainerPacker packer(0);
    packInto(packer, block);
}

bool BlfSink::write(const Block& block) {
    if (block.startNs != m_startNs) setStart(block.startNs);
    tf::BlfFileWriter::ContainerFacts facts;
    facts.contentSize = block.used;
    facts.objects = block.objects;
    facts.start = tf::calendarFromEpoch(m_startNs, m_offsetSeconds);
    facts.last = tf::calendarFromEpoch(m_startNs + block.lastNs, m_offsetSeconds);
    return m_file.append({block.packed.data(), block.packedSize}, facts);
}

}  // namespace rv
