// Positions, arguments and JSON text, which the converters share.
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

namespace {

namespace dbjson = quill::dbjson;

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
