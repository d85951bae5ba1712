#include "core/capturefilter/model/CaptureFilterManager.h"

#include <utility>

#include "core/log/Log.h"

namespace rv {

using quill::log::kCaptureFilter;

bool CaptureFilterManager::addView(const std::string& view) {
    const std::lock_guard lock(m_mutex);
    const bool added = m_views.try_emplace(view).second;
    if (added) QUILL_INFO(kCaptureFilter, "add view {}", view);
    return added;
}

bool CaptureFilterManager::removeView(const std::string& view) {
    const std::lock_guard lock(m_mutex);
    const bool removed = m_views.erase(view) > 0;
    if (removed) QUILL_INFO(kCaptureFilter, "remove view {}", view);
    return removed;
}

bool CaptureFilterManager::setFilter(const std::string& view, Bus bus,
                                     std::shared_ptr<FilterSource> list) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_views.find(view);
    if (found == m_views.end()) return false;
    found->second[bus] = std::move(list);
    return true;
}

bool CaptureFilterManager::removeFilterFromView(const std::string& view, Bus bus) {
    return change(
        view, "remove filter from view {}",
        bus == Bus::Can ? [](Lists& lists) { lists.erase(Bus::Can); }
                        : [](Lists& lists) { lists.erase(Bus::Lin); });
}

bool CaptureFilterManager::clearFilterFromView(const std::string& view) {
    return change(view, "clear filters of view {}", [](Lists& lists) { lists.clear(); });
}

bool CaptureFilterManager::change(const std::string& view, const char* what,
                                  void (*apply)(Lists&)) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_views.find(view);
    if (found == m_views.end()) return false;
    apply(found->second);
    QUILL_INFO(kCaptureFilter, "{}", fmt::format(fmt::runtime(what), view));
    return true;
}

FilterReader CaptureFilterManager::reader(const std::string& view, Bus bus) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_views.find(view);
    if (found == m_views.end()) return FilterReader();
    const auto list = found->second.find(bus);
    return FilterReader(list == found->second.end() ? nullptr : list->second);
}

}  // namespace rv
