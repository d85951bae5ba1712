// Queries of bus databases and the signal codec.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "core/log/Log.h"
#include "databaseitem/ConverterSettings.h"
#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/database_calls.h"
#include "pysdk/py_extension/lin_database.h"
#include "pysdk/py_extension/script_records.h"
#include "quill_os/paths.h"
#include "signal/ScriptValue.h"
#include "signal/SignalCodec.h"

namespace py = pybind11;

namespace scripts {

void setUpConverters() {
    auto settings = Model::database::converterSettings();
    const auto file = quill::os::fileOfCode(reinterpret_cast<const void*>(&setUpConverters));
    settings.fallbackFolder = quill::os::pathToUtf8(file.parent_path());
    settings.interrupted = [] {
        const py::gil_scoped_acquire lock;
        return PyErr_Occurred() != nullptr || PyErr_CheckSignals() != 0;
    };
    Model::database::setConverterSettings(std::move(settings));
}

namespace {

namespace db = Model::database;
using Bytes = std::vector<uint8_t>;

Bytes rawValueToByte(Bytes data, uint64_t rawValue, bool isBigEndian, uint32_t startBit,
                     uint32_t bitLength) {
    QUILL_INFO(quill::log::kPysdk, "rawValueToByte before:{}", Model::codec::payloadText(data));
    (void)Model::codec::rawValueToByte(data, rawValue, isBigEndian, startBit, bitLength);
    QUILL_INFO(quill::log::kPysdk, "rawValueToByte after:{}", Model::codec::payloadText(data));
    return data;
}

py::object toObject(const db::DecodedValue& value) {
    if (const auto* number = std::get_if<double>(&value)) return py::float_(*number);
    if (const auto* text = std::get_if<std::string>(&value)) return py::str(*text);
    return py::none();
}

// The payload of a script's frame is changed in place; the lines go out when the encoder is done.
template <class Setter>
int setFrameSignal(CANRawFrame& frame, Setter setter) {
    const auto bytes = frame.data.bytes();
    Bytes data(bytes.begin(), bytes.end());
    std::ostringstream lines;
    const auto flush = [&] {
        std::string text = lines.str();
        if (!text.empty() && text.back() == '\n') text.pop_back();
        if (!text.empty()) writeLine(text);
    };
    int code = 0;
    try {
        code = runQuery([&] { return setter(data, lines); });
    } catch (const std::out_of_range&) {
        flush();
        throw;
    }
    flushScriptOutput();
    flush();
    (void)frame.data.assign(data);
    return code;
}

void addCodec(py::module_& m) {
    m.def("rawValueToByte", &rawValueToByte, py::arg("data"), py::arg("rawValue"),
          py::arg("isBigEndian"), py::arg("startBit"), py::arg("bitLength"),
          "Write a raw value into payload bytes and return the new bytes.");
    m.def(
        "parseSignalValue",
        [](const Bytes& data, bool isBigEndian, uint32_t startBit, uint32_t bitLength) {
            return Model::codec::parseSignalValue(data, isBigEndian, startBit, bitLength);
        },
        py::arg("data"), py::arg("isBigEndian"), py::arg("startBit"), py::arg("bitLength"),
        "Raw value of a signal in payload bytes; 0xFFFFFFFFFFFFFFFF when it does not fit.");
}

void addLoads(py::module_& m) {
    m.def(
        "readCanDBCContents",
        [](const std::string& path) {
            auto result = runQuery([&] { return db::readCanDBCContents(path); });
            return toPair(result.code, std::move(result.value));
        },
        py::arg("path"), "Text of a DBC file: (code, text).");
    m.def(
        "readCanArxmlContents",
        [](const std::string& path) {
            auto result = runQuery([&] { return db::readCanArxmlContents(path); });
            return toPair(result.code, std::move(result.value));
        },
        py::arg("path"), "Text of an ARXML file: (code, text).");
    m.def(
        "loadCanDBC",
        [](const std::string& path) {
            auto result = runQuery([&] { return db::loadCanDBC(path); });
            return toPair(result.code, std::move(result.value));
        },
        py::arg("path"), "Load a DBC file: (code, CanDbcDatabase).");
    m.def(
        "loadCanArxml",
        [](const std::string& path) {
            auto result = runQuery([&] { return db::loadCanArxml(path); });
            return toPair(result.code, std::move(result.value));
        },
        py::arg("path"), "Load an ARXML file: (code, CanArxmlDatabase).");
    m.def(
        "loadLinLDF",
        [](const std::string& path) {
            const auto result = runQuery([&] { return db::loadLinLDF(path); });
            return toPair(result.code, toScriptDatabase(*result.value));
        },
        py::arg("path"), "Load an LDF file: (code, LinLdfDatabaseItem).");
    m.def(
        "getScheduleTableFromLDF",
        [](const std::string& path) {
            const auto result = runQuery([&] { return db::getScheduleTableFromLDF(path); });
            return toPair(result.code, toScriptTables(result.value));
        },
        py::arg("path"), "Schedule tables of an LDF file: (code, list of LinScheduleTable).");
}

void addDbcQueries(py::module_& m) {
    m.def(
        "getCanFrameByNameFromDBC",
        [](const std::string& path, const std::string& name) {
            auto result = runQuery([&] { return db::getCanFrameByNameFromDBC(path, name); });
            return toPair(result.code, std::move(result.value));
        },
        py::arg("path"), py::arg("name"), "Frame of a DBC file by name: (code, CanDBCEntry).");
    m.def(
        "getCanFrameByIdFromDBC",
        [](const std::string& path, int64_t id) {
            auto result = runQuery([&] { return db::getCanFrameByIdFromDBC(path, id); });
            return toPair(result.code, std::move(result.value));
        },
        py::arg("path"), py::arg("id"), "Frame of a DBC file by identifier: (code, CanDBCEntry).");
    m.def(
        "getCanSignalValueFromDBC",
        [](const Bytes& data, const std::string& path, const std::string& frame,
           const std::string& signal) {
            const auto result =
                runQuery([&] { return db::getCanSignalValueFromDBC(data, path, frame, signal); });
            return toPair(result.code, toObject(result.value));
        },
        py::arg("data"), py::arg("path"), py::arg("frameName"), py::arg("signalName"),
        "Decode one signal: (code, number or value-table text).");
    m.def(
        "setCanFrameBySignalFromDBC",
        [](CANRawFrame& frame, const std::string& path, const std::string& frameName,
           const std::string& signalName, double value) {
            return setFrameSignal(frame, [&](Bytes& data, std::ostream& out) {
                return db::setCanFrameBySignalFromDBC(data, path, frameName, signalName, value,
                                                      out);
            });
        },
        py::arg("frame"), py::arg("path"), py::arg("frameName"), py::arg("signalName"),
        py::arg("value"), "Write a raw value into a frame's signal; the code as an int.");
}

void addArxmlQueries(py::module_& m) {
    m.def(
        "getCanFrameByNameFromArxml",
        [](const std::string& path, const std::string& name) {
            auto result = runQuery([&] { return db::getCanFrameByNameFromArxml(path, name); });
            return toPair(result.code, std::move(result.value));
        },
        py::arg("path"), py::arg("name"), "Frame of an ARXML file by name: (code, CanFdDBCEntry).");
    m.def(
        "getCanFrameByIdFromArxml",
        [](const std::string& path, int64_t id) {
            auto result = runQuery([&] { return db::getCanFrameByIdFromArxml(path, id); });
            return toPair(result.code, std::move(result.value));
        },
        py::arg("path"), py::arg("id"),
        "Frame of an ARXML file by identifier: (code, CanFdDBCEntry).");
    m.def(
        "getCanSignalValueFromArxml",
        [](const Bytes& data, const std::string& path, const std::string& frame,
           const std::string& signal) {
            const auto result =
                runQuery([&] { return db::getCanSignalValueFromArxml(data, path, frame, signal); });
            return toPair(result.code, toObject(result.value));
        },
        py::arg("data"), py::arg("path"), py::arg("frameName"), py::arg("signalName"),
        "Decode one signal: (code, number or value-table text).");
    m.def(
        "setCanFrameBySignalFromArxml",
        [](CANRawFrame& frame, const std::string& path, const std::string& frameName,
           const std::string& signalName, double value) {
            return setFrameSignal(frame, [&](Bytes& data, std::ostream& out) {
                return db::setCanFrameBySignalFromArxml(data, path, frameName, signalName, value,
                                                        out);
            });
        },
        py::arg("frame"), py::arg("path"), py::arg("frameName"), py::arg("signalName"),
        py::arg("value"), "Write a raw value into a frame's signal; the code as an int.");
}

}  // namespace
}  // namespace scripts

void bindDatabaseFunctions(py::module_& m) {
    scripts::setUpConverters();
    scripts::addCodec(m);
    scripts::addLoads(m);
    scripts::addDbcQueries(m);
    scripts::addArxmlQueries(m);
    m.def(
        "getLinSignalValueFromLDF",
        [](const std::vector<uint8_t>& data, const std::string& path, const std::string& frame,
           const std::string& signal) {
            const auto result = scripts::runQuery([&] {
                return Model::database::getLinSignalValueFromLDF(data, path, frame, signal);
            });
            return scripts::toPair(result.code, scripts::toObject(result.value));
        },
        py::arg("data"), py::arg("path"), py::arg("frameName"), py::arg("signalName"),
        "Decode one LIN signal: (code, unscaled number or value-table text).");
    bindDatabaseAdditions(m);
}
