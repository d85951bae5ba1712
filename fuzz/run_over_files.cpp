// Runs a fuzz target without a fuzzing engine: over every file of the folders that are named, over
// the seeds that it makes, and over a fixed number of mutations of all these.
//   TARGET [--runs N] [--seed N] [--seconds N] [--export FOLDER] [FILE_OR_FOLDER ...]
// A failing input ends the program; it is kept as TARGET.input in the working folder.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "Mutator.h"
#include "own_seeds.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;
using quill::fuzz::Mutator;
using quill::fuzz::Seed;

constexpr const char* kTarget = QUILL_FUZZ_TARGET;
constexpr size_t kLargestMutated = 16384;
constexpr int kSkipped = 77;  // what the test driver takes for "not run"

struct Options {
    uint64_t runs = 2000;
    uint64_t seed = 1;
    double seconds = 60.0;
    std::string exportFolder;
    std::vector<fs::path> paths;
};

std::optional<Options> parseOptions(int count, char** words) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        const char* value = i + 1 < count ? words[i + 1] : nullptr;
        if (word.rfind("--", 0) != 0) {
            options.paths.emplace_back(word);
            continue;
        }
        if (value == nullptr) return std::nullopt;
        ++i;
        if (word == "--runs") {
            options.runs = std::strtoull(value, nullptr, 10);
        } else if (word == "--seed") {
            options.seed = std::strtoull(value, nullptr, 10);
        } else if (word == "--seconds") {
            options.seconds = std::strtod(value, nullptr);
        } else if (word == "--export") {
            options.exportFolder = value;
        } else {
            return std::nullopt;
        }
    }
    return options;
}

Seed readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return Seed(std::istreambuf_iterator<char>(file), {});
}

// Files in a fixed order, so that a run with the same seed is the same run.
std::vector<fs::path> filesOf(const std::vector<fs::path>& paths) {
    std::vector<fs::path> files;
    for (const fs::path& path : paths) {
        std::error_code failed;
        if (fs::is_regular_file(path, failed)) files.push_back(path);
        for (const auto& entry : fs::directory_iterator(path, failed)) {
            if (entry.is_regular_file()) files.push_back(entry.path());
        }
        if (!fs::exists(path, failed)) {
            std::printf("%s is not here and is passed over\n", path.string().c_str());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<Seed> seedsOf(const std::vector<fs::path>& files) {
    std::vector<Seed> seeds;
    for (const fs::path& file : files) seeds.push_back(readFile(file));
#ifdef QUILL_MAKES_SEEDS
    for (Seed& seed : quill::fuzz::ownSeeds(kTarget)) seeds.push_back(std::move(seed));
#endif
    return seeds;
}

void writeFile(const fs::path& path, const Seed& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

const Seed* g_running = nullptr;  // the input, for whoever looks at a failure

// Not safe in every state of a broken program; all that can be lost is the kept input.
extern "C" void keepInput(int signal) {
    std::signal(signal, SIG_DFL);
    if (g_running != nullptr) writeFile(std::string(kTarget) + ".input", *g_running);
    std::raise(signal);
}

void runOne(const Seed& input) {
    // A copy of exactly this size, or a read behind the end would go unseen.
    const Seed exact(input.begin(), input.end());
    g_running = &input;
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
    g_running = nullptr;
}

uint64_t runMutations(const Options& options, std::vector<Seed> seeds) {
    for (Seed& seed : seeds) {
        if (seed.size() > kLargestMutated) seed.resize(kLargestMutated);
    }
    Mutator mutator(std::move(seeds), options.seed, kLargestMutated);
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::duration<double>(options.seconds);
    uint64_t runs = 0;
    while (runs < options.runs && std::chrono::steady_clock::now() < end) {
        runOne(mutator.next());
        ++runs;
    }
    return runs;
}

}  // namespace

int main(int count, char** words) {
    const auto options = parseOptions(count, words);
    if (!options) {
        std::fprintf(stderr,
                     "usage: %s [--runs N] [--seed N] [--seconds N] [--export FOLDER] "
                     "[FILE_OR_FOLDER ...]\n",
                     kTarget);
        return 2;
    }
    for (const int signal : {SIGABRT, SIGSEGV, SIGFPE, SIGILL}) std::signal(signal, keepInput);
    const std::vector<Seed> seeds = seedsOf(filesOf(options->paths));
    if (seeds.empty()) {
        std::printf("%s: nothing to start from, not run\n", kTarget);
        return kSkipped;
    }
    if (!options->exportFolder.empty()) {
        for (size_t i = 0; i < seeds.size(); ++i) {
            writeFile(fs::path(options->exportFolder) / ("seed" + std::to_string(i)), seeds[i]);
        }
        return 0;
    }
    std::printf("%s: %zu inputs, then %llu mutations from seed %llu\n", kTarget, seeds.size(),
                static_cast<unsigned long long>(options->runs),
                static_cast<unsigned long long>(options->seed));
    std::fflush(stdout);  // a failing input ends the program here and now
    for (const Seed& seed : seeds) runOne(seed);
    const uint64_t runs = runMutations(*options, seeds);
    if (runs < options->runs) {
        std::printf("time was up after %llu\n", static_cast<unsigned long long>(runs));
    }
    return 0;
}
