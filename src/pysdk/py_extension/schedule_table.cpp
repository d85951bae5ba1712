#include "pysdk/py_extension/schedule_table.h"

#include <fmt/format.h>

#include <string_view>

namespace scripts {
namespace {

// Printable ASCII as it is, everything else as an octal escape.
std::string quoted(std::string_view bytes) {
    std::string text = "\"";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\' || c == '\'') {
            text += '\\';
            text += c;
        } else if (c == '\n') {
            text += "\\n";
        } else if (c == '\r') {
            text += "\\r";
        } else if (c == '\t') {
            text += "\\t";
        } else if (byte < 0x20 || byte >= 0x7F) {
            text += fmt::format("\\{:03o}", byte);
        } else {
            text += c;
        }
    }
    return text + '"';
}

void addNumber(std::string& text, const char* indent, const char* field, int64_t value) {
    if (value != 0) text += fmt::format("{}{}: {}\n", indent, field, value);
}

void addText(std::string& text, const char* indent, const char* field, std::string_view value) {
    if (!value.empty()) text += fmt::format("{}{}: {}\n", indent, field, quoted(value));
}

std::string slotText(const ScheduleTableSlot& slot, const char* indent) {
    std::string text;
    addNumber(text, indent, "id", slot.id);
    if (slot.time_interval != 0) {
        text += fmt::format("{}time_interval: {}\n", indent, slot.time_interval);
    }
    addNumber(text, indent, "msg_type", slot.msg_type);
    addNumber(text, indent, "check_type", slot.check_type);
    addNumber(text, indent, "sync", slot.sync);
    addText(text, indent, "publisher", slot.publisher);
    for (const std::string& subscriber : slot.subscribers) {
        text += fmt::format("{}subscribers: {}\n", indent, quoted(subscriber));
    }
    addText(text, indent, "name", slot.name);
    addText(text, indent, "data",
            {reinterpret_cast<const char*>(slot.data.data()), slot.data.size()});
    return text;
}

}  // namespace

std::string debugText(const ScheduleTableSlot& slot) { return slotText(slot, ""); }

std::string debugText(const LinScheduleTable& table) {
    std::string text;
    addNumber(text, "", "channel_id", table.channel_id);
    addText(text, "", "name", table.name);
    for (const ScheduleTableSlot& slot : table.slots) {
        text += fmt::format("slot_array {{\n{}}}\n", slotText(slot, "  "));
    }
    return text;
}

std::vector<rv::LinSlot> toBoxSlots(const LinScheduleTable& table) {
    std::vector<rv::LinSlot> slots;
    slots.reserve(table.slots.size());
    for (const ScheduleTableSlot& slot : table.slots) {
        slots.push_back({slot.id, slot.time_interval, slot.msg_type, slot.check_type, slot.data});
    }
    return slots;
}

}  // namespace scripts
