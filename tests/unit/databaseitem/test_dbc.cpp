#include <string>

#include "DatabaseTest.h"
#include "databaseitem/CanDbcDatabaseItem.h"
#include "databaseitem/JsonObjectReader.h"

namespace {

using Model::database::CanDbcDatabaseItem;
using Model::database::CanDBCEntry;
using Model::database::CanDBCEntrySignal;
using Model::database::CanFrameFormat;
using Model::database::FrameKey;

class DbcTest : public DatabaseTest {
protected:
    // Loads a database of these messages (JSON text of the array's elements).
    bool load(const std::string& messages) {
        return m_item.pyLoadDB(write("test.json", "{\"messages\": [" + messages + "]}"));
    }
    const CanDBCEntry& frame(size_t index = 0) { return *m_item.database()->dbcEntrys.at(index); }
    const CanDBCEntrySignal& signal(size_t index = 0) { return *frame().signals.at(index); }

    CanDbcDatabaseItem m_item;
};

TEST_F(DbcTest, everyKeyOfFrameAndSignalIsRead) {
    ASSERT_TRUE(m_item.pyLoadDB(write("full.json", R"({
        "nodes": ["Engine", "Gateway"],
        "messages": [{"id": 291, "dlc": 8, "name": "Motor", "comment": "first", "is_fd": true,
            "is_extended_frame": true, "transmitters": ["Engine", "Gateway"],
            "attributes": [{"name": "Other", "value": [1]},
                           {"name": "GenMsgCycleTime", "value": 100},
                           {"name": "VFrameFormat", "value": "ExtendedCAN_FD"}],
            "signals": [{"name": "Speed", "comment": "of the shaft", "unit": "1/min",
                "start_bit": 8, "bit_length": 16, "is_signed": true, "is_big_endian": true,
                "is_float": true, "value_max": 8000, "value_min": "-10.5", "offset": "1e1",
                "factor": "0.5", "receivers": ["Gateway"],
                "attributes": [{"name": "GenSigStartValue", "value": "12.5"}],
                "value_table": [{"name": "off", "value": 0}, {"name": "bad", "value": -1}]}]}]})")))
        << logText();
    EXPECT_EQ(m_item.database()->nodes, (std::vector<std::string>{"Engine", "Gateway"}));
    const CanDBCEntry& entry = frame();
    EXPECT_EQ(entry.id, 291);
    EXPECT_EQ(entry.dlc, 8);
    EXPECT_EQ(entry.name + entry.comment, "Motorfirst");
    EXPECT_TRUE(entry.isExtended && entry.isFD);
    EXPECT_EQ(entry.cycleTime, 100);
    EXPECT_EQ(entry.frameFormat, CanFrameFormat::ExtendedFd);
    EXPECT_EQ(entry.transmitters.size(), 2u);
    const CanDBCEntrySignal& s = signal();
    EXPECT_EQ(s.name + s.comment + s.unit, "Speedof the shaft1/min");
    EXPECT_EQ(s.startBit, 8);
    EXPECT_EQ(s.bitLength, 16);
    EXPECT_TRUE(s.isSigned && s.isBigEndian && s.isFloat && s.hasInitValue);
    EXPECT_EQ(s.valMax, 8000);
    EXPECT_EQ(s.valMin, -10.5);
    EXPECT_EQ(s.offset, 10);
    EXPECT_EQ(s.factor, 0.5);
    EXPECT_EQ(s.initValue, 12.5);
    EXPECT_EQ(s.receivers, std::vector<std::string>{"Gateway"});
    EXPECT_EQ(s.transmitters, entry.transmitters);
    EXPECT_EQ(s.mapValueTable, (std::map<double, std::string>{{-1, "bad"}, {0, "off"}}));
}

TEST_F(DbcTest, missingKeysLeaveTheDefaults) {
    ASSERT_TRUE(load(R"({}, {"signals": [{}, {"comment": null, "factor": "abc",
        "receivers": "nobody", "value_max": "x"}]})"));
    EXPECT_TRUE(frame(0).signals.empty());
    EXPECT_EQ(frame(0).frameFormat, CanFrameFormat::Standard);
    EXPECT_EQ(frame(0).cycleTime, 0);
    const CanDBCEntrySignal& plain = *frame(1).signals.at(0);
    EXPECT_EQ(plain.factor, 1.0);
    EXPECT_EQ(plain.offset + plain.valMax + plain.valMin + plain.initValue, 0.0);
    EXPECT_FALSE(plain.hasInitValue || plain.isSigned || plain.isFloat || plain.isBigEndian);
    const CanDBCEntrySignal& odd = *frame(1).signals.at(1);
    EXPECT_EQ(odd.factor, 0.0);  // a text that is no number
    EXPECT_TRUE(odd.receivers.empty());
    ASSERT_TRUE(load(""));
    EXPECT_TRUE(m_item.database()->dbcEntrys.empty());
    ASSERT_TRUE(m_item.pyLoadDB(write("none.json", "{}")));
    EXPECT_TRUE(m_item.database()->dbcEntrys.empty());
}

TEST_F(DbcTest, identifiersWrapAndReadHexadecimalTexts) {
    ASSERT_TRUE(load(R"({"id": 2147483653}, {"id": "0x1A0"}, {"id": -1}, {"id": "zz"})"));
    EXPECT_EQ(frame(0).id, INT32_MIN + 5);
    EXPECT_EQ(frame(1).id, 0x1A0);
    EXPECT_EQ(frame(2).id, -1);
    EXPECT_EQ(frame(3).id, 0);
    EXPECT_NE(logText().find("parseHexString  failed, text: zz"), std::string::npos);
}

struct FormatCase {
    const char* text;
    bool extended;
    bool fd;
    int code;
};
TEST(FrameFormat, textWinsOverFlags) {
    for (const FormatCase& c :
         {FormatCase{"StandardCAN", true, true, 0}, FormatCase{"StandardCAN_FD", true, false, 1},
          FormatCase{"ExtendedCAN", false, true, 2}, FormatCase{"ExtendedCAN_FD", false, false, 3},
          FormatCase{"", true, true, 3}, FormatCase{"", true, false, 2},
          FormatCase{"", false, true, 1}, FormatCase{"", false, false, 0},
          FormatCase{"J1939PG", true, false, 2}, FormatCase{"standardcan", false, true, 1}}) {
        EXPECT_EQ(static_cast<int>(Model::database::frameFormatOf(c.text, c.extended, c.fd)),
                  c.code)
            << c.text << c.extended << c.fd;
    }
}

struct LookupCase {
    const char* what;
    const char* messages;
    FrameKey key;
    const char* found;  // null when nothing is to be found
};
TEST_F(DbcTest, lookupFollowsTheFixedKeys) {
    const FrameKey five{5, "", false, false};
    const FrameKey b{0, "B", false, false};
    for (const LookupCase& c :
         {LookupCase{"by id", R"({"id": 4, "name": "A"}, {"id": 5, "name": "B"})", five, "B"},
          LookupCase{"id beats the name", R"({"id": 0, "name": "A"}, {"id": 5, "name": "B"})", b,
                     "A"},
          LookupCase{"by name", R"({"id": 7, "name": "C"}, {"id": 5, "name": "B"})", b, "B"},
          LookupCase{"name is case-sensitive", R"({"id": 5, "name": "b"})", b, nullptr},
          LookupCase{"extended by id", R"({"id": 5, "name": "B", "is_extended_frame": true})", five,
                     nullptr},
          LookupCase{"extended by name", R"({"id": 5, "name": "B", "is_extended_frame": true})", b,
                     nullptr},
          LookupCase{"empty name answers a missing id",
                     R"({"id": 9, "name": "A"}, {"id": 8, "comment": "x"})", five, ""},
          LookupCase{"extended frame of the same id before hides the fast path",
                     R"({"id": 5, "name": "E", "is_extended_frame": true}, {"id": 5, "name": "B"})",
                     five, nullptr},
          LookupCase{"lowest id of that name", R"({"id": 9, "name": "B", "dlc": 1},
                     {"id": -3, "name": "B"})",
                     b, "B"},
          LookupCase{"FD does not matter", R"({"id": 5, "name": "B", "is_fd": true})", five, "B"},
          LookupCase{"extended key finds extended frames",
                     R"({"id": 5, "name": "B", "is_extended_frame": true})",
                     {5, "", false, true},
                     "B"},
          LookupCase{
              "first boolean has no say", R"({"id": 5, "name": "B"})", {5, "", true, false}, "B"},
          LookupCase{"empty database", "", five, nullptr}}) {
        ASSERT_TRUE(load(c.messages)) << c.what;
        const auto found = m_item.find(c.key);
        ASSERT_EQ(found != nullptr, c.found != nullptr) << c.what;
        if (!found) continue;
        EXPECT_EQ(found->name, c.found) << c.what;
        EXPECT_EQ(found->dlc, 0) << c.what;
    }
}

TEST(ParseHexString, takesBothForms) {
    EXPECT_EQ(Model::database::parseHexString("0xfF"), 255u);
    EXPECT_EQ(Model::database::parseHexString("1a"), 26u);
    EXPECT_EQ(Model::database::parseHexString(""), 0u);
    EXPECT_EQ(Model::database::parseHexString("0x10g"), 0u);
    EXPECT_EQ(Model::database::parseHexString("11112222333344445"), 0u);  // more than 64 bits
}

}  // namespace
