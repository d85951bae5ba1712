// What a query on a database file costs, against its parts measured alone and against a peer's
// converter as a whole process; and what decoding a frame costs.
//
// bench_databaseitem [ROUNDS] [FILE.dbc ...]; without files the corpus beside the project is used.
#include <QJsonDocument>
#include <QProcess>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "TableRow.h"
#include "core/log/Log.h"
#include "databaseitem/CanDbcDatabaseItem.h"
#include "databaseitem/ConverterSettings.h"
#include "databaseitem/DatabaseQueries.h"
#include "databaseitem/FrameDecoding.h"
#include "quill_os/process.h"

namespace {

namespace fs = std::filesystem;
namespace db = Model::database;
using Clock = std::chrono::steady_clock;

struct Side {
    const char* name;
    std::function<void()> run;
    std::vector<double> micros{};

    [[nodiscard]] double median() const { return micros[micros.size() / 2]; }
};

// Runs the sides in turn, so that all of them see the same machine, and sorts what they took.
void measure(std::vector<Side>& sides, int rounds) {
    for (int round = 0; round < rounds; ++round) {
        for (Side& side : sides) {
            const auto start = Clock::now();
            side.run();
            side.micros.push_back(
                std::chrono::duration<double, std::micro>(Clock::now() - start).count());
        }
    }
    for (Side& side : sides) {
        std::sort(side.micros.begin(), side.micros.end());
        std::printf("  %-34s min %9.1f  median %9.1f  max %9.1f us\n", side.name,
                    side.micros.front(), side.median(), side.micros.back());
    }
}

std::string readAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// One query, its parts alone, and the peer. Of the document that the converter leaves alone, a load
// by its ".json" path measures file, JSON and model.
void benchQuery(const fs::path& source, const fs::path& folder, int rounds) {
    const fs::path file = folder / source.filename();
    fs::copy_file(source, file, fs::copy_options::overwrite_existing);
    const std::string json = fs::path(file).replace_extension(".json").string();
    const std::string alone = (folder / "alone.json").string();
    const auto settings = db::converterSettings();
    const std::string program = db::converterPath(settings, settings.rootFolder, "dbc2json");
    if (db::getCanFrameByIdFromDBC(file.string(), 1).code == db::kLoadFailed) {
        std::printf("%s: cannot be loaded\n", file.c_str());
        return;
    }
    const std::string text = readAll(json);
    const QByteArray bytes(text.data(), static_cast<qsizetype>(text.size()));
    std::printf("%s: %zu bytes, document %zu bytes\n", source.filename().c_str(),
                static_cast<size_t>(fs::file_size(file)), text.size());
    std::vector<Side> sides = {
        {"query by id", [&] { (void)db::getCanFrameByIdFromDBC(file.string(), 1); }},
        {"converter alone (start to end)",
         [&] {
             (void)quill::os::runProcess(program, {file.string(), alone, "--jsonExportAll"});
         }},
        {"converter's start alone (--version)",
         [&] { (void)quill::os::runProcess(program, {"--version"}); }},
        {"JSON text in by Qt", [&] { (void)QJsonDocument::fromJson(bytes); }},
        {"JSON and model (.json load)",
         [&] {
             db::CanDbcDatabaseItem item;
             (void)item.pyLoadDB(alone);
         }},
    };
    measure(sides, rounds);
    std::printf("  query / (converter + JSON + model) = %.2f\n",
                sides[0].median() / (sides[1].median() + sides[4].median()));
    bench::printRow({.what = ("query of " + source.filename().string() + " by id").c_str(),
                     .unit = "us",
                     .ours = sides[0].median(),
                     .floor = sides[1].median() + sides[4].median(),
                     .wanted = "1.3 x the sum of its parts at most"});
    if (!fs::exists("/usr/bin/canconvert")) return;
    const std::string peerOut = (folder / "peer.json").string();
    std::vector<Side> peer = {
        {"query by id", [&] { (void)db::getCanFrameByIdFromDBC(file.string(), 1); }},
        {"canconvert --jsonExportAll",
         [&] {
             (void)quill::os::runProcess("/usr/bin/canconvert",
                                         {file.string(), peerOut, "--jsonExportAll"});
         }},
    };
    measure(peer, std::max(3, rounds / 10));
    std::printf("  canconvert / query = %.1f\n", peer[1].median() / peer[0].median());
    bench::printRow({.what = ("queries a second, " + source.filename().string()).c_str(),
                     .unit = "1/s",
                     .ours = 1e6 / peer[0].median(),
                     .peer = 1e6 / peer[1].median(),
                     .peerName = "canconvert",
                     .wanted = source.filename() == "tesla_can.dbc" ? "30 x peer" : "12 x peer"});
}

// Starting a child from a process with much memory: the cost of copying page tables shows here.
void benchStart(int rounds) {
    std::printf("start and end of /bin/true, 1 GiB touched by this process\n");
    std::vector<char> ballast(size_t{1} << 30);
    for (size_t i = 0; i < ballast.size(); i += 4096) ballast[i] = 1;
    std::vector<Side> sides = {
        {"runProcess", [] { (void)quill::os::runProcess("/bin/true", {}); }},
        {"QProcess",
         [] {
             QProcess process;
             process.start(QStringLiteral("/bin/true"), QStringList());
             process.waitForFinished();
         }},
    };
    measure(sides, rounds);
}

void benchDecode(int rounds) {
    db::CanDBCEntry frame;
    for (int i = 0; i < 10; ++i) {
        auto signal = std::make_shared<db::CanDBCEntrySignal>();
        signal->name = "Signal" + std::to_string(i);
        signal->startBit = i * 6;
        signal->bitLength = 6;
        signal->isSigned = i % 3 == 0;
        signal->factor = 0.5;
        signal->offset = -3;
        if (i % 4 == 0) signal->mapValueTable = {{0, "off"}, {1, "on"}, {2, "bad"}};
        frame.signals.push_back(std::move(signal));
    }
    constexpr int kCalls = 20'000;
    std::vector<uint8_t> payload(8);
    std::vector<db::DecodedSignal> decoded;
    double sum = 0;
    const auto run = [&] {
        for (int i = 0; i < kCalls; ++i) {
            payload[static_cast<size_t>(i) & 7U] = static_cast<uint8_t>(i * 31);
            db::decodeFrame(frame, payload, decoded);
            sum += decoded.front().physical;
        }
    };
    std::vector<Side> sides = {{"10 signals of 8 bytes", run}};
    frame.signals[0]->multiplex.isMultiplexor = true;
    std::printf("decodeFrame, %d calls\n", kCalls);
    measure(sides, rounds);
    std::printf("  %.0f ns a frame\n", sides[0].median() * 1000 / kCalls);
    bench::printRow({.what = "decodeFrame, 10 signals, in C++",
                     .unit = "ns",
                     .ours = sides[0].median() * 1000 / kCalls});
    for (size_t i = 1; i < frame.signals.size(); ++i) {
        frame.signals[i]->multiplex.isMultiplexed = true;
        frame.signals[i]->multiplex.multiplexor = "Signal0";
        frame.signals[i]->multiplex.multiplexorIndex = 0;
        frame.signals[i]->multiplex.ranges = {{0, 63}};
    }
    std::vector<Side> muxed = {{"the same, 9 of them multiplexed", run}};
    measure(muxed, rounds);
    std::printf("  %.0f ns a frame (%g)\n", muxed[0].median() * 1000 / kCalls, sum);
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(3, std::atoi(argv[1])) : 3;
    std::vector<fs::path> files(argv + std::min(argc, 2), argv + argc);
    const fs::path corpus = QUILL_SOURCE_DIR "/../shared/corpus/dbc";
    if (files.empty() && fs::exists(corpus)) {
        files = {corpus / "tesla_can.dbc", corpus / "FORD_CADS.dbc"};
    }
    db::ConverterSettings settings;
    settings.rootFolder = QUILL_BINARY_DIR "/python";
    db::setConverterSettings(settings);
    const fs::path folder = fs::temp_directory_path() / "quill_bench_databaseitem";
    fs::create_directories(folder);
    // Log lines go to a file, as in the product.
    std::string reason;
    if (!quill::log::setup("bench", folder.string(), reason)) return 1;
    for (const fs::path& file : files) benchQuery(file, folder, rounds);
    benchDecode(rounds);
    benchStart(rounds);
    fs::remove_all(folder);
    return 0;
}
