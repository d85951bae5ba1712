#include "api/CallGate.h"

#include <algorithm>

namespace simcore::api {

CallGate::Verdict CallGate::judge(Call call, const std::string& box) {
    const std::lock_guard lock(m_mutex);
    Verdict verdict;
    for (engine::CallFault& fault : m_faults) {
        if (fault.function != kCallNames[static_cast<size_t>(call)]) continue;
        if (!fault.box.empty() && fault.box != box) continue;
        if (fault.code != kRvOk) {
            if (verdict.code != kRvOk) continue;
            verdict.code = fault.code;
        } else {
            verdict.delayMs += fault.delayMs;
        }
        if (fault.times > 0) --fault.times;
    }
    std::erase_if(m_faults, [](const auto& fault) { return fault.times == 0; });
    m_hasFaults.store(!m_faults.empty(), std::memory_order_release);
    return verdict;
}

void CallGate::set(const engine::CallFault& fault) {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_faults, [&](const auto& known) {
        return known.box == fault.box && known.function == fault.function &&
               (known.code != kRvOk) == (fault.code != kRvOk);
    });
    if (fault.times != 0) m_faults.push_back(fault);
    m_hasFaults.store(!m_faults.empty(), std::memory_order_release);
}

void CallGate::clear() {
    const std::lock_guard lock(m_mutex);
    m_faults.clear();
    m_hasFaults.store(false, std::memory_order_release);
}

}  // namespace simcore::api
