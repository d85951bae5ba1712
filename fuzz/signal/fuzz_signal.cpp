// Any layout over any payload: the codec against the literal byte loops. The input is byte order,
// start bit, bit length and raw value (1, 4, 4 and 8 bytes), then the payload.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <vector>

#include "signal/PhysicalCodec.h"
#include "signal/SignalCodec.h"
#include "unit/signal/LiteralCodec.h"

namespace {

constexpr size_t kHeaderSize = 17;

void require(bool condition, const char* text) {
    if (condition) return;
    std::fprintf(stderr, "fuzz_signal: %s\n", text);
    std::abort();
}

struct Input {
    bool bigEndian = false;
    uint32_t start = 0;
    uint32_t length = 0;
    uint64_t raw = 0;
    literal::Bytes payload;
};

Input makeInput(const uint8_t* data, size_t size) {
    Input input;
    input.bigEndian = (data[0] & 1U) != 0;
    std::memcpy(&input.start, data + 1, 4);
    std::memcpy(&input.length, data + 5, 4);
    std::memcpy(&input.raw, data + 9, 8);
    // Most random numbers lie far outside; the other bits of the first byte pull them near.
    if ((data[0] & 2U) != 0) input.start %= 600;
    if ((data[0] & 4U) != 0) input.length %= 66;
    input.payload.assign(data + kHeaderSize, data + size);
    return input;
}

template <class Call>
std::optional<bool> resultOf(Call call) {
    try {
        return call();
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
}

void compareWriters(const Input& in) {
    literal::Bytes ours = in.payload;
    literal::Bytes theirs = in.payload;
    const auto result = resultOf([&] {
        return Model::codec::rawValueToByte(ours, in.raw, in.bigEndian, in.start, in.length);
    });
    const auto expected =
        resultOf([&] { return literal::write(theirs, in.raw, in.bigEndian, in.start, in.length); });
    require(result == expected, "results of the writers differ");
    require(ours == theirs, "payloads of the writers differ");
}

void comparePhysical(const Input& in) {
    const Model::codec::SignalLayout bits{in.start, in.length, in.bigEndian};
    const bool fits = literal::fits(in.payload.size(), in.bigEndian, in.start, in.length);
    require(Model::codec::fits(bits, in.payload.size()) == fits, "fits differs");
    literal::Bytes ours = in.payload;
    literal::Bytes theirs = in.payload;
    if (fits) literal::writeBits(theirs, in.raw, in.bigEndian, in.start, in.length);
    require(Model::codec::writeUnsignedField(ours, bits, in.raw) == fits, "exact writer's result");
    require(ours == theirs, "exact writer's payload");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < kHeaderSize) return 0;
    const Input in = makeInput(data, size);
    require(Model::codec::parseSignalValue(in.payload, in.bigEndian, in.start, in.length) ==
                literal::parse(in.payload, in.bigEndian, in.start, in.length),
            "raw values differ");
    compareWriters(in);
    comparePhysical(in);
    return 0;
}
