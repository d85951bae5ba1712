#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/hardware/RVBoxManager.h"

namespace scripts {

// One slot of a LIN schedule table.
struct ScheduleTableSlot {
    int32_t id = 0;              // frame identifier
    uint64_t time_interval = 0;  // ms
    uint32_t msg_type = 0;       // 4 the master publishes, 3 a slave publishes
    uint32_t check_type = 0;     // 0 classic, 1 enhanced
    uint32_t sync = 0;
    std::string publisher;
    std::vector<std::string> subscribers;
    std::string name;  // frame name
    std::vector<uint8_t> data;

    bool operator==(const ScheduleTableSlot&) const = default;
};

struct LinScheduleTable {
    int32_t channel_id = 0;
    std::string name;
    std::vector<ScheduleTableSlot> slots;

    bool operator==(const LinScheduleTable&) const = default;
};

// One field a line, as the configuration messages print themselves; default values are left out.
[[nodiscard]] std::string debugText(const ScheduleTableSlot& slot);
[[nodiscard]] std::string debugText(const LinScheduleTable& table);

[[nodiscard]] std::vector<rv::LinSlot> toBoxSlots(const LinScheduleTable& table);

}  // namespace scripts
