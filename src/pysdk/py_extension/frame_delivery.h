#pragma once

#include <atomic>
#include <cstdint>

#include "core/hardware/ReceiveCallback.h"
#include "pysdk/py_extension/batch_collector.h"
#include "pysdk/py_extension/frame_views.h"
#include "pysdk/py_extension/record_objects.h"
#include "pysdk/py_extension/recording.h"
#include "pysdk/py_extension/script_registries.h"

namespace scripts {

// What delivery has done with the frames that reached it. At any quiet moment
// in = out + dropped + held; held are the frame whose callable runs and those that wait for their
// list.
struct DeliveryCounters {
    uint64_t in = 0;
    uint64_t out = 0;  // frames for which at least one callable was called
    uint64_t held = 0;
    uint64_t dropped = 0;  // frames that nobody subscribed to
    uint64_t calls = 0;
    uint64_t errors = 0;  // callables that raised
};

// Hands frames of the box manager to script callables. The box manager outlives the entry, so
// this object belongs to both and stays safe, with nothing to call, once it is closed.
class FrameDelivery : public rv::FrameReceiver {
public:
    void deliver(rv::FrameType type, rv::FrameHolder& frame, const rv::FrameInfo& info) override;
    [[nodiscard]] bool passDone() override;

    [[nodiscard]] ScriptRegistries& registries() { return m_registries; }
    [[nodiscard]] FrameViews& views() { return m_views; }
    // Gets every frame, whether or not a callable wants it.
    [[nodiscard]] Recording& recording() { return m_recording; }
    void close();

    [[nodiscard]] DeliveryCounters counters() const;
    // True on a thread that is inside a script's callable.
    [[nodiscard]] static bool onDispatchThread();

private:
    void callScripts(const CallbackTargets& targets, rv::FrameType type, const rv::Frame& frame,
                     std::string_view name);
    void handOver(PendingBatch& batch);
    void callWithList(const PendingBatch& batch);
    // Calls with a new reference, or reports the error that stands in for the argument.
    void callAndReport(const ScriptCallback& callback, rv::FrameType type, PyObject* argument);
    void callOne(const ScriptCallback& callback, rv::FrameType type, const rv::Frame& frame,
                 std::string_view name);

    ScriptRegistries m_registries;
    FrameViews m_views;
    Recording m_recording;
    BatchCollector m_collector;  // used by the dispatch thread only
    RecordObjects m_objects;     // guarded by the interpreter lock
    std::atomic<bool> m_closed{false};
    // Written by the dispatch thread only.
    std::atomic<uint64_t> m_in{0};
    std::atomic<uint64_t> m_out{0};
    std::atomic<uint64_t> m_dropped{0};
    std::atomic<uint64_t> m_calls{0};
};

}  // namespace scripts
