#include <string>

#include "DatabaseTest.h"
#include "databaseitem/LinLdfDatabaseItem.h"
#include "databaseitem/LinScheduleTables.h"
#include "lin/lin.pb.h"

namespace {

using Model::database::LDFFrame;
using Model::database::LdfScheduleEntry;
using Model::database::LinLdfDatabase;
using Model::database::LinLdfDatabaseItem;
using Model::database::LinSignal;
using Model::database::makeSlot;

class LdfTest : public DatabaseTest {};

TEST_F(LdfTest, everyKeyIsRead) {
    LinLdfDatabaseItem item;
    ASSERT_TRUE(item.pyLoadDB(write("full.json", R"({
        "header": {"protocol_version": "2.1", "language_version": "2.2", "speed": 19200},
        "nodes": {"master": {"name": "CEM", "timebase": 0.005, "jitter": 0.0001},
                  "slaves": ["LSM", "RSM"]},
        "node_attributes": [{"name": "LSM", "lin_protocol": "2.1", "configured_nad": 33,
            "initial_nad": 1, "product_id": {"supplier_id": 19023, "function_id": 18497,
            "variant": 2}, "response_error": "LSMerror", "N_As_timeout": 1, "N_Cr_timeout": 0.5,
            "configurable_frames": ["F1", "F2"]}],
        "frames": [{"id": 1, "length": 2, "name": "F1",
            "attributes": {"publisher": ["CEM"], "checksum": "enhanced", "type": "unconditional"},
            "signals": [{"name": "A", "bit_length": 4, "is_big_endian": true, "is_signed": true,
                "start_bit": 3, "init_value": 5, "comment": "c", "unit": "V",
                "factor": 0.5, "offset": -1, "value_min": 2, "value_max": 9,
                "subscribers": ["LSM", "RSM"], "value_table": [{"name": "on", "value": 1}]},
                {"name": "B", "value_min": 2, "offset": 7}]},
            {"id": 2, "name": "F2", "attributes": {"publisher": "LSM", "checksum": "classic"}}],
        "schedule_tables": [{"name": "T", "schedule": [
            {"command": {"type": "unconditional", "frame": "F1"}, "delay": 0.01}]}]})")))
        << logText();
    const LinLdfDatabase& db = *item.database();
    EXPECT_EQ(db.header.protocolVersion + db.header.languageVersion, "2.12.2");
    EXPECT_EQ(db.header.speed, 19200);
    EXPECT_EQ(db.master.name, "CEM");
    EXPECT_EQ(db.master.timebase, 0.005);
    EXPECT_EQ(db.master.jitter, 0.0001);
    EXPECT_EQ(db.slaves.size(), 2u);
    const auto& node = db.nodeAttributes.at(0);
    EXPECT_EQ(node.name + node.linProtocol + node.responseError, "LSM2.1LSMerror");
    EXPECT_EQ(node.configuredNad + node.initialNad * 1000, 1033);
    EXPECT_EQ(node.productId.supplierId, 19023);
    EXPECT_EQ(node.productId.functionId, 18497);
    EXPECT_EQ(node.productId.variant, 2);
    EXPECT_EQ(node.nAsTimeout, 1.0);
    EXPECT_EQ(node.nCrTimeout, 0.5);
    EXPECT_EQ(node.configurableFrames.size(), 2u);
    const LDFFrame& first = *db.frame.at(0);
    EXPECT_EQ(first.publishers, std::vector<std::string>{"CEM"});
    EXPECT_EQ(first.checksum + first.type, "Enhancedunconditional");
    EXPECT_EQ(db.frame.at(1)->publishers, std::vector<std::string>{"LSM"});
    EXPECT_EQ(db.frame.at(1)->checksum, "Classic");
    const LinSignal& a = *first.signals.at(0);
    EXPECT_EQ(a.startBit + a.bitLength * 10, 43);
    EXPECT_TRUE(a.isBigEndian && a.isSigned && a.hasFactor);
    EXPECT_EQ(a.valMin + a.valMax * 10, 92);
    EXPECT_EQ(a.factor + a.offset, -0.5);
    EXPECT_EQ(a.initValue, 5);
    EXPECT_EQ(a.mapValueTable.at(1), "on");
    const LinSignal& b = *first.signals.at(1);
    EXPECT_FALSE(b.hasFactor);
    EXPECT_EQ(b.factor, 1.0);
    EXPECT_EQ(b.offset + static_cast<double>(b.valMin), 0.0);  // read with a factor only
    EXPECT_EQ(db.schedule_tables.at(0)->name(), "T");
    EXPECT_EQ(db.schedule_tables.at(0)->channel_id(), 0);
    EXPECT_EQ(db.schedule_tables.at(0)->slot_array(0).time_interval(), 10u);
}

std::shared_ptr<LDFFrame> makeFrame(uint16_t id, const std::string& name, uint16_t length,
                                    const std::string& publisher, const std::string& checksum) {
    auto frame = std::make_shared<LDFFrame>();
    frame->id = id;
    frame->name = name;
    frame->length = length;
    if (!publisher.empty()) frame->publishers = {publisher};
    frame->checksum = checksum;
    return frame;
}

LinLdfDatabase makeCluster() {
    LinLdfDatabase db;
    db.master.name = "Master";
    db.frame = {makeFrame(1, "Cmd", 2, "MASTER", "enhanced"),
                makeFrame(2, "State", 8, "S1", "Classic"), makeFrame(60, "MasterReq", 8, "S1", ""),
                makeFrame(61, "SlaveResp", 8, "", ""), makeFrame(3, "Nobody", 1, "", "")};
    auto first = std::make_shared<LinSignal>();
    first->bitLength = 8;
    first->initValue = 0x5A;
    first->subscribers = {"S1", "S2"};
    auto second = std::make_shared<LinSignal>();
    second->startBit = 8;
    second->bitLength = 8;
    second->isBigEndian = true;
    second->initValue = 0x11;
    second->subscribers = {"S1"};
    auto absurd = std::make_shared<LinSignal>();
    absurd->startBit = 5000;
    absurd->bitLength = 8;
    db.frame[0]->signals = {first, second, absurd};
    return db;
}

struct SlotCase {
    const char* type;
    const char* frame;
    double delay;
    bool exists;
    int id;
    uint32_t msgType;
    const char* publisher;
    std::vector<std::string> subscribers;
};
TEST(ScheduleSlot, followsTheEntry) {
    const LinLdfDatabase db = makeCluster();
    const std::vector<std::string> each = {"Each responder node"};
    for (const SlotCase& c :
         {SlotCase{"unconditional", "Cmd", 0.01, true, 1, 4, "MASTER", {"S1", "S2", "S1"}},
          SlotCase{"unconditional", "State", 0.0105, true, 2, 3, "S1", {}},
          SlotCase{"master_request", "", 0.01, true, 60, 4, "Master", each},
          SlotCase{"slave_response", "", 0.01, true, 61, 3, "Each responder node", {"Master"}},
          SlotCase{"assign_nad", "", 0.01, true, 61, 3, "Each responder node", {"Master"}},
          SlotCase{"unconditional", "Nobody", 0.01, true, 3, 3, "", {}},
          SlotCase{"unconditional", "cmd", 0.01, false, 0, 0, "", {}}}) {
        const auto slot = makeSlot(LdfScheduleEntry{c.type, c.frame, c.delay}, db);
        ASSERT_EQ(slot.has_value(), c.exists) << c.type << c.frame;
        if (!slot) continue;
        EXPECT_EQ(slot->id(), c.id);
        EXPECT_EQ(slot->msg_type(), c.msgType) << c.type;
        EXPECT_EQ(slot->publisher(), c.publisher);
        EXPECT_EQ(slot->time_interval(), 10u);
        EXPECT_EQ(slot->sync(), 0u);
        EXPECT_EQ(std::vector<std::string>(slot->subscribers().begin(), slot->subscribers().end()),
                  c.subscribers);
    }
}

TEST(ScheduleSlot, carriesChecksumKindAndInitialValues) {
    const LinLdfDatabase db = makeCluster();
    const auto command = makeSlot({"unconditional", "Cmd", 0}, db);
    EXPECT_EQ(command->check_type(), 1u);
    EXPECT_EQ(command->data(), "\x5A\x11");
    EXPECT_EQ(command->name(), "Cmd");
    const auto state = makeSlot({"unconditional", "State", 0}, db);
    EXPECT_EQ(state->check_type(), 0u);
    EXPECT_EQ(state->data(), std::string(8, '\0'));
}

TEST(ScheduleSlot, delaysAreCutAndHeldInRange) {
    const LinLdfDatabase db = makeCluster();
    EXPECT_EQ(makeSlot({"", "Cmd", -1}, db)->time_interval(), 0u);
    EXPECT_EQ(makeSlot({"", "Cmd", 1e300}, db)->time_interval(), UINT64_MAX);
    for (int ms = 1; ms <= 1000; ++ms) {
        ASSERT_EQ(makeSlot({"", "Cmd", ms * 0.001}, db)->time_interval(),
                  static_cast<uint64_t>(ms));
    }
}

TEST(ScheduleTables, unknownEntriesAreLeftOut) {
    LinLdfDatabase db = makeCluster();
    db.schedules = {{"one", {{"", "Cmd", 0.01}, {"", "Unknown", 0.01}, {"", "State", 0.02}}},
                    {"none", {}}};
    const auto tables = Model::database::makeScheduleTables(db);
    ASSERT_EQ(tables.size(), 2u);
    EXPECT_EQ(tables[0]->slot_array_size(), 2);
    EXPECT_EQ(tables[0]->slot_array(1).name(), "State");
    EXPECT_EQ(tables[1]->name(), "none");
}

}  // namespace
