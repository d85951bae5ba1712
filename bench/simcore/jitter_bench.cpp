// How far a cyclic job of 1 ms is off its grid, against a bare loop on the system's absolute timer
// and against python-can's periodic sender on its virtual bus; and what 200 jobs cost.
#include <cstring>
#include <memory>
#include <thread>

#include "TableRow.h"
#include "measure.h"
#include "quill_os/threads.h"

namespace {

constexpr int64_t kPeriodNs = 1'000'000;

double percentile(std::vector<int64_t> values, double share) {
    std::sort(values.begin(), values.end());
    const auto at = static_cast<size_t>(share * static_cast<double>(values.size() - 1));
    return static_cast<double>(values[at]) / 1000.0;
}

// Lateness of each wake-up of a loop that does nothing else.
std::vector<int64_t> bareLoop(int cycles) {
    std::vector<int64_t> late;
    std::thread loop([&] {
        quill::os::requestPreciseTimers();
        int64_t due = simbench::clockNs(CLOCK_MONOTONIC) + kPeriodNs;
        for (int i = 0; i < cycles; ++i, due += kPeriodNs) {
            const timespec at{due / 1'000'000'000, due % 1'000'000'000};
            while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr) != 0) {
            }
            late.push_back(simbench::clockNs(CLOCK_MONOTONIC) - due);
        }
    });
    loop.join();
    return late;
}

bool stepCounter(uint8_t* data, int32_t /*length*/, void* /*settings*/) {
    ++data[0];
    return true;
}

void addJob(int32_t handle, int number, int periodMs, int limit) {
    RvCanCycleJob job;
    std::snprintf(job.uuid, sizeof job.uuid, "%d", number);
    job.frame.id = static_cast<uint32_t>(number);
    job.frame.length = 8;
    job.periodMs = periodMs;
    job.limitCount = limit;
    job.update = stepCounter;
    simbench::require(add_can_cycle_frame(handle, &job) == 0, "add job");
}

constexpr const char* kTwoBoxes = R"({"boxes": [{"name": "S", "channels": {"can": ["b", "c"]}},
                                                {"name": "R", "channels": {"can": ["b"]}}]})";

// Lateness of the stamps of a 1 ms job; `others` jobs of 10 ms run on another bus.
std::vector<int64_t> jobLateness(int cycles, int others) {
    const auto handles = simbench::openAll(kTwoBoxes);
    // The stamp of a frame that is sent right before marks where the job's grid begins.
    const RvCanFrame marker;
    simbench::require(send_can_frame_once(handles[0], &marker) == 0, "send");
    addJob(handles[0], 0, 1, cycles);
    for (int i = 1; i <= others; ++i) {
        RvCanCycleJob job;
        std::snprintf(job.uuid, sizeof job.uuid, "%d", i);
        job.frame.id = static_cast<uint32_t>(i);
        job.frame.channel = 1;
        job.periodMs = 10;
        simbench::require(add_can_cycle_frame(handles[0], &job) == 0, "add job");
    }
    std::vector<int64_t> stamps;
    std::vector<RvCanFrame> frames(256);
    while (stamps.size() < static_cast<size_t>(cycles) + 1) {
        int32_t count = 0;
        simbench::require(read_can_frames(handles[1], frames.data(), 256, &count) == 0, "read");
        for (int32_t i = 0; i < count; ++i) {
            const RvCanFrame& f = frames[static_cast<size_t>(i)];
            stamps.push_back(f.seconds * 1'000'000'000LL + f.nanoseconds);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    // A period that was missed is as late as the frame that came after it, which is how the bare
    // loop counts it.
    std::vector<int64_t> late;
    size_t next = 1;
    for (int64_t due = stamps.front(); due <= stamps.back(); due += kPeriodNs) {
        while (stamps[next] < due) ++next;
        late.push_back(stamps[next] - due);
    }
    return late;
}

// Errors of the frame distances only: this sender drifts, so it has no grid to be late against.
std::vector<int64_t> pythonLateness(int cycles) {
    std::vector<int64_t> late;
    const std::string command = "/usr/bin/python3 " QUILL_SOURCE_DIR
                                "/bench/simcore/python_can_periodic.py " +
                                std::to_string(cycles) + " 2>/dev/null";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    long long value = 0;
    while (pipe && std::fscanf(pipe.get(), "%lld", &value) == 1) late.push_back(value);
    return late;
}

void report(const char* what, const std::vector<std::vector<int64_t>>& rounds) {
    std::vector<double> p50;
    std::vector<double> p99;
    for (const auto& late : rounds) {
        if (late.empty()) {
            std::printf("%-44s not available\n", what);
            return;
        }
        p50.push_back(percentile(late, 0.5));
        p99.push_back(percentile(late, 0.99));
    }
    simbench::printSpread((std::string(what) + ", p50").c_str(), p50, "us");
    simbench::printSpread((std::string(what) + ", p99").c_str(), p99, "us");
}

double medianP99(const std::vector<std::vector<int64_t>>& rounds) {
    std::vector<double> p99;
    for (const auto& late : rounds) {
        if (!late.empty()) p99.push_back(percentile(late, 0.99));
    }
    return p99.empty() ? bench::kNone : simbench::median(p99);
}

double processorShare(int seconds) {
    const auto handles = simbench::openAll(kTwoBoxes);
    for (int i = 0; i < 200; ++i) addJob(handles[0], i, 10, 0);
    const int64_t cpu = simbench::clockNs(CLOCK_PROCESS_CPUTIME_ID);
    const int64_t wall = simbench::clockNs(CLOCK_MONOTONIC);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const auto spent = static_cast<double>(simbench::clockNs(CLOCK_PROCESS_CPUTIME_ID) - cpu);
    return 100.0 * spent / static_cast<double>(simbench::clockNs(CLOCK_MONOTONIC) - wall);
}

}  // namespace

int main(int argc, char** argv) {
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    const auto printShare = [quick] {
        const double share = processorShare(quick ? 1 : 10);
        std::printf("%-44s %.2f %% of one core\n", "200 jobs of 10 ms", share);
        bench::printRow({.what = "200 cyclic jobs of 10 ms",
                         .unit = "% of a core",
                         .ours = share,
                         .wanted = "15 at most"});
    };
    if (argc > 1 && std::strcmp(argv[1], "--share") == 0) {
        printShare();
        return 0;
    }
    if (argc > 2 && std::strcmp(argv[1], "--bare") == 0) {
        for (const int64_t late : bareLoop(std::atoi(argv[2]))) {
            std::printf("%lld\n", static_cast<long long>(late));
        }
        return 0;
    }
    const int rounds = quick ? 1 : 5;
    const int cycles = quick ? 200 : 4000;
    std::vector<std::vector<int64_t>> bare;
    std::vector<std::vector<int64_t>> alone;
    std::vector<std::vector<int64_t>> beside;
    std::vector<std::vector<int64_t>> python;
    std::vector<double> ratio;
    std::vector<double> ratioBeside;
    for (int round = 0; round < rounds; ++round) {
        bare.push_back(bareLoop(cycles));
        alone.push_back(jobLateness(cycles, 0));
        bare.push_back(bareLoop(cycles));
        beside.push_back(jobLateness(cycles, 100));
        python.push_back(pythonLateness(quick ? 50 : 1000));
        const double floor =
            (percentile(bare[bare.size() - 2], 0.99) + percentile(bare.back(), 0.99)) / 2;
        ratio.push_back(percentile(alone.back(), 0.99) / floor);
        ratioBeside.push_back(percentile(beside.back(), 0.99) / floor);
    }
    report("bare clock_nanosleep loop", bare);
    report("1 ms job alone", alone);
    report("1 ms job beside 100 jobs", beside);
    report("python-can send_periodic (distances)", python);
    simbench::printSpread("p99 alone / bare loop", ratio, "times");
    simbench::printSpread("p99 beside 100 jobs / bare loop", ratioBeside, "times");
    const double bareP99 = medianP99(bare);
    const double peerP99 = medianP99(python);
    bench::printRow({.what = "p99 lateness of a 1 ms job, alone",
                     .unit = "us",
                     .ours = medianP99(alone),
                     .floor = bareP99,
                     .peer = peerP99,
                     .peerName = "python-can",
                     .wanted = "2 x floor at most"});
    bench::printRow({.what = "p99 lateness of a 1 ms job, beside 100 jobs",
                     .unit = "us",
                     .ours = medianP99(beside),
                     .floor = bareP99,
                     .wanted = "2 x floor at most"});
    printShare();
    return 0;
}
