#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace quill::traceformats::test {

using Bytes = std::vector<uint8_t>;

// Whole small traces and their parts, byte by byte, for tests that damage them.

// A BLF file header; header size and date may be wrong on purpose.
[[nodiscard]] Bytes blfHeader(uint32_t headerSize = 144, uint16_t month = 2);
// One CAN_MESSAGE object of 48 bytes; its time is `index` milliseconds, its id 0x100 + index.
[[nodiscard]] Bytes canObject(uint32_t index);
// Any object with a version 1 header and a body.
[[nodiscard]] Bytes blfObject(uint32_t type, const Bytes& body, uint32_t index = 0);
// So many CAN objects, one behind the other.
[[nodiscard]] Bytes canObjects(uint32_t first, uint32_t count);
// A container of content; method 2 compresses. Padding as writers make it.
[[nodiscard]] Bytes blfContainer(std::span<const uint8_t> content, uint16_t method = 2);

void put16(Bytes& out, uint16_t value, bool bigEndian = false);
void put32(Bytes& out, uint32_t value, bool bigEndian = false);
void put64(Bytes& out, uint64_t value);
void append(Bytes& out, const Bytes& more);
void set32(Bytes& bytes, size_t offset, uint32_t value);

// PCAP with Ethernet packets of 60 bytes; packet i has its number in byte 20.
[[nodiscard]] Bytes pcapFile(uint32_t packets, bool bigEndian = false, uint32_t linkType = 1);
// PCAPNG: section, one Ethernet interface, packets as above.
[[nodiscard]] Bytes pcapngBlock(uint32_t type, const Bytes& body, bool bigEndian = false);
[[nodiscard]] Bytes pcapngSection(bool bigEndian = false);
[[nodiscard]] Bytes pcapngInterface(uint16_t linkType, const Bytes& options = {},
                                    bool bigEndian = false);
[[nodiscard]] Bytes pcapngPacket(uint32_t interface, uint64_t time, const Bytes& data,
                                 bool bigEndian = false);
[[nodiscard]] Bytes ethernetPacket(uint32_t number);

}  // namespace quill::traceformats::test
