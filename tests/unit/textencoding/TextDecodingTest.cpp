#include "quill_textencoding/TextDecoding.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

namespace text = quill::text;
using text::TextEncoding;

struct EncodingCase {
    const char* name;
    std::string bytes;
    TextEncoding encoding;
    const char* utf8;
};
class Encodings : public ::testing::TestWithParam<EncodingCase> {};

TEST_P(Encodings, guessedAndDecoded) {
    const auto& c = GetParam();
    EXPECT_EQ(text::guessEncoding(c.bytes), c.encoding);
    EXPECT_EQ(text::decodeText(c.bytes), c.utf8);
}

INSTANTIATE_TEST_SUITE_P(
    Guess, Encodings,
    ::testing::Values(
        EncodingCase{"ascii", "plain", TextEncoding::Utf8, "plain"},
        EncodingCase{"utf8",
                     "\xC2\xB0"
                     "C",
                     TextEncoding::Utf8,
                     "\xC2\xB0"
                     "C"},
        EncodingCase{"byteOrderMark", "\xEF\xBB\xBFx", TextEncoding::Utf8, "x"},
        EncodingCase{"degree",
                     "\"\xB0"
                     "C\"",
                     TextEncoding::Windows1252,
                     "\"\xC2\xB0"
                     "C\""},
        EncodingCase{"euro", "\x80 5", TextEncoding::Windows1252, "\xE2\x82\xAC 5"},
        EncodingCase{"german",
                     "Gr\xF6\xDF"
                     "e",
                     TextEncoding::Windows1252,
                     "Gr\xC3\xB6\xC3\x9F"
                     "e"},
        EncodingCase{"french", "r\xE9gl\xE9\xE9", TextEncoding::Windows1252,
                     "r\xC3\xA9gl\xC3\xA9\xC3\xA9"},
        EncodingCase{"chinese", "\xBD\xC7\xB6\xC8\xD6\xB5", TextEncoding::Gb18030,
                     "\xE8\xA7\x92\xE5\xBA\xA6\xE5\x80\xBC"},
        EncodingCase{"chineseCutInACharacter", "\xBD\xC7\xB6\xC8\xD6\xB5\xD6\xB5\xBD\xC7\xD6",
                     TextEncoding::Gb18030,
                     "\xE8\xA7\x92\xE5\xBA\xA6\xE5\x80\xBC\xE5\x80\xBC\xE8\xA7\x92\xEF\xBF\xBD"},
        EncodingCase{"utf8WithOneBadByte", "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F\xC3\xA4 \xFF",
                     TextEncoding::Utf8, "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F\xC3\xA4 \xEF\xBF\xBD"},
        EncodingCase{"utf16",
                     std::string("\xFF\xFE"
                                 "a\0\xAC\x20\x3D\xD8\x00\xDE",
                                 10),
                     TextEncoding::Utf16LittleEndian, "a\xE2\x82\xAC\xF0\x9F\x98\x80"},
        EncodingCase{"utf16BigEndian", std::string("\xFE\xFF\0a\xD8\x00", 6),
                     TextEncoding::Utf16BigEndian, "a\xEF\xBF\xBD"}),
    [](const auto& test) { return std::string(test.param.name); });

// Whatever bytes come, valid UTF-8 goes out.
TEST(Encodings, anyBytesBecomeValidText) {
    constexpr uint32_t kSeed = 7;
    std::mt19937 random(kSeed);
    for (int round = 0; round < 2000; ++round) {
        std::string bytes(random() % 24, '\0');
        for (char& c : bytes) c = static_cast<char>(random() % 3 == 0 ? 'a' : random());
        for (const auto encoding :
             {TextEncoding::Utf8, TextEncoding::Utf16LittleEndian, TextEncoding::Utf16BigEndian,
              TextEncoding::Windows1252, TextEncoding::Gb18030}) {
            ASSERT_TRUE(text::isValidUtf8(text::decodeText(bytes, encoding)))
                << "seed " << kSeed << ", round " << round;
        }
    }
    for (const char* wrong : {"\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\x80"}) {
        EXPECT_FALSE(text::isValidUtf8(wrong));
    }
}

}  // namespace
