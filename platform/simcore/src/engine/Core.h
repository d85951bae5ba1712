#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "engine/Agenda.h"
#include "engine/Clock.h"
#include "engine/EventSink.h"

namespace simcore::engine {

// Wakes sources that wait for room in the queues of their receivers. Readers do not take the
// engine's lock, but for the moment in which they have somebody to wake.
class RoomSignal {
public:
    explicit RoomSignal(std::mutex& mutex) : m_mutex(mutex) {}

    // A reader made room.
    void announce() {
        if (m_waiters.load() == 0) return;
        { const std::lock_guard lock(m_mutex); }
        m_wake.notify_all();
    }
    // Something changed that may let sources go on; called with the engine's lock held.
    void announceLocked() { m_wake.notify_all(); }

    template <class Ready>
    void wait(Lock& lock, Ready ready) {
        ++m_waiters;
        m_wake.wait(lock, ready);
        --m_waiters;
    }

private:
    std::mutex& m_mutex;
    std::condition_variable m_wake;
    std::atomic<int> m_waiters{0};
};

// What all parts of one network share: the lock over everything but the content of trace queues,
// the agenda and the way out for events.
struct Core {
    Core(Clock& clockOfCore, EventSink& sinkOfCore) : clock(clockOfCore), sink(sinkOfCore) {}

    void schedule(const std::shared_ptr<Task>& task, int64_t due) {
        if (agenda.schedule(task, due)) wake.notify_all();
    }
    // Ends a task. It is destroyed after the lock was given back, since that can call user code.
    void bury(std::shared_ptr<Task> task) {
        agenda.cancel(*task);
        graves.push_back(std::move(task));
    }

    std::mutex mutex;
    Clock& clock;
    EventSink& sink;
    Agenda agenda;
    std::condition_variable wake;  // the scheduler's
    RoomSignal room{mutex};
    std::function<void()> traceStarted;  // a box began to trace; lock held
    std::vector<std::shared_ptr<Task>> graves;
};

// Holds the engine's lock and clears the graves after giving it back.
class CoreGuard {
public:
    explicit CoreGuard(Core& core) : m_core(core), m_lock(core.mutex) {}
    CoreGuard(const CoreGuard&) = delete;
    CoreGuard& operator=(const CoreGuard&) = delete;
    ~CoreGuard() {
        std::vector<std::shared_ptr<Task>> graves;
        graves.swap(m_core.graves);
        m_lock.unlock();
    }
    [[nodiscard]] Lock& lock() { return m_lock; }

private:
    Core& m_core;
    Lock m_lock;
};

}  // namespace simcore::engine
