#pragma once

#include <QByteArray>
#include <QHash>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "core/capturefilter/model/CaptureFilterManager.h"
#include "core/frame/Frame.h"
#include "pysdk/py_extension/batch_subscription.h"
#include "pysdk/py_extension/script_callback.h"

namespace scripts {

// The callables to be called for one frame, copied out of the registries.
struct CallbackTargets {
    ScriptCallback device;
    ScriptCallback byId;
    std::shared_ptr<BatchSubscription> batch;

    explicit operator bool() const { return device || byId || batch != nullptr; }
};

// Who receives which frame. At most one callable per key: a second subscription replaces the
// first. Changed on script threads, read on the dispatch thread. A callable that leaves a registry
// is dropped after the mutex is unlocked, since dropping it may run a script's code.
class ScriptRegistries {
public:
    using Bus = rv::CaptureFilterManager::Bus;

    void setCan(const std::string& mac, ScriptCallback callback);
    void setLin(const std::string& mac, ScriptCallback callback);
    void setEth(const std::string& mac, ScriptCallback callback);
    void removeCan(const std::string& mac);
    void removeLin(const std::string& mac);
    void removeEth(const std::string& mac);

    // A null subscription ends the one that is there.
    void setBatch(const std::string& mac, Bus bus, std::shared_ptr<BatchSubscription> batch);
    // True when there is a subscription of the device, one by one or in lists. One with an empty
    // callable counts: recording and counting by identifier live on the tracing that it asked for.
    [[nodiscard]] bool hasSubscription(const std::string& mac) const;

    // Adds the identifier; its counter starts at 0 or goes on. An empty callable leaves the one
    // that is there.
    void addId(uint32_t id, ScriptCallback callback);
    // Drops callable and counter.
    void removeId(uint32_t id);
    // CAN frames with this identifier delivered since it was added; 0 when it is not in the set.
    [[nodiscard]] uint64_t countOf(uint32_t id) const;

    // The callables for a frame; counts its identifier. Empty ones after close().
    [[nodiscard]] CallbackTargets targetsOf(rv::FrameType type, const rv::Frame& frame,
                                            const std::string& deviceId);
    // Counts a callable that raised.
    void countError(rv::FrameType type);
    [[nodiscard]] uint64_t errors() const;

    // No frame finds a callable any more.
    void close();
    // Drops all callables, the table that was declared last first.
    void clear();

private:
    using DeviceTable = QHash<QByteArray, ScriptCallback>;
    using BatchTable = QHash<QByteArray, std::shared_ptr<BatchSubscription>>;
    void replace(DeviceTable& table, const std::string& mac, ScriptCallback& callback);
    // Dropped by the caller, with the mutex unlocked.
    [[nodiscard]] ScriptCallback take(DeviceTable& table, const std::string& mac);

    mutable std::mutex m_mutex;
    bool m_closed = false;
    DeviceTable m_canByDevice;
    DeviceTable m_ethByDevice;
    DeviceTable m_linByDevice;
    BatchTable m_canBatches;
    BatchTable m_linBatches;
    QHash<uint32_t, uint64_t> m_idCounters;
    QHash<uint32_t, ScriptCallback> m_callbackById;
    QHash<uint8_t, uint64_t> m_errorsByKind;  // callables that raised, by kind of frame
};

}  // namespace scripts
