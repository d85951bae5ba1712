#include "TraceBuilder.h"

#include <zlib.h>

#include "quill_traceformats/bytes.h"

namespace quill::traceformats::test {

void put16(Bytes& out, uint16_t value, bool bigEndian) {
    if (bigEndian) value = swapBytes(value);
    out.push_back(static_cast<uint8_t>(value));
    out.push_back(static_cast<uint8_t>(value >> 8U));
}

void put32(Bytes& out, uint32_t value, bool bigEndian) {
    if (bigEndian) value = swapBytes(value);
    for (unsigned i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(value >> 8U * i));
}

void put64(Bytes& out, uint64_t value) {
    put32(out, static_cast<uint32_t>(value));
    put32(out, static_cast<uint32_t>(value >> 32U));
}

void append(Bytes& out, const Bytes& more) { out.insert(out.end(), more.begin(), more.end()); }

void set32(Bytes& bytes, size_t offset, uint32_t value) { storeU32(bytes.data() + offset, value); }

Bytes blfHeader(uint32_t headerSize, uint16_t month) {
    Bytes out = {'L', 'O', 'G', 'G'};
    put32(out, headerSize);
    put32(out, 4060600);
    put32(out, 0);
    put64(out, 144);
    put64(out, 144);
    put32(out, 0);
    put32(out, 0);
    for (const uint16_t part : {uint16_t{2024}, month, uint16_t{4}, uint16_t{29}, uint16_t{12},
                                uint16_t{34}, uint16_t{56}, uint16_t{789}}) {
        put16(out, part);
    }
    out.resize(144);
    return out;
}

Bytes blfObject(uint32_t type, const Bytes& body, uint32_t index) {
    Bytes out = {'L', 'O', 'B', 'J'};
    put16(out, 32);
    put16(out, 1);
    put32(out, static_cast<uint32_t>(32 + body.size()));
    put32(out, type);
    put32(out, 2);
    put32(out, 0);
    put64(out, uint64_t{index} * 1'000'000U);
    append(out, body);
    return out;
}

Bytes canObject(uint32_t index) {
    Bytes body;
    put16(body, 1);
    body.push_back(0);
    body.push_back(8);
    put32(body, 0x100 + index);
    for (unsigned i = 0; i < 8; ++i) body.push_back(static_cast<uint8_t>(index + i));
    return blfObject(1, body, index);
}

Bytes canObjects(uint32_t first, uint32_t count) {
    Bytes out;
    for (uint32_t i = first; i < first + count; ++i) append(out, canObject(i));
    return out;
}

Bytes blfContainer(std::span<const uint8_t> content, uint16_t method) {
    Bytes packed(content.begin(), content.end());
    if (method == 2) {
        uLongf size = compressBound(static_cast<uLong>(content.size()));
        packed.resize(size);
        compress(packed.data(), &size, content.data(), static_cast<uLong>(content.size()));
        packed.resize(size);
    }
    Bytes out = {'L', 'O', 'B', 'J'};
    put16(out, 16);
    put16(out, 1);
    put32(out, static_cast<uint32_t>(32 + packed.size()));
    put32(out, 10);
    put16(out, method);
    out.resize(24);
    put32(out, static_cast<uint32_t>(content.size()));
    put32(out, 0);
    append(out, packed);
    out.resize(out.size() + packed.size() % 4);
    return out;
}

Bytes ethernetPacket(uint32_t number) {
    Bytes packet(60);
    packet[20] = static_cast<uint8_t>(number);
    return packet;
}

Bytes pcapFile(uint32_t packets, bool bigEndian, uint32_t linkType) {
    Bytes out;
    put32(out, 0xA1B2C3D4, bigEndian);
    put16(out, 2, bigEndian);
    put16(out, 4, bigEndian);
    for (const uint32_t word : {0U, 0U, 65535U, linkType}) put32(out, word, bigEndian);
    for (uint32_t i = 0; i < packets; ++i) {
        const Bytes packet = ethernetPacket(i);
        for (const uint32_t word : {1'700'000'000U + i, 500U, 60U, 60U}) {
            put32(out, word, bigEndian);
        }
        append(out, packet);
    }
    return out;
}

Bytes pcapngBlock(uint32_t type, const Bytes& body, bool bigEndian) {
    Bytes out;
    const auto padded = static_cast<uint32_t>((body.size() + 3) / 4 * 4);
    put32(out, type, bigEndian);
    put32(out, padded + 12, bigEndian);
    append(out, body);
    out.resize(8 + padded);
    put32(out, padded + 12, bigEndian);
    return out;
}

Bytes pcapngSection(bool bigEndian) {
    Bytes body;
    put32(body, 0x1A2B3C4D, bigEndian);
    put16(body, 1, bigEndian);
    put16(body, 0, bigEndian);
    put32(body, 0xFFFFFFFF);
    put32(body, 0xFFFFFFFF);
    return pcapngBlock(0x0A0D0D0A, body, bigEndian);
}

Bytes pcapngInterface(uint16_t linkType, const Bytes& options, bool bigEndian) {
    Bytes body;
    put16(body, linkType, bigEndian);
    put16(body, 0, bigEndian);
    put32(body, 65535, bigEndian);
    append(body, options);
    return pcapngBlock(1, body, bigEndian);
}

Bytes pcapngPacket(uint32_t interface, uint64_t time, const Bytes& data, bool bigEndian) {
    Bytes body;
    const auto size = static_cast<uint32_t>(data.size());
    for (const uint32_t word :
         {interface, static_cast<uint32_t>(time >> 32U), static_cast<uint32_t>(time), size, size}) {
        put32(body, word, bigEndian);
    }
    append(body, data);
    return pcapngBlock(6, body, bigEndian);
}

}  // namespace quill::traceformats::test
