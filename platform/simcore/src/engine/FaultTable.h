#pragma once

#include <memory>
#include <optional>
#include <random>
#include <vector>

#include "engine/NetworkPlan.h"

namespace simcore::engine {

class Network;

// Plays the timetable of faults. Chance comes from one seeded generator; the seed is reported when
// an entry leaves something to chance, so that the run can be repeated.
class FaultTable final : public Task, public std::enable_shared_from_this<FaultTable> {
public:
    FaultTable(Network& network, std::vector<FaultPlan> plan, std::optional<uint64_t> seed);

    void start();
    void run(int64_t now, Lock& lock) override;

private:
    struct Entry {
        FaultPlan plan;
        int64_t gridNs = 0;  // time without jitter
        int64_t dueNs = 0;
    };
    void place(Entry& entry);
    void scheduleNext();
    void perform(const FaultPlan& fault);
    void performOnBox(const FaultPlan& fault);

    Network& m_network;
    std::vector<Entry> m_entries;
    std::mt19937_64 m_random;
    bool m_random_used = false;
    uint64_t m_seed = 0;
};

}  // namespace simcore::engine
