#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

#include "quill_traceformats/bytes.h"
#include "quill_traceformats/calendar_time.h"

// Fixed parts of BLF files: file header, object headers, container header. All numbers are little
// endian. The bodies of the bus events are in blf_objects.h.
namespace quill::traceformats {

inline constexpr size_t kBlfFileHeaderSize = 144;
inline constexpr size_t kBlfBaseHeaderSize = 16;
inline constexpr size_t kBlfObjectHeaderSize = 32;    // version 1
inline constexpr size_t kBlfObjectHeaderV2Size = 40;  // version 2
inline constexpr size_t kBlfContainerHeaderSize = 32;
inline constexpr size_t kBlfContainerContent = 131072;  // bytes at which writers cut the stream
inline constexpr std::array<uint8_t, 4> kBlfFileSignature{'L', 'O', 'G', 'G'};
inline constexpr std::array<uint8_t, 4> kBlfObjectSignature{'L', 'O', 'B', 'J'};

inline constexpr uint16_t kBlfMethodNone = 0;
inline constexpr uint16_t kBlfMethodZlib = 2;
inline constexpr uint32_t kBlfTimeTenMicroseconds = 1;  // object flags
inline constexpr uint32_t kBlfTimeNanoseconds = 2;
inline constexpr uint32_t kBlfExtendedId = 0x80000000U;
inline constexpr uint32_t kBlfIdMask = 0x1FFFFFFFU;

// Object types by number. Objects of other types are skipped by their size.
enum class BlfType : uint32_t {
    CanMessage = 1,
    CanError = 2,
    CanOverload = 3,
    CanStatistic = 4,
    AppTrigger = 5,
    LogContainer = 10,
    LinMessage = 11,
    LinCrcError = 12,
    LinReceiveError = 14,
    LinSendError = 15,
    LinSlaveTimeout = 16,
    LinSyncError = 18,
    LinSleep = 20,
    LinWakeup = 21,
    FlexRayData = 29,
    FlexRaySync = 30,
    CanDriverError = 31,
    FlexRayCycle = 40,
    FlexRayMessage = 41,
    FlexRayReceive = 50,
    LinMessage2 = 57,
    AppText = 65,
    FlexRayReceiveEx = 66,
    EthernetFrame = 71,
    SystemVariable = 72,
    CanErrorExt = 73,
    CanMessage2 = 86,
    GlobalMarker = 96,
    CanFdMessage = 100,
    CanFdMessage64 = 101,
    CanFdError64 = 104,
    RestorePoints = 115,
    EthernetFrameEx = 120,
    EthernetFrameForwarded = 121,
    DataLostBegin = 125,
    DataLostEnd = 126,
};

// File header. The API number is major x 1000000 + minor x 10000 + build x 100 + patch.
struct BlfHeader {
    uint32_t headerSize = kBlfFileHeaderSize;
    uint32_t apiNumber = 4060600;
    uint8_t application = 0;
    uint8_t compressionLevel = 0;
    uint8_t applicationMajor = 0;
    uint8_t applicationMinor = 0;
    uint64_t fileSize = kBlfFileHeaderSize;
    uint64_t uncompressedSize = kBlfFileHeaderSize;  // 144 + per container 32 + its content
    uint32_t objectCount = 0;                        // without the containers
    uint32_t applicationBuild = 0;
    CalendarTime start;  // of the measurement, local time
    CalendarTime last;   // of the last object
    uint64_t restorePoints = 0;
};

void encodeBlfHeader(const BlfHeader& header, std::span<uint8_t, kBlfFileHeaderSize> out);

// Empty when the bytes are no whole header with its signature, or the header size is under 144.
[[nodiscard]] std::optional<BlfHeader> decodeBlfHeader(std::span<const uint8_t> bytes);

// Headers of an object: the first 16 bytes are common to all, the rest depends on the version.
struct BlfObjectHeader {
    uint16_t headerSize = kBlfObjectHeaderSize;
    uint16_t headerVersion = 1;
    uint32_t objectSize = 0;  // header included, padding not
    uint32_t type = 0;
    uint32_t flags = kBlfTimeNanoseconds;
    uint16_t clientIndex = 0;
    uint16_t objectVersion = 0;
    uint64_t timestamp = 0;  // in the unit of the flags, from the start of measurement

    // Time stamp in nanoseconds; without a unit flag it counts as nanoseconds.
    [[nodiscard]] uint64_t timeNs() const {
        return (flags & kBlfTimeTenMicroseconds) != 0 ? timestamp * 10'000U : timestamp;
    }
};

// Writes the 32 bytes of a version 1 header.
inline void encodeBlfObjectHeader(const BlfObjectHeader& header, uint8_t* out) {
    std::memcpy(out, kBlfObjectSignature.data(), kBlfObjectSignature.size());
    storeU16(out + 4, header.headerSize);
    storeU16(out + 6, header.headerVersion);
    storeU32(out + 8, header.objectSize);
    storeU32(out + 12, header.type);
    storeU32(out + 16, header.flags);
    storeU16(out + 20, header.clientIndex);
    storeU16(out + 22, header.objectVersion);
    storeU64(out + 24, header.timestamp);
}

// Base header alone (containers, or to learn the size). Empty when 16 bytes with the signature are
// not there, or when the sizes contradict each other (object shorter than its header).
[[nodiscard]] std::optional<BlfObjectHeader> decodeBlfBaseHeader(std::span<const uint8_t> bytes);

// Whole header of a version 1 or 2 object. Empty as above, or when the bytes end inside it.
[[nodiscard]] std::optional<BlfObjectHeader> decodeBlfObjectHeader(std::span<const uint8_t> bytes);

// LOG_CONTAINER: 32 bytes of header, then the content.
struct BlfContainerHeader {
    uint32_t objectSize = kBlfContainerHeaderSize;  // header and stored content, no padding
    uint16_t method = kBlfMethodZlib;
    uint32_t uncompressedSize = 0;
};

void encodeBlfContainerHeader(const BlfContainerHeader& header, uint8_t* out);
[[nodiscard]] std::optional<BlfContainerHeader> decodeBlfContainerHeader(
    std::span<const uint8_t> bytes);

// Zero bytes behind an object: the remainder of its size itself, not what is missing to a multiple
// of four. Newer kinds of variable length have none.
[[nodiscard]] constexpr uint32_t blfPadding(uint32_t objectSize) { return objectSize % 4; }

}  // namespace quill::traceformats
