#pragma once

#include <algorithm>
#include <deque>
#include <span>

#include "engine/Box.h"
#include "engine/Bus.h"

namespace simcore::engine {

// A bus for one kind of frame. Without a bit rate a frame is everywhere at once; with one, frames
// wait in the port that sends them until the bus is free and no other port has a lower identifier.
template <class Frame>
class TypedBus : public Bus {
public:
    TypedBus(Core& core, std::string name, BusRates rates)
        : Bus(core, std::move(name), FrameKind<Frame>::kKind, rates) {}

    void attach(Port& port) override {
        Bus::attach(port);
        m_outboxes.emplace_back();
    }

    // Sends from a port, or from a node outside every box when `sender` is null. The frame must be
    // normalised and the port must have admitted it.
    [[nodiscard]] int send(const Port* sender, const Frame& frame) {
        if (!paced()) {
            deliver(std::span(&frame, 1), sender, m_core.clock.now());
            return kRvOk;
        }
        auto& outbox = outboxOf(sender);
        if (outbox.size() >= kOutboxFrames) return kRvErrorQueueFull;
        outbox.push_back({frame, ++m_arrivals});
        if (!m_onWire) startNext(m_core.clock.now());
        return kRvOk;
    }

    // Puts frames of outside nodes on a bus that has no bit rate.
    void flood(std::span<const Frame> frames) {
        if (!frames.empty()) deliver(frames, nullptr, m_core.clock.now());
    }

    void dropPending(const Port& port) override { outboxOf(&port).clear(); }

    [[nodiscard]] size_t room(size_t most) const override {
        if (!observed()) return 0;
        if (paced()) return std::min(most, kOutboxFrames - m_outside.size());
        size_t room = most;
        for (const Port* port : m_ports) {
            if (!port->receives()) continue;
            const auto& queue = port->box->template queue<Frame>();
            const size_t held = queue.size();
            room = std::min(room, held < queue.highWater() ? queue.highWater() - held : 0);
        }
        return room;
    }

    [[nodiscard]] bool roomy() const override {
        if (paced()) return observed() && m_outside.size() <= kOutboxFrames / 2;
        const auto busy = [](const Port* port) {
            return port->receives() && !port->box->template queue<Frame>().roomy();
        };
        return observed() && std::none_of(m_ports.begin(), m_ports.end(), busy);
    }

    void run(int64_t now, Lock& /*lock*/) override {
        m_onWire = false;
        deliver(std::span<const Frame>(&m_current, 1), m_currentSender, m_currentEnd);
        startNext(std::max(m_currentEnd, now - kRealignNs));
        m_core.room.announceLocked();
    }

private:
    static constexpr size_t kOutboxFrames = 1024;
    // A scheduler that comes later than this does not make up for the lost time.
    static constexpr int64_t kRealignNs = 20'000'000;

    struct Pending {
        Frame frame;
        uint64_t arrival;
    };
    using Outbox = std::deque<Pending>;

    Outbox& outboxOf(const Port* port) {
        const auto at = std::find(m_ports.begin(), m_ports.end(), port);
        return at == m_ports.end() ? m_outside
                                   : m_outboxes[static_cast<size_t>(at - m_ports.begin())];
    }

    void startNext(int64_t at) {
        Outbox* winner = m_outside.empty() ? nullptr : &m_outside;
        const Port* sender = nullptr;
        for (size_t i = 0; i < m_outboxes.size(); ++i) {
            Outbox& other = m_outboxes[i];
            if (other.empty() || (winner != nullptr && !wins(other.front(), winner->front()))) {
                continue;
            }
            winner = &other;
            sender = m_ports[i];
        }
        if (winner == nullptr) return;
        m_current = winner->front().frame;
        winner->pop_front();
        m_currentSender = sender;
        m_currentEnd = at + wireTime(m_current, rates());
        m_load.occupied(at, m_currentEnd);
        m_onWire = true;
        m_core.schedule(shared_from_this(), m_currentEnd);
    }

    [[nodiscard]] static bool wins(const Pending& a, const Pending& b) {
        const uint32_t keyA = arbitrationKey(a.frame);
        const uint32_t keyB = arbitrationKey(b.frame);
        return keyA != keyB ? keyA < keyB : a.arrival < b.arrival;
    }

    void deliver(std::span<const Frame> frames, const Port* sender, int64_t at) {
        const uint64_t first = takeStamps(at, frames.size());
        for (const Port* port : m_ports) {
            if (!port->receives()) continue;
            const uint8_t direction = port == sender ? kRvDirTransmitted : kRvDirReceived;
            const uint64_t boxFirst = port->box->boxTime(first);
            port->box->template queue<Frame>().append(frames.size(), [&](size_t i, Frame& slot) {
                slot = frames[i];
                const uint64_t stamp = boxFirst + i;
                slot.seconds = static_cast<uint32_t>(stamp / 1'000'000'000U);
                slot.nanoseconds = static_cast<uint32_t>(stamp % 1'000'000'000U);
                slot.channel = port->index;
                slot.direction = direction;
            });
        }
    }

    std::vector<Outbox> m_outboxes;  // one for each port
    Outbox m_outside;
    uint64_t m_arrivals = 0;
    bool m_onWire = false;
    Frame m_current{};
    const Port* m_currentSender = nullptr;
    int64_t m_currentEnd = 0;
};

using CanBus = TypedBus<RvCanFrame>;
using EthernetBus = TypedBus<RvEthFrame>;
using FlexRayBus = TypedBus<RvFlexRayFrame>;

}  // namespace simcore::engine
