#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quill::traceformats {

// What a reader could not use, and where. Bounded: of a file that is damaged everywhere the first
// entries are kept and the rest is counted.
class DamageLog {
public:
    struct Entry {
        uint64_t position = 0;  // byte offset, in text files the line number
        std::string text;
    };

    void add(uint64_t position, std::string text) {
        ++m_total;
        if (m_entries.size() < kKept) m_entries.push_back({position, std::move(text)});
    }
    [[nodiscard]] const std::vector<Entry>& entries() const { return m_entries; }
    [[nodiscard]] uint64_t total() const { return m_total; }

private:
    static constexpr size_t kKept = 1000;
    std::vector<Entry> m_entries;
    uint64_t m_total = 0;
};

}  // namespace quill::traceformats
