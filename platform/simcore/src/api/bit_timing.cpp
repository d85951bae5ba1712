// Bit-timing parameter sets that reach a bit rate.
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "simcore/founder.h"

namespace {

// Register limits of a controller, for one phase.
struct TimingLimits {
    int prescalerMax;
    int tseg1Min, tseg1Max;
    int tseg2Min, tseg2Max;
    int sjwMax;
};

constexpr TimingLimits kUsbCanNominal{512, 2, 256, 2, 128, 128};
constexpr TimingLimits kUsbCanData{32, 1, 32, 1, 16, 16};
constexpr TimingLimits kEtasNominal{1024, 2, 64, 1, 16, 16};
constexpr TimingLimits kEtasData{32, 1, 16, 1, 8, 8};
constexpr int kSyncQuanta = 1;

// Every set that reaches the rate exactly; nearest to the wished sample point first, finer quanta
// first among equals.
std::vector<RvBitTiming> traverse(const TimingLimits& limits, int clockHz, int bitrate,
                                  int samplePoint, unsigned limit) {
    std::vector<RvBitTiming> sets;
    if (clockHz <= 0 || bitrate <= 0 || samplePoint < 0 || samplePoint > 1000) return sets;
    for (int prescaler = 1; prescaler <= limits.prescalerMax; ++prescaler) {
        const int64_t rate = static_cast<int64_t>(prescaler) * bitrate;
        if (rate > clockHz) break;
        if (clockHz % rate != 0) continue;
        const int64_t quanta = clockHz / rate;
        if (quanta > kSyncQuanta + limits.tseg1Max + limits.tseg2Max) continue;
        for (int tseg2 = limits.tseg2Min; tseg2 <= limits.tseg2Max; ++tseg2) {
            const auto tseg1 = static_cast<int>(quanta - kSyncQuanta - tseg2);
            if (tseg1 < limits.tseg1Min || tseg1 > limits.tseg1Max) continue;
            const auto point = static_cast<int>(1000 * (kSyncQuanta + tseg1) / quanta);
            sets.push_back({prescaler, tseg1, tseg2, std::min(tseg2, limits.sjwMax), point});
        }
    }
    const auto distance = [&](const RvBitTiming& set) {
        return samplePoint == 0 ? 0 : std::abs(set.samplePoint - samplePoint);
    };
    std::stable_sort(sets.begin(), sets.end(), [&](const RvBitTiming& a, const RvBitTiming& b) {
        return distance(a) < distance(b);
    });
    if (sets.size() > limit) sets.resize(limit);
    return sets;
}

}  // namespace

std::vector<RvBitTiming> RvETASCanParams::traverseCanParamsByBitrate(bool fd, int clockHz,
                                                                     int bitrate, int samplePoint,
                                                                     unsigned limit) {
    return traverse(fd ? kEtasData : kEtasNominal, clockHz, bitrate, samplePoint, limit);
}

std::vector<RvBitTiming> RvUsbCanCanParams::traverseCanParamsByBitrate(bool fd, int clockHz,
                                                                       int bitrate, int samplePoint,
                                                                       unsigned limit) {
    return traverse(fd ? kUsbCanData : kUsbCanNominal, clockHz, bitrate, samplePoint, limit);
}
