#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "simcore/libsimcore.h"
#include "simcore/virtual_network.h"

namespace simbench {

inline int64_t clockNs(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

inline void printSpread(const char* what, const std::vector<double>& values, const char* unit) {
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    std::printf("%-44s min %10.2f  median %10.2f  max %10.2f  %s\n", what, *least, median(values),
                *most, unit);
}

inline void require(bool fine, const std::string& what) {
    if (fine) return;
    std::fprintf(stderr, "%s: %s\n", what.c_str(), rvhub4e_last_error());
    std::exit(1);
}

// Loads a network and gives its boxes, open and tracing.
inline std::vector<int32_t> openAll(const std::string& document) {
    std::string reason;
    require(simcore::loadNetwork(document, reason), reason);
    require(rvhub4e_init() == 0, "init");
    std::vector<int32_t> handles(64);
    int32_t count = 64;
    const RvHub4eScanParams params;
    require(scan_rvhub4e(handles.data(), &count, 0, &params) == 0, "scan");
    handles.resize(static_cast<size_t>(count));
    for (const int32_t handle : handles) {
        require(open_device(handle) == 0, "open");
        require(start_trace(handle) == 0, "trace");
    }
    return handles;
}

}  // namespace simbench
