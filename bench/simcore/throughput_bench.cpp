// Frames per second from an unpaced bus through the box into read_can_frames(). "Core" figures are
// frames per second of processor time of all threads together: what one core carries.
#include <cstring>
#include <thread>

#include "TableRow.h"
#include "measure.h"

namespace {

struct Case {
    const char* name;
    const char* payload;  // periodic source
};

struct Result {
    double perSecond = 0;
    double perCoreSecond = 0;
};

Result run(const Case& c, int64_t frames) {
    const std::string document =
        R"({"boxes": [{"name": "B", "channels": {"can": ["b"]}}], "sources": [{"bus": "b",
            "periodic": {)" +
        std::string(c.payload) + R"(, "period_ms": 0, "counter": {}}}]})";
    const int32_t handle = simbench::openAll(document).at(0);
    std::vector<RvCanFrame> batch(1024);
    const int64_t wall = simbench::clockNs(CLOCK_MONOTONIC);
    const int64_t cpu = simbench::clockNs(CLOCK_PROCESS_CPUTIME_ID);
    int64_t got = 0;
    while (got < frames) {
        int32_t count = 0;
        simbench::require(read_can_frames(handle, batch.data(), 1024, &count) == 0, "read");
        uint32_t counter = 0;
        if (count > 0) {
            std::memcpy(&counter, batch[static_cast<size_t>(count) - 1].data, sizeof counter);
            simbench::require(counter == static_cast<uint32_t>(got + count - 1), "frames lost");
        } else {
            std::this_thread::yield();
        }
        got += count;
    }
    const auto wallSpent = static_cast<double>(simbench::clockNs(CLOCK_MONOTONIC) - wall);
    const auto cpuSpent = static_cast<double>(simbench::clockNs(CLOCK_PROCESS_CPUTIME_ID) - cpu);
    simbench::require(close_device(handle) == 0, "close");
    return {static_cast<double>(got) * 1e9 / wallSpent, static_cast<double>(got) * 1e9 / cpuSpent};
}

}  // namespace

int main(int argc, char** argv) {
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    const int rounds = quick ? 1 : 7;
    const int64_t frames = quick ? 200'000 : 5'000'000;
    const Case cases[] = {
        {"8-byte CAN", R"("id": 291, "data": "0000000000000000")"},
        {"64-byte CAN FD",
         R"("id": 291, "fd": true, "data": "00000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000")"},
    };
    for (const Case& c : cases) {
        std::vector<double> wall;
        std::vector<double> core;
        for (int round = 0; round < rounds; ++round) {
            const Result result = run(c, frames);
            wall.push_back(result.perSecond / 1e6);
            core.push_back(result.perCoreSecond / 1e6);
        }
        simbench::printSpread((std::string(c.name) + ", wall clock").c_str(), wall, "million/s");
        simbench::printSpread((std::string(c.name) + ", per core").c_str(), core, "million/s");
        bench::printRow({.what = (std::string("virtual bus, unpaced, ") + c.name).c_str(),
                         .unit = "frames/s",
                         .ours = simbench::median(wall) * 1e6});
    }
    return 0;
}
