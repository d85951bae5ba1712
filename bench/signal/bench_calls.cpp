// What calling into a module costs: the arguments of parseSignalValue, and nothing done.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstdint>
#include <vector>

namespace py = pybind11;

PYBIND11_MODULE(quill_bench_calls, m) {
    m.def(
        "noop", [](const std::vector<uint8_t>&, bool, uint32_t, uint32_t) { return uint64_t{0}; },
        py::arg("data"), py::arg("isBigEndian"), py::arg("startBit"), py::arg("bitLength"));
    // The same without reading the data.
    m.def(
        "noopUnread", [](const py::object&, bool, uint32_t, uint32_t) { return uint64_t{0}; },
        py::arg("data"), py::arg("isBigEndian"), py::arg("startBit"), py::arg("bitLength"));
}
