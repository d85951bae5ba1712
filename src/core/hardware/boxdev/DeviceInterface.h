#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/frame/Frame.h"
#include "core/hardware/boxdev/CommandMessages.h"
#include "core/hardware/boxdev/HandOverCounters.h"
#include "core/hardware/boxdev/TrafficMeter.h"

namespace RV::BoxDev {

// Receives the frames of one device in batches, on the device's reader threads. The holders are
// taken over. Returns how many were taken; the rest was not wanted and is dropped by the reader.
using TraceSink = std::function<size_t(rv::FrameType type, std::span<rv::FrameHolder> batch)>;

// State of a device. Commands that act on the bus want Connected.
enum class DeviceState : int32_t { Idle = 0, Connecting = 1, Connected = 2, Disconnected = 4 };

// A device as the layers above see it. It takes JSON command documents and runs them in order.
class DeviceInterface {
public:
    virtual ~DeviceInterface() = default;

    [[nodiscard]] virtual const std::string& id() const = 0;  // MAC address, or serial number
    [[nodiscard]] virtual const std::string& name() const = 0;
    [[nodiscard]] virtual const std::string& model() const = 0;
    [[nodiscard]] virtual bool hasMac() const = 0;
    [[nodiscard]] virtual int canCount() const = 0;
    [[nodiscard]] virtual int linCount() const = 0;
    [[nodiscard]] virtual int ethCount() const = 0;
    [[nodiscard]] virtual int flexrayCount() const = 0;
    [[nodiscard]] virtual DeviceState state() const = 0;

    // Posts a document; the callback gets the answer once, on the device's worker thread.
    virtual void postRequest(std::shared_ptr<RequestCmdMsg> request, RespondCallback callback) = 0;
    // Posts a document and waits for the answer, at most option.timeoutMs.
    [[nodiscard]] virtual RespondCmdMsg execute(const std::string& text,
                                                CallbackOption option = {}) = 0;

    // Who gets the received frames; an empty sink drops them. The old sink is not called any more
    // once this has returned.
    virtual void setTraceSink(TraceSink sink) = 0;
    [[nodiscard]] virtual rv::HandOver libraryCounters() const = 0;
    [[nodiscard]] virtual rv::HandOver readerCounters() const = 0;
    [[nodiscard]] virtual DeviceTraffic traffic() const = 0;

    // Opens the device in the library; false when it refuses. May be tried again.
    [[nodiscard]] virtual bool open() = 0;
    // Stops tracing, joins the device's threads and lets go of the library. May be called twice.
    virtual void close() = 0;
    // Called when the library reports the device as gone: commands are refused from now on.
    virtual void markDisconnected() = 0;
};

}  // namespace RV::BoxDev
