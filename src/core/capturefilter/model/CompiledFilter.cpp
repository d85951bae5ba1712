#include "core/capturefilter/model/CompiledFilter.h"

#include <algorithm>
#include <utility>

namespace rv {
namespace {

constexpr uint32_t kShortIdLimit = 2048;

// Ranges sorted, and those that touch or overlap made one.
void makeDisjoint(std::vector<uint32_t>& starts, std::vector<uint32_t>& ends) {
    std::vector<std::pair<uint32_t, uint32_t>> ranges;
    for (size_t i = 0; i < starts.size(); ++i) ranges.emplace_back(starts[i], ends[i]);
    std::sort(ranges.begin(), ranges.end());
    starts.clear();
    ends.clear();
    for (const auto& [start, end] : ranges) {
        if (!ends.empty() && start <= uint64_t{ends.back()} + 1) {
            ends.back() = std::max(ends.back(), end);
        } else {
            starts.push_back(start);
            ends.push_back(end);
        }
    }
}

}  // namespace

bool CompiledFilter::Lane::matches(const FilterSubject& subject) const {
    if (everything) return true;
    if (!names.empty() && !subject.name.empty() && names.contains(subject.name)) return true;
    if (!subject.extended) return subject.id < kShortIdLimit && shortIds[subject.id];
    const auto next = std::upper_bound(starts.begin(), starts.end(), subject.id);
    return next != starts.begin() &&
           subject.id <= ends[static_cast<size_t>(next - starts.begin()) - 1];
}

CompiledFilter::Entries::Entries(const std::vector<CANFrameFilterItem>& items) : m_items(items) {
    for (const CANFrameFilterItem& item : m_items) {
        if (item.wholeChannel || item.dir == 0) add(item, 0);
        if (item.wholeChannel || item.dir == 1) add(item, 1);
    }
    for (const auto& lane : m_lanes) {
        if (lane != nullptr) makeDisjoint(lane->starts, lane->ends);
    }
}

void CompiledFilter::Entries::add(const CANFrameFilterItem& item, uint16_t dir) {
    if (item.channelId < 0 || item.channelId > 255) return;
    auto& lane = m_lanes[laneOf(static_cast<uint8_t>(item.channelId), dir)];
    if (lane == nullptr) lane = std::make_unique<Lane>();
    if (item.wholeChannel) {
        lane->everything = true;
        return;
    }
    if (!item.name.empty()) {
        lane->names.insert(item.name);
        return;
    }
    const uint32_t start = item.isRange ? item.idRangeStart : item.id;
    const uint32_t end = item.isRange ? item.idRangeEnd : item.id;
    if (item.extended != 0) {
        lane->starts.push_back(start);
        lane->ends.push_back(end);
        return;
    }
    for (uint32_t id = start; id <= end && id < kShortIdLimit; ++id) lane->shortIds.set(id);
}

CompiledFilter::CompiledFilter(const std::vector<CANFrameFilterItem>& pass,
                               const std::vector<CANFrameFilterItem>& block)
    : m_pass(pass), m_block(block) {}

}  // namespace rv
