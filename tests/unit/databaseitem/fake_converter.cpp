// A converter for the tests: copies its input, which holds the document, to the output, unless the
// input begins with a command of what to do instead.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

int main(int argc, char** argv) {
    const std::string first = argc > 1 ? argv[1] : "";
    const bool arxml = first == "arxml-parse" || first == "fibex-parse";
    const int needed = arxml ? 5 : 3;
    if (argc < needed) return 2;
    if (arxml && std::string(argv[3]) != "--outputPath") return 2;
    if (std::filesystem::path(argv[0]).stem() == "dbc2json" &&
        (argc < 4 || std::string(argv[3]) != "--jsonExportAll")) {
        return 2;
    }
    const std::string input = arxml ? argv[2] : argv[1];
    const std::string output = arxml ? argv[4] : argv[2];
    std::ifstream in(input, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    if (text.starts_with("!fail")) {
        std::fprintf(stderr, "%s:3:7: unexpected word\n", input.c_str());
        return 1;
    }
    if (text.starts_with("!hang")) {
        // As far as a real one is that has begun to write.
        std::ofstream(output + ".123456789.tmp", std::ios::binary) << "{";
        for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
    }
    if (text.starts_with("!abort")) std::abort();
    if (text.starts_with("!nothing")) return 0;
    if (text.starts_with("!flood")) {
        for (int i = 0; i < 40'000; ++i) std::fprintf(stderr, "line %d of many\n", i);
        return 1;
    }
    const std::string temporary = output + ".part";
    std::ofstream(temporary, std::ios::binary) << text;
    std::error_code error;
    std::filesystem::rename(temporary, output, error);
    if (error) std::fprintf(stderr, "%s: %s\n", output.c_str(), error.message().c_str());
    return error ? 1 : 0;
}
