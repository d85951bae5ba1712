#include "engine/Scheduler.h"

#include <algorithm>

#include "quill_os/threads.h"

namespace simcore::engine {

void Scheduler::start() {
    if (m_thread.joinable()) return;
    m_thread = std::thread([this] { run(); });
}

void Scheduler::stop() {
    {
        const Lock lock(m_core.mutex);
        m_stopping = true;
    }
    m_core.wake.notify_all();
    if (m_thread.joinable()) m_thread.join();
}

void Scheduler::run() {
    quill::os::setCurrentThreadName("sim-scheduler");
    quill::os::requestPreciseTimers();
    Lock lock(m_core.mutex);
    while (!m_stopping) {
        if (m_core.clock.manual()) {
            m_core.wake.wait(lock);
            continue;
        }
        const int64_t now = m_core.clock.now();
        if (auto task = m_core.agenda.takeDue(now)) {
            runTask(std::move(task), now, lock);
            continue;
        }
        if (const auto due = m_core.agenda.nextDue()) {
            m_core.wake.wait_until(lock, m_core.clock.steadyAt(*due));
        } else {
            m_core.wake.wait(lock);
        }
    }
}

void Scheduler::runTask(std::shared_ptr<Task> task, int64_t now, Lock& lock) {
    task->run(now, lock);
    if (task.use_count() > 1 && m_core.graves.empty()) return;
    std::vector<std::shared_ptr<Task>> graves;
    graves.swap(m_core.graves);
    lock.unlock();
    graves.clear();
    task.reset();
    lock.lock();
}

void Scheduler::advance(int64_t ns) {
    const std::lock_guard one(m_advancing);
    Lock lock(m_core.mutex);
    const int64_t target = m_core.clock.now() + std::max<int64_t>(ns, 0);
    while (!m_stopping && m_core.clock.manual()) {
        const auto due = m_core.agenda.nextDue();
        if (!due || *due > target) break;
        m_core.clock.moveTo(*due);
        if (auto task = m_core.agenda.takeDue(target)) {
            runTask(std::move(task), std::max(*due, m_core.clock.now()), lock);
        }
    }
    m_core.clock.moveTo(target);
}

}  // namespace simcore::engine
