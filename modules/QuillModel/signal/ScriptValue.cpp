#include "signal/ScriptValue.h"

#include <array>
#include <charconv>
#include <ostream>

#include "signal/SignalCodec.h"

namespace Model::codec {

uint64_t rawFromScriptValue(double value) noexcept {
    constexpr double kTwoTo63 = 9223372036854775808.0;
    if (value >= -kTwoTo63 && value < kTwoTo63) {
        return static_cast<uint64_t>(static_cast<int64_t>(value));
    }
    if (value >= kTwoTo63 && value < 2 * kTwoTo63) return static_cast<uint64_t>(value);
    return uint64_t{1} << 63;
}

std::string payloadText(std::span<const uint8_t> payload) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "Data: [";
    text.reserve(text.size() + 6 * payload.size() + 1);
    for (size_t i = 0; i < payload.size(); ++i) {
        text += i == 0 ? "0X" : ", 0X";
        if (payload[i] > 0xF) text += kDigits[payload[i] >> 4];
        text += kDigits[payload[i] & 0xF];
    }
    return text += ']';
}

std::string beforeText(double value, std::span<const uint8_t> payload) {
    std::array<char, 32> digits{};
    // The form of a stream's default format, whatever locale the script has set.
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                   std::chars_format::general, 6);
    return "rawValueToByte before:" + std::string(digits.data(), end.ptr) + payloadText(payload);
}

std::string afterText(std::optional<bool> result, std::span<const uint8_t> payload) {
    std::string text = "rawValueToByte after:";
    if (result) text += *result ? '1' : '0';
    return text += payloadText(payload);
}

bool setSignalFromScriptValue(std::span<uint8_t> payload, const SignalLayout& layout, double value,
                              ResultShown resultShown, std::ostream& out) {
    out << beforeText(value, payload) << '\n';
    const bool written = rawValueToByte(payload, rawFromScriptValue(value), layout.isBigEndian,
                                        layout.startBit, layout.bitLength);
    const auto shown = resultShown == ResultShown::Yes ? std::optional(written) : std::nullopt;
    out << afterText(shown, payload) << '\n';
    return written;
}

}  // namespace Model::codec
