#pragma once

#include <memory>
#include <string>
#include <thread>

#include "engine/Source.h"

namespace simcore::engine {

// Thread of one source without a pace: delivers whenever the receivers have room and rests
// otherwise. While the clock is manual it rests and advance() drives the source.
class Pump {
public:
    Pump(Core& core, std::shared_ptr<Source> source) : m_core(core), m_source(std::move(source)) {}
    ~Pump() { stop(); }
    Pump(const Pump&) = delete;
    Pump& operator=(const Pump&) = delete;

    void start();
    void stop();

private:
    void run();

    Core& m_core;
    std::shared_ptr<Source> m_source;
    bool m_stopping = false;  // guarded by the engine's lock
    std::thread m_thread;
};

}  // namespace simcore::engine
