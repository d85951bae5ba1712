#include "unit/rvconverter/PythonCan.h"

#include <array>
#include <cstdio>
#include <memory>
#include <sstream>

namespace quill::testing {

namespace {

struct PipeCloser {
    void operator()(std::FILE* pipe) const { pclose(pipe); }
};

std::string outputOf(const std::string& command) {
    const std::unique_ptr<std::FILE, PipeCloser> pipe(popen(command.c_str(), "r"));
    std::string text;
    std::array<char, 65536> part{};
    while (pipe) {
        const size_t got = std::fread(part.data(), 1, part.size(), pipe.get());
        if (got == 0) break;
        text.append(part.data(), got);
    }
    return text;
}

PythonMessage messageFrom(std::istringstream& fields) {
    PythonMessage m;
    fields >> m.time >> m.channel >> m.id >> m.extended >> m.received >> m.fd >> m.remote >>
        m.error >> m.switched >> m.passive >> m.dlc >> m.data;
    if (m.data == "-") m.data.clear();
    return m;
}

}  // namespace

std::optional<PythonReading> readWithPythonCan(const std::string& path) {
    const std::string script =
        std::string(QUILL_SOURCE_DIR) + "/tests/unit/rvconverter/read_with_python_can.py";
    std::istringstream output(
        outputOf("/usr/bin/python3 '" + script + "' '" + path + "' 2>/dev/null"));
    PythonReading reading;
    bool ended = false;
    for (std::string line; std::getline(output, line);) {
        std::istringstream fields(line);
        std::string kind;
        fields >> kind;
        if (kind == "start") fields >> reading.start;
        if (kind == "m") reading.messages.push_back(messageFrom(fields));
        if (kind == "stopped") std::getline(fields, reading.stopped);
        if (kind == "end") ended = true;
    }
    if (!ended) return {};
    return reading;
}

}  // namespace quill::testing
