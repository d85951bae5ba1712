#include "core/hardware/boxdev/CommandWorker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <mutex>
#include <vector>

namespace RV::BoxDev {
namespace {

std::shared_ptr<RequestCmdMsg> request(uint32_t id, std::string text) {
    auto message = std::make_shared<RequestCmdMsg>();
    message->id = id;
    message->text = std::move(text);
    return message;
}

TEST(CommandWorker, runsRequestsInArrivalOrderAndAnswersEachOnce) {
    std::vector<std::string> seen;
    CommandWorker worker("test-cmd", [&](const std::string& text, RespondCmdMsg& answer) {
        seen.push_back(text);
        answer.cmd = text;
    });
    std::atomic<int> answers{0};
    std::promise<void> done;
    for (uint32_t i = 0; i < 200; ++i) {
        worker.post(request(1000 + i, std::to_string(i)), [&, i](const RespondCmdMsg& answer) {
            EXPECT_EQ(answer.id, 1000 + i);
            EXPECT_EQ(answer.cmd, std::to_string(i));
            if (++answers == 200) done.set_value();
        });
    }
    done.get_future().wait();
    worker.stop();
    EXPECT_EQ(answers, 200);
    for (size_t i = 0; i < seen.size(); ++i) EXPECT_EQ(seen[i], std::to_string(i));
}

// The callback may post and may ask for an answer's lock again: neither mutex is held around it.
TEST(CommandWorker, aCallbackMayPostTheNextRequest) {
    CommandWorker worker("test-cmd", [](const std::string&, RespondCmdMsg&) {});
    std::promise<void> done;
    worker.post(request(1, "first"), [&](const RespondCmdMsg&) {
        worker.post(request(2, "second"), [&](const RespondCmdMsg&) { done.set_value(); });
    });
    done.get_future().wait();
}

TEST(CommandWorker, anAnswerThatNeverComesIsATimeOut) {
    std::promise<void> release;
    auto gate = release.get_future().share();
    CommandWorker worker("test-cmd", [gate](const std::string& text, RespondCmdMsg&) {
        if (text == "slow") gate.wait();
    });
    const RespondCmdMsg answer = worker.execute("slow", {20});
    EXPECT_EQ(answer.code, CommandCode::TimedOut);
    EXPECT_NE(answer.message.find("20 ms"), std::string::npos);
    release.set_value();  // the late answer finds nobody and is dropped
    EXPECT_EQ(worker.execute("quick").code, CommandCode::Done);
}

TEST(CommandWorker, stopAnswersWhatIsQueuedAndRefusesWhatComesLater) {
    std::promise<void> entered;
    std::promise<void> release;
    auto gate = release.get_future().share();
    std::atomic<bool> first{true};
    CommandWorker worker("test-cmd", [&](const std::string&, RespondCmdMsg&) {
        if (first.exchange(false)) {
            entered.set_value();
            gate.wait();
        }
    });
    std::vector<CommandCode> codes(3, CommandCode::Done);
    for (uint32_t i = 0; i < 3; ++i) {
        worker.post(request(i + 1, "x"), [&, i](const RespondCmdMsg& a) { codes[i] = a.code; });
    }
    entered.get_future().wait();
    std::thread stopper([&] { worker.stop(); });
    while (worker.execute("late", {1}).code != CommandCode::Stopped) {
    }
    release.set_value();
    stopper.join();
    EXPECT_EQ(codes, (std::vector{CommandCode::Done, CommandCode::Stopped, CommandCode::Stopped}));
}

TEST(CommandWorker, aHandlerThatThrowsIsAnErrorAndTheWorkerGoesOn) {
    CommandWorker worker("test-cmd", [](const std::string& text, RespondCmdMsg&) {
        if (text == "bad") throw std::runtime_error("broken");
    });
    EXPECT_EQ(worker.execute("bad").message, "broken");
    EXPECT_EQ(worker.execute("good").code, CommandCode::Done);
}

TEST(CommandWorker, stoppingFromItsOwnThreadIsADeadlockError) {
    CommandWorker* self = nullptr;
    std::error_code code;
    CommandWorker worker("test-cmd", [&](const std::string&, RespondCmdMsg&) {
        try {
            self->stop();
        } catch (const std::system_error& e) {
            code = e.code();
        }
    });
    self = &worker;
    (void)worker.execute("x");
    EXPECT_EQ(code, std::errc::resource_deadlock_would_occur);
}

}  // namespace
}  // namespace RV::BoxDev
