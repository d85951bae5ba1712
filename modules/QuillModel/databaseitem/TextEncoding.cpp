#include "databaseitem/TextEncoding.h"

#include <QByteArray>
#include <QString>
#include <QStringDecoder>
#include <array>
#include <cstdint>

namespace Model::database {
namespace {

// Characters of the bytes 0x80 to 0x9F; the five that the code page leaves open stay as they are.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

bool isUtf8(const std::string& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text =
        decoder.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    return !decoder.hasError() && !text.isNull();
}

void appendUtf8(std::string& text, char16_t c) {
    if (c < 0x80) {
        text += static_cast<char>(c);
    } else if (c < 0x800) {
        text += static_cast<char>(0xC0 | (c >> 6));
        text += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        text += static_cast<char>(0xE0 | (c >> 12));
        text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (c & 0x3F));
    }
}

}  // namespace

std::string toUtf8(std::string bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
    if (bytes.empty() || isUtf8(bytes)) return bytes;
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 8);
    for (const char c : bytes) {
        const auto byte = static_cast<uint8_t>(c);
        appendUtf8(text, byte >= 0x80 && byte <= 0x9F ? kWindows1252.at(byte - 0x80U) : byte);
    }
    return text;
}

}  // namespace Model::database
