#include "recorder/python_writer.h"

#include <cstdio>

namespace bench {

std::optional<double> pythonRate(const std::string& path, size_t frames, bool fd, int level) {
    const std::string command = "/usr/bin/python3 '" QUILL_SOURCE_DIR
                                "/bench/recorder/write_with_python_can.py' '" +
                                path + "' " + std::to_string(frames) + (fd ? " 1 " : " 0 ") +
                                std::to_string(level) + " 2>/dev/null";
    std::FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return {};
    double rate = 0;
    const bool got = std::fscanf(pipe, "%lf", &rate) == 1;
    pclose(pipe);
    if (!got) return {};
    return rate;
}

}  // namespace bench
