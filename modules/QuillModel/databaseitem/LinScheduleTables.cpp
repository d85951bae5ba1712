#include "databaseitem/LinScheduleTables.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "lin/lin.pb.h"
#include "signal/SignalCodec.h"

namespace Model::database {
namespace {

constexpr int32_t kMasterRequestId = 60;
constexpr int32_t kSlaveResponseId = 61;
// Far above the 8 bytes of a real frame: a damaged length must not fill memory once per entry.
constexpr size_t kMaxPayload = 256;
constexpr const char* kEveryResponder = "Each responder node";
constexpr uint32_t kPublishedByMaster = 4;
constexpr uint32_t kPublishedByNode = 3;

bool equalIgnoringCase(const std::string& a, const std::string& b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return lower(x) == lower(y); });
}

// Payload of the frame with every signal at its initial value.
std::string initialPayload(const LDFFrame& frame) {
    std::vector<uint8_t> payload(std::min<size_t>(frame.length, kMaxPayload), 0);
    for (const auto& signal : frame.signals) {
        const auto start = static_cast<uint32_t>(signal->startBit);
        const auto length = static_cast<uint32_t>(signal->bitLength);
        // A layout beyond any frame is refused by the encoder with an exception; such a signal of a
        // damaged file has no bits to set.
        if (!codec::isClearable(signal->isBigEndian, start, length)) continue;
        codec::rawValueToByte(payload, static_cast<uint64_t>(signal->initValue),
                              signal->isBigEndian, start, length);
    }
    return {payload.begin(), payload.end()};
}

uint64_t milliseconds(double delay) {
    const double ms = delay * 1000.0;
    if (!(ms > 0.0)) return 0;
    return ms < 18446744073709551616.0 ? static_cast<uint64_t>(ms) : UINT64_MAX;
}

void setParties(const LDFFrame& frame, const std::string& master, Model::ScheduleTableSlot& slot) {
    if (!frame.publishers.empty()) slot.set_publisher(frame.publishers.front());
    for (const auto& signal : frame.signals) {
        for (const std::string& node : signal->subscribers) slot.add_subscribers(node);
    }
    if (slot.id() == kMasterRequestId) {
        slot.set_publisher(master);
        slot.clear_subscribers();
        slot.add_subscribers(kEveryResponder);
    } else if (slot.id() == kSlaveResponseId) {
        slot.set_publisher(kEveryResponder);
        slot.clear_subscribers();
        slot.add_subscribers(master);
    }
    slot.set_msg_type(equalIgnoringCase(slot.publisher(), master) ? kPublishedByMaster
                                                                  : kPublishedByNode);
}

}  // namespace

const LDFFrame* frameByName(const LinLdfDatabase& database, const std::string& name) {
    for (const auto& frame : database.frame) {
        if (frame && frame->name == name) return frame.get();
    }
    return nullptr;
}

std::optional<Model::ScheduleTableSlot> makeSlot(const LdfScheduleEntry& entry,
                                                 const LinLdfDatabase& database) {
    std::string name = entry.frame;
    if (name.empty()) name = entry.type == "master_request" ? "MasterReq" : "SlaveResp";
    const LDFFrame* frame = frameByName(database, name);
    if (frame == nullptr) return std::nullopt;
    Model::ScheduleTableSlot slot;
    slot.set_id(frame->id);
    slot.set_name(name);
    slot.set_check_type(equalIgnoringCase(frame->checksum, "Enhanced") ? 1 : 0);
    slot.set_data(initialPayload(*frame));
    slot.set_time_interval(milliseconds(entry.delay));
    setParties(*frame, database.master.name, slot);
    return slot;
}

RecordList<Model::LinScheduleTable> makeScheduleTables(const LinLdfDatabase& database) {
    RecordList<Model::LinScheduleTable> tables;
    for (const LdfSchedule& schedule : database.schedules) {
        auto table = std::make_shared<Model::LinScheduleTable>();
        table->set_name(schedule.name);
        for (const LdfScheduleEntry& entry : schedule.entries) {
            if (auto slot = makeSlot(entry, database)) *table->add_slot_array() = std::move(*slot);
        }
        tables.push_back(std::move(table));
    }
    return tables;
}

}  // namespace Model::database
