#include "pysdk/py_extension/lin_database.h"

#include <fmt/format.h>

#include "lin/lin.pb.h"
#include "signal/ScriptValue.h"

namespace scripts {
namespace {

ScheduleTableSlot toScriptSlot(const Model::ScheduleTableSlot& slot) {
    ScheduleTableSlot result;
    result.id = slot.id();
    result.time_interval = slot.time_interval();
    result.msg_type = slot.msg_type();
    result.check_type = slot.check_type();
    result.sync = slot.sync();
    result.publisher = slot.publisher();
    result.subscribers.assign(slot.subscribers().begin(), slot.subscribers().end());
    result.name = slot.name();
    result.data.assign(slot.data().begin(), slot.data().end());
    return result;
}

}  // namespace

std::string LinMessage::toText() const {
    return fmt::format("LinMessage: timestamp:{} id = {} channel = {} dir = {} frame = {} {}",
                       timestamp, id, channel, dir, frame != nullptr ? frame->name : "",
                       Model::codec::payloadText(data));
}

std::vector<LinScheduleTable> toScriptTables(
    const Model::database::RecordList<Model::LinScheduleTable>& tables) {
    std::vector<LinScheduleTable> result;
    for (const auto& table : tables) {
        if (table == nullptr) continue;
        LinScheduleTable entry;
        entry.channel_id = table->channel_id();
        entry.name = table->name();
        for (const auto& slot : table->slot_array()) entry.slots.push_back(toScriptSlot(slot));
        result.push_back(std::move(entry));
    }
    return result;
}

std::shared_ptr<LinLdfDatabaseItem> toScriptDatabase(
    const Model::database::LinLdfDatabase& database) {
    auto result = std::make_shared<LinLdfDatabaseItem>();
    result->schedule_tables = toScriptTables(database.schedule_tables);
    result->frame = database.frame;
    return result;
}

LinMessage toLinMessage(const LinFrame& frame, std::shared_ptr<Model::database::LDFFrame> match) {
    LinMessage message;
    message.timestamp = frame.timestampNs();
    message.id = frame.id;
    message.dir = frame.dir;
    message.channel = frame.channelId;
    const auto bytes = frame.data.bytes();
    message.data.assign(bytes.begin(), bytes.end());
    message.frame = std::move(match);
    return message;
}

}  // namespace scripts
