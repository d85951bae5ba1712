#include <cmath>
#include <string>

#include "DatabaseTest.h"
#include "databaseitem/CanArxmlDatabaseItem.h"

namespace {

using Model::database::CanArxmlDatabaseItem;
using Model::database::CanArxmlEntrySignal;
using Model::database::CanFdCluster;
using Model::database::CanFdDBCEntry;
using Model::database::CanFdPdu;

class ArxmlTest : public DatabaseTest {
protected:
    bool loadFrames(const std::string& frames) {
        return m_item.pyLoadDB(
            write("test.json", R"({"can_cluster": [{"frames": [)" + frames + "]}]}"));
    }
    // The only signal of the only PDU, read from this JSON object.
    const CanArxmlEntrySignal& readSignal(const std::string& signal) {
        const bool done = loadFrames(R"({"ipdus": [{"isignals": [)" + signal + "]}]}");
        EXPECT_TRUE(done) << logText();
        return *m_item.database()->cluster->dbcEntrys.at(0)->pdus.at(0)->signals.at(0);
    }
    CanArxmlDatabaseItem m_item;
};

TEST_F(ArxmlTest, clustersAndChannelsShareTheirFrames) {
    ASSERT_TRUE(m_item.pyLoadDB(write("full.json", R"({"can_cluster": [
        {"name": "Body", "protocol": "CAN-FD", "protoclo_version": "2.0", "baud_rate": 500000,
         "can_fd_baud_rate": 2000000, "node_infos": [{"name": "DJ"}, "Guard"],
         "frames": [{"id": 5, "length": 9, "name": "F1", "is_canfd": true,
                     "senders": ["DJ"], "receivers": ["Guard"]},
                    {"id": 6, "name": "F2", "is_extended_frame": true, "senders": "DJ"}],
         "channels": [{"name": "A", "frames": ["F2", "none"]}, {"name": "B", "frames": ["F1"]}]},
        {"name": "Second", "fd_baud_rate": 4000000, "frames": [{"id": 7, "name": "G"}]}]})")))
        << logText();
    ASSERT_EQ(m_item.database()->clusters.size(), 2u);
    const CanFdCluster& body = *m_item.database()->cluster;
    EXPECT_EQ(body.name + body.protocol + body.signature, "BodyCAN-FD2.0");
    EXPECT_EQ(body.baudRate, 500000);
    EXPECT_EQ(body.fdBaudRate, 2000000);
    EXPECT_EQ(body.nodes, (std::vector<std::string>{"DJ", "Guard"}));
    EXPECT_EQ(m_item.database()->clusters.at(1)->fdBaudRate, 4000000);
    ASSERT_EQ(body.channels.size(), 2u);
    ASSERT_EQ(body.channels.at(0)->entrys.size(), 1u);
    EXPECT_EQ(body.channels.at(0)->entrys.at(0), body.dbcEntrys.at(1));
    const CanFdDBCEntry& first = *body.dbcEntrys.at(0);
    EXPECT_EQ(first.id * 100 + first.dlc, 509);
    EXPECT_TRUE(first.isFD && !first.isExtended);
    EXPECT_EQ(first.senders, std::vector<std::string>{"DJ"});
    EXPECT_EQ(first.receivers, std::vector<std::string>{"Guard"});
    EXPECT_TRUE(body.dbcEntrys.at(1)->senders.empty());  // a text where an array belongs
    EXPECT_EQ(m_item.find({7, "", false, false})->name, "G");
    EXPECT_EQ(m_item.find({0, "F1", false, false})->id, 5);
    EXPECT_EQ(m_item.find({6, "F2", false, false}), nullptr);
}

TEST_F(ArxmlTest, pdusOfEveryKindAreRead) {
    ASSERT_TRUE(loadFrames(R"({"ipdus": [
        {"type": "I-SIGNAL-I-PDU", "name": "P", "start_position": 8, "length": 4,
         "unused_bit_pattern": "0xFF", "timing": {"cycle_time": 100}, "trigger": "T",
         "header": "NONE", "rx_accept": "ALL", "receivers": ["R"], "senders": ["S"]},
        {"type": "SECURED-I-PDU", "name": "Sec", "ipdu": [{"timing": {"cycle_time": 20},
         "isignals": [{"name": "Inner"}]}], "isignals": [{"name": "Mac", "secured_signal": true}]},
        {"type": "CONTAINER-I-PDU", "header": "SHORT-HEADER",
         "ipdus": [{"name": "C1", "header_id": 9, "isignals": [{"name": "S1"}]}, {"name": "C2",
          "contained_ipdu_pros": {"header_id_short_header": 5, "header_id_long_header": 6}}]},
        {"type": "I-SIGNAL-I-PDU", "ipdus": [{"name": "ignored"}], "ipdu": [{"name": "ignored"}]}
        ]})"))
        << logText();
    const CanFdDBCEntry& frame = *m_item.database()->cluster->dbcEntrys.at(0);
    ASSERT_EQ(frame.pdus.size(), 4u);
    EXPECT_EQ(frame.cycleTime, 20);
    const CanFdPdu& plain = *frame.pdus.at(0);
    EXPECT_EQ(plain.pdutype + plain.name + plain.unusedBitPattern + plain.trigger + plain.rxAccept,
              "I-SIGNAL-I-PDUP0xFFTALL");
    EXPECT_EQ(plain.startPosition * 10 + plain.length, 84);
    EXPECT_EQ(plain.header_type, 0);
    EXPECT_EQ(plain.cycleTime, 100);
    EXPECT_EQ(plain.senders.at(0) + plain.receivers.at(0), "SR");
    const CanFdPdu& secured = *frame.pdus.at(1);
    ASSERT_EQ(secured.signals.size(), 2u);
    EXPECT_TRUE(secured.signals.at(0)->isSecured);
    EXPECT_EQ(secured.signals.at(1)->name, "Inner");
    const CanFdPdu& container = *frame.pdus.at(2);
    EXPECT_EQ(container.header_type, 2);
    ASSERT_EQ(container.pdus.size(), 2u);
    EXPECT_EQ(container.pdus.at(0)->id * 10 + container.pdus.at(1)->id, 95);
    EXPECT_EQ(container.pdus.at(0)->signals.at(0)->name, "S1");
    EXPECT_TRUE(frame.pdus.at(3)->pdus.empty());
}

TEST_F(ArxmlTest, signalKeysAreRead) {
    const CanArxmlEntrySignal& s = readSignal(R"({"name": "Temp", "length": 12,
        "byte_order": "MOST-SIGNIFICANT-BYTE-FIRST", "start_position": 21, "transport": "PENDING",
        "init_value": "7", "dyn_length": "no", "receivers": ["R"],
        "dataconstr": {"phy_lower_limit": "-40", "phy_upper_limit": 200, "inter_lower_limit": 1},
        "compu_method": {"name": "CM", "category": "LINEAR", "compu_offset": -40, "compu_scale": 5,
            "compu_denominator": 2, "unit": "C", "value_table": [{"name": "cold", "value": 0}]},
        "sw_base_type": {"name": "S16", "size": 16, "encoding": "2C"}})");
    EXPECT_EQ(s.name + s.unit + s.transport + s.dynamicLength + s.baseType, "TempCPENDINGnoS16");
    EXPECT_EQ(s.compuMethod + s.compuCategory, "CMLINEAR");
    EXPECT_EQ(s.startBit * 100 + s.bitLength, 2112);
    EXPECT_TRUE(s.isBigEndian && s.isSigned && !s.isFloat && s.hasInitValue);
    EXPECT_EQ(s.initValue, 7);
    EXPECT_EQ(s.factor, 2.5);
    EXPECT_EQ(s.offset, -40);
    EXPECT_EQ(s.valMin, -40);
    EXPECT_EQ(s.valMax, 200);
    EXPECT_EQ(s.mapValueTable.at(0), "cold");
    EXPECT_EQ(s.receivers, std::vector<std::string>{"R"});
}

TEST_F(ArxmlTest, byteOrderIsComparedExactly) {
    EXPECT_FALSE(readSignal(R"({"byte_order": "most-significant-byte-first"})").isBigEndian);
    EXPECT_FALSE(readSignal(R"({"byte_order": "MOST-SIGNIFICANT-BYTE-LAST"})").isBigEndian);
    EXPECT_FALSE(readSignal("{}").isBigEndian);
}

TEST_F(ArxmlTest, scalingAndLimitsHaveDefaults) {
    const CanArxmlEntrySignal& none = readSignal("{}");
    EXPECT_EQ(none.factor, 1.0);
    EXPECT_EQ(none.offset + none.valMin + none.valMax, 0.0);
    EXPECT_EQ(readSignal(R"({"compu_method": {"compu_scale": 3, "compu_denominator": 0}})").factor,
              3.0);
    const CanArxmlEntrySignal& raw = readSignal(R"({"compu_method": {"compu_scale": -2,
        "compu_offset": 10}, "dataconstr": {"inter_lower_limit": 0, "inter_upper_limit": 100}})");
    EXPECT_EQ(raw.valMin, -190);
    EXPECT_EQ(raw.valMax, 10);
    const CanArxmlEntrySignal& open =
        readSignal(R"({"dataconstr": {"phy_lower_limit": 5, "phy_upper_limit": "INF"}})");
    EXPECT_EQ(open.valMin, 5);
    EXPECT_TRUE(std::isinf(open.valMax));
}

TEST(HeaderType, codesAndTextsMatch) {
    using Model::database::headerTypeCode;
    using Model::database::headerTypeText;
    EXPECT_EQ(headerTypeCode("NO-HEADER"), 1);
    EXPECT_EQ(headerTypeCode("SHORT-HEADER"), 2);
    EXPECT_EQ(headerTypeCode("LONG-HEADER"), 3);
    for (const char* other : {"", "NONE", "short-header"}) EXPECT_EQ(headerTypeCode(other), 0);
    EXPECT_EQ(headerTypeText(2), "SHORT-HEADER");
    for (const int32_t code : {0, 4, -1}) EXPECT_EQ(headerTypeText(code), "");
}

TEST_F(ArxmlTest, wrongTypesFail) {
    EXPECT_FALSE(m_item.pyLoadDB(write("a.json", R"({"can_cluster": [{"frames": [{"ipdus":
        [{"isignals": [{"length": "x", "compu_method": 5}]}]}]}]})")));
    EXPECT_NE(m_item.lastError().find("can_cluster[0].frames[0].ipdus[0].isignals[0].compu_method"),
              std::string::npos)
        << m_item.lastError();
}

}  // namespace
