#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <random>
#include <string_view>
#include <vector>

#include "common/crc.pb.h"
#include "core/hardware/crc/Crc.h"
#include "core/hardware/crc/SliceCrc.h"
#include "unit/crc/BitwiseCrc.h"

namespace {

using RV::Crc::CrcAlgorithm;
using RV::Crc::CrcParameters;

constexpr std::array<uint8_t, 9> kDigits{'1', '2', '3', '4', '5', '6', '7', '8', '9'};

struct CheckValue {
    uint8_t code;
    std::string_view name;
    uint64_t check;
};

// The values that the parameter sets' definitions give for the digits 1 to 9.
constexpr CheckValue kChecks[] = {
    {1, "CRC_4 ITU", 0x7},
    {2, "CRC_8", 0xF4},
    {4, "CRC_8 SAE J1850", 0x4B},
    {5, "CRC_8 SAE J1850 zero", 0x37},
    {6, "CRC_8 H2F", 0xDF},
    {7, "CRC_8 ITU", 0xA1},
    {8, "CRC_8 ROHC", 0xD0},
    {9, "CRC_8 EBU", 0x97},
    {10, "CRC_8 HDLC", 0x2F},
    {11, "CRC_8 MAXIM", 0xA1},
    {12, "CRC_8 WCDMA", 0x25},
    {13, "CRC_8 LTE", 0xEA},
    {14, "CRC_16 ARC", 0xBB3D},
    {15, "CRC_16 BUYPASS", 0xFEE8},
    {16, "CRC_16 CCITT FALSE", 0x29B1},
    {17, "CRC_16 MCRF4XX", 0x6F91},
    {18, "CRC_16 CDMA2000", 0x4C06},
    {19, "CRC_16 CMS", 0xAEE7},
    {20, "CRC_16 DECTR", 0x007E},
    {21, "CRC_16 DECTX", 0x007F},
    {22, "CRC_16 DNP", 0xEA82},
    {23, "CRC_16 GENIBUS", 0xD64E},
    {24, "CRC_16 KERMIT", 0x2189},
    {25, "CRC_16 MAXIM", 0x44C2},
    {26, "CRC_16 MODBUS", 0x4B37},
    {27, "CRC_16 T10DIF", 0xD0DB},
    {28, "CRC_16 USB", 0xB4C8},
    {29, "CRC_16 X25", 0x906E},
    {30, "CRC_16 XMODEM", 0x31C3},
    {31, "CRC_32", 0xCBF43926},
    {32, "CRC_32 P4", 0x1697D06A},
    {33, "CRC_32 BZIP2", 0xFC891918},
    {34, "CRC_32 C", 0xE3069283},
    {35, "CRC_32 MPEG2", 0x0376E6E7},
    {36, "CRC_32 POSIX", 0x765E7680},
    {37, "CRC_32 Q", 0x3010BF7F},
    {38, "CRC_64", 0x6C40DF5F0B497347},
    {39, "CRC_64 ECMA", 0x995DC9BBDF1939FA},
    {40, "CRC_64 ISO", 0xB90956C775A41001},
};

TEST(Catalogue, givesThePublishedCheckValues) {
    static_assert(std::size(kChecks) == 39);
    for (const CheckValue& row : kChecks) {
        EXPECT_EQ(RV::Crc::computeCrc(row.code, kDigits), row.check) << row.name;
        const CrcAlgorithm* algorithm = RV::Crc::findAlgorithm(row.code);
        ASSERT_NE(algorithm, nullptr);
        EXPECT_EQ(algorithm->name, row.name);
        EXPECT_EQ(bitwise::crc(*algorithm, kDigits), row.check) << row.name;
    }
}

TEST(Catalogue, refusesCodesWithoutAnAlgorithm) {
    for (const int code : {0, 41, 255}) {
        EXPECT_EQ(RV::Crc::findAlgorithm(static_cast<uint8_t>(code)), nullptr);
        EXPECT_FALSE(RV::Crc::computeCrc(static_cast<uint8_t>(code), kDigits));
    }
    EXPECT_FALSE(RV::Crc::computeCrc(RV::Crc::kCrc8Variant, kDigits));
    EXPECT_EQ(RV::Crc::findAlgorithm(3)->name, "CRC_8 Variant");
}

TEST(Catalogue, knowsTheConfigurationValues) {
    EXPECT_EQ(RV::Crc::codeFromConfig(Model::CRC_NONE), RV::Crc::kNoCrc);
    EXPECT_EQ(RV::Crc::codeFromConfig(Model::UNKNOWN), std::nullopt);
    EXPECT_EQ(RV::Crc::codeFromConfig(RV::Crc::kNoConfig), std::nullopt);
    EXPECT_EQ(RV::Crc::codeFromConfig(41), std::nullopt);
    EXPECT_EQ(Model::CrcType_MAX, Model::UNKNOWN);
    for (int config = Model::CRC4_ITU; config < Model::UNKNOWN; ++config) {
        ASSERT_TRUE(Model::CrcType_IsValid(config));
        EXPECT_EQ(RV::Crc::codeFromConfig(config),
                  config < Model::CRC8_SAE_J1850 ? config : config + 1);
        // The names differ in blanks and underscores only, one by a short form.
        std::string name(RV::Crc::findAlgorithm(RV::Crc::codeFromConfig(config).value_or(0))->name);
        std::string entry = Model::CrcType_Name(static_cast<Model::CrcType>(config));
        const auto isSeparator = [](char c) { return c == ' ' || c == '_'; };
        std::erase_if(name, isSeparator);
        std::erase_if(entry, isSeparator);
        for (char& c : name) c = static_cast<char>(std::toupper(c));
        EXPECT_EQ(name, entry);
    }
}

TEST(Catalogue, agreesWithTheBitwiseReference) {
    constexpr unsigned kSeed = 60803;
    std::printf("seed %u\n", kSeed);
    std::mt19937_64 random(kSeed);
    for (const CrcAlgorithm& algorithm : RV::Crc::kCrcCatalogue) {
        if (algorithm.code == RV::Crc::kCrc8Variant) continue;
        for (size_t length = 0; length <= 130; ++length) {
            std::vector<uint8_t> data(length);
            for (auto& byte : data) byte = static_cast<uint8_t>(random());
            ASSERT_EQ(RV::Crc::computeCrc(algorithm.code, data), bitwise::crc(algorithm, data))
                << algorithm.name << " over " << length;
        }
    }
}

// Parameter sets that the catalogue lacks: odd widths, mixed reflection, a 4-bit register that is
// not reflected.
template <class Register, bool kReflected>
Register checkOf(const CrcParameters<Register>& parameters) {
    const auto table =
        RV::Crc::makeSliceTable<Register, kReflected>(parameters.width, parameters.polynomial);
    return RV::Crc::computeCrc(parameters, table, kDigits);
}

TEST(GenericCrc, holdsForAnyWidthAndReflection) {
    using P8 = CrcParameters<uint8_t>;
    using P16 = CrcParameters<uint16_t>;
    using P32 = CrcParameters<uint32_t>;
    using P64 = CrcParameters<uint64_t>;
    EXPECT_EQ((checkOf<uint8_t, false>(P8{4, 0x3, 0xF, false, false, 0xF})), 0xB);
    EXPECT_EQ((checkOf<uint8_t, true>(P8{5, 0x05, 0x1F, true, true, 0x1F})), 0x19);
    EXPECT_EQ((checkOf<uint8_t, false>(P8{7, 0x09, 0, false, false, 0})), 0x75);
    EXPECT_EQ((checkOf<uint16_t, false>(P16{12, 0x80F, 0, false, true, 0})), 0xDAF);
    EXPECT_EQ((checkOf<uint16_t, false>(P16{12, 0x80F, 0, false, false, 0})), 0xF5B);
    EXPECT_EQ((checkOf<uint32_t, false>(P32{24, 0x864CFB, 0xB704CE, false, false, 0})), 0x21CF02U);
    EXPECT_EQ((checkOf<uint64_t, false>(P64{40, 0x0004820009, 0, false, false, 0xFFFFFFFFFF})),
              0xD4164FC646U);
}

TEST(GenericCrc, mixedReflectionAgreesWithTheReference) {
    for (const bool input : {false, true}) {
        for (const uint8_t width : {uint8_t{4}, uint8_t{8}}) {
            const CrcAlgorithm algorithm{0, "", width, 0x3, 0x5, input, !input, 0x9, 0};
            const CrcParameters<uint8_t> parameters{width, 0x3, 0x5, input, !input, 0x9};
            const auto crc =
                input ? checkOf<uint8_t, true>(parameters) : checkOf<uint8_t, false>(parameters);
            EXPECT_EQ(crc, bitwise::crc(algorithm, kDigits));
        }
    }
}

}  // namespace
