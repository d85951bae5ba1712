// Devices of the entry: waiting for boxes, handles, configurations.
#include <fmt/format.h>
#include <pybind11/pybind11.h>

#include <QString>
#include <algorithm>
#include <chrono>
#include <limits>
#include <thread>

#include "core/log/Log.h"
#include "core/log/ScopeTimer.h"
#include "pysdk/py_extension/interpreter_lock.h"
#include "pysdk/py_extension/pysdk_entry.h"
#include "pysdk/py_extension/standard_output.h"

namespace py = pybind11;
using quill::log::kPysdk;
using scripts::DeviceHandle;
using scripts::InterpreterRelease;
using std::chrono::steady_clock;

namespace {

constexpr const char* kFile = "src/pysdk/py_extension/pysdk_entry";
constexpr std::chrono::milliseconds kScanStep{1000};
constexpr std::chrono::milliseconds kSignalStep{100};

// Sleeps in short steps so that Ctrl-C is answered soon; false when exit() was called meanwhile.
bool sleepInterruptibly(std::chrono::milliseconds time) {
    const auto end = steady_clock::now() + time;
    for (auto now = steady_clock::now(); now < end; now = steady_clock::now()) {
        {
            const InterpreterRelease released;
            std::this_thread::sleep_until(std::min(end, now + kSignalStep));
        }
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        if (PySDKEntry::existing() == nullptr) return false;
    }
    return true;
}

std::vector<std::string> knownMacs(rv::RVBoxManager& manager) {
    const InterpreterRelease released;
    return manager.deviceMacs();
}

const char* outcome(bool done) { return done ? "sucess" : "failure"; }

}  // namespace

void PySDKEntry::waitScanBoxResult(int64_t timeoutMs) {
    const quill::log::ScopeTimer timer(kPysdk, "PySDKEntry::waitScanBoxResult",
                                       spdlog::source_loc{kFile, __LINE__, "waitScanBoxResult"});
    constexpr int64_t kLongestMs = std::numeric_limits<int64_t>::max() / 1'000'000;
    const std::chrono::nanoseconds timeout(std::clamp(timeoutMs, -kLongestMs, kLongestMs) *
                                           1'000'000);
    rv::RVBoxManager& boxes = *m_manager;
    const auto start = steady_clock::now();
    std::vector<std::string> macs = knownMacs(boxes);
    while (macs.empty()) {
        if (!sleepInterruptibly(kScanStep)) break;
        py::print("s length: " + std::to_string(macs.size()));
        macs = knownMacs(boxes);
        if (steady_clock::now() - start > timeout) {
            scripts::flushScriptOutput();
            scripts::writeLine("no device!");
            break;
        }
    }
    QUILL_INFO(kPysdk, "waitScanBoxResult end cost {} ms", quill::log::elapsedMs(start));
}

std::vector<DeviceHandle> PySDKEntry::getDeviceList() {
    std::vector<DeviceHandle> handles;
    for (const std::string& mac : knownMacs(*m_manager)) {
        std::optional<DeviceHandle> handle = getDeviceHandle(mac);
        QUILL_INFO(kPysdk, "get device({}) {}", mac, outcome(handle.has_value()));
        if (handle) handles.push_back(std::move(*handle));
        // A box that does not answer takes its time; the next one may have to wait for exit().
        if (existing() == nullptr) break;
    }
    return handles;
}

std::optional<DeviceHandle> PySDKEntry::getDeviceHandle(const std::string& mac) {
    rv::RVBoxManager& boxes = *m_manager;
    std::optional<scripts::RVBoxDeviceInfo> info = GetDeviceInfo(mac);
    QUILL_INFO(kPysdk, "get device handle({}) {}", mac, outcome(info.has_value()));
    if (!info) return std::nullopt;
    DeviceHandle handle;
    handle.deviceInfo = std::move(*info);
    const InterpreterRelease released;
    const QString id = QString::fromStdString(mac);
    std::optional<rv::BoxConfig> config = boxes.config(id);
    // A box is listed before the manager has asked it for its configuration.
    if (!config) config = boxes.fetchConfig(id);
    if (config) handle.config = scripts::DeviceConfig(*config);
    return handle;
}

std::optional<scripts::RVBoxDeviceInfo> PySDKEntry::GetDeviceInfo(const std::string& mac) {
    rv::RVBoxManager& boxes = *m_manager;
    const auto start = steady_clock::now();
    const InterpreterRelease released;
    const std::optional<rv::BoxIdentity> identity =
        boxes.fetchIdentity(QString::fromStdString(mac));
    QUILL_INFO(kPysdk, "get device({}) info {}", mac, outcome(identity.has_value()));
    QUILL_INFO(kPysdk, "get device({}) info {} cost {} ms", mac, outcome(identity.has_value()),
               quill::log::elapsedMs(start));
    if (!identity) return std::nullopt;
    scripts::RVBoxDeviceInfo info;
    info.com = identity->com;
    info.mac = identity->mac;
    info.model = identity->model;
    info.networkCard = identity->networkCard;
    info.sn = identity->serial;
    info.dip = identity->dip;
    return info;
}

bool PySDKEntry::readConfig(DeviceHandle& handle) {
    rv::RVBoxManager& boxes = *m_manager;
    const std::string mac = handle.deviceInfo.mac;
    std::optional<rv::BoxConfig> config;
    {
        const InterpreterRelease released;
        config = boxes.fetchConfig(QString::fromStdString(mac));
    }
    if (config) handle.config = scripts::DeviceConfig(*config);
    QUILL_INFO(kPysdk, "get device({}) config {}", mac, outcome(config.has_value()));
    return config.has_value();
}

bool PySDKEntry::writeConfig(DeviceHandle& handle) {
    rv::RVBoxManager& boxes = *m_manager;
    const std::string mac = handle.deviceInfo.mac;
    const rv::BoxConfig wanted = handle.config.toBoxConfig();
    std::string reason;
    std::optional<rv::BoxConfig> held;
    bool done = false;
    {
        const InterpreterRelease released;
        const QString id = QString::fromStdString(mac);
        done = boxes.writeConfig(id, wanted, reason);
        if (done) held = boxes.config(id);
    }
    if (held) handle.config = scripts::DeviceConfig(*held);
    if (!done) {
        QUILL_WARN(kPysdk, "set device({}) config failure: {}", mac, reason);
        py::print("setDeviceConfig: " + reason);
    }
    return done;
}

std::string PySDKEntry::statusText(const DeviceHandle& handle) {
    rv::RVBoxManager& boxes = *m_manager;
    const QString id = QString::fromStdString(handle.deviceInfo.mac);
    const InterpreterRelease released;
    return boxes.statusText(id);
}
