#include "TraceFiles.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "quill_traceformats/BlfContainerPacker.h"
#include "quill_traceformats/BlfFileWriter.h"
#include "quill_traceformats/asc_layout.h"
#include "quill_traceformats/blf_objects.h"
#include "quill_traceformats/bytes.h"

namespace quill::bench {
namespace {
namespace tf = quill::traceformats;

constexpr uint64_t kStartNs = 1'700'000'000'000'000'000U;

// Frames as a bus carries them: some identifiers in turn, whose payloads change slowly.
class FrameMaker {
public:
    explicit FrameMaker(bool fd) : m_fd(fd) {}
    const tf::TraceFrame& at(uint64_t index) {
        m_frame.timeNs = index * 100'000;
        m_frame.kind = tf::FrameKind::Can;
        m_frame.channel = static_cast<uint16_t>(1 + index % 4);
        m_frame.id = static_cast<uint32_t>(0x100 + index % 97);
        m_frame.flags = m_fd ? tf::kCanFd | tf::kCanBitRateSwitch : 0;
        m_frame.dlc = m_fd ? 15 : 8;
        for (size_t i = 0; i < m_data.size(); ++i) {
            // A message counter in front, then signals that change ever more slowly.
            m_data[i] = static_cast<uint8_t>(i == 0 ? index / 97
                                                    : m_frame.id * 7 + i + (index >> (8 + i % 32)));
        }
        m_frame.data = std::span<const uint8_t>(m_data).first(m_fd ? 64 : 8);
        return m_frame;
    }

private:
    bool m_fd;
    std::array<uint8_t, 64> m_data{};
    tf::TraceFrame m_frame;
};

[[noreturn]] void fail(const std::string& path) {
    std::fprintf(stderr, "cannot write %s\n", path.c_str());
    std::exit(1);
}

void makeBlf(const std::string& path, bool fd, uint64_t frames, int level) {
    tf::BlfFileWriter file;
    tf::BlfContainerPacker packer(level);
    tf::BlfHeader header;
    header.start = header.last = tf::calendarFromEpoch(kStartNs, 0);
    std::string reason;
    if (!file.create(path, header, reason)) fail(path);
    FrameMaker maker(fd);
    std::vector<uint8_t> content;
    std::vector<uint8_t> packed;
    for (uint64_t i = 0; i < frames; ++i) {
        const tf::TraceFrame& frame = maker.at(i);
        const size_t at = content.size();
        content.resize(at + tf::blfObjectSize(frame));
        tf::encodeBlfFrame(frame, content.data() + at);
        if (content.size() < tf::kBlfContainerContent && i + 1 < frames) continue;
        const size_t size = packer.pack(content, packed);
        if (!file.append({packed.data(), size}, {content.size(), 1, header.start, header.start})) {
            fail(path);
        }
        content.clear();
    }
    if (!file.close()) fail(path);
}

void makeAsc(const std::string& path, bool fd, uint64_t frames) {
    std::ofstream file(path, std::ios::binary);
    file << tf::ascHeader(tf::calendarFromEpoch(kStartNs, 0));
    FrameMaker maker(fd);
    std::vector<char> line;
    for (uint64_t i = 0; i < frames; ++i) {
        const tf::TraceFrame& frame = maker.at(i);
        line.resize(tf::ascLineRoom(frame));
        file.write(line.data(), tf::writeAscLine(frame, line.data()) - line.data());
    }
    file << tf::kAscEnd;
    if (!file) fail(path);
}

void put32(std::vector<uint8_t>& out, uint32_t value) {
    out.resize(out.size() + 4);
    tf::storeU32(out.data() + out.size() - 4, value);
}

std::vector<uint8_t> socketCan(const tf::TraceFrame& frame) {
    std::vector<uint8_t> packet(8 + frame.data.size());
    tf::storeU32(packet.data(), tf::swapBytes(frame.id));
    packet[4] = static_cast<uint8_t>(frame.data.size());
    std::copy(frame.data.begin(), frame.data.end(), packet.begin() + 8);
    return packet;
}

void makePcap(const std::string& path, bool next, uint64_t frames) {
    std::ofstream file(path, std::ios::binary);
    std::vector<uint8_t> out;
    if (next) {
        for (const uint32_t word : {0x0A0D0D0AU, 28U, 0x1A2B3C4DU, 1U, ~0U, ~0U, 28U}) {
            put32(out, word);
        }
        for (const uint32_t word : {1U, 20U, 227U, 65535U, 20U}) put32(out, word);
    } else {
        for (const uint32_t word : {0xA1B2C3D4U, 0x00040002U, 0U, 0U, 65535U, 227U}) {
            put32(out, word);
        }
    }
    FrameMaker maker(false);
    for (uint64_t i = 0; i < frames; ++i) {
        const std::vector<uint8_t> packet = socketCan(maker.at(i));
        const auto size = static_cast<uint32_t>(packet.size());
        if (next) {
            for (const uint32_t word :
                 {6U, 32 + size, 0U, 0U, static_cast<uint32_t>(i), size, size}) {
                put32(out, word);
            }
        } else {
            for (const uint32_t word : {static_cast<uint32_t>(1'700'000'000 + i / 10'000),
                                        static_cast<uint32_t>(i % 10'000 * 100), size, size}) {
                put32(out, word);
            }
        }
        out.insert(out.end(), packet.begin(), packet.end());
        if (next) put32(out, 32 + size);
        if (out.size() < 1U << 20U && i + 1 < frames) continue;
        file.write(reinterpret_cast<const char*>(out.data()),
                   static_cast<std::streamsize>(out.size()));
        out.clear();
    }
    if (!file) fail(path);
}
}  // namespace

TraceFiles makeTraceFiles(const std::filesystem::path& folder, uint64_t canFrames,
                          uint64_t fdFrames) {
    std::filesystem::create_directories(folder);
    TraceFiles files{folder, canFrames, fdFrames};
    makeBlf(files.path("can.blf"), false, canFrames, 6);
    makeBlf(files.path("fd.blf"), true, fdFrames, 6);
    makeAsc(files.path("can.asc"), false, canFrames);
    makeAsc(files.path("fd.asc"), true, fdFrames);
    makePcap(files.path("can.pcap"), false, canFrames);
    makePcap(files.path("can.pcapng"), true, canFrames);
    return files;
}

void makeLargeBlf(const std::string& path, uint64_t frames) { makeBlf(path, false, frames, 0); }

}  // namespace quill::bench
