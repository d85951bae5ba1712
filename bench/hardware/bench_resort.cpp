// The resort buffer under load: four threads push frames in overlapping order, one takes every
// 10 ms. Printed: the share of one core that take() needs, against sorting the whole queue with
// std::sort at every take, which is what the contract says in plain words.
//
//   bench_resort [--quick]
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <deque>
#include <thread>
#include <vector>

#include "TableRow.h"
#include "core/hardware/RVFrameResortBuffer.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr uint64_t kFramesPerSecond = 1'000'000;
constexpr int kThreads = 4;
constexpr int kBatch = 250;
constexpr int64_t kHoldUs = 240'000;

uint64_t wallNs() {
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                     std::chrono::system_clock::now().time_since_epoch())
                                     .count());
}

// Processor time of the calling thread, so that other load on the machine does not count.
double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

std::vector<rv::FrameHolder> makeBatch() {
    std::vector<rv::FrameHolder> batch;
    batch.reserve(kBatch);
    const uint64_t begin = wallNs() - 1'000'000;  // a batch covers the last millisecond
    for (uint64_t i = 0; i < kBatch; ++i) {
        const uint64_t stamp = begin + i * (1'000'000 / kBatch);
        rv::FrameHolder frame = rv::makeFrame(8);
        frame->seconds = static_cast<uint32_t>(stamp / 1'000'000'000);
        frame->nanoseconds = static_cast<uint32_t>(stamp % 1'000'000'000);
        batch.push_back(std::move(frame));
    }
    return batch;
}

// The contract word for word: sort everything, release the front.
class PlainBuffer {
public:
    void push(std::span<rv::FrameHolder> frames, const std::shared_ptr<const rv::Subscription>&) {
        const std::lock_guard lock(m_mutex);
        for (rv::FrameHolder& frame : frames) m_queue.push_back(std::move(frame));
    }
    std::vector<rv::FrameHolder> take(int64_t holdUs) {
        const std::lock_guard lock(m_mutex);
        std::sort(m_queue.begin(), m_queue.end(),
                  [](const auto& a, const auto& b) { return a->timestampNs() < b->timestampNs(); });
        const uint64_t limit = wallNs() - static_cast<uint64_t>(holdUs) * 1000;
        std::vector<rv::FrameHolder> released;
        while (!m_queue.empty() && m_queue.front()->timestampNs() <= limit) {
            released.push_back(std::move(m_queue.front()));
            m_queue.pop_front();
        }
        return released;
    }

private:
    std::mutex m_mutex;
    std::deque<rv::FrameHolder> m_queue;
};

struct Result {
    double coreShare;
    uint64_t taken;
    uint64_t pushed;
};

template <class Buffer>
Result measure(double seconds) {
    Buffer buffer;
    std::atomic<bool> stop{false};
    std::atomic<uint64_t> pushed{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            auto next = Clock::now();
            const auto step =
                std::chrono::nanoseconds(1'000'000'000ULL * kBatch * kThreads / kFramesPerSecond);
            while (!stop) {
                auto batch = makeBatch();
                buffer.push(batch, nullptr);
                pushed += kBatch;
                next += step;
                std::this_thread::sleep_until(next);
            }
        });
    }
    double spent = 0;
    uint64_t taken = 0;
    const auto begin = Clock::now();
    const auto end = begin + std::chrono::duration<double>(seconds);
    while (Clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const double before = threadSeconds();
        const auto released = buffer.take(kHoldUs);
        spent += threadSeconds() - before;
        taken += released.size();
    }
    const double wall = std::chrono::duration<double>(Clock::now() - begin).count();
    stop = true;
    for (std::thread& thread : threads) thread.join();
    return {spent / wall, taken, pushed};
}

}  // namespace

int main(int argc, char** argv) {
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    const double seconds = quick ? 1.0 : 5.0;
    std::vector<double> ours;
    std::vector<double> plain;
    for (int round = 0; round < (quick ? 1 : 3); ++round) {
        const Result a = measure<rv::RVFrameResortBuffer>(seconds);
        const Result b = measure<PlainBuffer>(seconds);
        std::printf("round %d: take %.1f %% of a core at %.2f million frames/s, sort-all %.1f %%\n",
                    round + 1, a.coreShare * 100, static_cast<double>(a.pushed) / seconds / 1e6,
                    b.coreShare * 100);
        ours.push_back(a.coreShare);
        plain.push_back(b.coreShare);
    }
    std::sort(ours.begin(), ours.end());
    std::sort(plain.begin(), plain.end());
    std::printf("median: take %.1f %% of a core, %.1f times less than sorting the whole queue\n",
                ours[ours.size() / 2] * 100, plain[plain.size() / 2] / ours[ours.size() / 2]);
    bench::printRow({.what = "resort buffer at 1,000,000 frames/s from 4 threads",
                     .unit = "% of a core",
                     .ours = ours[ours.size() / 2] * 100,
                     .peer = plain[plain.size() / 2] * 100,
                     .peerName = "sort all",
                     .wanted = ""});
    return 0;
}
