// Prints rates and ratios of recording; with --quick one short round as a smoke test.
#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <future>

#include "TableRow.h"
#include "core/playback/recorder/FrameRecorder.h"
#include "recorder/floor_loop.h"
#include "recorder/python_writer.h"
#include "recorder/traffic.h"
#include "rvconverter/ConvertToolkit.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    size_t canFrames = 1'000'000, fdFrames = 200'000, pythonFrames = 100'000;
    int rounds = 7;
    std::string folder;
};

struct Cost {
    double seconds = 0;     // on the clock
    double cpuSeconds = 0;  // of all threads; hardly moved by other load on the machine
};

Cost costOf(const std::function<void()>& work) {
    const auto start = Clock::now();
    const std::clock_t cpuStart = std::clock();
    work();
    const auto cpu = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
    return {std::chrono::duration<double>(Clock::now() - start).count(), cpu};
}

struct Series {
    std::vector<double> values;
    void add(double value) { values.push_back(value); }
    [[nodiscard]] double median() const {
        auto sorted = values;
        std::sort(sorted.begin(), sorted.end());
        return sorted.empty() ? 0 : sorted[sorted.size() / 2];
    }
    void print(const char* name, double scale, const char* unit) const {
        const auto [least, most] = std::minmax_element(values.begin(), values.end());
        std::printf("  %-34s min %9.3f  median %9.3f  max %9.3f %s\n", name, *least * scale,
                    median() * scale, *most * scale, unit);
    }
};

int threadsUsed() { return std::thread::hardware_concurrency() > 1 ? 2 : 1; }

// From staged records to the closed file; the records are made before.
Cost writerCost(const std::string& path, uint32_t type, int level,
                const std::vector<rv::FrameHolder>& frames) {
    auto lists = bench::makeLists(frames);
    rv::ConvertInfo info;
    info.type = type;
    info.path = std::wstring(path.begin(), path.end());
    info.compressionLevel = level;
    return costOf([&] {
        const auto context = rv::ConvertToolkit::createConvertContextPtr(info);
        if (!context) std::abort();
        auto convert = std::async(std::launch::async, [&] { context->convertFrames(); });
        auto persist = std::async(std::launch::async, [&] { context->persistFrames(); });
        for (auto& list : lists) context->acceptRecords(std::move(list));
        context->endOfInput();
        convert.wait();
        persist.wait();
        context->close();
        if (context->exportedFrames() != frames.size()) std::abort();
    });
}

void benchBlf(const Options& options, bool fd, int level) {
    const size_t count = fd ? options.fdFrames : options.canFrames;
    const auto traffic = bench::makeTraffic(count, fd);
    const auto frames = bench::makeFrames(traffic, fd);
    const std::string path = options.folder + "/b.blf";
    const auto n = static_cast<double>(count);
    Series ours, floor, python, toFloor, toFloorCpu, toPython;
    uint64_t bytes = 0;
    for (int round = 0; round < options.rounds; ++round) {
        const Cost least =
            costOf([&] { bench::writeFloor(path, traffic, fd, level, threadsUsed()); });
        const Cost cost = writerCost(path, 0, level, frames);
        bytes = std::filesystem::file_size(path);
        floor.add(n / least.seconds);
        ours.add(n / cost.seconds);
        toFloor.add(least.seconds / cost.seconds);
        toFloorCpu.add(least.cpuSeconds / cost.cpuSeconds);
        const auto rate = bench::pythonRate(path, traffic, options.pythonFrames, fd, level);
        if (!rate) continue;
        python.add(*rate);
        toPython.add(n / cost.seconds / *rate);
    }
    std::printf("BLF %s level %d, %zu frames, %d compressing threads, %.1f bytes a frame\n",
                fd ? "CAN FD 64" : "CAN 8", level, count, threadsUsed(),
                static_cast<double>(bytes) / static_cast<double>(count));
    ours.print("writer", 1e-6, "M frames/s");
    floor.print("floor", 1e-6, "M frames/s");
    toFloor.print("writer / floor", 1, "");
    toFloorCpu.print("writer / floor by processor time", 1, "");
    const std::string what = std::string("BLF writing, ") + (fd ? "CAN FD 64" : "CAN 8") +
                             ", level " + std::to_string(level);
    bench::printRow({.what = what.c_str(),
                     .unit = "frames/s",
                     .ours = ours.median(),
                     .floor = floor.median(),
                     .peer = python.values.empty() ? bench::kNone : python.median(),
                     .peerName = "python-can",
                     .wanted = "0.8 x floor, 4 x peer"});
    if (python.values.empty()) return;
    python.print("python-can BLFWriter", 1e-6, "M frames/s");
    toPython.print("writer / python-can", 1, "");
}

void benchAsc(const Options& options, bool fd) {
    const size_t count = fd ? options.fdFrames : options.canFrames;
    const auto traffic = bench::makeTraffic(count, fd);
    const auto frames = bench::makeFrames(traffic, fd);
    const std::string path = options.folder + "/b.asc";
    Series ours, python, toPython;
    for (int round = 0; round < options.rounds; ++round) {
        ours.add(static_cast<double>(count) / writerCost(path, 1, 0, frames).seconds);
        const auto rate = bench::pythonRate(path, traffic, options.pythonFrames, fd, 0);
        if (!rate) continue;
        python.add(*rate);
        toPython.add(ours.values.back() / *rate);
    }
    std::printf("ASC %s, %zu frames\n", fd ? "CAN FD 64" : "CAN 8", count);
    bench::printRow({.what = fd ? "ASC writing, CAN FD 64" : "ASC writing, CAN 8",
                     .unit = "lines/s",
                     .ours = ours.median(),
                     .peer = python.values.empty() ? bench::kNone : python.median(),
                     .peerName = "python-can",
                     .wanted = "10 x peer"});
    ours.print("writer", 1e-6, "M lines/s");
    if (python.values.empty()) return;
    python.print("python-can ASCWriter", 1e-6, "M lines/s");
    toPython.print("writer / python-can", 1, "");
}

// The delivery thread's price of a frame while conversion runs beside it: each call timed, less the
// price of the clock itself.
void benchRecordFrame(const Options& options) {
    const auto frames = bench::makeFrames(bench::makeTraffic(options.canFrames / 5, false), false);
    Series medians, p99, clockCost;
    for (int round = 0; round < options.rounds; ++round) {
        playback::FrameRecorder recorder({options.folder + "/r.blf", 0});
        recorder.startRecord();
        std::vector<int64_t> costs, empty;
        costs.reserve(frames.size());
        empty.reserve(frames.size());
        for (const rv::FrameHolder& frame : frames) {
            const auto before = Clock::now();
            recorder.recordFrame(*frame);
            const auto after = Clock::now();
            const auto again = Clock::now();
            costs.push_back((after - before).count());
            empty.push_back((again - after).count());
        }
        recorder.stopRecord();
        std::sort(costs.begin(), costs.end());
        std::sort(empty.begin(), empty.end());
        const auto clock = static_cast<double>(empty[empty.size() / 2]);
        clockCost.add(clock);
        medians.add(static_cast<double>(costs[costs.size() / 2]) - clock);
        p99.add(static_cast<double>(costs[costs.size() * 99 / 100]) - clock);
    }
    std::printf("recordFrame, %zu frames of 8 bytes, one call at a time\n", frames.size());
    bench::printRow({.what = "recordFrame on the delivery thread",
                     .unit = "ns",
                     .ours = medians.median(),
                     .wanted = "150 ns at most"});
    medians.print("median call", 1, "ns");
    p99.print("99th percentile", 1, "ns");
    clockCost.print("(clock, already taken off)", 1, "ns");
}

// 200,000 frames a second in batches of 1 ms; what waits anywhere is what memory must hold.
void benchSustained(const Options& options, int seconds) {
    const auto frames = bench::makeFrames(bench::makeTraffic(200'000, false), false);
    playback::FrameRecorder recorder({options.folder + "/s.blf", 0});
    recorder.startRecord();
    const auto start = Clock::now();
    uint64_t most = 0;
    size_t at = 0;
    for (int ms = 1; ms <= seconds * 1000; ++ms) {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
        for (int i = 0; i < 200; ++i) {
            rv::Frame& frame = *frames[at++ % frames.size()];
            frame.seconds = static_cast<uint32_t>(ns / 1'000'000'000);
            frame.nanoseconds = static_cast<uint32_t>(ns % 1'000'000'000);
            recorder.recordFrame(frame);
        }
        if (ms % 20 == 0) {
            const playback::RecordingStatus status = recorder.status();
            most = std::max(most, status.offered - status.written - status.dropped);
        }
        std::this_thread::sleep_until(start + std::chrono::milliseconds(ms));
    }
    recorder.stopRecord();
    const playback::RecordingStatus status = recorder.status();
    std::printf(
        "sustained 200,000 frames/s for %d s: offered %llu, written %llu, dropped %llu, "
        "most frames in memory %llu, file %.1f MB\n",
        seconds, static_cast<unsigned long long>(status.offered),
        static_cast<unsigned long long>(status.written),
        static_cast<unsigned long long>(status.dropped), static_cast<unsigned long long>(most),
        static_cast<double>(status.bytes) / 1e6);
}

// Runs the part that was asked for, or all of them.
void runParts(const Options& options, const std::string& part, int sustainedSeconds) {
    const auto wanted = [&part](const char* name) { return part.empty() || part == name; };
    for (const int level : {1, 6}) {
        if (wanted("blf")) benchBlf(options, false, level);
        if (wanted("blf")) benchBlf(options, true, level);
    }
    if (wanted("asc")) benchAsc(options, false);
    if (wanted("asc")) benchAsc(options, true);
    if (wanted("frame")) benchRecordFrame(options);
    if (wanted("sustained")) benchSustained(options, sustainedSeconds);
}

}  // namespace

// bench_recorder [--quick] [--rounds=N] [blf|asc|frame|sustained]
int main(int argc, char** argv) {
    spdlog::set_level(spdlog::level::warn);
    Options options;
    int sustainedSeconds = 60;
    std::string part;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--quick") {
            options.canFrames = 50'000;
            options.fdFrames = options.pythonFrames = 10'000;
            options.rounds = sustainedSeconds = 1;
        } else if (word.starts_with("--rounds=")) {
            options.rounds = std::max(1, std::atoi(word.c_str() + 9));
        } else {
            part = word;
        }
    }
    const auto folder = std::filesystem::temp_directory_path() / "quill_bench_recorder";
    std::filesystem::create_directories(folder);
    options.folder = folder.string();
    runParts(options, part, sustainedSeconds);
    std::filesystem::remove_all(folder);
    return 0;
}
