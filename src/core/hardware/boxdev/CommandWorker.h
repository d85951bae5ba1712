#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>

#include "core/hardware/boxdev/CommandMessages.h"

namespace RV::BoxDev {

// The command worker of one device: takes requests in arrival order, runs the handler and calls the
// requester's callback, both on its own thread and with no mutex held.
class CommandWorker {
public:
    // Runs one command document and fills the answer; called on the worker thread.
    using Handler = std::function<void(const std::string& text, RespondCmdMsg& answer)>;

    CommandWorker(std::string threadName, Handler handler);
    ~CommandWorker();
    CommandWorker(const CommandWorker&) = delete;
    CommandWorker& operator=(const CommandWorker&) = delete;

    // Registers the callback under the request's identifier, then queues the request. After stop()
    // the callback is called at once, on the caller's thread, with Stopped. Identifiers are the
    // requester's choice, below 0x80000000.
    void post(std::shared_ptr<RequestCmdMsg> request, RespondCallback callback);

    // Posts a document and waits for its answer; a late answer is TimedOut and is then dropped.
    [[nodiscard]] RespondCmdMsg execute(const std::string& text, CallbackOption option = {});

    // Ends the thread after the request in hand; what is still queued is answered with Stopped.
    void stop();

private:
    void run();
    void answer(const RespondCmdMsg& answer);
    void answerRemaining();

    std::string m_threadName;
    Handler m_handler;
    // Identifiers of execute() lie in the upper half, apart from those that requesters choose.
    std::atomic<uint32_t> m_nextId{0x80000000U};
    std::mutex m_requestMutex;
    std::condition_variable m_requestReady;
    std::deque<std::shared_ptr<RequestCmdMsg>> m_requests;  // guarded by m_requestMutex
    bool m_stop = false;                                    // guarded by m_requestMutex
    std::mutex m_callbackMutex;
    std::unordered_map<uint32_t, RespondCallback> m_callbacks;  // guarded by m_callbackMutex
    std::thread m_thread;
};

}  // namespace RV::BoxDev
