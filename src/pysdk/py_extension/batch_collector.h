#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/frame/Frame.h"
#include "pysdk/py_extension/batch_subscription.h"

namespace scripts {

// A frame that waits for its list, with the name that a database gave it.
struct PendingFrame {
    rv::FrameHolder frame;
    std::string name;
};

// The frames that wait for one subscription.
struct PendingBatch {
    std::shared_ptr<BatchSubscription> subscription;
    std::vector<PendingFrame> frames;
    std::chrono::steady_clock::time_point due;  // for the hand-over, while there are frames
};

// Collects frames for callables that take lists. Used by the dispatch thread only.
class BatchCollector {
public:
    // Takes the frame. The batch when it is full now, else null.
    PendingBatch* add(const std::shared_ptr<BatchSubscription>& subscription,
                      rv::FrameHolder& frame, std::string_view name);
    // The batches; those without frames may be erased.
    [[nodiscard]] std::vector<PendingBatch>& batches() { return m_batches; }

private:
    std::vector<PendingBatch> m_batches;  // as many as there are subscriptions: a handful
};

}  // namespace scripts
