// Records numbered frames until it is killed: recorder_victim FILE PROGRESS FRAMES_PER_SECOND.
// A rate of 0 means as fast as it goes. PROGRESS holds, as text, the frames that the recorder has
// reported as written.
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "core/playback/recorder/FrameRecorder.h"
#include "unit/recorder/FrameMaker.h"

namespace {

using Clock = std::chrono::steady_clock;

void publish(std::FILE* file, uint64_t written) {
    std::rewind(file);
    std::fprintf(file, "%012llu", static_cast<unsigned long long>(written));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    std::FILE* progress = std::fopen(argv[2], "w");
    if (progress == nullptr) return 2;
    std::setvbuf(progress, nullptr, _IONBF, 0);
    const auto rate = std::strtoull(argv[3], nullptr, 10);
    playback::FrameRecorder recorder({argv[1], 0});
    recorder.startRecord();
    const auto start = Clock::now();
    uint32_t number = 0;
    auto frame = quill::testing::makeCanFrame(0, 0);
    frame->can.extend.setIDE(true);
    while (true) {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
        frame->seconds = static_cast<uint32_t>(ns / 1'000'000'000);
        frame->nanoseconds = static_cast<uint32_t>(ns % 1'000'000'000);
        frame->id = number++;
        recorder.recordFrame(*frame);
        if (rate != 0) {
            const uint64_t dueNs = uint64_t{number} * 1'000'000'000U / rate;
            std::this_thread::sleep_until(start + std::chrono::nanoseconds(dueNs));
        }
        if (number % 100 == 0) publish(progress, recorder.status().written);
    }
}
