#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace quill::dbjson::dbc {

// Finds objects by a number and a name. The first object of a key wins, as public databases hold
// the same identifier or name twice. The names must outlive the index.
class NameIndex {
public:
    explicit NameIndex(size_t expected) {
        size_t slots = 16;
        while (slots < expected * 2) slots *= 2;
        m_slots.resize(slots);
    }

    void add(uint32_t owner, std::string_view name, uint32_t index) {
        if (m_used * 2 >= m_slots.size()) grow();
        Slot& slot = slotOf(owner, name);
        if (slot.index != kEmpty) return;
        slot = {name, owner, index};
        ++m_used;
    }

    // The object's index; kNone when there is none.
    [[nodiscard]] uint32_t find(uint32_t owner, std::string_view name) const {
        return const_cast<NameIndex*>(this)->slotOf(owner, name).index;
    }

    static constexpr uint32_t kEmpty = 0xFFFFFFFFU;

private:
    struct Slot {
        std::string_view name;
        uint32_t owner = 0;
        uint32_t index = kEmpty;
    };

    Slot& slotOf(uint32_t owner, std::string_view name) {
        constexpr uint64_t kSpread = 0x9E3779B97F4A7C15U;
        const size_t mask = m_slots.size() - 1;
        size_t at = (std::hash<std::string_view>{}(name) + (owner + 1) * kSpread) & mask;
        while (m_slots[at].index != kEmpty &&
               (m_slots[at].owner != owner || m_slots[at].name != name)) {
            at = (at + 1) & mask;
        }
        return m_slots[at];
    }

    void grow() {
        std::vector<Slot> old(m_slots.size() * 2);
        old.swap(m_slots);
        for (const Slot& slot : old) {
            if (slot.index != kEmpty) slotOf(slot.owner, slot.name) = slot;
        }
    }

    std::vector<Slot> m_slots;
    size_t m_used = 0;
};

}  // namespace quill::dbjson::dbc
