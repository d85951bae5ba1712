// Records of the bus databases, in the order in which scripts know them.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "databaseitem/CanArxmlRecords.h"
#include "databaseitem/CanDbcRecords.h"
#include "databaseitem/LinLdfRecords.h"
#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/lin_database.h"

namespace py = pybind11;

namespace {

namespace db = Model::database;

template <class Record>
using Class = py::class_<Record, std::shared_ptr<Record>>;

template <class Record>
Class<Record> recordClass(py::module_& m, const char* name, const char* doc) {
    Class<Record> type(m, name, doc);
    type.def(py::init<>());
    scripts::addCopies(type);
    return type;
}

std::string named(const char* type, const std::string& name) {
    return std::string(type) + "(name='" + name + "')";
}
std::string frameText(const char* type, int32_t id, const std::string& name) {
    return std::string(type) + "(id=" + std::to_string(id) + ", name='" + name + "')";
}
std::string countText(const char* type, const char* what, size_t count) {
    return std::string(type) + "(" + std::to_string(count) + " " + what + ")";
}

void bindDbc(py::module_& m) {
    using Signal = db::CanDBCEntrySignal;
    recordClass<Signal>(m, "CanDBCEntrySignal", "One signal of a DBC frame.")
        .def_readwrite("name", &Signal::name)
        .def_readwrite("comment", &Signal::comment)
        .def_readwrite("unit", &Signal::unit)
        .def_readwrite("initValue", &Signal::initValue, "Raw value that the frame starts with.")
        .def_readwrite("offset", &Signal::offset)
        .def_readwrite("startBit", &Signal::startBit,
                       "8 x byte + bit of the least significant bit, for both byte orders.")
        .def_readwrite("bitLength", &Signal::bitLength)
        .def_readwrite("isBigEndian", &Signal::isBigEndian)
        .def_readwrite("isSigned", &Signal::isSigned)
        .def_readwrite("isFloat", &Signal::isFloat)
        .def_readwrite("valMax", &Signal::valMax, "Physical limit.")
        .def_readwrite("valMin", &Signal::valMin, "Physical limit.")
        .def_readwrite("factor", &Signal::factor)
        .def_readwrite("transmitters", &Signal::transmitters)
        .def_readwrite("mapValueTable", &Signal::mapValueTable, "Raw value to text.")
        .def_readwrite("receivers", &Signal::receivers)
        .def("__repr__", [](const Signal& self) { return named("CanDBCEntrySignal", self.name); });
    using Entry = db::CanDBCEntry;
    recordClass<Entry>(m, "CanDBCEntry", "One frame of a DBC database.")
        .def_readwrite("id", &Entry::id, "11 or 29 bits, see isExtended.")
        .def_readwrite("dlc", &Entry::dlc, "Length in bytes.")
        .def_readwrite("name", &Entry::name)
        .def_readwrite("comment", &Entry::comment)
        .def_readwrite("isExtended", &Entry::isExtended)
        .def_readwrite("isFD", &Entry::isFD)
        .def_readwrite("cycleTime", &Entry::cycleTime, "ms; 0 when the frame is not cyclic.")
        .def_readwrite("transmitters", &Entry::transmitters)
        .def_readwrite("signals", &Entry::signals)
        .def("__repr__",
             [](const Entry& self) { return frameText("CanDBCEntry", self.id, self.name); });
    using Database = db::CanDbcDatabase;
    recordClass<Database>(m, "CanDbcDatabase", "Content of a DBC file.")
        .def_readwrite("dbcEntrys", &Database::dbcEntrys, "The frames, in the order of the file.")
        .def_readwrite("nodes", &Database::nodes)
        .def("__repr__", [](const Database& self) {
            return countText("CanDbcDatabase", "frames", self.dbcEntrys.size());
        });
}

void bindArxmlSignalsAndPdus(py::module_& m) {
    using Signal = db::CanArxmlEntrySignal;
    recordClass<Signal>(m, "CanArxmlEntrySignal", "One signal of a PDU.")
        .def_readwrite("name", &Signal::name)
        .def_readwrite("comment", &Signal::comment)
        .def_readwrite("unit", &Signal::unit)
        .def_readwrite("initValue", &Signal::initValue, "Raw value.")
        .def_readwrite("offset", &Signal::offset)
        .def_readwrite("startBit", &Signal::startBit,
                       "8 x byte + bit of the least significant bit, for both byte orders.")
        .def_readwrite("bitLength", &Signal::bitLength)
        .def_readwrite("isBigEndian", &Signal::isBigEndian)
        .def_readwrite("valMax", &Signal::valMax, "Physical limit.")
        .def_readwrite("valMin", &Signal::valMin, "Physical limit.")
        .def_readwrite("factor", &Signal::factor)
        .def_readwrite("mapValueTable", &Signal::mapValueTable, "Raw value to text.")
        .def_readwrite("isSigned", &Signal::isSigned)
        .def_readwrite("isFloat", &Signal::isFloat)
        .def("__repr__",
             [](const Signal& self) { return named("CanArxmlEntrySignal", self.name); });
    using Pdu = db::CanFdPdu;
    recordClass<Pdu>(m, "CanFdPdu", "One PDU; containers carry PDUs of their own.")
        .def_readwrite("id", &Pdu::id, "Header id of a contained PDU, else 0.")
        .def_readwrite("name", &Pdu::name)
        .def_readwrite("comment", &Pdu::comment)
        .def_readwrite("pdutype", &Pdu::pdutype)
        .def_readwrite("header_type", &Pdu::header_type,
                       "1 no header, 2 short header, 3 long header, 0 not given.")
        .def_readwrite("startPosition", &Pdu::startPosition, "Bit position in the frame.")
        .def_readwrite("length", &Pdu::length, "Bytes.")
        .def_readwrite("receivers", &Pdu::receivers)
        .def_readwrite("senders", &Pdu::senders)
        .def_readwrite("pdus", &Pdu::pdus)
        .def_readwrite("signals", &Pdu::signals)
        .def("__repr__", [](const Pdu& self) { return named("CanFdPdu", self.name); });
}

void bindArxmlFrames(py::module_& m) {
    using Entry = db::CanFdDBCEntry;
    recordClass<Entry>(m, "CanFdDBCEntry", "One frame of an ARXML database.")
        .def_readwrite("id", &Entry::id, "11 or 29 bits, see isExtended.")
        .def_readwrite("dlc", &Entry::dlc, "Length in bytes.")
        .def_readwrite("name", &Entry::name)
        .def_readwrite("comment", &Entry::comment)
        .def_readwrite("isExtended", &Entry::isExtended)
        .def_readwrite("isFD", &Entry::isFD)
        .def_readwrite("receivers", &Entry::receivers)
        .def_readwrite("senders", &Entry::senders)
        .def_readwrite("cycleTime", &Entry::cycleTime, "ms; 0 when no PDU is cyclic.")
        .def_readwrite("pdus", &Entry::pdus)
        .def("__repr__",
             [](const Entry& self) { return frameText("CanFdDBCEntry", self.id, self.name); });
    using Channel = db::CANFDPhyChannel;
    recordClass<Channel>(m, "CANFDPhyChannel", "One physical channel of a cluster.")
        .def_readwrite("name", &Channel::name)
        .def_readwrite("entrys", &Channel::entrys, "The frames that are sent on it.")
        .def("__repr__", [](const Channel& self) { return named("CANFDPhyChannel", self.name); });
    using Cluster = db::CanFdCluster;
    recordClass<Cluster>(m, "CanFdCluster", "One CAN bus.")
        .def_readwrite("name", &Cluster::name)
        .def_readwrite("protocol", &Cluster::protocol)
        .def_readwrite("signature", &Cluster::signature, "Version of the protocol.")
        .def_readwrite("baudRate", &Cluster::baudRate, "bit/s.")
        .def_readwrite("fdBaudRate", &Cluster::fdBaudRate, "bit/s of the data phase, 0: none.")
        .def_readwrite("channels", &Cluster::channels)
        .def_readwrite("dbcEntrys", &Cluster::dbcEntrys, "All frames, in the order of the file.")
        .def("__repr__", [](const Cluster& self) { return named("CanFdCluster", self.name); });
    using Database = db::CanArxmlDatabase;
    recordClass<Database>(m, "CanArxmlDatabase", "Content of an ARXML file.")
        .def_readwrite("clusters", &Database::clusters)
        .def_readwrite("cluster", &Database::cluster, "The first cluster.")
        .def("__repr__", [](const Database& self) {
            return countText("CanArxmlDatabase", "clusters", self.clusters.size());
        });
}

void bindLinRecords(py::module_& m) {
    using Signal = db::LinSignal;
    recordClass<Signal>(m, "LinSignal", "One signal of a LIN frame.")
        .def_readwrite("name", &Signal::name)
        .def_readwrite("bitLength", &Signal::bitLength)
        .def_readwrite("isBigEndian", &Signal::isBigEndian)
        .def_readwrite("isSigned", &Signal::isSigned)
        .def_readwrite("startBit", &Signal::startBit)
        .def_readwrite("initValue", &Signal::initValue, "Raw value.")
        .def_readwrite("valMin", &Signal::valMin)
        .def_readwrite("valMax", &Signal::valMax)
        .def_readwrite("factor", &Signal::factor)
        .def_readwrite("offset", &Signal::offset)
        .def_readwrite("hasFactor", &Signal::hasFactor, "The file gives a physical range.")
        .def_readwrite("unit", &Signal::unit)
        .def_readwrite("subscribers", &Signal::subscribers)
        .def_readwrite("mapValueTable", &Signal::mapValueTable, "Raw value to text.")
        .def("__repr__", [](const Signal& self) { return named("LinSignal", self.name); });
    using Frame = db::LDFFrame;
    recordClass<Frame>(m, "LDFFrame", "One frame of a LIN cluster.")
        .def_readwrite("id", &Frame::id, "0 to 63.")
        .def_readwrite("name", &Frame::name)
        .def_readwrite("length", &Frame::length, "Bytes.")
        .def_readwrite("signals", &Frame::signals)
        .def("__repr__",
             [](const Frame& self) { return frameText("LDFFrame", self.id, self.name); });
}

void bindLinMessage(py::module_& m) {
    using Message = scripts::LinMessage;
    recordClass<Message>(m, "LinMessage", "A LIN frame with the database frame that it carries.")
        .def_readwrite("timestamp", &Message::timestamp, "ns since the epoch.")
        .def_readwrite("id", &Message::id)
        .def_readwrite("dir", &Message::dir, "0 received, 1 sent by the box itself.")
        .def_readwrite("channel", &Message::channel)
        .def_readwrite("data", &Message::data)
        .def_readwrite("frame", &Message::frame, "An LDFFrame, or None when none is known.")
        .def("__repr__", &Message::toText);
}

}  // namespace

void bindDatabaseRecords(py::module_& m) {
    bindDbc(m);
    bindArxmlSignalsAndPdus(m);
    bindArxmlFrames(m);
    bindLinRecords(m);
    using Ldf = scripts::LinLdfDatabaseItem;
    auto ldf = recordClass<Ldf>(m, "LinLdfDatabaseItem", "Content of an LDF file.");
    bindLinMessage(m);
    bindScheduleTables(m);
    // Its members name types that are registered after it.
    ldf.def_readwrite("schedule_tables", &Ldf::schedule_tables)
        .def_readwrite("frame", &Ldf::frame, "The frames, in the order of the file.")
        .def("__repr__", [](const Ldf& self) {
            return countText("LinLdfDatabaseItem", "frames", self.frame.size());
        });
}
