#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "core/capturefilter/model/FrameFilterItem.h"

namespace rv {

// What a frame shows to a filter.
struct FilterSubject {
    uint32_t id = 0;
    bool extended = false;
    uint16_t dir = 0;       // 0 received, 1 transmitted
    uint8_t channel = 0;    // index on its box
    std::string_view name;  // frame name that a database gave; empty when none
};

// Pass and block entries made ready for matching: a look-up costs a table access for identifiers of
// up to 11 bits and a binary search for longer ones, whatever the length of the lists. Immutable.
//
// A frame passes when no block entry matches it and the pass list is empty or has an entry that
// does.
class CompiledFilter {
public:
    CompiledFilter(const std::vector<CANFrameFilterItem>& pass,
                   const std::vector<CANFrameFilterItem>& block);

    [[nodiscard]] bool passes(const FilterSubject& subject) const {
        if (!m_block.empty() && m_block.matches(subject)) return false;
        return m_pass.empty() || m_pass.matches(subject);
    }

private:
    // Entries of one channel and direction.
    struct Lane {
        std::bitset<2048> shortIds;  // 11-bit identifiers, LIN identifiers too
        // Bounds of disjoint ranges of 29-bit identifiers, both inclusive, ascending.
        std::vector<uint32_t> starts;
        std::vector<uint32_t> ends;
        std::unordered_set<std::string_view> names;
        bool everything = false;

        [[nodiscard]] bool matches(const FilterSubject& subject) const;
    };
    class Entries {
    public:
        explicit Entries(const std::vector<CANFrameFilterItem>& items);
        [[nodiscard]] bool empty() const { return m_items.empty(); }
        [[nodiscard]] bool matches(const FilterSubject& subject) const {
            const Lane* lane = m_lanes[laneOf(subject.channel, subject.dir)].get();
            return lane != nullptr && lane->matches(subject);
        }

    private:
        static size_t laneOf(uint8_t channel, uint16_t dir) {
            return size_t{channel} * 2 + (dir != 0 ? 1 : 0);
        }
        void add(const CANFrameFilterItem& item, uint16_t dir);

        std::vector<CANFrameFilterItem> m_items;  // owns the names that the lanes look at
        std::array<std::unique_ptr<Lane>, 512> m_lanes;
    };

    Entries m_pass;
    Entries m_block;
};

}  // namespace rv
