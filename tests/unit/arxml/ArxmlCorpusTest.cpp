// Every ARXML file of the corpus against the values that independent tools computed. Each field
// where we differ stands in a list with the reason; a difference too few fails like one too many.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <random>
#include <set>

#include "ArxmlTestSupport.h"
#include "quill_textencoding/TextDecoding.h"

namespace arxmltest {
namespace {

struct CorpusCase {
    const char* name;
    // The tool takes each file's own limits, or makes them from the number of bits.
    bool hasMadeLimits;
    // "frame.signal field" where we differ on purpose, see the table below for the reasons.
    std::vector<std::string> differences;
};

// The differences and their reasons:
// - senders and receivers of CanSystem: told by ports, which the tool does not read.
// - scaling of canmatrix_from_dbc: methods without a category; we use their coefficients and texts
//   as the database did that the file was exported from, the tool takes identity.
// - NewSignal_4 of ARXML_min_max: a scale from 0 to 0 without a text; the tool makes it an empty
//   text.
// - The names of selectors, freshness values and authenticators are made by each tool for itself:
//   the file has none in the frame. We keep the signal that the parts map as selector, once in each
//   part, and name secured signals after their PDU.
// - Freq... of canmatrix_test: each is mapped twice in its frame, the tool keeps one of both.
const CorpusCase kCases[] = {
    {"system-4.2.arxml",
     false,
     {"MultiplexedMessage -MultiplexedMessage_selector1",
      "MultiplexedMessage +multiplexed_message_selector",
      "MultiplexedMessage +multiplexed_message_selector", "Message3 -Message3_Authenticator",
      "Message3 -Message3_Freshness", "Message3 +message3_secured_Authenticator",
      "Message3 +message3_secured_Freshness",
      "OneToContainThemAll/multiplexed_message -OneToContainThemAll_selector1",
      "OneToContainThemAll/multiplexed_message +multiplexed_message_selector",
      "OneToContainThemAll/multiplexed_message +multiplexed_message_selector"}},
    {"system-3.2.3.arxml",
     false,
     {"Multiplexed -Multiplexed_selector1", "Multiplexed +Selector", "Multiplexed +Selector"}},
    {"compu_method_no_category.arxml", false, {}},
    {"ecu-extract-4.2.arxml", false, {}},
    {"ARXML_min_max.arxml", true, {"New_Frame.New_Frame_NewPDU_NewSignal_4 value_table"}},
    {"ARXMLSecuredPDUTest.arxml", false, {}},
    {"canmatrix_from_dbc.arxml",
     false,
     {"FRAME_testFrame1.someTestSignal factor", "FRAME_testFrame1.someTestSignal offset",
      "FRAME_testFrame1.Signal value_table"}},
    {"CanSystem.arxml",
     false,
     {"Pdu_CounterIn senders", "Pdu_CounterIn.CounterIn receivers", "Pdu_CounterOut senders",
      "Pdu_CounterOut.CounterOut receivers"}},
    {"canmatrix_test.arxml",
     true,
     {"FRAME_CommandSetNVParam +FreqHi", "FRAME_CommandSetNVParam +FreqLo",
      "FRAME_CommandSetNVParam +FreqVeryLo", "FRAME_StatusNVParam +FreqHi",
      "FRAME_StatusNVParam +FreqLo", "FRAME_StatusNVParam +FreqVeryLo"}},
};

// As the program reads it: without byte-order mark.
Converted convertFile(const std::string& path) {
    return convertText(quill::text::decodeText(readText(path)));
}

std::multiset<std::string> asSet(const Json& names) {
    return names.get<std::multiset<std::string>>();
}

class Comparison {
public:
    explicit Comparison(bool hasMadeLimits) : m_hasMadeLimits(hasMadeLimits) {}

    void compareFrame(const Json& golden, const Json& ours);
    [[nodiscard]] const std::multiset<std::string>& differences() const { return m_differences; }
    [[nodiscard]] size_t comparedSignals() const { return m_compared; }

private:
    void note(const std::string& where, bool isSame, const char* what) {
        if (!isSame) m_differences.insert(where + " " + what);
    }
    void compareSignals(const std::string& where, const Json& golden,
                        const std::vector<FlatSignal>& ours);
    void compareSignal(const std::string& where, const Json& golden, const Json& ours);
    void compareScaling(const std::string& where, const Json& golden, const Json& ours);
    void compareBits(const Json& golden, const Json& ours);

    bool m_hasMadeLimits;
    size_t m_compared = 0;
    std::multiset<std::string> m_differences;
    std::mt19937 m_random{20240607};
};

void Comparison::compareFrame(const Json& golden, const Json& ours) {
    const std::string name = golden.at("name");
    note(name, golden.at("id") == ours.at("id"), "id");
    note(name, golden.at("length") == ours.at("length"), "length");
    note(name, golden.at("extended") == ours.at("is_extended_frame"), "extended");
    note(name, golden.at("fd") == ours.at("is_canfd"), "fd");
    note(name, golden.at("comment") == ours.at("comment"), "comment");
    note(name, golden.at("cycle_time") == ours.value("cycle_time", Json()), "cycle_time");
    note(name, asSet(golden.at("senders")) == asSet(ours.at("senders")), "senders");
    std::vector<FlatSignal> flat;
    for (const auto& pdu : ours.at("ipdus")) collectSignals(pdu, Json(), flat);
    compareSignals(name, golden.at("signals"), flat);
    if (!golden.contains("contained")) return;
    for (const auto& contained : golden.at("contained")) {
        const std::string inner = contained.at("name");
        const auto& pdus = ours.at("ipdus").at(0).at("ipdus");
        const auto found = std::find_if(pdus.begin(), pdus.end(),
                                        [&](const Json& pdu) { return pdu.at("name") == inner; });
        ASSERT_NE(found, pdus.end()) << inner;
        const std::string where = name + "/" + inner;
        note(where, contained.at("header_id") == found->at("header_id"), "header_id");
        note(where, contained.at("length") == found->at("length"), "length");
        note(where, asSet(contained.at("senders")) == asSet(found->at("senders")), "senders");
        std::vector<FlatSignal> innerSignals;
        collectSignals(*found, Json(), innerSignals);
        compareSignals(where, contained.at("signals"), innerSignals);
    }
}

void Comparison::compareSignals(const std::string& where, const Json& golden,
                                const std::vector<FlatSignal>& ours) {
    std::vector<bool> isUsed(ours.size());
    for (const auto& expected : golden) {
        const auto& codes = expected.at("multiplexer_ids");
        bool isFound = false;
        for (size_t at = 0; at < ours.size() && !isFound; ++at) {
            const bool isSelected =
                codes.is_null() ||
                std::find(codes.begin(), codes.end(), ours[at].selectorCode) != codes.end();
            if (isUsed[at] || !isSelected || ours[at].signal.at("name") != expected.at("name")) {
                continue;
            }
            isUsed[at] = isFound = true;
            compareSignal(where + "." + expected.at("name").get<std::string>(), expected,
                          ours[at].signal);
        }
        if (!isFound) m_differences.insert(where + " -" + expected.at("name").get<std::string>());
    }
    for (size_t at = 0; at < ours.size(); ++at) {
        if (isUsed[at]) continue;
        m_differences.insert(where + " +" + ours[at].signal.at("name").get<std::string>());
    }
}

void Comparison::compareSignal(const std::string& where, const Json& golden, const Json& ours) {
    ++m_compared;
    const bool isMotorola = ours.at("byte_order") == "MOST-SIGNIFICANT-BYTE-FIRST";
    note(where, golden.at("lsb_bit") == ours.at("start_position"), "lsb_bit");
    note(where, golden.at("length") == ours.at("length"), "length");
    note(where, (golden.at("byte_order") == "big_endian") == isMotorola, "byte_order");
    note(where, golden.at("signed") == ours.at("is_signed"), "signed");
    note(where, golden.at("float") == ours.at("is_float"), "float");
    note(where, golden.at("comment") == ours.value("comment", ""), "comment");
    note(where, asSet(golden.at("receivers")) == asSet(ours.at("receivers")), "receivers");
    const std::string init = ours.at("init_value");
    note(where,
         golden.at("initial_raw").is_null()
             ? init.empty()
             : !init.empty() && golden.at("initial_raw").get<double>() == std::stod(init),
         "initial_raw");
    compareScaling(where, golden, ours);
    compareBits(golden, ours);
}

void Comparison::compareScaling(const std::string& where, const Json& golden, const Json& ours) {
    const auto& compu = ours.at("compu_method");
    const double factor =
        compu.at("compu_scale").get<double>() / compu.at("compu_denominator").get<double>();
    note(where, golden.at("factor").get<double>() == factor, "factor");
    note(where, golden.at("offset") == compu.at("compu_offset"), "offset");
    note(where, golden.at("unit") == compu.at("unit"), "unit");
    Json table = Json::object();
    for (const auto& entry : compu.at("value_table")) {
        table[std::to_string(std::llround(entry.at("value").get<double>()))] = entry.at("name");
    }
    note(where, golden.at("value_table") == table, "value_table");
    if (m_hasMadeLimits) return;
    const auto& limits = ours.at("dataconstr");
    note(where, golden.at("min") == limits.value("phy_lower_limit", Json()), "min");
    note(where, golden.at("max") == limits.value("phy_upper_limit", Json()), "max");
}

// The position is right when it selects the same bits, in the same order, as the position that
// the file writes: shown by random payloads, bit by bit.
void Comparison::compareBits(const Json& golden, const Json& ours) {
    const uint32_t length = ours.at("length");
    if (length == 0 || length > 64) return;
    const bool isMotorola = golden.at("byte_order") == "big_endian";
    std::vector<uint8_t> payload(64);
    for (int round = 0; round < 8; ++round) {
        for (auto& byte : payload) byte = static_cast<uint8_t>(m_random());
        EXPECT_EQ(extractFromLsb(payload, ours.at("start_position"), length, isMotorola),
                  extractFromFileStart(payload, golden.at("start_bit_file"), length, isMotorola))
            << golden.at("name") << ", seed 20240607";
    }
}

class ArxmlCorpus : public ::testing::TestWithParam<CorpusCase> {};

TEST_P(ArxmlCorpus, agreesWithGoldenValues) {
    const std::string name = GetParam().name;
    const std::string path = corpusFile("arxml/" + name);
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "no corpus at " << path;
    const Json golden = Json::parse(readText(corpusFile("golden/arxml__" + name + ".json")));
    const Converted ours = convertFile(path);
    ASSERT_EQ(ours.error, "");
    std::vector<Json> frames;
    for (const auto& cluster : ours.json.at("can_cluster")) {
        for (const auto& frame : cluster.at("frames")) frames.push_back(frame);
    }
    Comparison comparison(GetParam().hasMadeLimits);
    for (const auto& expected : golden.at("frames")) {
        const auto found = std::find_if(frames.begin(), frames.end(), [&](const Json& frame) {
            return frame.at("name") == expected.at("name") && frame.at("id") == expected.at("id");
        });
        ASSERT_NE(found, frames.end()) << expected.at("name");
        comparison.compareFrame(expected, *found);
    }
    const auto& expected = GetParam().differences;
    EXPECT_EQ(comparison.differences(),
              std::multiset<std::string>(expected.begin(), expected.end()));
}

// The walk over the XML that the golden files keep beside the tool's view: PDUs as the file nests
// them.
TEST_P(ArxmlCorpus, agreesWithTheViewOfPdus) {
    const std::string name = GetParam().name;
    const std::string path = corpusFile("golden/arxml__" + name + ".json");
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "no corpus at " << path;
    const Json golden = Json::parse(readText(path));
    const Converted ours = convertFile(corpusFile("arxml/" + name));
    ASSERT_EQ(ours.error, "");
    if (golden.at("pdu_view").empty()) return;
    const auto& clusters = ours.json.at("can_cluster");
    ASSERT_EQ(clusters.size(), golden.at("pdu_view").size());
    for (size_t at = 0; at < clusters.size(); ++at) {
        const auto& expected = golden.at("pdu_view").at(at);
        EXPECT_EQ(clusters[at].at("name"), expected.at("name"));
        const auto& rate = expected.at("baudrate");
        EXPECT_EQ(clusters[at].at("baud_rate"), rate.is_null() ? Json(0) : rate);
        std::vector<Json> expectedFrames;
        for (const auto& channel : expected.at("channels")) {
            for (const auto& frame : channel.at("frames")) expectedFrames.push_back(frame);
        }
        const auto& frames = clusters[at].at("frames");
        ASSERT_EQ(frames.size(), expectedFrames.size());
        for (size_t frame = 0; frame < frames.size(); ++frame) {
            EXPECT_EQ(frames[frame].at("id"), expectedFrames[frame].at("id"));
            EXPECT_EQ(frames[frame].at("name"), expectedFrames[frame].at("name"));
            EXPECT_EQ(frames[frame].at("triggering"), expectedFrames[frame].at("triggering"));
            const auto& pdus = expectedFrames[frame].at("pdus");
            ASSERT_EQ(frames[frame].at("ipdus").size(), pdus.size());
            for (size_t pdu = 0; pdu < pdus.size(); ++pdu) {
                EXPECT_EQ(frames[frame]["ipdus"][pdu].at("type"), pdus[pdu].at("type"));
                EXPECT_EQ(frames[frame]["ipdus"][pdu].at("name"), pdus[pdu].at("name"));
            }
        }
    }
}

std::string testName(const ::testing::TestParamInfo<CorpusCase>& test) {
    std::string name = test.param.name;
    for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Files, ArxmlCorpus, ::testing::ValuesIn(kCases), testName);

struct RefusedCase {
    const char* name;
    const char* message;
};

TEST(ArxmlCorpusFaults, areRefusedWithTheReason) {
    const RefusedCase cases[] = {
        {"system-dangling-reference-4.2.arxml",
         "FRAME-REF leads nowhere: /PackageDoesNotExist/Message1"},
        {"system-illegal-namespace-4.2.arxml",
         "unknown namespace http://autosar.org/schema/argh4.0"},
        {"system-illegal-root-4.2.arxml", "the root element is AUTOSARGH instead of AUTOSAR"},
        {"system-missing-factor-4.2.arxml",
         "compu method Signal1 is linear but has 1 of 2 numerators"},
    };
    if (!std::filesystem::exists(corpusFile("arxml"))) GTEST_SKIP() << "no corpus";
    for (const auto& refused : cases) {
        EXPECT_EQ(convertText(readText(corpusFile(std::string("arxml/") + refused.name))).error,
                  refused.message);
    }
}

}  // namespace
}  // namespace arxmltest
