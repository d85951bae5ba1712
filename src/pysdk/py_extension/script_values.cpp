#include "pysdk/py_extension/script_values.h"

#include <fmt/format.h>

#include <string>

namespace py = pybind11;

namespace scripts {
namespace {

// The Python int that stands for a value; __index__ is honoured, so int-like types work.
py::object readIndex(py::handle value, const std::string& field) {
    PyObject* index = PyNumber_Index(value.ptr());
    if (index == nullptr) {
        PyErr_Clear();
        throw py::type_error(
            fmt::format("{} must be an integer, not {}", field, Py_TYPE(value.ptr())->tp_name));
    }
    return py::reinterpret_steal<py::object>(index);
}

template <class T>
[[noreturn]] void refuseRange(py::handle value, const std::string& field, T min, T max) {
    throw py::value_error(
        fmt::format("{} must be {} to {}, not {}", field, min, max, std::string(py::str(value))));
}

// A byte from a plain int, which is what lists hold as a rule; false leaves the rest to others.
bool readPlainByte(PyObject* item, uint8_t& byte) {
    if (!PyLong_CheckExact(item)) return false;
    int overflow = 0;
    const long number = PyLong_AsLongAndOverflow(item, &overflow);
    if (overflow != 0 || number < 0 || number > 255) return false;
    byte = static_cast<uint8_t>(number);
    return true;
}

std::vector<uint8_t> readSequence(py::handle value, const char* field, size_t maxLength) {
    auto items = py::reinterpret_steal<py::object>(PySequence_Fast(value.ptr(), ""));
    if (!items) throw py::error_already_set();
    const auto count = static_cast<size_t>(PySequence_Fast_GET_SIZE(items.ptr()));
    if (count > maxLength) {
        throw py::value_error(
            fmt::format("{} must hold at most {} bytes, not {}", field, maxLength, count));
    }
    std::vector<uint8_t> bytes;
    bytes.reserve(count);
    // The size is asked for again in each step: __index__ of an element may change the list.
    for (Py_ssize_t i = 0; i < PySequence_Fast_GET_SIZE(items.ptr()); ++i) {
        PyObject* next = PySequence_Fast_GET_ITEM(items.ptr(), i);
        if (uint8_t byte = 0; readPlainByte(next, byte)) {
            bytes.push_back(byte);
            continue;
        }
        const auto item = py::reinterpret_borrow<py::object>(next);
        const std::string name = fmt::format("{}[{}]", field, i);
        bytes.push_back(static_cast<uint8_t>(readUnsigned(item, name.c_str(), 0, 255)));
    }
    return bytes;
}

}  // namespace

int64_t readSigned(py::handle value, const char* field, int64_t min, int64_t max) {
    const py::object index = readIndex(value, field);
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(index.ptr(), &overflow);
    if (overflow != 0 || number < min || number > max) refuseRange(value, field, min, max);
    return number;
}

uint64_t readUnsigned(py::handle value, const char* field, uint64_t min, uint64_t max) {
    const py::object index = readIndex(value, field);
    const unsigned long long number = PyLong_AsUnsignedLongLong(index.ptr());
    if (number == static_cast<unsigned long long>(-1) && PyErr_Occurred() != nullptr) {
        PyErr_Clear();  // negative or beyond 64 bits
        refuseRange(value, field, min, max);
    }
    if (number < min || number > max) refuseRange(value, field, min, max);
    return number;
}

double readDouble(py::handle value, const char* field, double min, double max) {
    const double number = PyFloat_AsDouble(value.ptr());
    if (number == -1.0 && PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        throw py::type_error(
            fmt::format("{} must be a number, not {}", field, Py_TYPE(value.ptr())->tp_name));
    }
    if (!(number >= min && number <= max)) refuseRange(value, field, min, max);  // NaN too
    return number;
}

std::vector<uint8_t> readBytes(py::handle value, const char* field, size_t maxLength) {
    PyObject* source = value.ptr();
    if (PyBytes_Check(source) || PyByteArray_Check(source)) {
        const bool fixed = PyBytes_Check(source);
        const char* from = fixed ? PyBytes_AS_STRING(source) : PyByteArray_AS_STRING(source);
        const auto count =
            static_cast<size_t>(fixed ? PyBytes_GET_SIZE(source) : PyByteArray_GET_SIZE(source));
        if (count > maxLength) {
            throw py::value_error(
                fmt::format("{} must hold at most {} bytes, not {}", field, maxLength, count));
        }
        return {from, from + count};
    }
    if (PyUnicode_Check(source) || !PySequence_Check(source)) {
        throw py::type_error(fmt::format("{} must be bytes, bytearray or a list of ints, not {}",
                                         field, Py_TYPE(source)->tp_name));
    }
    return readSequence(value, field, maxLength);
}

IntList toList(std::span<const uint8_t> bytes) {
    IntList list(bytes.size());
    for (size_t i = 0; i < bytes.size(); ++i) {
        PyList_SET_ITEM(list.ptr(), static_cast<Py_ssize_t>(i), PyLong_FromLong(bytes[i]));
    }
    return list;
}

}  // namespace scripts
