#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "support.h"

using simtest::kMs;
using simtest::kStartNs;
using simtest::SimTest;
using simtest::stampOf;

namespace {

// Writes a log and plays it on three CAN buses of one box whose further buses carry the rest.
class Replay : public SimTest {
protected:
    std::string write(const std::string& name, const std::string& text) {
        const std::string path = ::testing::TempDir() + "simcore_" + name;
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    void play(const std::string& file, const std::string& settings = "") {
        const nlohmann::json path = file;
        load(
            R"({"boxes": [{"name": "B", "channels": {"can": ["c1", "c2", "c3"], "lin": ["l1", "l2"],
                            "eth": ["e1"]}}],
                 "sources": [{"replay": {"file": )" +
            path.dump() + settings + "}}]}");
        m_handle = openFirst();
    }
    int32_t m_handle = 0;
};

TEST_F(Replay, candumpKeepsItsOwnTiming) {
    play(write("timing.log",
               "(1436509052.000000) can0 123#1122\n"
               "(1436509052.010500) can1 18FEF100#AABB T\n"
               "\n"
               "(1436509052.020000) can0 7FF##5001122334455667788\n"
               "broken\n"
               "(1436509052.030000) can0 200#R4\n"
               "(1436509052.040000) can0 20000004#0011223344556677\n"
               "(1436509052.050000) can0 100#1122334455667788_D"));
    simcore::advance(10 * kMs);
    EXPECT_EQ(readCan(m_handle).size(), 1U);
    simcore::advance(100 * kMs);
    const auto frames = readCan(m_handle);
    ASSERT_EQ(frames.size(), 4U);
    EXPECT_EQ(stampOf(frames[0]), kStartNs + 10'500'000);
    EXPECT_EQ(frames[0].id, 0x18FEF100U);
    EXPECT_EQ(frames[0].channel, 1);
    EXPECT_EQ(frames[0].extend[1] & 0x04U, 0x04U);
    EXPECT_EQ(frames[1].extend[0] & 0x03U, 0x03U);  // CAN FD with bit-rate switch
    EXPECT_EQ(frames[1].length, 12);                // nine bytes travel as twelve
    EXPECT_EQ(frames[1].data[1], 0x11);
    EXPECT_EQ(frames[2].extend[1], 0x48);  // remote, length code 4
    EXPECT_EQ(frames[3].extend[1] >> 4U, 13);
    EXPECT_EQ(frames[3].length, 8);
}

TEST_F(Replay, speedScalesAndLoopGoesOn) {
    play(write("loop.log", "(10.000) c 1#\n(10.100) c 2#\n"), R"(, "speed": 10, "loop": true)");
    simcore::advance(100 * kMs);
    const auto frames = readCan(m_handle);
    // Passes of 10 ms, each a mean distance of 10 ms behind the last: frames at 0, 10, 20 ... 100.
    ASSERT_EQ(frames.size(), 11U);
    for (size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(stampOf(frames[i]), kStartNs + i * 10 * kMs);
        EXPECT_EQ(frames[i].id, i % 2 + 1);
    }
}

// Times at the end of what a log can hold, at a speed that stretches them beyond all bounds, and
// passes that start anew behind them: the first frame comes, the others lie out of reach.
TEST_F(Replay, timesBeyondReachStayThere) {
    play(write("far.log", "(1.0) c 1#\n(3999999999.0) c 2#\n(1.0) c 3#\n(3999999999.0) c 4#\n"),
         R"(, "speed": 1e-300, "loop": true)");
    simcore::advance(1000 * kMs);
    const auto frames = readCan(m_handle);
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(frames[0].id, 1U);
}

TEST_F(Replay, playsAgainForWhoTracesAfterTheEnd) {
    play(write("again.log", "(10.000) c 1#\n(10.001) c 2#\n"));
    simcore::advance(50 * kMs);
    EXPECT_EQ(readCan(m_handle).size(), 2U);
    ASSERT_EQ(stop_trace(m_handle), 0);
    ASSERT_EQ(start_trace(m_handle), 0);
    simcore::advance(50 * kMs);
    EXPECT_EQ(readCan(m_handle).size(), 2U);
}

TEST_F(Replay, unpacedLosesNothingBehindASlowReader) {
    std::string log;
    constexpr int kFrames = 200'000;
    for (int i = 0; i < kFrames; ++i) {
        char line[64];
        std::snprintf(line, sizeof line, "(1.0) can0 123#%08X\n", i);
        log += line;
    }
    play(write("unpaced.log", log), R"(, "speed": 0)");
    int next = 0;
    while (next < kFrames) {
        simcore::advance(kMs);
        const auto frames = readCan(m_handle);
        ASSERT_FALSE(frames.empty());
        for (const RvCanFrame& frame : frames) {
            const int value =
                frame.data[0] << 24 | frame.data[1] << 16 | frame.data[2] << 8 | frame.data[3];
            ASSERT_EQ(value, next++);
        }
    }
    RvTraceCounters counters;
    ASSERT_EQ(get_trace_counters(m_handle, &counters), 0);
    EXPECT_EQ(counters.dropped, 0U);
}

TEST_F(Replay, channelsCanBeNamed) {
    play(write("named.log", "(1.0) vcan7 1#\n(1.0) vcan8 2#\n"),
         R"(, "channels": {"vcan7": "c3", "vcan8": "c2"})");
    simcore::advance(kMs);
    const auto frames = readCan(m_handle);
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0].channel, 2);
    EXPECT_EQ(frames[1].channel, 1);
}

TEST_F(Replay, aFileWithoutFramesIsRefused) {
    for (const char* text : {"", "date Thu\nbase hex\n", "(1.0) can0 nonsense\n"}) {
        const std::string path = write("none.log", text);
        const nlohmann::json quoted = path;
        std::string reason;
        EXPECT_FALSE(simcore::loadNetwork(
            R"({"sources": [{"replay": {"file": )" + quoted.dump() + "}}]}", reason));
        EXPECT_EQ(reason, "network document: " + path + ": holds no frame that can be played");
    }
}

// Frames of corpus files against the values that an independent reader found in them.
class CorpusReplay : public Replay, public ::testing::WithParamInterface<const char*> {};

TEST_P(CorpusReplay, canFramesAreThoseOfTheGoldenFile) {
    namespace fs = std::filesystem;
    const fs::path corpus = fs::path(QUILL_SOURCE_DIR) / ".." / "shared" / "corpus";
    if (!fs::exists(corpus)) GTEST_SKIP() << "the corpus is not here: " << corpus;
    std::ifstream golden(corpus / "golden" / ("asc__" + std::string(GetParam()) + ".json"));
    const auto facts = nlohmann::json::parse(golden).at("python_can");
    play((corpus / "asc" / GetParam()).string());

    std::vector<RvCanFrame> frames;
    for (int second = 0; second < 200; ++second) {
        simcore::advance(1000 * kMs);
        const auto some = readCan(m_handle);
        frames.insert(frames.end(), some.begin(), some.end());
    }
    size_t expected = 0;
    for (const auto& [kind, count] : facts.at("by_kind").items()) {
        if (kind.find("error") == std::string::npos) expected += count.get<size_t>();
    }
    EXPECT_EQ(frames.size(), expected);

    size_t at = 0;
    double firstTime = -1.0;
    for (const auto& fact : facts.at("first")) {
        if (fact.at("error").get<bool>()) continue;
        ASSERT_LT(at, frames.size());
        const RvCanFrame& frame = frames[at++];
        const auto t =
            (fact.contains("t_added_up") ? fact.at("t_added_up") : fact.at("t")).get<double>();
        if (firstTime < 0.0) firstTime = t;
        EXPECT_NEAR(static_cast<double>(stampOf(frame) - kStartNs) * 1e-9, t - firstTime, 1e-6);
        EXPECT_EQ(frame.id, fact.at("id").get<uint32_t>());
        EXPECT_EQ((frame.extend[1] & 0x04U) != 0, fact.at("extended").get<bool>());
        EXPECT_EQ(frame.channel, fact.at("channel").get<int>() % 3);
        std::string data;
        for (int i = 0; i < frame.length; ++i) {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02x", frame.data[i]);
            data += digits;
        }
        EXPECT_EQ(data, fact.value("data", ""));
    }
}

INSTANTIATE_TEST_SUITE_P(Files, CorpusReplay,
                         ::testing::Values("EngineDiagData.asc", "gen_crlf.asc",
                                           "gen_dec_relative.asc", "gen_mixed_buses.asc",
                                           "issue_1256.asc", "logfile.asc", "single_frame.asc",
                                           "test_CanFdMessage64.asc", "test_CanRemoteMessage.asc"),
                         [](const auto& param) {
                             std::string name = param.param;
                             return name.substr(0, name.find('.'));
                         });

TEST_F(Replay, ascLinAndEthernetLines) {
    play(write("buses.asc",
               "base hex  timestamps absolute\n"
               "0.010 Li 2d Rx 4 11 22 33 44 checksum = b4 header time = 40 CSM = enhanced\n"
               "0.020 L2 10 Tx 2 ab cd checksum = 86\n"
               "0.030 Li 3c TransmErr header time = 40\n"
               "0.040 ETH 1 Rx e:020000000001020000000002"
               "88B5\n"
               "0.050 ETH 1 Rx e:0200\n"));
    simcore::advance(1000 * kMs);
    const auto lin = readLin(m_handle);
    ASSERT_EQ(lin.size(), 2U);
    EXPECT_EQ(lin[0].id, 0x2D);
    EXPECT_EQ(lin[0].checkMode, 1);
    EXPECT_EQ(lin[0].checksum, 0xB4);
    EXPECT_EQ(lin[1].channel, 1);
    EXPECT_EQ(lin[1].checkMode, 0);  // 0x86 is the classic sum of these bytes
    std::vector<RvEthFrame> eth(8);
    int32_t count = 0;
    ASSERT_EQ(read_eth_frames(m_handle, eth.data(), 8, &count), 0);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(eth[0].length, 14);
    EXPECT_EQ(eth[0].data[13], 0xB5);
}

}  // namespace
