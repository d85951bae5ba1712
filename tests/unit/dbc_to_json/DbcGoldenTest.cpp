// Every DBC file of the corpus against the values that independent tools read from it.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

#include "Corpus.h"

namespace {

using corpus::Json;

// Where the golden tool says something else, and why it is left so.
struct Disagreement {
    const char* file;
    const char* key;
    const char* reason;
};
constexpr Disagreement kDisagreements[] = {
    {"SCU.dbc", "signal comment", "GB18030 text, which the tool read as Windows-1252"},
    {"dbcppp_Test.dbc", "senders", "the tool counts Vector__XXX as a sender here"},
    {"gwm_haval_h6_phev_2024.dbc", "fd", "no frame format: beyond 8 bytes only CAN FD is possible"},
    {"opendbc_test.dbc", "fd", "no frame format: beyond 8 bytes only CAN FD is possible"},
    {"ecubus_float.dbc", "signed", "float signals marked '-': the tool clears the mark"},
    {"floating_point.dbc", "signed", "float signals marked '-': the tool clears the mark"},
    {"foobar.dbc", "signed", "float signals marked '-': the tool clears the mark"},
    {"multiplex_2.dbc", "signed", "float signals marked '-': the tool clears the mark"},
    {"test_frame_decoding.dbc", "signed", "float signals marked '-': the tool clears the mark"},
};

class DbcGolden : public ::testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        if (GetParam().empty()) GTEST_SKIP() << "the corpus is not beside the project";
        golden = corpus::golden("dbc", GetParam());
        converted = corpus::convertDbc(corpus::bytesOf(corpus::folder() / "dbc" / GetParam()));
        ASSERT_FALSE(converted.diagnostics.failed()) << converted.diagnostics.error()->text;
        for (const auto& entry : kDisagreements) {
            if (GetParam() == entry.file) expected.insert(entry.key);
        }
    }

    // Equal, or a disagreement that is listed.
    void compare(const std::string& key, const std::string& where, const Json& theirs,
                 const Json& ours) {
        if (theirs == ours) return;
        if (expected.contains(key)) {
            met.insert(key);
            return;
        }
        ADD_FAILURE() << key << " of " << where << ": golden " << theirs << ", ours " << ours;
    }

    void compareFrame(const Json& theirs, const Json& ours);
    void compareSignal(const std::string& where, const Json& theirs, const Json& ours);
    const Json* findFrame(const Json& theirs) const {
        for (const Json& message : converted.json["messages"]) {
            if (message["id"] == theirs["id"] && message["name"] == theirs["name"] &&
                message["is_extended_frame"] == theirs["extended"]) {
                return &message;
            }
        }
        return nullptr;
    }

    Json golden;
    corpus::Converted converted;
    std::set<std::string> expected;
    std::set<std::string> met;
};

Json attribute(const Json& object, const char* name) {
    for (const Json& entry : object["attributes"]) {
        if (entry["name"] == name) return entry["value"];
    }
    return nullptr;
}

Json orZero(const Json& value) { return value.is_null() ? Json(0) : value; }

Json selectedIds(const Json& signal) {
    if (!signal.contains("multiplexer_ranges")) return nullptr;
    Json ids = Json::array();
    for (const Json& range : signal["multiplexer_ranges"]) {
        for (int64_t id = range[0]; id <= range[1]; ++id) ids.push_back(id);
    }
    return ids;
}

// Entries in the order of their values; of two with one value the last counts.
Json byValue(const Json& entries) {
    std::map<double, Json> texts;
    for (const Json& entry : entries) texts[entry["value"].get<double>()] = entry["name"];
    Json sorted = Json::array();
    for (const auto& [value, text] : texts) sorted.push_back(Json::array({value, text}));
    return sorted;
}

void DbcGolden::compareSignal(const std::string& where, const Json& theirs, const Json& ours) {
    const bool isBigEndian = theirs["byte_order"] == "big_endian";
    compare("start bit", where, theirs["lsb_bit"], ours["start_bit"]);
    compare("bit length", where, theirs["length"], ours["bit_length"]);
    compare("byte order", where, isBigEndian, ours["is_big_endian"]);
    compare("signed", where, theirs["signed"], ours["is_signed"]);
    compare("float", where, theirs["float"], ours["is_float"]);
    for (const char* key : {"factor", "offset"}) {
        compare(key, where, theirs[key].get<double>(), ours[key].get<double>());
    }
    compare("minimum", where, orZero(theirs["min"]).get<double>(), ours["value_min"].get<double>());
    compare("maximum", where, orZero(theirs["max"]).get<double>(), ours["value_max"].get<double>());
    compare("unit", where, theirs["unit"], ours["unit"]);
    compare("receivers", where, theirs["receivers"], ours["receivers"]);
    compare("signal comment", where, theirs["comment"], ours["comment"]);
    compare("multiplexor", where, theirs["is_multiplexer"], ours.value("is_multiplexor", false));
    compare("multiplexor's name", where, theirs["multiplexer_signal"],
            ours.contains("multiplexer_signal") ? ours["multiplexer_signal"] : Json());
    compare("multiplexed values", where, theirs["multiplexer_ids"], selectedIds(ours));
    if (!theirs["initial_raw"].is_null()) {
        compare("start value", where, theirs["initial_raw"], attribute(ours, "GenSigStartValue"));
    }
    Json theirValues = Json::array();
    for (const auto& [value, text] : theirs["value_table"].items()) {
        theirValues.push_back({{"name", text}, {"value", std::stod(value)}});
    }
    compare("value table", where, byValue(theirValues), byValue(ours["value_table"]));
}

void DbcGolden::compareFrame(const Json& theirs, const Json& ours) {
    const std::string name = theirs["name"];
    compare("length", name, theirs["length"], ours["dlc"]);
    compare("fd", name, theirs["fd"], ours["is_fd"]);
    compare("senders", name, theirs["senders"], ours["transmitters"]);
    compare("frame comment", name, theirs["comment"], ours["comment"]);
    compare("cycle time", name, orZero(theirs["cycle_time"]),
            orZero(attribute(ours, "GenMsgCycleTime")));
    ASSERT_EQ(theirs["signals"].size(), ours["signals"].size()) << name;
    for (const Json& signal : theirs["signals"]) {
        const auto& all = ours["signals"];
        const auto found = std::find_if(all.begin(), all.end(), [&](const Json& candidate) {
            return candidate["name"] == signal["name"];
        });
        ASSERT_NE(found, all.end()) << name << "." << signal["name"];
        compareSignal(name + "." + signal["name"].get<std::string>(), signal, *found);
    }
}

TEST_P(DbcGolden, agrees) {
    EXPECT_EQ(golden["nodes"], converted.json["nodes"]);
    EXPECT_EQ(golden["version"].is_null() ? Json("") : golden["version"],
              converted.json["version"]);
    ASSERT_EQ(golden["frames"].size(), converted.json["messages"].size());
    for (const Json& frame : golden["frames"]) {
        const Json* const ours = findFrame(frame);
        ASSERT_NE(ours, nullptr) << frame["name"] << " " << frame["id"];
        compareFrame(frame, *ours);
    }
    for (const Json& name : golden["environment_variables"]) {
        const auto& all = converted.json["environment_variables"];
        EXPECT_TRUE(std::any_of(all.begin(), all.end(), [&](const Json& variable) {
            return variable["name"] == name;
        })) << name;
    }
    EXPECT_EQ(golden["value_tables"].size(), converted.json["value_tables"].size());
    EXPECT_EQ(expected, met) << "a listed disagreement is gone";
}

// Raw value by the way the file states a signal: from its most significant bit downwards in
// Motorola order, from its least significant bit upwards in Intel order.
uint64_t readAsInFile(const std::vector<uint8_t>& payload, uint64_t start, uint64_t length,
                      bool isBigEndian) {
    uint64_t value = 0;
    uint64_t bit = start;
    for (uint64_t i = 0; i < length; ++i) {
        const uint64_t one = (payload[bit / 8] >> (bit % 8)) & 1U;
        if (isBigEndian) {
            value = (value << 1U) | one;
            bit = bit % 8 == 0 ? bit + 15 : bit - 1;
        } else {
            value |= one << i;
            ++bit;
        }
    }
    return value;
}

// Raw value by the codec's layout: from the least significant bit upwards in both orders, into the
// byte before in Motorola order.
uint64_t readFromLowest(const std::vector<uint8_t>& payload, uint64_t lowest, uint64_t length,
                        bool isBigEndian) {
    uint64_t value = 0;
    auto byte = static_cast<int64_t>(lowest / 8);
    uint64_t bit = lowest % 8;
    for (uint64_t i = 0; i < length; ++i) {
        value |= static_cast<uint64_t>((payload.at(static_cast<size_t>(byte)) >> bit) & 1U) << i;
        if (++bit == 8) {
            bit = 0;
            byte += isBigEndian ? -1 : 1;
        }
    }
    return value;
}

TEST_P(DbcGolden, everySignalDecodesFromItsLowestBit) {
    constexpr uint32_t kSeed = 20240611;
    constexpr int kRounds = 8;
    std::mt19937 random(kSeed);
    std::vector<uint8_t> payload(4096);
    for (int round = 0; round < kRounds; ++round) {
        for (uint8_t& byte : payload) byte = static_cast<uint8_t>(random());
        for (const Json& frame : golden["frames"]) {
            const Json* const ours = findFrame(frame);
            ASSERT_NE(ours, nullptr);
            for (const Json& signal : frame["signals"]) {
                const auto& all = (*ours)["signals"];
                const auto found = std::find_if(all.begin(), all.end(), [&](const Json& candidate) {
                    return candidate["name"] == signal["name"];
                });
                ASSERT_NE(found, all.end());
                const auto length = signal["length"].get<uint64_t>();
                if (length > 64) continue;
                const bool isBigEndian = signal["byte_order"] == "big_endian";
                EXPECT_EQ(readAsInFile(payload, signal["start_bit_file"], length, isBigEndian),
                          readFromLowest(payload, (*found)["start_bit"], length, isBigEndian))
                    << frame["name"] << "." << signal["name"] << ", seed " << kSeed;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Corpus, DbcGolden, ::testing::ValuesIn(corpus::files("dbc")),
                         [](const auto& test) { return corpus::testName(test.param); });

}  // namespace
