#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "core/capturefilter/model/FilterSource.h"

namespace rv {

// The lists that apply to each consumer of received frames. A view is one consumer, such as the
// subscription of a script or the recorder. Thread-safe.
class CaptureFilterManager {
public:
    enum class Bus { Can, Lin };

    // Adds a view without lists, which passes everything; false when it exists already.
    bool addView(const std::string& view);
    bool removeView(const std::string& view);

    // Gives a view its list of one bus; the view must exist. It follows later changes of the list.
    bool setFilter(const std::string& view, Bus bus, std::shared_ptr<FilterSource> list);
    // Takes the list of one bus from a view, or all of them.
    bool removeFilterFromView(const std::string& view, Bus bus);
    bool clearFilterFromView(const std::string& view);

    // A reader for the consumer's own thread; passes everything for an unknown view. A reader keeps
    // the list it was made with.
    [[nodiscard]] FilterReader reader(const std::string& view, Bus bus) const;

private:
    using Lists = std::map<Bus, std::shared_ptr<FilterSource>>;
    bool change(const std::string& view, const char* what, void (*apply)(Lists&));

    mutable std::mutex m_mutex;
    std::map<std::string, Lists> m_views;  // guarded by m_mutex
};

}  // namespace rv
