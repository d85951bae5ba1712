// Decoding, encoding and lookup on loaded database records; no call here reads a file.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "databaseitem/FrameDecoding.h"
#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/lin_database.h"
#include "pysdk/py_extension/script_values.h"

namespace py = pybind11;

namespace scripts {
namespace {

namespace db = Model::database;
using SignalBytes = BytesField<"data", 4096>;

template <class Signal>
double decodeOne(const Signal& signal, const SignalBytes& data) {
    const auto value = db::decodeSignalPhysical(signal, data.value);
    if (!value) {
        throw py::value_error("signal '" + signal.name + "' does not lie within " +
                              std::to_string(data.value.size()) + " bytes");
    }
    return *value;
}

template <class Signal>
IntList encodeOne(const Signal& signal, SignalBytes data, double value) {
    const auto status = db::encodeSignalPhysical(signal, data.value, value);
    if (status != Model::codec::EncodeStatus::Ok) {
        throw py::value_error("signal '" + signal.name + "', value " + std::to_string(value) +
                              ": " + std::string(Model::codec::toText(status)));
    }
    return toList(data.value);
}

// A frame's bytes without a copy where the script hands in bytes.
class PayloadView {
public:
    explicit PayloadView(py::handle source) {
        if (PyBytes_CheckExact(source.ptr())) {
            m_view = {reinterpret_cast<const uint8_t*>(PyBytes_AS_STRING(source.ptr())),
                      static_cast<size_t>(PyBytes_GET_SIZE(source.ptr()))};
            return;
        }
        m_copy = readBytes(source, "data", 4096);
        m_view = m_copy;
    }
    [[nodiscard]] std::span<const uint8_t> bytes() const { return m_view; }

private:
    std::vector<uint8_t> m_copy;
    std::span<const uint8_t> m_view;
};

void setItem(PyObject* dict, const std::string& name, PyObject* value) {
    PyObject* key = PyUnicode_FromStringAndSize(name.data(), static_cast<Py_ssize_t>(name.size()));
    const bool failed = key == nullptr || value == nullptr || PyDict_SetItem(dict, key, value) != 0;
    Py_XDECREF(key);
    Py_XDECREF(value);
    if (failed) throw py::error_already_set();
}

template <class Frame>
SignalValues decodeAll(const Frame& frame, const PayloadArgument& data) {
    // Kept between calls; the interpreter lock guards it.
    static std::vector<db::DecodedSignal> decoded;
    const PayloadView payload(data);
    db::decodeFrame(frame, payload.bytes(), decoded);
    SignalValues result;
    for (const db::DecodedSignal& signal : decoded) {
        PyObject* value = signal.text != nullptr ? PyUnicode_FromStringAndSize(
                                                       signal.text->data(),
                                                       static_cast<Py_ssize_t>(signal.text->size()))
                                                 : PyFloat_FromDouble(signal.physical);
        setItem(result.ptr(), *signal.name, value);
    }
    return result;
}

template <class Database>
auto findIn(const Database& database, const FrameKey& key, std::optional<bool> extended) {
    if (py::isinstance<py::str>(key)) {
        return db::findFrame(database, key.cast<std::string>(), extended);
    }
    return db::findFrame(database, readSigned(key, "key", 0, 0x1FFFFFFF), extended);
}

std::shared_ptr<db::LDFFrame> findInLdf(const LinLdfDatabaseItem& database, const FrameKey& key) {
    const bool byName = py::isinstance<py::str>(key);
    const std::string name = byName ? key.cast<std::string>() : std::string();
    const int64_t id = byName ? 0 : readSigned(key, "key", 0, 63);
    for (const auto& frame : database.frame) {
        if (frame != nullptr && (byName ? frame->name == name : frame->id == id)) return frame;
    }
    return nullptr;
}

template <class Signal>
void addSignalCalls(py::module_& m) {
    m.def("decodeSignalPhysical", &decodeOne<Signal>, py::arg("signal"), py::arg("data"),
          R"(Physical value of one signal: sign, float, factor and offset count.

Args:
    signal: record of a loaded database.
    data: payload bytes.

Raises:
    ValueError: the signal does not lie within the data.)");
    m.def("encodeSignalPhysical", &encodeOne<Signal>, py::arg("signal"), py::arg("data"),
          py::arg("value"),
          R"(New payload bytes with one signal set to a physical value; other bits stay.

Args:
    signal: record of a loaded database.
    data: payload bytes; they are not changed.
    value: physical value; the nearest raw value is written.

Returns:
    list of ints, as long as data.

Raises:
    ValueError: the value does not fit the signal or its limits, or the signal the data.)");
}

template <class Frame>
void addFrameCall(py::module_& m) {
    m.def(
        "decodeFrame", &decodeAll<Frame>, py::arg("frame"), py::arg("data"),
        R"(Decode all signals of a frame that lie within the data and that its multiplexors select.

Args:
    frame: record of a loaded database.
    data: payload bytes, up to 4096.

Returns:
    dict of signal name to value-table text or, without one, physical value; in the order of the
    file.)");
}

}  // namespace
}  // namespace scripts

void bindDatabaseAdditions(py::module_& m) {
    using namespace Model::database;
    scripts::addSignalCalls<CanDBCEntrySignal>(m);
    scripts::addSignalCalls<CanArxmlEntrySignal>(m);
    scripts::addSignalCalls<LinSignal>(m);
    scripts::addFrameCall<CanDBCEntry>(m);
    scripts::addFrameCall<CanFdDBCEntry>(m);
    scripts::addFrameCall<LDFFrame>(m);
    const char* doc = R"(Frame of a loaded database by name or identifier.

Args:
    database: what a load call returned.
    key: the exact name or the identifier.
    extended: True for frames with 29-bit identifiers only, False for those with 11-bit ones only.

Returns:
    The first such frame, or None.

Raises:
    ValueError: the identifier is out of range.)";
    const char* ldfDoc = R"(Frame of a loaded LDF database by name or identifier, 0 to 63.

Returns:
    The first such frame, or None.

Raises:
    ValueError: the identifier is out of range.)";
    m.def("findFrame", &scripts::findIn<CanDbcDatabase>, py::arg("database"), py::arg("key"),
          py::arg("extended") = py::none(), doc);
    m.def("findFrame", &scripts::findIn<CanArxmlDatabase>, py::arg("database"), py::arg("key"),
          py::arg("extended") = py::none(), doc);
    m.def("findFrame", &scripts::findInLdf, py::arg("database"), py::arg("key"), ldfDoc);
}
