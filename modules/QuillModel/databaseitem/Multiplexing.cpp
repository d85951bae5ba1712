#include "databaseitem/Multiplexing.h"

#include <string_view>
#include <unordered_map>

#include "databaseitem/JsonObjectReader.h"

namespace Model::database {
namespace {

bool isMultiplexorOf(const CanDBCEntrySignal& candidate, const MultiplexRule& rule) {
    if (!rule.multiplexor.empty()) return candidate.name == rule.multiplexor;
    return candidate.multiplex.isMultiplexor && !candidate.multiplex.isMultiplexed;
}

int32_t findMultiplexor(const RecordList<CanDBCEntrySignal>& signals, const MultiplexRule& rule) {
    for (size_t i = 0; i < signals.size(); ++i) {
        if (signals[i] && isMultiplexorOf(*signals[i], rule)) return static_cast<int32_t>(i);
    }
    return -1;
}

}  // namespace

void readMultiplexRule(JsonObjectReader& json, MultiplexRule& rule) {
    rule.isMultiplexor = json.flag("is_multiplexor");
    rule.multiplexor = json.text("multiplexer_signal");
    rule.ranges = json.ranges("multiplexer_ranges");
    if (rule.ranges.empty() && json.has("multiplexer_id")) {
        const auto id = static_cast<uint64_t>(json.longInteger("multiplexer_id"));
        rule.ranges.emplace_back(id, id);
    }
    rule.isMultiplexed = !rule.ranges.empty() || !rule.multiplexor.empty();
}

void resolveMultiplexors(RecordList<CanDBCEntrySignal>& signals) {
    // By name, so that a frame of any size is read in one pass; the empty name is the plain one.
    std::unordered_map<std::string_view, int32_t> indexes;
    for (size_t i = 0; i < signals.size(); ++i) {
        const CanDBCEntrySignal& signal = *signals[i];
        const auto index = static_cast<int32_t>(i);
        if (!signal.name.empty()) indexes.emplace(signal.name, index);
        if (isMultiplexorOf(signal, MultiplexRule{})) indexes.emplace(std::string_view(), index);
    }
    for (const auto& signal : signals) {
        if (!signal->multiplex.isMultiplexed) continue;
        const auto found = indexes.find(signal->multiplex.multiplexor);
        if (found != indexes.end()) signal->multiplex.multiplexorIndex = found->second;
    }
}

const CanDBCEntrySignal* multiplexorOf(const RecordList<CanDBCEntrySignal>& signals,
                                       const MultiplexRule& rule) {
    const auto noted = static_cast<size_t>(rule.multiplexorIndex);
    if (rule.multiplexorIndex >= 0 && noted < signals.size() && signals[noted] &&
        isMultiplexorOf(*signals[noted], rule)) {
        return signals[noted].get();
    }
    const int32_t found = findMultiplexor(signals, rule);
    return found >= 0 ? signals[static_cast<size_t>(found)].get() : nullptr;
}

}  // namespace Model::database
