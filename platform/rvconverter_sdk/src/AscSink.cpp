#include "AscSink.h"

#include <span>
#include <string_view>

#include "quill_traceformats/asc_layout.h"

namespace rv {

namespace tf = quill::traceformats;

namespace {

std::span<const uint8_t> bytesOfText(std::string_view text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

std::string headerAt(uint64_t startNs) {
    return tf::ascHeader(tf::calendarFromEpoch(startNs, tf::localOffsetSeconds(startNs)));
}

}  // namespace

bool AscSink::create(const std::string& utf8Path, uint64_t startNs, std::string& reason) {
    m_startNs = startNs;
    return m_file.create(utf8Path, bytesOfText(headerAt(startNs)), reason);
}

size_t AscSink::roomFor(const tf::TraceFrame& frame) const { return tf::ascLineRoom(frame); }

size_t AscSink::encode(const tf::TraceFrame& frame, std::span<uint8_t> out) const {
    char* begin = reinterpret_cast<char*>(out.data());
    return static_cast<size_t>(tf::writeAscLine(frame, begin) - begin);
}

bool AscSink::write(const Block& block) {
    if (block.startNs != m_startNs) {
        // The header has the same length for every date.
        if (!m_file.rewriteStart(bytesOfText(headerAt(block.startNs)))) return false;
        m_startNs = block.startNs;
    }
    return m_file.append({block.content.data(), block.used});
}

bool AscSink::complete() {
    if (!m_file.isOpen()) return true;
    const bool ended = m_file.append(bytesOfText(tf::kAscEnd));
    return m_file.close() && ended;
}

}  // namespace rv
