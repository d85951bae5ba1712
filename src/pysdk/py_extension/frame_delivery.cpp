#include "pysdk/py_extension/frame_delivery.h"

#include <Python.h>

#include "pysdk/py_extension/interpreter_lock.h"

namespace scripts {
namespace {

thread_local bool t_insideCallable = false;

// One writer, so no locked instruction is needed.
void step(std::atomic<uint64_t>& counter) {
    counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

}  // namespace

bool FrameDelivery::onDispatchThread() { return t_insideCallable; }

void FrameDelivery::close() {
    m_closed.store(true, std::memory_order_release);
    m_registries.close();
}

void FrameDelivery::deliver(rv::FrameType type, rv::FrameHolder& frame, const rv::FrameInfo& info) {
    step(m_in);
    if (m_closed.load(std::memory_order_acquire)) {
        step(m_dropped);
        return;
    }
    const FrameView view = m_views.look(type, *frame, info.deviceId);
    if (view.recorded) m_recording.offer(*frame);
    CallbackTargets targets = m_registries.targetsOf(type, *frame, info.deviceId);
    if (!view.delivered) targets.device = ScriptCallback();
    if (!targets) {
        step(m_dropped);
        return;
    }
    callScripts(targets, type, *frame, view.name);
    step(m_out);
}

// No lock is held here, so that a script may change its subscriptions from its callable.
void FrameDelivery::callScripts(const CallbackTargets& targets, rv::FrameType type,
                                const rv::Frame& frame, std::string_view name) {
    t_insideCallable = true;
    if (targets.device) callOne(targets.device, type, frame, name);
    if (targets.byId) callOne(targets.byId, type, frame, name);
    t_insideCallable = false;
}

void FrameDelivery::callOne(const ScriptCallback& callback, rv::FrameType type,
                            const rv::Frame& frame, std::string_view name) {
    ParkOnUnwind park;  // the interpreter may end while the callable runs
    enterInterpreter();
    // Closed while this thread waited for the lock: the registries are being emptied.
    if (!m_closed.load(std::memory_order_acquire)) {
        step(m_calls);
        PyObject* record = m_objects.make(type, frame, name);
        PyObject* result =
            record == nullptr ? nullptr : PyObject_CallOneArg(callback.get(), record);
        if (result == nullptr) {
            m_registries.countError(type);
            // One raising script must not end delivery for the others.
            PyErr_WriteUnraisable(callback.get());
        }
        Py_XDECREF(result);
        Py_XDECREF(record);
    }
    leaveInterpreter();
    park.done();
}

DeliveryCounters FrameDelivery::counters() const {
    DeliveryCounters counters;
    counters.out = m_out.load(std::memory_order_relaxed);
    counters.dropped = m_dropped.load(std::memory_order_relaxed);
    counters.calls = m_calls.load(std::memory_order_relaxed);
    counters.in = m_in.load(std::memory_order_relaxed);
    counters.held = counters.in - counters.out - counters.dropped;
    counters.errors = m_registries.errors();
    return counters;
}

}  // namespace scripts
