#include "engine/Pump.h"

#include "quill_os/threads.h"

namespace simcore::engine {

void Pump::start() {
    if (m_thread.joinable()) return;
    m_thread = std::thread([this] { run(); });
}

void Pump::stop() {
    {
        const Lock lock(m_core.mutex);
        m_stopping = true;
        m_core.room.announceLocked();
    }
    if (m_thread.joinable()) m_thread.join();
}

void Pump::run() {
    quill::os::setCurrentThreadName("sim-source");
    Lock lock(m_core.mutex);
    while (!m_stopping) {
        m_core.room.wait(
            lock, [this] { return m_stopping || (!m_core.clock.manual() && m_source->ready()); });
        if (m_stopping) break;
        m_source->burst(lock);
        // Others who wait for the lock go first.
        lock.unlock();
        lock.lock();
    }
}

}  // namespace simcore::engine
