// Any bytes as a network document: refused with a text that names the place, or turned into a plan
// whose parts refer to each other.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "document/DocumentReader.h"

namespace {

using simcore::engine::NetworkPlan;

bool hasBus(const NetworkPlan& plan, const std::string& name) {
    return std::any_of(plan.buses.begin(), plan.buses.end(),
                       [&](const auto& bus) { return bus.name == name; });
}

void require(bool condition, const char* text) {
    if (condition) return;
    std::fprintf(stderr, "fuzz_network: %s\n", text);
    std::abort();
}

void checkPlan(const NetworkPlan& plan) {
    for (const auto& box : plan.boxes) {
        for (const auto& buses : box.channelBuses) {
            require(buses.size() <= 64, "a box has too many channels");
            for (const auto& name : buses) require(hasBus(plan, name), "a channel without a bus");
        }
    }
    for (const auto& responder : plan.responders) {
        require(hasBus(plan, responder.bus), "a responder without a bus");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    // Anything else names a file.
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos || text[first] != '{') return 0;
    std::string origin;
    std::string reason;
    const auto plan = simcore::document::readPlan(text, "text", origin, reason);
    require(plan.has_value() == reason.empty(), "a result and a reason, or neither");
    require(plan || reason.rfind("text: ", 0) == 0, "the reason does not name its origin");
    if (plan) checkPlan(*plan);
    return 0;
}
