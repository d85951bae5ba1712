#include <gtest/gtest.h>
#include <pcap/pcap.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>

#include "FrameCollector.h"
#include "quill_traceformats/byte_order.h"

namespace quill::traceformats::test {
namespace {
using nlohmann::json;

std::optional<json> golden(const std::string& kind, const std::string& name) {
    std::ifstream file(std::string(QUILL_SOURCE_DIR "/../shared/corpus/golden/") + kind + "__" +
                       name + ".json");
    if (!file) return std::nullopt;
    return json::parse(file, nullptr, false);
}

std::string hexOf(std::span<const uint8_t> bytes) {
    std::string text;
    for (const uint8_t byte : bytes) {
        text += "0123456789abcdef"[byte >> 4U];
        text += "0123456789abcdef"[byte & 15U];
    }
    return text;
}

bool isCan(const TraceFrame& frame) {
    return frame.kind == FrameKind::Can || frame.kind == FrameKind::CanError;
}

bool agrees(const json& want, const OwnedFrame& got) {
    const TraceFrame& frame = got.frame;
    const bool error = want["error"];
    const bool remote = want["remote"];
    const double seconds = want.value("t_added_up", want["t"].get<double>());
    if (std::abs(static_cast<double>(frame.timeNs) - seconds * 1e9) > 2) return false;
    if (!isCan(frame) || error != (frame.kind == FrameKind::CanError)) return false;
    if (frame.channel != want["channel"].get<unsigned>() + 1) return false;
    if (error) return true;  // the reference reader drops most of an error frame
    return frame.id == want["id"].get<uint32_t>() &&
           want["extended"].get<bool>() == ((frame.flags & kCanExtended) != 0) &&
           remote == ((frame.flags & kCanRemote) != 0) &&
           (remote || want["fd"].get<bool>() == ((frame.flags & kCanFd) != 0)) &&
           want["brs"].get<bool>() == ((frame.flags & kCanBitRateSwitch) != 0) &&
           want["esi"].get<bool>() == ((frame.flags & kCanErrorState) != 0) &&
           want["rx"].get<bool>() == (frame.direction == FrameDirection::Rx) &&
           want["data"].get<std::string>() == hexOf(got.data);
}

// Every frame of the reference occurs in ours, in the reference's order.
void expectInOrder(const json& wanted, const Collected& got) {
    size_t at = 0;
    for (const json& want : wanted) {
        const size_t start = at;
        while (at < got.frames.size() && !agrees(want, got.frames[at])) ++at;
        ASSERT_LT(at, got.frames.size()) << "behind frame " << start << " nothing like " << want;
        ++at;
    }
}

class BlfCorpus : public ::testing::TestWithParam<const char*> {};

TEST_P(BlfCorpus, agreesWithOtherReaders) {
    const auto bytes = corpusFile(std::string("blf/") + GetParam());
    const auto facts = golden("blf", GetParam());
    if (!bytes || !facts) GTEST_SKIP() << "corpus is not here";
    const Collected got = collect(Format::Blf, *bytes);
    if (facts->contains("error")) {
        EXPECT_FALSE(got.header);
        return;
    }
    ASSERT_TRUE(got.header);
    const std::set<std::string> frameTypes = {"1",   "2",   "11",  "29",  "30", "41",
                                              "50",  "57",  "66",  "71",  "73", "86",
                                              "100", "101", "104", "120", "121"};
    uint64_t frames = 0;
    for (const auto& [type, count] : (*facts)["stream"]["by_type"].items()) {
        if (frameTypes.count(type) != 0) frames += count.get<uint64_t>();
    }
    // That file has no containers, so the reference saw an empty stream.
    if (std::string(GetParam()) == "gen_no_containers.blf") {
        EXPECT_EQ(got.units, got.facts.objectCount);
    } else {
        EXPECT_EQ(got.frames.size(), frames);
        EXPECT_EQ(got.units, (*facts)["stream"]["object_count"].get<uint64_t>());
    }
    EXPECT_EQ(got.dropped, 0U);
    const bool truncated = std::string(GetParam()) == "gen_truncated.blf";
    EXPECT_EQ(got.damage.empty(), !truncated);
    if (!facts->contains("python_can")) return;
    expectInOrder((*facts)["python_can"]["first"], got);
    expectInOrder((*facts)["python_can"]["last"], got);
    EXPECT_EQ(collect(Format::Blf, *bytes, 1).frames.size(), got.frames.size());
}

INSTANTIATE_TEST_SUITE_P(Files, BlfCorpus,
                         ::testing::Values("Logging.blf", "issue_1905.blf", "gen_can_kinds.blf",
                                           "gen_lin.blf", "gen_eth_flexray.blf",
                                           "gen_small_containers.blf", "gen_no_containers.blf",
                                           "gen_ten_microseconds.blf", "gen_large_can.blf",
                                           "gen_uncompressed_can.blf", "gen_truncated.blf",
                                           "gen_header_only.blf", "gen_empty.blf",
                                           "gen_not_a_blf.blf"));

TEST(BlfCorpusKinds, linEthernetAndFlexRayAgreeFieldByField) {
    size_t compared = 0;
    for (const char* name : {"gen_lin.blf", "gen_eth_flexray.blf"}) {
        const auto bytes = corpusFile(std::string("blf/") + name);
        const auto facts = golden("blf", name);
        if (!bytes || !facts) GTEST_SKIP() << "corpus is not here";
        const Collected got = collect(Format::Blf, *bytes);
        for (const auto& [kind, group] : (*facts)["vblf"]["types"].items()) {
            for (const json& want : group["objects"]) {
                const uint64_t time = want["header"]["object_time_stamp"];
                const auto found = std::find_if(
                    got.frames.begin(), got.frames.end(),
                    [&](const OwnedFrame& frame) { return frame.frame.timeNs == time; });
                ASSERT_NE(found, got.frames.end()) << kind << " at " << time;
                const TraceFrame& frame = found->frame;
                ++compared;
                if (kind.rfind("LIN", 0) == 0) {
                    EXPECT_EQ(frame.id,
                              want.contains("lin_timestamp_event")
                                  ? want["lin_timestamp_event"]["lin_msg_descr_event"]["id"]
                                  : want["id"]);
                    EXPECT_EQ(frame.checksum, want["crc"].get<unsigned>());
                    EXPECT_EQ(want["data"].get<std::string>().substr(0, 2 * found->data.size()),
                              hexOf(found->data));
                    EXPECT_FALSE(found->data.empty());
                } else if (kind.rfind("ETHERNET", 0) == 0) {
                    EXPECT_EQ(frame.channel, want["channel"].get<unsigned>());
                    EXPECT_EQ(want["frame_data"].get<std::string>(), hexOf(found->data));
                } else {
                    EXPECT_EQ(frame.id, want["frame_id"].get<unsigned>());
                    EXPECT_EQ(frame.cycle, want["cycle"].get<unsigned>());
                    EXPECT_EQ(want["data_bytes"].get<std::string>(), hexOf(found->data));
                }
            }
        }
    }
    EXPECT_GE(compared, 8U);
}

class AscCorpus : public ::testing::TestWithParam<const char*> {};

TEST_P(AscCorpus, agreesWithOtherReader) {
    const auto bytes = corpusFile(std::string("asc/") + GetParam());
    const auto facts = golden("asc", GetParam());
    if (!bytes || !facts) GTEST_SKIP() << "corpus is not here";
    const Collected got = collect(Format::Asc, *bytes);
    if (bytes->empty()) {
        EXPECT_FALSE(got.header);
        return;
    }
    ASSERT_TRUE(got.header);
    EXPECT_EQ(got.dropped, 0U);
    EXPECT_EQ(got.facts.decimal, (*facts)["base"] == "dec");
    EXPECT_EQ(got.facts.relativeTimes, (*facts)["timestamps"] == "relative");
    EXPECT_NE(got.facts.startNs, 0);
    const auto can = std::count_if(got.frames.begin(), got.frames.end(),
                                   [](const OwnedFrame& frame) { return isCan(frame.frame); });
    const json& reference = (*facts)["python_can"];
    EXPECT_EQ(static_cast<uint64_t>(can), reference["count"].get<uint64_t>());
    expectInOrder(reference["first"], got);
    expectInOrder(reference["last"], got);
}

INSTANTIATE_TEST_SUITE_P(Files, AscCorpus,
                         ::testing::Values("logfile.asc", "issue_1256.asc",
                                           "test_CanFdMessage64.asc", "test_CanErrorFrames.asc",
                                           "test_CanRemoteMessage.asc", "single_frame.asc",
                                           "EngineDiagData.asc", "gen_mixed_buses.asc",
                                           "gen_crlf.asc", "gen_dec_relative.asc",
                                           "gen_no_frames.asc", "gen_empty.asc"));

class PcapCorpus : public ::testing::TestWithParam<const char*> {};

void expectPacket(const json& want, const Collected& got) {
    const std::string encapsulation = want["encap"];
    if (encapsulation != "1" && encapsulation != "125") return;
    const std::string time = want["t"];
    const uint64_t ns =
        time.empty()
            ? 0
            : std::stoull(time.substr(0, time.find('.')) + time.substr(time.find('.') + 1));
    const std::string raw = want["raw"];
    const bool found = std::any_of(got.frames.begin(), got.frames.end(), [&](const OwnedFrame& f) {
        if (f.frame.timeNs != ns) return false;
        if (encapsulation == "1")
            return hexOf(f.data).rfind(raw.substr(0, 2 * f.data.size()), 0) == 0;
        const uint32_t id = static_cast<uint32_t>(std::stoul(raw.substr(0, 8), nullptr, 16));
        return f.frame.id == (id & 0x1FFFFFFFU) && hexOf(f.data) == raw.substr(16);
    });
    EXPECT_TRUE(found) << "packet " << want["n"];
}

TEST_P(PcapCorpus, agreesWithOtherReader) {
    const std::string name = GetParam();
    const auto bytes = corpusFile("pcap/" + name);
    const auto facts = golden("pcap", name);
    if (!bytes || !facts) GTEST_SKIP() << "corpus is not here";
    const bool next = name.find(".pcapng") != std::string::npos;
    const Collected got = collect(next ? Format::Pcapng : Format::Pcap, *bytes);
    ASSERT_TRUE(got.header);
    uint64_t frames = 0;
    const json protocols = facts->value("by_protocols", json::object());
    for (const auto& [protocol, count] : protocols.items()) {
        const bool known = protocol.rfind("eth", 0) == 0 || protocol.rfind("can", 0) == 0;
        if (known) frames += count.get<uint64_t>();
    }
    EXPECT_EQ(got.frames.size(), frames);
    EXPECT_EQ(got.dropped, 0U);
    EXPECT_EQ(got.damage.empty(), name != "gen_truncated.pcap");
    for (const char* part : {"first", "last"}) {
        const json packets = facts->value(part, json::array());
        for (const json& want : packets) expectPacket(want, got);
    }
}

// The packet library's own reader as a second opinion on counts, times and bytes.
TEST_P(PcapCorpus, agreesWithPacketLibrary) {
    const std::string name = GetParam();
    const auto bytes = corpusFile("pcap/" + name);
    if (!bytes) GTEST_SKIP() << "corpus is not here";
    char error[PCAP_ERRBUF_SIZE] = {};
    const std::string path = std::string(QUILL_SOURCE_DIR "/../shared/corpus/pcap/") + name;
    pcap_t* file =
        pcap_open_offline_with_tstamp_precision(path.c_str(), PCAP_TSTAMP_PRECISION_NANO, error);
    if (file == nullptr || (pcap_datalink(file) != 1 && pcap_datalink(file) != 227)) {
        if (file != nullptr) pcap_close(file);
        GTEST_SKIP() << "not a file for the packet library";
    }
    const bool ethernet = pcap_datalink(file) == 1;
    const bool next = name.find(".pcapng") != std::string::npos;
    const Collected got = collect(next ? Format::Pcapng : Format::Pcap, *bytes);
    size_t at = 0;
    pcap_pkthdr* head = nullptr;
    const u_char* data = nullptr;
    while (pcap_next_ex(file, &head, &data) == 1) {
        ASSERT_LT(at, got.frames.size());
        const OwnedFrame& frame = got.frames[at++];
        const auto ns = static_cast<uint64_t>(head->ts.tv_sec) * 1'000'000'000U +
                        static_cast<uint64_t>(head->ts.tv_usec);
        // Blocks without a time: the library makes one up from what it read before.
        if (frame.frame.timeNs != 0) {
            EXPECT_EQ(frame.frame.timeNs, ns);
        }
        if (ethernet) {
            EXPECT_EQ(hexOf(frame.data), hexOf({data, head->caplen}));
        }
    }
    pcap_close(file);
    if (name != "many_interfaces-1.pcapng" && name != "gen_two_link_types.pcapng") {
        EXPECT_EQ(at, got.frames.size());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Files, PcapCorpus,
    ::testing::Values("someip.pcapng", "SomeIpSd.pcapng", "doipPackets.pcapng", "VlanPackets.pcap",
                      "nanosecs_big_endian.pcap", "microsecs_big_endian.pcap", "nanosecs.pcap",
                      "many_interfaces-1.pcapng", "linktype_ipv4.pcap", "someip1.pcap", "ptp.pcap",
                      "tcpdump_empty.pcapng", "tcp-handshake-nano.pcap", "test001-be.pcapng",
                      "test016-be.pcapng", "modified-format.pcap", "ntp.pcap", "empty_pcap.pcap",
                      "lidar_fragments.pcap", "same_ports.pcap", "someip-tp.pcap",
                      "gen_socketcan.pcap", "gen_two_link_types.pcapng", "gen_truncated.pcap"));

}  // namespace
}  // namespace quill::traceformats::test
