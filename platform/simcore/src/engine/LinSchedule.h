#pragma once

#include <memory>
#include <vector>

#include "engine/Core.h"
#include "engine/Port.h"

namespace simcore::engine {

inline constexpr uint32_t kLinSlaveSlot = 3;
inline constexpr uint32_t kLinMasterSlot = 4;

// A schedule table that runs slot by slot on a master channel, from its last slot on to its first.
class LinSchedule final : public Task, public std::enable_shared_from_this<LinSchedule> {
public:
    LinSchedule(Core& core, Port& port, std::vector<RvLinSlot> slots);

    void start();
    void run(int64_t now, Lock& lock) override;

    [[nodiscard]] static bool valid(const RvLinSlot& slot);

private:
    void runSlot(const RvLinSlot& slot);

    Core& m_core;
    Port& m_port;
    const std::vector<RvLinSlot> m_slots;
    size_t m_next = 0;
    int64_t m_due = 0;
};

}  // namespace simcore::engine
