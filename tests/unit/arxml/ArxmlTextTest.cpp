// Numbers as files write them.
#include <gtest/gtest.h>

#include <limits>

#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

TEST(XmlText, integersInAllForms) {
    const struct {
        const char* text;
        std::optional<int64_t> value;
    } cases[] = {
        {"7", 7},
        {" 7\n", 7},
        {"0", 0},
        {"0x7", 7},
        {"0X0a0B0c", 0x0A0B0C},
        {"0b101", 5},
        {"013", 11},
        {"08", 8},
        {"0.0", 0},
        {"1e1", 10},
        {"-3", -3},
        {"+3", 3},
        {"true", 1},
        {"false", 0},
        {"9223372036854775807", INT64_MAX},
        {"", {}},
        {"x", {}},
        {"0x", {}},
        {"1.5", {}},
        {"--3", {}},
        {"9223372036854775808", {}},
        {"1e300", {}},
        {"0b2", {}},
        {"7 8", {}},
    };
    for (const auto& row : cases) EXPECT_EQ(parseInteger(row.text), row.value) << row.text;
}

TEST(XmlText, numbersInAllForms) {
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        const char* text;
        std::optional<double> value;
    } cases[] = {
        {"0.125", 0.125},  {"1e1", 10.0},       {"-400", -400.0}, {"0x10", 16.0},
        {"INF", infinity}, {"-INF", -infinity}, {"NaN", {}},      {"1e999", {}},
        {".5", 0.5},       {"010", 10.0},       {"+-1", {}},      {"", {}},
    };
    for (const auto& row : cases) EXPECT_EQ(parseNumber(row.text), row.value) << row.text;
}

TEST(XmlText, unsignedRange) {
    EXPECT_EQ(parseUnsigned("4294967295"), 4294967295U);
    EXPECT_EQ(parseUnsigned("4294967296"), std::nullopt);
    EXPECT_EQ(parseUnsigned("-1"), std::nullopt);
}

}  // namespace
}  // namespace quill::arxml
