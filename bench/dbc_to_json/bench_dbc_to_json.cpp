// How fast DBC files are read: the reader alone in MB/s, with JSON text, and the whole program
// against the usual Python converter, in turn (A B A B ...) so that a busy machine slows both.
//
//   bench_dbc_to_json [rounds] [file.dbc ...]     default: 1 round (smoke), big files of the corpus
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "TableRow.h"
#include "dbc/DbcJson.h"
#include "dbc/DbcReader.h"
#include "quill_textencoding/TextDecoding.h"

namespace {

namespace fs = std::filesystem;
namespace dbjson = quill::dbjson;
using Clock = std::chrono::steady_clock;

constexpr const char* kPeer = "/usr/bin/canconvert";

double millisecondsOf(const std::function<void()>& work) {
    const auto begin = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

struct Spread {
    double minimum, median, maximum;
};
Spread spreadOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return {values.front(), values[values.size() / 2], values.back()};
}
void print(const char* what, const Spread& spread, const char* unit) {
    std::printf("  %-34s %9.3f %9.3f %9.3f %s\n", what, spread.minimum, spread.median,
                spread.maximum, unit);
}

size_t readOnce(const std::string& text) {
    dbjson::Diagnostics diagnostics;
    return dbjson::dbc::readDbc(text, diagnostics).signals.size();
}

size_t convertOnce(const std::string& bytes) {
    const std::string text = quill::text::decodeText(bytes);
    dbjson::Diagnostics diagnostics;
    const auto model = dbjson::dbc::readDbc(text, diagnostics);
    dbjson::JsonWriter json;
    dbjson::dbc::writeDbcJson(model, dbjson::dbc::ExportScope::All, json);
    return json.text().size();
}

void benchInProcess(const std::string& name, const std::string& bytes, int rounds) {
    const std::string text = quill::text::decodeText(bytes);
    const int repeats = rounds == 1 ? 1 : static_cast<int>(2'000'000 / text.size()) + 1;
    size_t sink = 0;
    std::vector<double> read;
    std::vector<double> convert;
    const double megabytes = static_cast<double>(text.size()) * repeats / 1e6;
    for (int i = 0; i < rounds; ++i) {
        read.push_back(megabytes / millisecondsOf([&] {
                           for (int k = 0; k < repeats; ++k) sink += readOnce(text);
                       }) *
                       1e3);
        convert.push_back(megabytes / millisecondsOf([&] {
                              for (int k = 0; k < repeats; ++k) sink += convertOnce(bytes);
                          }) *
                          1e3);
    }
    print("reader", spreadOf(read), "MB/s");
    bench::printRow({.what = ("DBC reading, " + name).c_str(),
                     .unit = "MB/s",
                     .ours = spreadOf(read).median,
                     .wanted = "60 MB/s"});
    print("decode, reader and JSON text", spreadOf(convert), "MB/s");
    if (sink == 0) std::printf("  nothing read\n");
}

void benchProgram(const fs::path& file, int rounds) {
    const fs::path output = fs::temp_directory_path() / "quill_bench_dbc.json";
    const std::string arguments =
        " \"" + file.string() + "\" \"" + output.string() + "\" --jsonExportAll >/dev/null 2>&1";
    const auto run = [](const std::string& command) {
        if (std::system(command.c_str()) != 0) std::printf("  failed: %s\n", command.c_str());
    };
    std::vector<double> ours;
    std::vector<double> theirs;
    std::vector<double> ratios;
    for (int i = 0; i < rounds; ++i) {
        ours.push_back(millisecondsOf([&] { run("exec " QUILL_DBC2JSON + arguments); }));
        if (!fs::exists(kPeer)) continue;
        theirs.push_back(millisecondsOf([&] { run(std::string("exec ") + kPeer + arguments); }));
        ratios.push_back(theirs.back() / ours.back());
    }
    print("dbc2json, whole process", spreadOf(ours), "ms");
    if (theirs.empty()) {
        std::printf("  %s is not there\n", kPeer);
    } else {
        print("canconvert, whole process", spreadOf(theirs), "ms");
        print("canconvert / dbc2json", spreadOf(ratios), "times");
    }
    std::error_code error;
    fs::remove(output, error);
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 1;
    std::vector<fs::path> files(argv + std::min(argc, 2), argv + argc);
    if (files.empty()) {
        const fs::path folder = fs::path(QUILL_SOURCE_DIR) / ".." / "shared" / "corpus" / "dbc";
        for (const char* name :
             {"tesla_can.dbc", "FORD_CADS.dbc", "vw_pq.dbc", "hyundai_2015_ccan.dbc"}) {
            if (fs::exists(folder / name)) files.push_back(folder / name);
        }
    }
    if (files.empty()) std::printf("no file given and no corpus beside the project\n");
    std::printf("  %-34s %9s %9s %9s\n", "", "minimum", "median", "maximum");
    for (const fs::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(in), {});
        std::printf("%s, %zu bytes, %d rounds\n", file.filename().string().c_str(), bytes.size(),
                    rounds);
        benchInProcess(file.filename().string(), bytes, rounds);
        benchProgram(file, rounds);
    }
    return 0;
}
