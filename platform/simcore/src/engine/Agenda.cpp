#include "engine/Agenda.h"

namespace simcore::engine {

bool Agenda::schedule(const std::shared_ptr<Task>& task, int64_t due) {
    const std::pair<int64_t, uint64_t> key{due, ++m_order};
    if (waits(*task)) {
        // The node moves along, so that rescheduling allocates nothing.
        auto node = m_waiting.extract(task->m_key);
        node.key() = key;
        m_waiting.insert(std::move(node));
    } else {
        m_waiting.emplace(key, task);
    }
    task->m_key = key;
    return m_waiting.begin()->first == key;
}

void Agenda::cancel(Task& task) {
    if (!waits(task)) return;
    const auto key = task.m_key;
    task.m_key = {0, 0};
    m_waiting.erase(key);
}

std::optional<int64_t> Agenda::nextDue() const {
    if (m_waiting.empty()) return std::nullopt;
    return m_waiting.begin()->first.first;
}

std::shared_ptr<Task> Agenda::takeDue(int64_t now) {
    if (m_waiting.empty() || m_waiting.begin()->first.first > now) return nullptr;
    std::shared_ptr<Task> task = std::move(m_waiting.begin()->second);
    m_waiting.erase(m_waiting.begin());
    task->m_key = {0, 0};
    return task;
}

void Agenda::clear() {
    for (auto& [key, task] : m_waiting) task->m_key = {0, 0};
    m_waiting.clear();
}

}  // namespace simcore::engine
