#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "engine/Box.h"

namespace simcore::engine {

using AnyFrame = std::variant<RvCanFrame, RvLinFrame, RvEthFrame, RvFlexRayFrame>;

// What a network consists of, checked and complete: every bus that is named below is in `buses`.
struct BusPlan {
    std::string name;
    BusKind kind = BusKind::can;
    BusRates rates;
};

struct BoxPlan {
    DeviceIdentity identity;
    RvDipStatus dip;
    bool plugged = true;
    bool linPortUsable = true;
    BoxCapacity capacity;
    std::vector<std::string> channelBuses[kBusKinds];  // names of the channels' buses, per kind
};

// A frame that an outside node repeats. Period 0: as fast as the receivers take it.
struct PeriodicPlan {
    std::string bus;
    AnyFrame frame;
    int64_t periodNs = 0;
    int64_t offsetNs = 0;
    uint64_t count = 0;    // transmissions; 0: without end
    int counterByte = -1;  // first payload byte of a little-endian counter; below 0: none
    int counterBytes = 4;
};

// A recorded log that is played onto buses.
struct ReplayPlan {
    std::string file;    // UTF-8
    double speed = 1.0;  // 1: at the log's own pace; 0: as fast as the receivers take it
    bool loop = false;
    bool onTrace = true;  // begins when a box begins to trace, else with the network
    std::map<std::string, std::string> channels;  // channel of the log to bus
    std::vector<std::string> buses[kBusKinds];    // for channels that are not listed, in turn
};

using SourcePlan = std::variant<PeriodicPlan, ReplayPlan>;

struct ResponderPlan {
    std::string bus;
    RvLinFrame frame;
};

enum class FaultKind : uint8_t {
    unplug,
    plug,
    busStatus,
    busTimeout,
    dip,
    clock,
    refuse,
    failCalls,
    slowCalls,
};

struct FaultPlan {
    int64_t atNs = 0;
    int64_t everyNs = 0;   // above 0: comes again
    double chance = 1.0;   // that it happens when its time comes
    int64_t jitterNs = 0;  // happens up to this much later
    std::string box;
    FaultKind kind = FaultKind::unplug;
    int32_t channel = 0;
    int32_t value = 0;  // bus status, or number of refusals
    RvDipStatus dip;
    int64_t clockOffsetNs = 0;
    double clockDriftPpm = 0.0;
    CallFault call;
};

struct NetworkPlan {
    std::vector<BusPlan> buses;
    std::vector<BoxPlan> boxes;
    std::vector<SourcePlan> sources;
    std::vector<ResponderPlan> responders;
    std::vector<FaultPlan> faults;
    std::optional<uint64_t> seed;
};

}  // namespace simcore::engine
