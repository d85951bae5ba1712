// Text decoding, positions, arguments and JSON text, which the converters share.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>

#include "common/Arguments.h"
#include "common/Diagnostics.h"
#include "common/JsonWriter.h"
#include "common/TextDecoding.h"

namespace {

namespace dbjson = quill::dbjson;
using dbjson::TextEncoding;

struct EncodingCase {
    const char* name;
    std::string bytes;
    TextEncoding encoding;
    const char* utf8;
};
class Encodings : public ::testing::TestWithParam<EncodingCase> {};

TEST_P(Encodings, guessedAndDecoded) {
    const auto& c = GetParam();
    EXPECT_EQ(dbjson::guessEncoding(c.bytes), c.encoding);
    EXPECT_EQ(dbjson::decodeText(c.bytes), c.utf8);
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
            ASSERT_TRUE(dbjson::isValidUtf8(dbjson::decodeText(bytes, encoding)))
                << "seed " << kSeed << ", round " << round;
        }
    }
    for (const char* wrong : {"\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\x80"}) {
        EXPECT_FALSE(dbjson::isValidUtf8(wrong));
    }
}

TEST(JsonWriter, doublesReadBackTheSame) {
    std::mt19937_64 random(3);
    std::vector<double> values = {0.0,
                                  -0.0,
                                  0.1,
                                  1e300,
                                  5e-324,
                                  1.5,
                                  -7.0,
                                  9007199254740993.0,
                                  18446744073709551615.0,
                                  std::numeric_limits<double>::max()};
    for (int i = 0; i < 5000; ++i) {
        const uint64_t bits = random();
        double value = 0.0;
        std::memcpy(&value, &bits, sizeof value);
        if (std::isfinite(value)) values.push_back(value);
    }
    for (const double value : values) {
        dbjson::JsonWriter json;
        json.number(value);
        EXPECT_EQ(std::strtod(json.text().c_str(), nullptr), value) << json.text();
        EXPECT_TRUE(nlohmann::json::accept(json.text())) << json.text();
    }
}

TEST(JsonWriter, numbersThatJsonLacks) {
    dbjson::JsonWriter json;
    json.beginArray();
    json.number(HUGE_VAL);
    json.number(-HUGE_VAL);
    json.number(NAN);
    json.endArray();
    EXPECT_EQ(nlohmann::json::parse(json.text()),
              nlohmann::json(
                  {std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest(), 0}));
}

TEST(JsonWriter, everyCharacterReadsBack) {
    std::string all = "\xE2\x82\xAC";
    for (int c = 0; c < 128; ++c) all += static_cast<char>(c);
    dbjson::JsonWriter json;
    json.beginObject();
    json.text(all, all);
    json.endObject();
    EXPECT_EQ(nlohmann::json::parse(json.text())[all], all);
}

TEST(Positions, countLinesAndCharacters) {
    const std::string text =
        "ab\n\xC3\xA4"
        "b\nc";
    const auto at = [&](size_t offset) {
        const auto position = dbjson::positionAt(text, offset);
        return std::pair(position.line, position.column);
    };
    EXPECT_EQ(at(0), std::pair(size_t{1}, size_t{1}));
    EXPECT_EQ(at(3), std::pair(size_t{2}, size_t{1}));
    EXPECT_EQ(at(5), std::pair(size_t{2}, size_t{2}));
    EXPECT_EQ(at(99), std::pair(size_t{3}, size_t{2}));
}

TEST(CommandLine, formsOfArguments) {
    const dbjson::ArgumentSpec spec{"tool", "help\n", {"--flag"}, {"--out"}, 1};
    auto result = dbjson::parseArguments(spec, {"--out=x", "in", "--flag"});
    ASSERT_FALSE(result.exitStatus);
    EXPECT_EQ(result.arguments.options["--out"], "x");
    EXPECT_TRUE(result.arguments.has("--flag"));
    result = dbjson::parseArguments(spec, {"--out", "y", "--", "--in"});
    ASSERT_FALSE(result.exitStatus);
    EXPECT_EQ(result.arguments.positionals, std::vector<std::string>{"--in"});
    for (const auto& wrong : std::vector<std::vector<std::string>>{
             {}, {"a", "b"}, {"a", "--no"}, {"a", "--out"}, {"a", "--flag=1"}}) {
        EXPECT_EQ(dbjson::parseArguments(spec, wrong).exitStatus, 2);
    }
}

}  // namespace
