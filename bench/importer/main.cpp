#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include <cstring>
#include <filesystem>

#include "Benches.h"

// Speed of the importer. --quick runs a small round of everything, as a smoke test.
int main(int argc, char** argv) {
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    spdlog::set_default_logger(spdlog::null_logger_mt("bench"));
    const auto folder = std::filesystem::path(QUILL_BINARY_DIR) / "bench-importer";
    std::filesystem::remove_all(folder);
    const auto files =
        quill::bench::makeTraceFiles(folder, quick ? 20'000 : 1'000'000, quick ? 4'000 : 200'000);
    quill::bench::runParseBenches(files, quick ? 1 : 5);
    quill::bench::runImportBenches(files, quick ? 1 : 5);
    // 400,000 frames are 22 MB, 38 million are 2.1 GB.
    quill::bench::runMemoryBench(files, quick ? 20'000 : 400'000, quick ? 200'000 : 38'000'000);
    std::filesystem::remove_all(folder);
    return 0;
}
