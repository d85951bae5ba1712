#include <bit>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <string>

#include "DatabaseTest.h"
#include "databaseitem/CanDbcDatabaseItem.h"
#include "databaseitem/FrameDecoding.h"

namespace {

using namespace Model::database;
using Bytes = std::vector<uint8_t>;

std::map<std::string, double> decodeToMap(const CanDBCEntry& frame, const Bytes& payload) {
    std::vector<DecodedSignal> decoded;
    decodeFrame(frame, payload, decoded);
    std::map<std::string, double> values;
    for (const DecodedSignal& signal : decoded) values[*signal.name] = signal.physical;
    return values;
}

// Bit by bit, from the least significant one up: what decodeFrame has to give for one signal.
std::optional<double> slowValue(const CanDBCEntrySignal& s, const Bytes& payload) {
    uint64_t raw = 0;
    int byte = s.startBit / 8;
    int bit = s.startBit % 8;
    for (int i = 0; i < s.bitLength; ++i) {
        if (byte < 0 || byte >= static_cast<int>(payload.size())) return std::nullopt;
        const uint64_t one = payload[static_cast<size_t>(byte)] >> bit & 1U;
        raw |= one << i;
        if (++bit == 8) {
            bit = 0;
            byte += s.isBigEndian ? -1 : 1;
        }
    }
    double number = static_cast<double>(raw);
    if (s.isFloat && s.bitLength == 32) {
        number = std::bit_cast<float>(static_cast<uint32_t>(raw));
    } else if (s.isFloat) {
        number = std::bit_cast<double>(raw);
    } else if (s.isSigned && (raw >> (s.bitLength - 1) & 1U) != 0) {
        // The negative numbers of n bits are those of 64 bits with their upper bits set.
        if (s.bitLength < 64) raw |= ~uint64_t{0} << s.bitLength;
        number = static_cast<double>(static_cast<int64_t>(raw));
    }
    return number * s.factor + s.offset;
}

TEST(DecodeFrame, agreesWithASlowReference) {
    constexpr unsigned kSeed = 20240611;
    RecordProperty("seed", static_cast<int>(kSeed));
    std::mt19937_64 random(kSeed);
    const auto below = [&](uint64_t n) { return static_cast<int32_t>(random() % n); };
    for (int round = 0; round < 4000; ++round) {
        CanDBCEntry frame;
        Bytes payload(static_cast<size_t>(below(65)));
        for (uint8_t& byte : payload) byte = static_cast<uint8_t>(random());
        for (int i = 0; i < 6; ++i) {
            auto signal = std::make_shared<CanDBCEntrySignal>();
            signal->name = "S" + std::to_string(i);
            signal->isFloat = below(8) == 0;
            signal->bitLength = signal->isFloat ? (below(2) + 1) * 32 : below(64) + 1;
            signal->startBit = below(8 * payload.size() + 16);
            signal->isBigEndian = below(2) == 0;
            signal->isSigned = below(2) == 0;
            signal->factor = 0.25 * (below(9) - 4);
            signal->offset = below(100) - 50;
            frame.signals.push_back(std::move(signal));
        }
        const auto values = decodeToMap(frame, payload);
        for (const auto& signal : frame.signals) {
            const auto expected = slowValue(*signal, payload);
            const auto found = values.find(signal->name);
            ASSERT_EQ(expected.has_value(), found != values.end()) << kSeed << " round " << round;
            if (!expected) continue;
            ASSERT_TRUE(found->second == *expected ||
                        (std::isnan(found->second) && std::isnan(*expected)))
                << kSeed << " round " << round;
            const auto alone = decodeSignalPhysical(*signal, payload);
            ASSERT_TRUE(alone == *expected || std::isnan(*expected));
        }
    }
}

class MultiplexTest : public DatabaseTest {
protected:
    const CanDBCEntry& load(const std::string& signals) {
        const bool done =
            m_item.pyLoadDB(write("m.json", R"({"messages": [{"signals": [)" + signals + "]}]}"));
        EXPECT_TRUE(done) << logText();
        return *m_item.database()->dbcEntrys.at(0);
    }
    // Names of the decoded signals, joined.
    static std::string names(const CanDBCEntry& frame, const Bytes& payload) {
        std::string joined;
        for (const auto& [name, value] : decodeToMap(frame, payload)) joined += name;
        return joined;
    }
    CanDbcDatabaseItem m_item;
};

TEST_F(MultiplexTest, plainMultiplexingShowsOneGroup) {
    const CanDBCEntry& frame = load(R"(
        {"name": "A", "start_bit": 8, "bit_length": 8, "multiplexer_id": 0},
        {"name": "M", "bit_length": 8, "is_multiplexor": true},
        {"name": "B", "start_bit": 8, "bit_length": 8, "multiplexer_id": 1},
        {"name": "P", "start_bit": 16, "bit_length": 8})");
    EXPECT_EQ(names(frame, {0, 1, 2}), "AMP");
    EXPECT_EQ(names(frame, {1, 1, 2}), "BMP");
    EXPECT_EQ(names(frame, {7, 1, 2}), "MP");
    EXPECT_EQ(names(frame, {0}), "M");  // the rest lies beyond the payload
    EXPECT_EQ(names(frame, {}), "");
}

TEST_F(MultiplexTest, chainsAndRangesAreFollowed) {
    const CanDBCEntry& frame = load(R"(
        {"name": "M", "bit_length": 8, "is_multiplexor": true},
        {"name": "N", "start_bit": 8, "bit_length": 8, "is_multiplexor": true,
         "multiplexer_signal": "M", "multiplexer_id": 99, "multiplexer_ranges": [[1, 3], [5, 5]]},
        {"name": "X", "start_bit": 16, "bit_length": 8, "multiplexer_signal": "N",
         "multiplexer_ranges": [[10, 20]]},
        {"name": "Y", "start_bit": 16, "bit_length": 8, "multiplexer_signal": "Gone",
         "multiplexer_ranges": [[1, 1]]})");
    EXPECT_EQ(names(frame, {0, 15, 0}), "MY");
    EXPECT_EQ(names(frame, {3, 9, 0}), "MNY");
    EXPECT_EQ(names(frame, {5, 20, 0}), "MNXY");
    EXPECT_EQ(names(frame, {4, 20, 0}), "MY");
}

TEST_F(MultiplexTest, ringsEnd) {
    EXPECT_EQ(names(load(R"(
        {"name": "A", "bit_length": 8, "multiplexer_signal": "B", "multiplexer_ranges": [[0, 255]]},
        {"name": "B", "bit_length": 8, "multiplexer_signal": "A", "multiplexer_ranges": [[0, 255]]},
        {"name": "C", "bit_length": 8})"),
                    {1}),
              "C");
}

TEST_F(MultiplexTest, scriptsMayChangeTheRecord) {
    load(R"({"name": "M", "bit_length": 8, "is_multiplexor": true},
            {"name": "A", "start_bit": 8, "bit_length": 8, "multiplexer_id": 1})");
    CanDBCEntry& frame = *m_item.database()->dbcEntrys.at(0);
    std::swap(frame.signals.at(0), frame.signals.at(1));
    frame.signals.insert(frame.signals.begin(), nullptr);
    EXPECT_EQ(names(frame, {1, 5}), "AM");
    frame.signals.at(1)->factor = 10;
    EXPECT_EQ(decodeToMap(frame, {1, 5}).at("A"), 50);
    frame.signals.pop_back();
    EXPECT_EQ(names(frame, {0, 5}), "A");
}

TEST(DecodeFrame, textsFollowTheSignedNumber) {
    CanDBCEntry frame;
    frame.signals = {std::make_shared<CanDBCEntrySignal>()};
    CanDBCEntrySignal& signal = *frame.signals.front();
    signal.bitLength = 8;
    signal.isSigned = true;
    signal.mapValueTable = {{-1, "invalid"}, {2, "two"}};
    std::vector<DecodedSignal> decoded;
    decodeFrame(frame, Bytes{0xFF}, decoded);
    ASSERT_NE(decoded.at(0).text, nullptr);
    EXPECT_EQ(*decoded.at(0).text, "invalid");
    EXPECT_EQ(decoded.at(0).raw, 0xFFu);
    decodeFrame(frame, Bytes{3}, decoded);
    EXPECT_EQ(decoded.at(0).text, nullptr);
}

TEST(EncodeSignal, respectsSignScalingLimitsAndNeighbours) {
    CanDBCEntrySignal signal;
    signal.startBit = 4;
    signal.bitLength = 8;
    signal.isSigned = true;
    signal.factor = 0.5;
    signal.valMin = -10;
    signal.valMax = 20;
    Bytes data = {0xFF, 0xFF};
    using Model::codec::EncodeStatus;
    EXPECT_EQ(encodeSignalPhysical(signal, data, -2.5), EncodeStatus::Ok);
    EXPECT_EQ(data, (Bytes{0xBF, 0xFF}));
    EXPECT_EQ(decodeSignalPhysical(signal, data), -2.5);
    const Bytes before = data;
    EXPECT_EQ(encodeSignalPhysical(signal, data, 20.5), EncodeStatus::OutOfLimits);
    signal.valMin = signal.valMax = 0;
    EXPECT_EQ(encodeSignalPhysical(signal, data, 64), EncodeStatus::Overflow);
    EXPECT_EQ(encodeSignalPhysical(signal, std::span(data).first(1), 1), EncodeStatus::DoesNotFit);
    EXPECT_EQ(data, before);
}

TEST(DecodeFrame, containersFollowTheirHeaders) {
    auto makePdu = [](int32_t id, const char* name) {
        auto signal = std::make_shared<CanArxmlEntrySignal>();
        signal->name = name;
        signal->bitLength = 8;
        auto pdu = std::make_shared<CanFdPdu>();
        pdu->id = id;
        pdu->signals = {signal};
        return pdu;
    };
    auto container = std::make_shared<CanFdPdu>();
    container->header_type = 2;
    container->pdus = {makePdu(0x010203, "A"), makePdu(7, "B"), nullptr};
    CanFdDBCEntry frame;
    frame.pdus = {container};
    const auto decode = [&](const Bytes& payload) {
        std::vector<DecodedSignal> decoded;
        decodeFrame(frame, payload, decoded);
        std::string text;
        for (const DecodedSignal& s : decoded) {
            text += *s.name + std::to_string(static_cast<int>(s.physical)) + " ";
        }
        return text;
    };
    EXPECT_EQ(decode({0, 0, 7, 1, 50, 1, 2, 3, 2, 60, 61, 0, 0, 0, 0, 9}), "B50 A60 ");
    EXPECT_EQ(decode({0, 0, 9, 1, 50, 0, 0, 7, 1, 51}), "B51 ");  // an unknown one is stepped over
    EXPECT_EQ(decode({0, 0, 7, 200, 50}), "B50 ");                // longer than the frame
    EXPECT_EQ(decode({0, 0, 7, 0}), "");
    EXPECT_EQ(decode({0, 0}), "");
    container->header_type = 3;
    EXPECT_EQ(decode({0, 0, 0, 7, 0, 0, 0, 1, 42}), "B42 ");
    EXPECT_EQ(decode({0, 0, 0, 7, 255, 255, 255, 255, 42}), "B42 ");
}

TEST(DecodeFrame, multiplexedPduShowsThePartInForce) {
    auto makePart = [](const char* name, std::optional<int64_t> code) {
        auto signal = std::make_shared<CanArxmlEntrySignal>();
        signal->name = name;
        signal->startBit = 8;
        signal->bitLength = 8;
        auto part = std::make_shared<CanFdPdu>();
        part->selectorCode = code;
        part->signals = {signal};
        return part;
    };
    auto pdu = std::make_shared<CanFdPdu>();
    pdu->isMultiplexed = true;
    pdu->selector.startBit = 4;
    pdu->selector.bitLength = 2;
    pdu->pdus = {makePart("zero", 0), makePart("three", 3), makePart("always", std::nullopt)};
    CanFdDBCEntry frame;
    frame.pdus = {pdu};
    const auto names = [&](const Bytes& payload) {
        std::vector<DecodedSignal> decoded;
        decodeFrame(frame, payload, decoded);
        std::string text;
        for (const DecodedSignal& s : decoded) text += *s.name + " ";
        return text;
    };
    EXPECT_EQ(names({0x00, 1}), "zero always ");
    EXPECT_EQ(names({0x30, 1}), "three always ");
    EXPECT_EQ(names({0x20, 1}), "always ");
    EXPECT_EQ(names({0x30}), "");
}

TEST(FindFrame, takesNameOrIdAndExtendedFrames) {
    CanDbcDatabase db;
    const auto add = [&](int32_t id, const char* name, bool extended) {
        auto frame = std::make_shared<CanDBCEntry>();
        frame->id = id;
        frame->name = name;
        frame->isExtended = extended;
        db.dbcEntrys.push_back(frame);
        return frame;
    };
    const auto zero = add(0, "Zero", false);
    const auto extended = add(5, "Same", true);
    const auto standard = add(5, "Same", false);
    db.dbcEntrys.push_back(nullptr);
    EXPECT_EQ(findFrame(db, 5), extended);
    EXPECT_EQ(findFrame(db, 5, false), standard);
    EXPECT_EQ(findFrame(db, "Same", true), extended);
    EXPECT_EQ(findFrame(db, "Same", false), standard);
    EXPECT_EQ(findFrame(db, "Zero"), zero);
    EXPECT_EQ(findFrame(db, "Other"), nullptr);
    EXPECT_EQ(findFrame(db, int64_t{5} | int64_t{1} << 32), nullptr);
}

}  // namespace
