#include "quill_traceformats/blf_layout.h"

#include <algorithm>

#include "quill_traceformats/bytes.h"

namespace quill::traceformats {

namespace {

constexpr size_t kCalendarSize = 16;

void storeCalendar(const CalendarTime& time, uint8_t* out) {
    const uint16_t fields[] = {time.year, time.month,  time.dayOfWeek, time.day,
                               time.hour, time.minute, time.second,    time.millisecond};
    for (size_t i = 0; i < std::size(fields); ++i) storeU16(out + 2 * i, fields[i]);
}

CalendarTime loadCalendar(const uint8_t* from) {
    return {loadU16(from),     loadU16(from + 2),  loadU16(from + 4),  loadU16(from + 6),
            loadU16(from + 8), loadU16(from + 10), loadU16(from + 12), loadU16(from + 14)};
}

bool hasSignature(std::span<const uint8_t> bytes, const std::array<uint8_t, 4>& signature) {
    return bytes.size() >= signature.size() &&
           std::equal(signature.begin(), signature.end(), bytes.begin());
}

}  // namespace

void encodeBlfHeader(const BlfHeader& header, std::span<uint8_t, kBlfFileHeaderSize> out) {
    std::fill(out.begin(), out.end(), uint8_t{0});
    uint8_t* to = out.data();
    std::copy(kBlfFileSignature.begin(), kBlfFileSignature.end(), to);
    storeU32(to + 4, header.headerSize);
    storeU32(to + 8, header.apiNumber);
    to[12] = header.application;
    to[13] = header.compressionLevel;
    to[14] = header.applicationMajor;
    to[15] = header.applicationMinor;
    storeU64(to + 16, header.fileSize);
    storeU64(to + 24, header.uncompressedSize);
    storeU32(to + 32, header.objectCount);
    storeU32(to + 36, header.applicationBuild);
    storeCalendar(header.start, to + 40);
    storeCalendar(header.last, to + 40 + kCalendarSize);
    storeU64(to + 72, header.restorePoints);
}

std::optional<BlfHeader> decodeBlfHeader(std::span<const uint8_t> bytes) {
    if (bytes.size() < kBlfFileHeaderSize || !hasSignature(bytes, kBlfFileSignature)) return {};
    const uint8_t* from = bytes.data();
    BlfHeader header;
    header.headerSize = loadU32(from + 4);
    header.apiNumber = loadU32(from + 8);
    header.application = from[12];
    header.compressionLevel = from[13];
    header.applicationMajor = from[14];
    header.applicationMinor = from[15];
    header.fileSize = loadU64(from + 16);
    header.uncompressedSize = loadU64(from + 24);
    header.objectCount = loadU32(from + 32);
    header.applicationBuild = loadU32(from + 36);
    header.start = loadCalendar(from + 40);
    header.last = loadCalendar(from + 40 + kCalendarSize);
    header.restorePoints = loadU64(from + 72);
    if (header.headerSize < kBlfFileHeaderSize) return {};
    return header;
}

std::optional<BlfObjectHeader> decodeBlfBaseHeader(std::span<const uint8_t> bytes) {
    if (bytes.size() < kBlfBaseHeaderSize || !hasSignature(bytes, kBlfObjectSignature)) return {};
    const uint8_t* from = bytes.data();
    BlfObjectHeader header;
    header.headerSize = loadU16(from + 4);
    header.headerVersion = loadU16(from + 6);
    header.objectSize = loadU32(from + 8);
    header.type = loadU32(from + 12);
    header.flags = 0;
    if (header.headerSize < kBlfBaseHeaderSize || header.objectSize < header.headerSize) return {};
    return header;
}

std::optional<BlfObjectHeader> decodeBlfObjectHeader(std::span<const uint8_t> bytes) {
    auto header = decodeBlfBaseHeader(bytes);
    if (!header || header->headerSize < kBlfObjectHeaderSize ||
        bytes.size() < kBlfObjectHeaderSize) {
        return {};
    }
    const uint8_t* from = bytes.data();
    header->flags = loadU32(from + 16);
    if (header->headerVersion == 1) header->clientIndex = loadU16(from + 20);
    header->objectVersion = loadU16(from + 22);
    header->timestamp = loadU64(from + 24);
    return header;
}

void encodeBlfContainerHeader(const BlfContainerHeader& header, uint8_t* out) {
    BlfObjectHeader base;
    base.headerSize = kBlfBaseHeaderSize;
    base.objectSize = header.objectSize;
    base.type = static_cast<uint32_t>(BlfType::LogContainer);
    encodeBlfObjectHeader(base, out);
    // What follows the base header is the container's own.
    std::fill(out + kBlfBaseHeaderSize, out + kBlfContainerHeaderSize, uint8_t{0});
    storeU16(out + 16, header.method);
    storeU32(out + 24, header.uncompressedSize);
}

std::optional<BlfContainerHeader> decodeBlfContainerHeader(std::span<const uint8_t> bytes) {
    const auto base = decodeBlfBaseHeader(bytes);
    if (!base || base->type != static_cast<uint32_t>(BlfType::LogContainer) ||
        base->objectSize < kBlfContainerHeaderSize || bytes.size() < kBlfContainerHeaderSize) {
        return {};
    }
    BlfContainerHeader header;
    header.objectSize = base->objectSize;
    header.method = loadU16(bytes.data() + 16);
    header.uncompressedSize = loadU32(bytes.data() + 24);
    return header;
}

}  // namespace quill::traceformats
