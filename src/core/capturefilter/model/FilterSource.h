#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "core/capturefilter/model/CompiledFilter.h"

namespace rv {

// The entries of one list, which may change while frames flow. They are compiled when the first
// reader looks after a change, so that filling a list costs nothing but its entries. Thread-safe.
class FilterSource {
public:
    using Items = std::vector<CANFrameFilterItem>;
    enum class Side { Pass, Block };

    void add(Side side, CANFrameFilterItem item);
    void clear();
    [[nodiscard]] Items items(Side side) const;

private:
    friend class FilterReader;

    std::atomic<uint64_t> m_version{0};  // grows with every change
    mutable std::mutex m_mutex;
    Items m_pass;                                      // guarded by m_mutex
    Items m_block;                                     // guarded by m_mutex
    std::shared_ptr<const CompiledFilter> m_compiled;  // guarded by m_mutex; null when stale
};

// One reader's view of a list. While nothing changes, a look costs one load and no lock. Used by
// one thread at a time; without a source it passes everything.
class FilterReader {
public:
    explicit FilterReader(std::shared_ptr<FilterSource> source = nullptr)
        : m_source(std::move(source)) {}

    [[nodiscard]] bool passes(const FilterSubject& subject) {
        if (m_source == nullptr) return true;
        if (m_source->m_version.load(std::memory_order_acquire) != m_version) refresh();
        return m_compiled == nullptr || m_compiled->passes(subject);
    }

private:
    void refresh();

    std::shared_ptr<FilterSource> m_source;
    std::shared_ptr<const CompiledFilter> m_compiled;
    uint64_t m_version = 0;
};

}  // namespace rv
