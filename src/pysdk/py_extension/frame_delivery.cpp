#include "pysdk/py_extension/frame_delivery.h"

#include <Python.h>

#include <algorithm>
#include <chrono>

#include "pysdk/py_extension/interpreter_lock.h"

namespace scripts {
namespace {

thread_local bool t_insideCallable = false;

// One writer, so no locked instruction is needed.
void step(std::atomic<uint64_t>& counter, uint64_t by = 1) {
    counter.store(counter.load(std::memory_order_relaxed) + by, std::memory_order_relaxed);
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
    if (!view.batched) targets.batch.reset();
    if (!targets) {
        step(m_dropped);
        return;
    }
    callScripts(targets, type, *frame, view.name);
    if (targets.batch == nullptr) {
        step(m_out);
        return;
    }
    PendingBatch* full = m_collector.add(targets.batch, frame, view.name);
    if (full != nullptr) handOver(*full);
}

// Hands over what is due and forgets subscriptions that have ended.
bool FrameDelivery::passDone() {
    std::vector<PendingBatch>& batches = m_collector.batches();
    const auto now = std::chrono::steady_clock::now();
    for (PendingBatch& batch : batches) {
        if (batch.frames.empty()) continue;
        if (now >= batch.due || batch.subscription->ended) handOver(batch);
    }
    std::erase_if(batches, [](const PendingBatch& batch) {
        return batch.frames.empty() && batch.subscription->ended;
    });
    return std::any_of(batches.begin(), batches.end(),
                       [](const PendingBatch& batch) { return !batch.frames.empty(); });
}

void FrameDelivery::handOver(PendingBatch& batch) {
    const size_t count = batch.frames.size();
    const bool ended = batch.subscription->ended || m_closed.load(std::memory_order_acquire);
    if (!ended) callWithList(batch);
    step(ended ? m_dropped : m_out, count);
    batch.frames.clear();
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
        callAndReport(callback, type, m_objects.make(type, frame, name));
    }
    leaveInterpreter();
    park.done();
}

void FrameDelivery::callWithList(const PendingBatch& batch) {
    const rv::FrameType type = batch.frames.front().frame->type;
    t_insideCallable = true;
    ParkOnUnwind park;
    enterInterpreter();
    if (!m_closed.load(std::memory_order_acquire)) {
        PyObject* list = PyList_New(static_cast<Py_ssize_t>(batch.frames.size()));
        for (size_t i = 0; list != nullptr && i < batch.frames.size(); ++i) {
            const PendingFrame& pending = batch.frames[i];
            PyObject* record = m_objects.make(type, *pending.frame, pending.name);
            if (record == nullptr) {
                Py_CLEAR(list);
                break;
            }
            PyList_SET_ITEM(list, static_cast<Py_ssize_t>(i), record);
        }
        callAndReport(batch.subscription->callback, type, list);
    }
    leaveInterpreter();
    park.done();
    t_insideCallable = false;
}

void FrameDelivery::callAndReport(const ScriptCallback& callback, rv::FrameType type,
                                  PyObject* argument) {
    step(m_calls);
    PyObject* result =
        argument == nullptr ? nullptr : PyObject_CallOneArg(callback.get(), argument);
    if (result == nullptr) {
        m_registries.countError(type);
        // One raising script must not end delivery for the others.
        PyErr_WriteUnraisable(callback.get());
    }
    Py_XDECREF(result);
    Py_XDECREF(argument);
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
