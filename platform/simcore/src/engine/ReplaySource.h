#pragma once

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "engine/NetworkPlan.h"
#include "engine/Source.h"
#include "logs/LogReader.h"

namespace simcore::engine {

class Bus;
class Network;

// Plays a recorded log onto buses: with the distances of its time stamps, scaled, or as fast as the
// receivers take it. The file is read while it plays, so its size does not matter.
class ReplaySource final : public Task,
                           public Source,
                           public std::enable_shared_from_this<ReplaySource> {
public:
    // Null with a reason that names the file.
    [[nodiscard]] static std::shared_ptr<ReplaySource> open(Network& network,
                                                            const ReplayPlan& plan,
                                                            std::string& reason);
    ReplaySource(Network& network, const ReplayPlan& plan, std::unique_ptr<logs::LogReader> reader);

    void start() override;
    void traceStarted() override;
    [[nodiscard]] bool unpaced() const override { return m_plan.speed == 0.0; }
    [[nodiscard]] bool ready() const override;
    void burst(Lock& lock) override;
    void run(int64_t now, Lock& lock) override;

private:
    void begin();
    [[nodiscard]] bool refill(Lock& lock);
    void readBatch();
    [[nodiscard]] bool nextPass();
    void deliver(const logs::LogFrame& frame);
    [[nodiscard]] Bus* busFor(const logs::LogFrame& frame) const;
    [[nodiscard]] int64_t dueOf(const logs::LogFrame& frame) const;

    Core& m_core;
    const ReplayPlan m_plan;
    std::unique_ptr<logs::LogReader> m_reader;
    std::map<std::string, Bus*, std::less<>> m_byChannel;
    std::array<std::vector<Bus*>, kBusKinds> m_inTurn;
    std::vector<Bus*> m_targets;  // every bus that the log can reach

    std::vector<logs::LogFrame> m_batch;
    size_t m_at = 0;
    size_t m_held = 0;
    bool m_reading = false;  // somebody reads ahead with the lock given back
    bool m_started = false;
    bool m_finished = false;

    // Log time made continuous: passes follow each other, and time that starts anew goes on.
    int64_t m_shiftNs = 0;
    int64_t m_firstNs = 0;   // of the first pass
    int64_t m_firstRaw = 0;  // as the file has it
    int64_t m_lastNs = 0;
    uint64_t m_frames = 0;        // so far, all passes
    uint64_t m_framesOfPass = 0;  // of the pass that is being read
    uint64_t m_skipped = 0;
    int64_t m_startedAt = 0;
};

}  // namespace simcore::engine
