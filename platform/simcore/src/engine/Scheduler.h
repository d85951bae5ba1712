#pragma once

#include <thread>

#include "engine/Core.h"

namespace simcore::engine {

// The one thread on which everything timed happens. While the clock is manual the thread rests and
// the tasks run inside advance().
class Scheduler {
public:
    explicit Scheduler(Core& core) : m_core(core) {}
    ~Scheduler() { stop(); }
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    void start();
    void stop();

    // Manual clock: moves the time on, running what falls due on the way.
    void advance(int64_t ns);

private:
    void run();
    void runTask(std::shared_ptr<Task> task, int64_t now, Lock& lock);

    Core& m_core;
    std::mutex m_advancing;   // one advance at a time
    bool m_stopping = false;  // guarded by the engine's lock
    std::thread m_thread;
};

}  // namespace simcore::engine
