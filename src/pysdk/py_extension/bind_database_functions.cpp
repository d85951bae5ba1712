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
using Bytes = ListOf<uint8_t>;

Bytes rawValueToByte(Bytes data, uint64_t rawValue, bool isBigEndian, uint32_t startBit,
                     uint32_t bitLength) {
    QUILL_INFO(quill::log::kPysdk, "rawValueToByte before:{}", Model::codec::payloadText(data));
    (void)Model::codec::rawValueToByte(data, rawValue, isBigEndian, startBit, bitLength);
    QUILL_INFO(quill::log::kPysdk, "rawValueToByte after:{}", Model::codec::payloadText(data));
    return data;
}

SignalValue toObject(const db::DecodedValue& value) {
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
          R"(Write a raw value into payload bytes and return the new bytes.

Args:
    data: payload, ints 0 to 255; the list is not changed.
    rawValue: 0 to 2**64 - 1.
    isBigEndian: True for Motorola byte order.
    startBit: 8 x byte + bit of the least significant bit, for both byte orders.
    bitLength: number of bits.

Returns:
    list of ints, as long as data; unchanged when the signal does not lie within it.)");
    m.def(
        "parseSignalValue",
        [](const Bytes& data, bool isBigEndian, uint32_t startBit, uint32_t bitLength) {
            return Model::codec::parseSignalValue(data, isBigEndian, startBit, bitLength);
        },
        py::arg("data"), py::arg("isBigEndian"), py::arg("startBit"), py::arg("bitLength"),
        R"(Raw value of a signal in payload bytes, unsigned.

Arguments are those of rawValueToByte.

Returns:
    int; 0xFFFFFFFFFFFFFFFF when the signal does not lie within the data.)");
}

// Texts that the calls for DBC and for ARXML files share.
constexpr const char* kContentsText =
    R"(Text of a database file, whose encoding is guessed: UTF-8, UTF-16, GB18030 or Windows-1252.

Returns:
    (code, text): code 0 done, 1 the file cannot be loaded; the log gives the reason.)";

constexpr const char* kByNameText =
    R"(Frame of a database file by name; 29-bit ones are not found, see findFrame.

Args:
    path: database file, loaded anew by every call.
    name: the exact name.

Returns:
    (code, frame): code 0 done, 1 the file cannot be loaded, 2 no such frame; the log gives the
    reason. With another code than 0 the frame is an empty one.)";

constexpr const char* kByIdText =
    R"(Frame of a database file by identifier; 29-bit ones are not found, see findFrame.

Args:
    path: database file, loaded anew by every call.
    id: 11-bit identifier.

Returns:
    (code, frame): code 0 done, 1 the file cannot be loaded, 2 no such frame; the log gives the
    reason. With another code than 0 the frame is an empty one.)";

constexpr const char* kDecodeText =
    R"(Decode one signal: the unsigned raw value x factor + offset.

See decodeSignalPhysical for signed and float signals.

Args:
    data: payload, ints 0 to 255.
    path: database file, loaded anew by every call.
    frameName, signalName: names in that file.

Returns:
    (code, value): code 0 done, 1 the file cannot be loaded, 2 no such frame or signal; the log
    gives the reason. The value is the value table's text or, without one, a float; None with
    another code than 0.)";

constexpr const char* kDecodeLinText =
    R"(Decode one signal of an LDF file: the unsigned raw value, unscaled.

See decodeSignalPhysical for scaled values.

Args:
    data: payload, ints 0 to 255.
    path: LDF file, loaded anew by every call.
    frameName, signalName: names in that file.

Returns:
    (code, value): as getCanSignalValueFromDBC.)";

constexpr const char* kWriteText =
    R"(Write a value into a frame's signal as the unscaled raw value.

Neither factor nor limits count; see encodeSignalPhysical.

Args:
    frame: its data is changed in place.
    path: database file, loaded anew by every call.
    frameName, signalName: names in that file.
    value: raw value; its fraction is cut off.

Returns:
    int: 0 done, 1 the file cannot be loaded, 2 no such frame or signal.

Raises:
    IndexError: the signal reaches beyond 64 bytes.)";

// A function that takes a database file and answers with a code and what `load` makes of it.
template <class Load>
void addLoad(py::module_& m, const char* name, Load load, const char* doc) {
    m.def(
        name,
        [load](const std::string& path) {
            auto result = runQuery([&] { return load(path); });
            return toPair(result.code, std::move(result.value));
        },
        py::arg("path"), doc);
}

void addLoads(py::module_& m) {
    addLoad(m, "readCanDBCContents", &db::readCanDBCContents, kContentsText);
    addLoad(m, "readCanArxmlContents", &db::readCanArxmlContents, kContentsText);
    addLoad(m, "loadCanDBC", &db::loadCanDBC, R"(Load a DBC file.

Returns:
    (code, CanDbcDatabase): code 0 done, 1 the file cannot be loaded; the log gives the reason.)");
    addLoad(m, "loadCanArxml", &db::loadCanArxml, R"(Load an ARXML file.

Returns:
    (code, CanArxmlDatabase): code 0 done, 1 the file cannot be loaded; the log gives the reason.)");
    m.def(
        "loadLinLDF",
        [](const std::string& path) {
            const auto result = runQuery([&] { return db::loadLinLDF(path); });
            return toPair(result.code, toScriptDatabase(*result.value));
        },
        py::arg("path"), R"(Load an LDF file.

Returns:
    (code, LinLdfDatabaseItem): code 0 done, 1 the file cannot be loaded; the log gives the
    reason.)");
    m.def(
        "getScheduleTableFromLDF",
        [](const std::string& path) {
            const auto result = runQuery([&] { return db::getScheduleTableFromLDF(path); });
            return toPair(result.code, ListOf<LinScheduleTable>(toScriptTables(result.value)));
        },
        py::arg("path"), R"(Schedule tables of an LDF file, ready to be started on channel 0.

Returns:
    (code, list of LinScheduleTable): code 0 done, 1 the file cannot be loaded or has no tables;
    the log gives the reason.)");
}

template <class Query>
void addByName(py::module_& m, const char* name, Query query) {
    m.def(
        name,
        [query](const std::string& path, const std::string& frame) {
            auto result = runQuery([&] { return query(path, frame); });
            return toPair(result.code, std::move(result.value));
        },
        py::arg("path"), py::arg("name"), kByNameText);
}

template <class Query>
void addById(py::module_& m, const char* name, Query query) {
    m.def(
        name,
        [query](const std::string& path, int64_t id) {
            auto result = runQuery([&] { return query(path, id); });
            return toPair(result.code, std::move(result.value));
        },
        py::arg("path"), py::arg("id"), kByIdText);
}

template <class Query>
void addDecode(py::module_& m, const char* name, Query query, const char* doc) {
    m.def(
        name,
        [query](const Bytes& data, const std::string& path, const std::string& frame,
                const std::string& signal) {
            const auto result = runQuery([&] { return query(data, path, frame, signal); });
            return toPair(result.code, toObject(result.value));
        },
        py::arg("data"), py::arg("path"), py::arg("frameName"), py::arg("signalName"), doc);
}

template <class Query>
void addWrite(py::module_& m, const char* name, Query query) {
    m.def(
        name,
        [query](CANRawFrame& frame, const std::string& path, const std::string& frameName,
                const std::string& signalName, double value) {
            return setFrameSignal(frame, [&](Bytes& data, std::ostream& out) {
                return query(data, path, frameName, signalName, value, out);
            });
        },
        py::arg("frame"), py::arg("path"), py::arg("frameName"), py::arg("signalName"),
        py::arg("value"), kWriteText);
}

void addQueries(py::module_& m) {
    addByName(m, "getCanFrameByNameFromDBC", &db::getCanFrameByNameFromDBC);
    addById(m, "getCanFrameByIdFromDBC", &db::getCanFrameByIdFromDBC);
    addDecode(m, "getCanSignalValueFromDBC", &db::getCanSignalValueFromDBC, kDecodeText);
    addWrite(m, "setCanFrameBySignalFromDBC", &db::setCanFrameBySignalFromDBC);
    addByName(m, "getCanFrameByNameFromArxml", &db::getCanFrameByNameFromArxml);
    addById(m, "getCanFrameByIdFromArxml", &db::getCanFrameByIdFromArxml);
    addDecode(m, "getCanSignalValueFromArxml", &db::getCanSignalValueFromArxml, kDecodeText);
    addWrite(m, "setCanFrameBySignalFromArxml", &db::setCanFrameBySignalFromArxml);
    addDecode(m, "getLinSignalValueFromLDF", &db::getLinSignalValueFromLDF, kDecodeLinText);
}

}  // namespace
}  // namespace scripts

void bindDatabaseFunctions(py::module_& m) {
    scripts::setUpConverters();
    scripts::addCodec(m);
    scripts::addLoads(m);
    scripts::addQueries(m);
    bindDatabaseAdditions(m);
}
