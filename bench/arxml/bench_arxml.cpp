// Speed of the ARXML converter in MB/s of XML, beside the XML parser alone as the floor, the two in
// turn, in processor time. Usage: bench_arxml [rounds [frames]]; the text is made here, so that its
// size is free.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>

#include "TableRow.h"
#include "arxml/ArxmlReader.h"
#include "arxml/Convert.h"
#include "arxml/Document.h"

namespace {

std::string element(const char* name, const std::string& content) {
    std::string out = "<";
    out.append(name).append(">").append(content).append("</").append(name).append(">\n");
    return out;
}

std::string named(const char* kind, const std::string& name, const std::string& content) {
    return element(kind, "\n  " + element("SHORT-NAME", name) + "  " + content);
}

std::string reference(const char* name, const char* dest, const std::string& path) {
    std::string out = "<";
    out.append(name).append(" DEST=\"").append(dest).append("\">").append(path);
    out.append("</").append(name).append(">\n");
    return out;
}

std::string props(const std::string& content) {
    return element("SW-DATA-DEF-PROPS-VARIANTS", element("SW-DATA-DEF-PROPS-CONDITIONAL", content));
}

std::string package(const char* name, const std::string& elements) {
    return element("AR-PACKAGE", element("SHORT-NAME", name) + element("ELEMENTS", elements));
}

// A cluster of frames with one PDU of eight signals each, every signal with its own system signal
// and compu method, as design tools write it.
std::string makeText(int frames) {
    std::string triggerings, frameList, pdus, signals, systems, methods;
    for (int f = 0; f < frames; ++f) {
        const std::string frame = "PowertrainFrame_" + std::to_string(f);
        triggerings += named("CAN-FRAME-TRIGGERING", "FT_" + frame,
                             reference("FRAME-REF", "CAN-FRAME", "/Frames/" + frame) +
                                 element("CAN-ADDRESSING-MODE", "EXTENDED") +
                                 element("IDENTIFIER", std::to_string(f)));
        frameList +=
            named("CAN-FRAME", frame,
                  element("FRAME-LENGTH", "8") +
                      element("PDU-TO-FRAME-MAPPINGS",
                              named("PDU-TO-FRAME-MAPPING", "Mapping_" + frame,
                                    reference("PDU-REF", "I-SIGNAL-I-PDU", "/Pdus/PDU_" + frame) +
                                        element("START-POSITION", "0"))));
        std::string mappings;
        for (int s = 0; s < 8; ++s) {
            const std::string signal = frame + "_Signal_" + std::to_string(s);
            mappings += named("I-SIGNAL-TO-I-PDU-MAPPING", "Mapping_" + signal,
                              reference("I-SIGNAL-REF", "I-SIGNAL", "/Signals/" + signal) +
                                  element("PACKING-BYTE-ORDER", "MOST-SIGNIFICANT-BYTE-FIRST") +
                                  element("START-POSITION", std::to_string(8 * s + 7)));
            signals +=
                named("I-SIGNAL", signal,
                      element("LENGTH", "8") + reference("SYSTEM-SIGNAL-REF", "SYSTEM-SIGNAL",
                                                         "/SystemSignals/" + signal));
            systems +=
                named("SYSTEM-SIGNAL", signal,
                      element("PHYSICAL-PROPS", props(reference("COMPU-METHOD-REF", "COMPU-METHOD",
                                                                "/CompuMethods/" + signal))));
            methods += named(
                "COMPU-METHOD", signal,
                element("CATEGORY", "LINEAR") +
                    element(
                        "COMPU-INTERNAL-TO-PHYS",
                        element("COMPU-SCALES",
                                element("COMPU-SCALE",
                                        element("COMPU-RATIONAL-COEFFS",
                                                element("COMPU-NUMERATOR", "<V>0</V><V>0.5</V>") +
                                                    element("COMPU-DENOMINATOR", "<V>1</V>"))))));
        }
        pdus += named("I-SIGNAL-I-PDU", "PDU_" + frame,
                      element("LENGTH", "8") + element("I-SIGNAL-TO-PDU-MAPPINGS", mappings));
    }
    const std::string channel = element(
        "PHYSICAL-CHANNELS",
        named("CAN-PHYSICAL-CHANNEL", "Channel", element("FRAME-TRIGGERINGS", triggerings)));
    const std::string cluster =
        named("CAN-CLUSTER", "Powertrain",
              element("CAN-CLUSTER-VARIANTS", element("CAN-CLUSTER-CONDITIONAL", channel)));
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<AUTOSAR xmlns=\"http://autosar.org/schema/r4.0\">\n" +
           element("AR-PACKAGES", package("Cluster", cluster) + package("Frames", frameList) +
                                      package("Pdus", pdus) + package("Signals", signals) +
                                      package("SystemSignals", systems) +
                                      package("CompuMethods", methods)) +
           "</AUTOSAR>\n";
}

// Processor time of this process: other programs on the machine count for little then.
template <class Work>
double secondsOf(Work work) {
    const std::clock_t start = std::clock();
    work();
    const std::clock_t spent = std::max<std::clock_t>(std::clock() - start, 1);
    return static_cast<double>(spent) / CLOCKS_PER_SEC;
}

void print(const char* what, std::vector<double> seconds, size_t bytes) {
    std::sort(seconds.begin(), seconds.end());
    const auto rate = [&](double s) { return static_cast<double>(bytes) / 1e6 / s; };
    std::printf("%-34s %7.1f %7.1f %7.1f MB/s (slowest, median, fastest)\n", what,
                rate(seconds.back()), rate(seconds[seconds.size() / 2]), rate(seconds.front()));
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 1;
    const int frames = argc > 2 ? std::max(1, std::atoi(argv[2])) : 200;
    const std::string text = makeText(frames);
    if (argc > 3) std::ofstream(argv[3], std::ios::binary) << text;
    std::vector<double> floorTimes, readTimes, wholeTimes;
    bool isGood = true;
    for (int round = 0; round < rounds; ++round) {
        std::string buffer = text;
        floorTimes.push_back(secondsOf([&] {
            pugi::xml_document document;
            isGood = document.load_buffer_inplace(buffer.data(), buffer.size()) && isGood;
        }));
        buffer = text;
        readTimes.push_back(secondsOf([&] {
            quill::arxml::Document document;
            quill::arxml::Database database;
            isGood = !document.parse(buffer) && isGood;
            isGood = !quill::arxml::readArxml(document, database) && isGood;
        }));
        wholeTimes.push_back(secondsOf([&] {
            quill::dbjson::Diagnostics diagnostics;
            quill::dbjson::JsonWriter json;
            quill::arxml::convert(quill::arxml::Format::kArxml, text, diagnostics, json);
            isGood = !diagnostics.failed() && isGood;
        }));
    }
    std::printf("%d frames, %.1f MB, %d rounds\n", frames, static_cast<double>(text.size()) / 1e6,
                rounds);
    print("XML parser alone", floorTimes, text.size());
    print("parsing and reading", readTimes, text.size());
    print("parsing, reading and JSON text", wholeTimes, text.size());
    const auto rate = [&](const std::vector<double>& seconds) {
        return static_cast<double>(text.size()) / 1e6 / median(seconds);
    };
    bench::printRow({.what = "ARXML parsing and reading",
                     .unit = "MB/s",
                     .ours = rate(readTimes),
                     .floor = rate(floorTimes),
                     .wanted = "50 MB/s"});
    std::printf("whole against XML parser alone: %.2f times\n",
                median(wholeTimes) / median(floorTimes));
    return isGood ? 0 : 1;
}
