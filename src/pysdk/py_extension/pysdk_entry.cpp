#include "pysdk/py_extension/pysdk_entry.h"

#include <pybind11/pybind11.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "core/hardware/boxdev/DeviceManager.h"
#include "core/log/Log.h"
#include "core/log/ScopeTimer.h"
#include "pysdk/py_extension/interpreter_lock.h"
#include "pysdk/py_extension/standard_output.h"

namespace py = pybind11;

namespace {

constexpr const char* kPysdkEntryFile = "src/pysdk/py_extension/pysdk_entry";
constexpr int kDestructorLine = 51;
// Bounds how long a blocked callable can hold up exit() and the end of a script.
constexpr int kStopDeliveryMs = 1000;
constexpr int kStopAtEndMs = 500;
constexpr int kStopDevicesMs = 1000;

std::mutex g_createMutex;
std::atomic<PySDKEntry*> g_entry{nullptr};
std::atomic<bool> g_exited{false};

// Tells of boxes that come and go. Belongs to the entry but knows nothing of it, since boxes are
// watched until the process ends.
void printNotice(const std::shared_ptr<rv::DeviceNotice>& notice) {
    static constexpr const char* kTexts[] = {"[RVBoxConfigManager] new device !",
                                             "[RVBoxConfigManager] device lost !",
                                             "[RVBoxConfigManager] dip status change !"};
    if (notice == nullptr || notice->type >= std::size(kTexts)) return;
    scripts::writeLine(kTexts[notice->type] + notice->deviceId + notice->name);
}

// Stops the device layer, whose threads must not run into the end of the process, but waits only
// so long: a box that does not answer must not keep a script from ending.
void stopDevices(int waitMs) {
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> finished = done->get_future();
    auto stopper = std::make_unique<std::thread>([done] {
        RV::BoxDev::DeviceManager::instance().stop();
        done->set_value();
    });
    if (finished.wait_for(std::chrono::milliseconds(waitMs)) == std::future_status::ready) {
        stopper->join();
        return;
    }
    QUILL_WARN(quill::log::kPysdk, "the script ends while a box is being closed");
    (void)stopper.release();  // the process ends with it
}

void logCounters(const scripts::DeliveryCounters& counters) {
    QUILL_INFO(quill::log::kPysdk,
               "delivery: {} frames in, {} out, {} dropped, {} held, {} calls, {} raised",
               counters.in, counters.out, counters.dropped, counters.held, counters.calls,
               counters.errors);
}

PySDKEntry* createOnce() {
    scripts::flushScriptOutput();
    // Released before the mutex is taken: its holder gives the lock up and takes it back.
    const scripts::InterpreterRelease released;
    const std::lock_guard lock(g_createMutex);
    PySDKEntry* entry = g_entry.load(std::memory_order_acquire);
    if (entry == nullptr) {
        entry = new PySDKEntry;
        g_entry.store(entry, std::memory_order_release);
    }
    return entry;
}

PySDKEntry* fetch() {
    PySDKEntry* entry = g_entry.load(std::memory_order_acquire);
    return entry != nullptr ? entry : createOnce();
}

}  // namespace

PySDKEntry& PySDKEntry::instance() {
    if (g_exited.load(std::memory_order_acquire)) {
        throw std::runtime_error("QuillScriptsSDK: exit() was called, the module is closed");
    }
    return *fetch();
}

PySDKEntry* PySDKEntry::existing() {
    return g_exited.load(std::memory_order_acquire) ? nullptr
                                                    : g_entry.load(std::memory_order_acquire);
}

void PySDKEntry::destroyInstance() {
    if (scripts::FrameDelivery::onDispatchThread()) {
        throw std::runtime_error("exit() cannot be called from a frame callable");
    }
    if (g_exited.load(std::memory_order_acquire)) {
        QUILL_WARN(quill::log::kPysdk, "exit() was called before");
        return;
    }
    PySDKEntry* entry = fetch();
    // Another script thread may have been first while this one waited for the entry.
    if (g_exited.exchange(true, std::memory_order_acq_rel)) return;
    delete entry;
}

void PySDKEntry::closeAtInterpreterEnd() {
    PySDKEntry* entry = existing();
    if (entry == nullptr) return;
    g_exited.store(true, std::memory_order_release);
    const std::shared_ptr<scripts::FrameDelivery> delivery = entry->m_delivery;
    delivery->close();
    {
        const scripts::InterpreterRelease released;
        if (!entry->m_manager->stopDelivery(kStopAtEndMs)) {
            QUILL_WARN(quill::log::kPysdk, "the script ends while a frame callable runs");
        }
        delivery->recording().stop();
        stopDevices(kStopDevicesMs);
    }
    delivery->registries().clear();
}

PySDKEntry::PySDKEntry()
    : QObject(nullptr),
      m_delivery(std::make_shared<scripts::FrameDelivery>()),
      m_manager(new rv::RVBoxManager) {
    const char* done = m_manager->init(&printNotice) ? "true" : "false";
    // One call, told twice: scripts' users look for both lines.
    scripts::writeLine(std::string("RegistEventCallBack : ") + done);
    scripts::writeLine(std::string("Init : ") + done);
}

PySDKEntry::~PySDKEntry() {
    m_delivery->close();
    {
        const scripts::InterpreterRelease released;
        const quill::log::ScopeTimer timer(
            quill::log::kPysdk, "PySDKEntry::~PySDKEntry",
            spdlog::source_loc{kPysdkEntryFile, kDestructorLine, "~PySDKEntry"},
            "PySDKEntry::{dtor}::<lambda_1>::operator ()");
        // Frames first, so that no callable runs when this is over.
        if (!m_manager->stopDelivery(kStopDeliveryMs)) {
            QUILL_WARN(quill::log::kPysdk, "a frame callable still runs after exit()");
        }
        RV::BoxDev::DeviceManager::instance().stop();
        m_delivery->recording().stop();
        logCounters(m_delivery->counters());
    }
    m_delivery->registries().clear();
}
