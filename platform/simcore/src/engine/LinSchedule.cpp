#include "engine/LinSchedule.h"

#include <algorithm>
#include <utility>

#include "engine/LinBus.h"

namespace simcore::engine {

namespace {
constexpr int64_t kNsPerMilli = 1'000'000;
constexpr uint64_t kLongestSlotMs = 3'600'000;
}  // namespace

LinSchedule::LinSchedule(Core& core, Port& port, std::vector<RvLinSlot> slots)
    : m_core(core), m_port(port), m_slots(std::move(slots)) {}

bool LinSchedule::valid(const RvLinSlot& slot) {
    return slot.id >= 0 && slot.id <= 63 && slot.length <= sizeof slot.data &&
           slot.checkMode <= 1 && slot.intervalMs >= 1 && slot.intervalMs <= kLongestSlotMs &&
           (slot.msgType == kLinSlaveSlot || slot.msgType == kLinMasterSlot);
}

void LinSchedule::start() {
    m_due = m_core.clock.now();
    m_core.schedule(shared_from_this(), m_due);
}

void LinSchedule::run(int64_t now, Lock& /*lock*/) {
    const RvLinSlot& slot = m_slots[m_next];
    m_next = (m_next + 1) % m_slots.size();
    const int64_t interval = static_cast<int64_t>(slot.intervalMs) * kNsPerMilli;
    // Later than a whole slot: the table goes on from now instead of running slots in a burst.
    m_due = (now - m_due > interval ? now : m_due) + interval;
    m_core.schedule(shared_from_this(), m_due);
    runSlot(slot);
}

void LinSchedule::runSlot(const RvLinSlot& slot) {
    if (m_port.admit(false) != kRvOk) return;
    auto& bus = static_cast<LinBus&>(*m_port.bus);
    const auto id = static_cast<uint8_t>(slot.id);
    if (slot.msgType == kLinSlaveSlot) {
        bus.poll(m_port, id);
        return;
    }
    RvLinFrame frame;
    frame.id = id;
    frame.checkMode = static_cast<uint8_t>(slot.checkMode);
    frame.length = static_cast<uint8_t>(slot.length);
    std::copy_n(slot.data, slot.length, frame.data);
    frame.checksum = linChecksum(frame);
    // A full bus loses the slot, as a master that cannot send its header does.
    static_cast<void>(bus.send(&m_port, frame));
}

}  // namespace simcore::engine
