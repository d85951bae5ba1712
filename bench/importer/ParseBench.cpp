#include <fmt/format.h>
#include <libdeflate.h>
#include <pcap/pcap.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

#include "Benches.h"
#include "Rounds.h"
#include "TableRow.h"
#include "core/playback/importer/AscLineFrameParser.h"
#include "core/playback/importer/BlfObjectFrameParser.h"
#include "core/playback/importer/PcapPacketParser.h"
#include "core/playback/importer/PcapngPacketParser.h"
#include "core/playback/importer/TraceAscFileParser.h"
#include "core/playback/importer/TraceBlfFileParser.h"
#include "core/playback/importer/TracePcapFileParser.h"
#include "core/playback/importer/TracePcapngFileParser.h"
#include "quill_os/paths.h"
#include "quill_traceformats/bytes.h"

namespace quill::bench {
namespace {
namespace tf = quill::traceformats;

// Reads a file to its end on this thread: units, then frames, nothing stored.
template <class FrameParser>
double parseAll(playback::TraceFileParser& file) {
    FrameParser parser;
    const auto header = file.parseHeader();
    if (!header) return 0;
    parser.setHeader(*header);
    tf::UnitBatch units;
    tracestorage::FrameBatch frames;
    uint64_t count = 0;
    while (!file.atEnd()) {
        units.clear();
        frames.clear();
        file.parseNextUnits(units);
        parser.parseUnits(units, frames);
        count += frames.size();
    }
    return static_cast<double>(count);
}

double parseBlf(const std::string& path) {
    playback::TraceBlfFileParser file(os::wideFromUtf8(path), 0);
    return parseAll<playback::BlfObjectFrameParser>(file);
}

double parseAsc(const std::string& path) {
    playback::TraceAscFileParser file(os::wideFromUtf8(path), 0);
    return parseAll<playback::AscLineFrameParser>(file);
}

double parsePcap(const std::string& path) {
    playback::TracePcapFileParser file(os::wideFromUtf8(path), 0);
    return parseAll<playback::PcapPacketParser>(file);
}

double parsePcapng(const std::string& path) {
    playback::TracePcapngFileParser file(os::wideFromUtf8(path));
    return parseAll<playback::PcapngPacketParser>(file);
}

// The least that any BLF reader does: inflate every container and step from object to object.
double walkBlf(const std::string& path) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                         std::fclose);
    std::vector<uint8_t> packed(1U << 20U);
    std::vector<uint8_t> content(1U << 20U);
    const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> unpacker(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    (void)std::fread(packed.data(), 1, tf::kBlfFileHeaderSize, file.get());
    uint64_t objects = 0;
    uint64_t sum = 0;
    size_t kept = 0;
    while (std::fread(packed.data(), 1, 32, file.get()) == 32) {
        const uint32_t size = tf::loadU32(packed.data() + 8);
        const uint16_t method = tf::loadU16(packed.data() + 16);
        const size_t body = size - 32 + size % 4;
        if (packed.size() < body) packed.resize(body);
        if (std::fread(packed.data(), 1, body, file.get()) != body) break;
        size_t made = 0;
        if (method == 2) {
            if (libdeflate_zlib_decompress(unpacker.get(), packed.data(), size - 32,
                                           content.data() + kept, content.size() - kept,
                                           &made) != LIBDEFLATE_SUCCESS) {
                break;
            }
        } else {
            made = size - 32;
            std::copy_n(packed.data(), made, content.data() + kept);
        }
        const size_t end = kept + made;
        size_t at = 0;
        while (at + 16 <= end) {
            const uint32_t length = tf::loadU32(content.data() + at + 8);
            if (at + length > end) break;
            sum += tf::loadU32(content.data() + at + 12);
            at += length;
            ++objects;
        }
        kept = end - at;
        std::copy(content.data() + at, content.data() + end, content.data());
    }
    return static_cast<double>(sum == 0 ? 0 : objects);
}

double walkPcap(const std::string& path) {
    char error[PCAP_ERRBUF_SIZE];
    pcap_t* file = pcap_open_offline(path.c_str(), error);
    if (file == nullptr) return 0;
    pcap_pkthdr* head = nullptr;
    const u_char* data = nullptr;
    uint64_t packets = 0;
    while (pcap_next_ex(file, &head, &data) == 1) ++packets;
    pcap_close(file);
    return static_cast<double>(packets);
}

// Frames per second of python-can's reader; 0 where it is not installed.
double pythonRate(const char* reader, const std::string& path) {
    const std::string script = fmt::format(
        "import can,time\nt=time.perf_counter()\nn=sum(1 for _ in can.{}('{}'))\n"
        "print(n/(time.perf_counter()-t))\n",
        reader, path);
    const std::string command = fmt::format(
        "/usr/bin/env python3 -c \"{}\" 2>/dev/null || /usr/bin/python3 -c \"{}\" 2>/dev/null",
        script, script);
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    double rate = 0;
    if (!pipe || std::fscanf(pipe.get(), "%lf", &rate) != 1) return 0;
    return rate;
}

// Answers the peer's rate for the table.
double againstPython(const char* reader, const std::string& path, double rate, double target) {
    const double python = pythonRate(reader, path);
    if (python == 0) {
        fmt::print("  {} is not installed here\n", reader);
        return ::bench::kNone;
    }
    fmt::print("  {:<34} {:>21.0f} k/s\n", reader, python / 1e3);
    printRatio(fmt::format("ours / {}", reader), rate, python, target);
    return python;
}
}  // namespace

void runParseBenches(const TraceFiles& files, int rounds) {
    for (const char* name : {"can.blf", "fd.blf"}) {
        const std::string path = files.path(name);
        const auto rates = compare(fmt::format("BLF {}: parse alone", name),
                                   {{"ours: objects to frames", [&] { return parseBlf(path); }},
                                    {"floor: inflate and walk", [&] { return walkBlf(path); }}},
                                   rounds);
        printRatio("ours / floor", rates[0], rates[1], 0.40);
        const double peer = againstPython("BLFReader", path, rates[0], 10);
        ::bench::printRow({.what = fmt::format("BLF parsing, {}", name).c_str(),
                           .unit = "frames/s",
                           .ours = rates[0],
                           .floor = rates[1],
                           .peer = peer,
                           .peerName = "python-can",
                           .wanted = "0.4 x floor, 10 x peer"});
    }
    for (const char* name : {"can.asc", "fd.asc"}) {
        const std::string path = files.path(name);
        const auto rates =
            compare(fmt::format("ASC {}: parse alone", name),
                    {{"ours: lines to frames", [&] { return parseAsc(path); }}}, rounds);
        const double peer = againstPython("ASCReader", path, rates[0], 15);
        ::bench::printRow({.what = fmt::format("ASC parsing, {}", name).c_str(),
                           .unit = "lines/s",
                           .ours = rates[0],
                           .peer = peer,
                           .peerName = "python-can",
                           .wanted = "15 x peer"});
    }
    const std::string pcap = files.path("can.pcap");
    const std::string next = files.path("can.pcapng");
    const auto rates = compare("PCAP and PCAPNG: parse alone",
                               {{"ours: PCAP to frames", [&] { return parsePcap(pcap); }},
                                {"packet library's loop, PCAP", [&] { return walkPcap(pcap); }},
                                {"ours: PCAPNG to frames", [&] { return parsePcapng(next); }},
                                {"packet library's loop, PCAPNG", [&] { return walkPcap(next); }}},
                               rounds);
    printRatio("ours / library, PCAP", rates[0], rates[1], 0.60);
    printRatio("ours / library, PCAPNG", rates[2], rates[3], 0.60);
    for (const size_t side : {0U, 2U}) {
        ::bench::printRow({.what = side == 0 ? "PCAP parsing" : "PCAPNG parsing",
                           .unit = "packets/s",
                           .ours = rates[side],
                           .peer = rates[side + 1],
                           .peerName = "libpcap's loop",
                           .wanted = "0.6 x peer"});
    }
}

}  // namespace quill::bench
