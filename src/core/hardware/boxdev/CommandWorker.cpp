#include "core/hardware/boxdev/CommandWorker.h"

#include <chrono>
#include <exception>
#include <future>
#include <system_error>
#include <utility>

#include "core/log/Log.h"
#include "quill_os/threads.h"

namespace RV::BoxDev {
namespace {
// Bound of one wait for a request; the stop flag is looked at once more after it.
constexpr std::chrono::microseconds kRequestWait{100000};
}  // namespace

CommandWorker::CommandWorker(std::string threadName, Handler handler)
    : m_threadName(std::move(threadName)), m_handler(std::move(handler)) {
    m_thread = std::thread([this] { run(); });
}

CommandWorker::~CommandWorker() { stop(); }

void CommandWorker::post(std::shared_ptr<RequestCmdMsg> request, RespondCallback callback) {
    const uint32_t id = request->id;
    if (callback) {
        const std::lock_guard lock(m_callbackMutex);
        m_callbacks[id] = std::move(callback);
    }
    {
        std::unique_lock lock(m_requestMutex);
        if (!m_stop) {
            m_requests.push_back(std::move(request));
            lock.unlock();
            m_requestReady.notify_one();
            return;
        }
    }
    answer({id, {}, CommandCode::Stopped, "the device is closed", {}});
}

RespondCmdMsg CommandWorker::execute(const std::string& text, CallbackOption option) {
    auto request = std::make_shared<RequestCmdMsg>();
    request->text = text;
    request->id = m_nextId.fetch_add(1) | 0x80000000U;
    const uint32_t id = request->id;
    // Shared, because a late answer may come when the waiting caller is gone.
    auto promise = std::make_shared<std::promise<RespondCmdMsg>>();
    auto future = promise->get_future();
    post(std::move(request), [promise](const RespondCmdMsg& msg) { promise->set_value(msg); });
    if (future.wait_for(std::chrono::milliseconds(option.timeoutMs)) == std::future_status::ready) {
        return future.get();
    }
    const std::lock_guard lock(m_callbackMutex);
    m_callbacks.erase(id);
    return {id,
            {},
            CommandCode::TimedOut,
            "no answer within " + std::to_string(option.timeoutMs) + " ms",
            {}};
}

void CommandWorker::stop() {
    if (!m_thread.joinable()) return;
    if (m_thread.get_id() == std::this_thread::get_id()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    {
        const std::lock_guard lock(m_requestMutex);
        m_stop = true;
    }
    m_requestReady.notify_all();
    m_thread.join();
    answerRemaining();
}

void CommandWorker::run() {
    quill::os::setCurrentThreadName(m_threadName.c_str());
    for (;;) {
        std::shared_ptr<RequestCmdMsg> request;
        {
            std::unique_lock lock(m_requestMutex);
            m_requestReady.wait_for(lock, kRequestWait,
                                    [this] { return m_stop || !m_requests.empty(); });
            if (m_stop) return;
            if (m_requests.empty()) continue;
            request = std::move(m_requests.front());
            m_requests.pop_front();
        }
        RespondCmdMsg reply;
        reply.id = request->id;
        try {
            m_handler(request->text, reply);
        } catch (const std::exception& e) {
            reply.code = CommandCode::BadDocument;
            reply.message = e.what();
            QUILL_ERROR(quill::log::kSimCore, "command failed: {}, document: {}", e.what(),
                        request->text);
        }
        answer(reply);
    }
}

void CommandWorker::answer(const RespondCmdMsg& reply) {
    RespondCallback callback;
    {
        const std::lock_guard lock(m_callbackMutex);
        const auto found = m_callbacks.find(reply.id);
        if (found == m_callbacks.end()) return;  // the requester gave up waiting
        callback = std::move(found->second);
        m_callbacks.erase(found);
    }
    callback(reply);
}

void CommandWorker::answerRemaining() {
    std::deque<std::shared_ptr<RequestCmdMsg>> left;
    {
        const std::lock_guard lock(m_requestMutex);
        left.swap(m_requests);
    }
    for (const auto& request : left) {
        answer({request->id, {}, CommandCode::Stopped, "the device is closed", {}});
    }
}

}  // namespace RV::BoxDev
