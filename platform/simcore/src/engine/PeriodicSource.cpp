#include "engine/PeriodicSource.h"

#include <algorithm>
#include <array>

#include "engine/TypedBus.h"

namespace simcore::engine {

namespace {

// Frames that a source without a pace delivers under one hold of the engine's lock.
constexpr size_t kBatch = 128;

template <class Frame>
class PeriodicSource final : public Task,
                             public Source,
                             public std::enable_shared_from_this<PeriodicSource<Frame>> {
public:
    PeriodicSource(Core& core, TypedBus<Frame>& bus, const PeriodicPlan& plan)
        : m_core(core), m_bus(bus), m_plan(plan) {
        m_batch.fill(std::get<Frame>(plan.frame));
    }

    void start() override {
        if (unpaced()) return;
        m_due = m_core.clock.now() + m_plan.offsetNs;
        m_core.schedule(this->shared_from_this(), m_due);
    }
    void traceStarted() override {}
    [[nodiscard]] bool unpaced() const override { return m_plan.periodNs == 0; }
    [[nodiscard]] bool ready() const override { return !finished() && m_bus.roomy(); }

    void run(int64_t now, Lock& /*lock*/) override {
        Frame& frame = m_batch.front();
        writeCounter(frame);
        // A bus with a bit rate that is too busy loses the frame, as a node with one mailbox does.
        static_cast<void>(m_bus.send(nullptr, frame));
        ++m_sent;
        if (finished()) return;
        m_due += m_plan.periodNs;
        if (m_due < now) m_due += (now - m_due) / m_plan.periodNs * m_plan.periodNs;
        m_core.schedule(this->shared_from_this(), m_due);
    }

    void burst(Lock& lock) override {
        while (deliverBatch() == kBatch) {
            // Between batches others get the lock.
            lock.unlock();
            lock.lock();
        }
    }

private:
    size_t deliverBatch() {
        size_t count = m_bus.room(kBatch);
        if (m_plan.count > 0) count = std::min<size_t>(count, m_plan.count - m_sent);
        for (size_t i = 0; i < count; ++i) {
            writeCounter(m_batch[i]);
            ++m_sent;
            if (m_bus.paced()) static_cast<void>(m_bus.send(nullptr, m_batch[i]));
        }
        if (!m_bus.paced()) m_bus.flood(std::span<const Frame>(m_batch.data(), count));
        return count;
    }

    [[nodiscard]] bool finished() const { return m_plan.count > 0 && m_sent >= m_plan.count; }

    void writeCounter(Frame& frame) const {
        if (m_plan.counterByte < 0) return;
        uint64_t value = m_sent;
        const size_t end = std::min(sizeof frame.data, m_counterEnd);
        for (size_t at = static_cast<size_t>(m_plan.counterByte); at < end; ++at) {
            frame.data[at] = static_cast<uint8_t>(value);
            value >>= 8U;
        }
    }

    Core& m_core;
    TypedBus<Frame>& m_bus;
    const PeriodicPlan m_plan;
    const size_t m_counterEnd = static_cast<size_t>(m_plan.counterByte + m_plan.counterBytes);
    std::array<Frame, kBatch> m_batch;
    int64_t m_due = 0;
    uint64_t m_sent = 0;
};

}  // namespace

std::shared_ptr<Source> makePeriodicSource(Core& core, Bus& bus, const PeriodicPlan& plan) {
    switch (bus.kind()) {
        case BusKind::lin:
            return std::make_shared<PeriodicSource<RvLinFrame>>(
                core, static_cast<TypedBus<RvLinFrame>&>(bus), plan);
        case BusKind::ethernet:
            return std::make_shared<PeriodicSource<RvEthFrame>>(
                core, static_cast<EthernetBus&>(bus), plan);
        case BusKind::flexray:
            return std::make_shared<PeriodicSource<RvFlexRayFrame>>(
                core, static_cast<FlexRayBus&>(bus), plan);
        case BusKind::can:
            break;
    }
    return std::make_shared<PeriodicSource<RvCanFrame>>(core, static_cast<CanBus&>(bus), plan);
}

}  // namespace simcore::engine
