#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>

#include "Benches.h"

// Speed and memory of the importer. --quick runs a small round of everything, as a smoke test;
// --memory imports files of 22 MB, 220 MB and 2.1 GB and nothing else.
int main(int argc, char** argv) {
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    const bool memory = argc > 1 && std::strcmp(argv[1], "--memory") == 0;
    spdlog::set_default_logger(spdlog::null_logger_mt("bench"));
    const auto folder = std::filesystem::path(QUILL_BINARY_DIR) / "bench-importer";
    std::filesystem::remove_all(folder);
    const bool small = quick || memory;
    const auto files =
        quill::bench::makeTraceFiles(folder, small ? 20'000 : 1'000'000, small ? 4'000 : 200'000);
    if (!memory) {
        quill::bench::runParseBenches(files, quick ? 1 : 5);
        quill::bench::runImportBenches(files, quick ? 1 : 3);
    }
    const std::array<uint64_t, 2> few = {20'000, 200'000};
    const std::array<uint64_t, 3> many = {400'000, 4'000'000, 38'000'000};
    if (quick) quill::bench::runMemoryBench(files, few);
    if (memory) quill::bench::runMemoryBench(files, many);
    std::filesystem::remove_all(folder);
    return 0;
}
