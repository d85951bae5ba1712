#include "core/capturefilter/model/FilterSource.h"

#include <utility>

namespace rv {

void FilterSource::add(Side side, CANFrameFilterItem item) {
    const std::lock_guard lock(m_mutex);
    (side == Side::Pass ? m_pass : m_block).push_back(std::move(item));
    m_compiled.reset();
    m_version.fetch_add(1, std::memory_order_release);
}

void FilterSource::clear() {
    const std::lock_guard lock(m_mutex);
    m_pass.clear();
    m_block.clear();
    m_compiled.reset();
    m_version.fetch_add(1, std::memory_order_release);
}

FilterSource::Items FilterSource::items(Side side) const {
    const std::lock_guard lock(m_mutex);
    return side == Side::Pass ? m_pass : m_block;
}

void FilterReader::refresh() {
    const std::lock_guard lock(m_source->m_mutex);
    if (m_source->m_compiled == nullptr) {
        m_source->m_compiled =
            std::make_shared<const CompiledFilter>(m_source->m_pass, m_source->m_block);
    }
    m_compiled = m_source->m_compiled;
    m_version = m_source->m_version.load(std::memory_order_relaxed);
}

}  // namespace rv
