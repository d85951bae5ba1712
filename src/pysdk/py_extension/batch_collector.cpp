#include "pysdk/py_extension/batch_collector.h"

#include <algorithm>
#include <utility>

namespace scripts {

PendingBatch* BatchCollector::add(const std::shared_ptr<BatchSubscription>& subscription,
                                  rv::FrameHolder& frame, std::string_view name) {
    auto batch = std::find_if(m_batches.begin(), m_batches.end(), [&](const PendingBatch& pending) {
        return pending.subscription == subscription;
    });
    if (batch == m_batches.end()) batch = m_batches.insert(batch, {subscription, {}, {}});
    if (batch->frames.empty()) {
        batch->due = std::chrono::steady_clock::now() + subscription->maxDelay;
    }
    batch->frames.push_back({std::move(frame), std::string(name)});
    return batch->frames.size() >= subscription->maxFrames ? &*batch : nullptr;
}

}  // namespace scripts
