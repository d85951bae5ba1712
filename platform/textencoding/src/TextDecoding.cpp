#include "quill_textencoding/TextDecoding.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "quill_os/text.h"

namespace quill::text {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

uint8_t byteAt(std::string_view bytes, size_t i) { return static_cast<uint8_t>(bytes[i]); }
bool between(uint8_t value, uint8_t low, uint8_t high) { return value >= low && value <= high; }

// First byte from i on that is not ASCII.
size_t skipAscii(std::string_view bytes, size_t i) {
    constexpr uint64_t kHighBits = 0x8080808080808080U;
    for (; i + sizeof(uint64_t) <= bytes.size(); i += sizeof(uint64_t)) {
        uint64_t eight = 0;
        std::memcpy(&eight, bytes.data() + i, sizeof eight);
        if ((eight & kHighBits) != 0) break;
    }
    while (i < bytes.size() && byteAt(bytes, i) < 0x80) ++i;
    return i;
}

// Length of the UTF-8 character at i, which is not ASCII; 0 when there is none.
size_t utf8Length(std::string_view bytes, size_t i) {
    const uint8_t lead = byteAt(bytes, i);
    const size_t length = between(lead, 0xC2, 0xDF)   ? 2
                          : between(lead, 0xE0, 0xEF) ? 3
                          : between(lead, 0xF0, 0xF4) ? 4
                                                      : 0;
    if (length == 0 || i + length > bytes.size()) return 0;
    const uint8_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const uint8_t high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (!between(byteAt(bytes, i + 1), low, high)) return 0;
    for (size_t k = 2; k < length; ++k) {
        if (!between(byteAt(bytes, i + k), 0x80, 0xBF)) return 0;
    }
    return length;
}

void appendUtf8(std::string& out, uint32_t code) {
    const auto tail = [&](unsigned shift) {
        out += static_cast<char>(0x80U | ((code >> shift) & 0x3FU));
    };
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0U | (code >> 6U));
        tail(0);
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0U | (code >> 12U));
        tail(6), tail(0);
    } else {
        out += static_cast<char>(0xF0U | (code >> 18U));
        tail(12), tail(6), tail(0);
    }
}

// Code points of 0x80 to 0x9F in Windows-1252; the five unused ones are control characters there.
constexpr std::array<uint16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void appendWindows1252(std::string& out, uint8_t byte) {
    appendUtf8(out, between(byte, 0x80, 0x9F) ? kWindows1252[byte - 0x80U] : byte);
}

std::string fromWindows1252(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 8);
    for (size_t i = 0; i < bytes.size(); ++i) {
        const size_t next = skipAscii(bytes, i);
        out.append(bytes, i, next - i);
        i = next;
        if (i < bytes.size()) appendWindows1252(out, byteAt(bytes, i));
    }
    return out;
}

// UTF-8 with some bytes damaged or from another code page.
std::string fromDamagedUtf8(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size() + 64);
    for (size_t i = 0; i < bytes.size();) {
        const size_t next = skipAscii(bytes, i);
        out.append(bytes, i, next - i);
        i = next;
        if (i == bytes.size()) break;
        const size_t length = utf8Length(bytes, i);
        out.append(length > 0 ? bytes.substr(i, length) : kReplacement);
        i += length > 0 ? length : 1;
    }
    return out;
}

std::string fromUtf16(std::string_view bytes, bool bigEndian) {
    const auto unitAt = [&](size_t i) -> uint32_t {
        const uint32_t first = byteAt(bytes, i);
        const uint32_t second = byteAt(bytes, i + 1);
        return bigEndian ? (first << 8U) | second : (second << 8U) | first;
    };
    std::string out;
    out.reserve(bytes.size() / 2);
    for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
        uint32_t code = unitAt(i);
        const bool paired = code >= 0xD800 && code < 0xDC00 && i + 3 < bytes.size() &&
                            unitAt(i + 2) >= 0xDC00 && unitAt(i + 2) < 0xE000;
        if (paired) {
            code = 0x10000 + ((code - 0xD800) << 10U) + (unitAt(i + 2) - 0xDC00);
            i += 2;
        } else if (code >= 0xD800 && code < 0xE000) {
            code = 0xFFFD;
        }
        appendUtf8(out, code);
    }
    return out;
}

struct HighByteCounts {
    size_t utf8Characters = 0;
    size_t notUtf8 = 0;
    size_t commonChinese = 0;  // pairs that are everyday Chinese characters or punctuation
    size_t notChinese = 0;     // high bytes that make no pair, or one of the rare extensions
};

HighByteCounts countHighBytes(std::string_view bytes) {
    HighByteCounts counts;
    for (size_t i = skipAscii(bytes, 0); i < bytes.size(); i = skipAscii(bytes, i)) {
        const size_t length = utf8Length(bytes, i);
        length > 0 ? ++counts.utf8Characters : ++counts.notUtf8;
        i += length > 0 ? length : 1;
    }
    for (size_t i = skipAscii(bytes, 0); i < bytes.size(); i = skipAscii(bytes, i)) {
        const uint8_t lead = byteAt(bytes, i);
        const uint8_t trail = i + 1 < bytes.size() ? byteAt(bytes, i + 1) : 0;
        const bool pair = between(lead, 0xA1, 0xF7) && between(trail, 0xA1, 0xFE);
        if (pair && (between(lead, 0xB0, 0xD7) || lead <= 0xA3)) ++counts.commonChinese;
        if (!pair) ++counts.notChinese;
        i += pair ? 2 : 1;
    }
    return counts;
}

}  // namespace

bool isValidUtf8(std::string_view bytes) {
    for (size_t i = skipAscii(bytes, 0); i < bytes.size(); i = skipAscii(bytes, i)) {
        const size_t length = utf8Length(bytes, i);
        if (length == 0) return false;
        i += length;
    }
    return true;
}

TextEncoding guessEncoding(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) return TextEncoding::Utf16LittleEndian;
    if (bytes.starts_with("\xFE\xFF")) return TextEncoding::Utf16BigEndian;
    if (bytes.starts_with(kUtf8Mark) || isValidUtf8(bytes)) return TextEncoding::Utf8;
    const HighByteCounts counts = countHighBytes(bytes);
    // In text of another code page a valid UTF-8 sequence is a rare accident.
    if (counts.utf8Characters > 4 * counts.notUtf8) return TextEncoding::Utf8;
    if (counts.commonChinese > 4 * counts.notChinese) return TextEncoding::Gb18030;
    return TextEncoding::Windows1252;
}

std::string decodeText(std::string bytes, TextEncoding encoding) {
    std::string chinese;
    switch (encoding) {
        case TextEncoding::Utf8:
            if (std::string_view(bytes).starts_with(kUtf8Mark)) bytes.erase(0, kUtf8Mark.size());
            return isValidUtf8(bytes) ? std::move(bytes) : fromDamagedUtf8(bytes);
        case TextEncoding::Utf16LittleEndian:
            return fromUtf16(bytes, false);
        case TextEncoding::Utf16BigEndian:
            return fromUtf16(bytes, true);
        case TextEncoding::Gb18030:
            if (os::utf8FromGb18030(bytes, chinese)) return chinese;
            [[fallthrough]];  // wrong characters in comments beat a database that is not read
        case TextEncoding::Windows1252:
            break;
    }
    return fromWindows1252(bytes);
}

std::string decodeText(std::string bytes) {
    const TextEncoding encoding = guessEncoding(bytes);
    return decodeText(std::move(bytes), encoding);
}

std::optional<std::string> refuseAsText(std::string_view bytes) {
    if (bytes.empty()) return "the file is empty";
    const TextEncoding encoding = guessEncoding(bytes.substr(0, 2));
    const bool wide =
        encoding == TextEncoding::Utf16LittleEndian || encoding == TextEncoding::Utf16BigEndian;
    if (!wide && bytes.find('\0') != std::string_view::npos) {
        return "not a text file (it holds zero bytes)";
    }
    return std::nullopt;
}

}  // namespace quill::text
