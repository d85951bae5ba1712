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
    recordClass<Signal>(
        m, "CanDBCEntrySignal",
        "One signal of a DBC frame. See decodeSignalPhysical and encodeSignalPhysical.")
        .def_readwrite("name", &Signal::name, "Name, unique within its frame.")
        .def_readwrite("comment", &Signal::comment, "Comment of the file.")
        .def_readwrite("unit", &Signal::unit, "Unit of the physical value.")
        .def_readwrite("initValue", &Signal::initValue,
                       "Raw value that the frame starts with; 0 when the file gives none.")
        .def_readwrite("offset", &Signal::offset, "Physical value = raw value x factor + offset.")
        .def_readwrite("startBit", &Signal::startBit,
                       "8 x byte + bit of the least significant bit, for both byte orders.")
        .def_readwrite("bitLength", &Signal::bitLength, "Number of bits, 1 to 64.")
        .def_readwrite("isBigEndian", &Signal::isBigEndian,
                       "True: Motorola byte order, False: Intel.")
        .def_readwrite("isSigned", &Signal::isSigned, "True: the raw value is in two's complement.")
        .def_readwrite("isFloat", &Signal::isFloat,
                       "True: the raw bits are an IEEE 754 number of 32 or 64 bits.")
        .def_readwrite("valMax", &Signal::valMax,
                       "Upper physical limit; both limits 0: none given.")
        .def_readwrite("valMin", &Signal::valMin,
                       "Lower physical limit; both limits 0: none given.")
        .def_readwrite("factor", &Signal::factor, "Physical value = raw value x factor + offset.")
        .def_readwrite("transmitters", &Signal::transmitters, "Nodes that send the frame.")
        .def_readwrite("mapValueTable", &Signal::mapValueTable,
                       "Texts of raw values: {raw value as a float: text}.")
        .def_readwrite("receivers", &Signal::receivers, "Nodes that receive the signal.")
        .def("__repr__", [](const Signal& self) { return named("CanDBCEntrySignal", self.name); });
    using Entry = db::CanDBCEntry;
    recordClass<Entry>(m, "CanDBCEntry", "One frame of a DBC database. See decodeFrame.")
        .def_readwrite("id", &Entry::id, "CAN identifier, 11 or 29 bits, see isExtended.")
        .def_readwrite("dlc", &Entry::dlc, "Length in bytes.")
        .def_readwrite("name", &Entry::name, "Name of the frame.")
        .def_readwrite("comment", &Entry::comment, "Comment of the file.")
        .def_readwrite("isExtended", &Entry::isExtended, "True: 29-bit identifier, False: 11-bit.")
        .def_readwrite("isFD", &Entry::isFD, "True: CAN FD frame.")
        .def_readwrite("cycleTime", &Entry::cycleTime,
                       "Cycle time in ms; 0 when the frame is not cyclic.")
        .def_readwrite("transmitters", &Entry::transmitters, "Nodes that send the frame.")
        .def_readwrite("signals", &Entry::signals, "Signals, in the order of the file.")
        .def("__repr__",
             [](const Entry& self) { return frameText("CanDBCEntry", self.id, self.name); });
    using Database = db::CanDbcDatabase;
    recordClass<Database>(m, "CanDbcDatabase",
                          "Content of a DBC file. See loadCanDBC and findFrame.")
        .def_readwrite("dbcEntrys", &Database::dbcEntrys, "The frames, in the order of the file.")
        .def_readwrite("nodes", &Database::nodes, "Names of the nodes.")
        .def("__repr__", [](const Database& self) {
            return countText("CanDbcDatabase", "frames", self.dbcEntrys.size());
        });
}

void bindArxmlSignalsAndPdus(py::module_& m) {
    using Signal = db::CanArxmlEntrySignal;
    recordClass<Signal>(m, "CanArxmlEntrySignal",
                        "One signal of a PDU. See decodeSignalPhysical and encodeSignalPhysical.")
        .def_readwrite("name", &Signal::name, "Name, unique within its frame.")
        .def_readwrite("comment", &Signal::comment, "Comment of the file.")
        .def_readwrite("unit", &Signal::unit, "Unit of the physical value.")
        .def_readwrite("initValue", &Signal::initValue,
                       "Raw value that the signal starts with; 0 when the file gives none.")
        .def_readwrite("offset", &Signal::offset, "Physical value = raw value x factor + offset.")
        .def_readwrite("startBit", &Signal::startBit,
                       "8 x byte + bit of the least significant bit, for both byte orders.")
        .def_readwrite("bitLength", &Signal::bitLength, "Number of bits, 1 to 64.")
        .def_readwrite("isBigEndian", &Signal::isBigEndian,
                       "True: Motorola byte order, False: Intel.")
        .def_readwrite("valMax", &Signal::valMax,
                       "Upper physical limit; both limits 0: none given.")
        .def_readwrite("valMin", &Signal::valMin,
                       "Lower physical limit; both limits 0: none given.")
        .def_readwrite("factor", &Signal::factor, "Physical value = raw value x factor + offset.")
        .def_readwrite("mapValueTable", &Signal::mapValueTable,
                       "Texts of raw values: {raw value as a float: text}.")
        .def_readwrite("isSigned", &Signal::isSigned, "True: the raw value is in two's complement.")
        .def_readwrite("isFloat", &Signal::isFloat,
                       "True: the raw bits are an IEEE 754 number of 32 or 64 bits.")
        .def("__repr__",
             [](const Signal& self) { return named("CanArxmlEntrySignal", self.name); });
    using Pdu = db::CanFdPdu;
    recordClass<Pdu>(m, "CanFdPdu", "One PDU; containers carry PDUs of their own.")
        .def_readwrite("id", &Pdu::id, "Header id of a contained PDU, else 0.")
        .def_readwrite("name", &Pdu::name, "Name of the PDU.")
        .def_readwrite("comment", &Pdu::comment, "Comment of the file.")
        .def_readwrite("pdutype", &Pdu::pdutype, "Kind, such as \"I-SIGNAL-I-PDU\".")
        .def_readwrite("header_type", &Pdu::header_type,
                       "1 no header, 2 short header, 3 long header, 0 not given.")
        .def_readwrite("startPosition", &Pdu::startPosition, "Bit position in the frame.")
        .def_readwrite("length", &Pdu::length, "Length in bytes.")
        .def_readwrite("receivers", &Pdu::receivers, "Nodes that receive the PDU.")
        .def_readwrite("senders", &Pdu::senders, "Nodes that send the PDU.")
        .def_readwrite("pdus", &Pdu::pdus, "PDUs of a container, parts of a multiplexed PDU.")
        .def_readwrite("signals", &Pdu::signals, "Signals, in the order of the file.")
        .def("__repr__", [](const Pdu& self) { return named("CanFdPdu", self.name); });
}

void bindArxmlFrames(py::module_& m) {
    using Entry = db::CanFdDBCEntry;
    recordClass<Entry>(m, "CanFdDBCEntry", "One frame of an ARXML database. See decodeFrame.")
        .def_readwrite("id", &Entry::id, "CAN identifier, 11 or 29 bits, see isExtended.")
        .def_readwrite("dlc", &Entry::dlc, "Length in bytes.")
        .def_readwrite("name", &Entry::name, "Name of the frame.")
        .def_readwrite("comment", &Entry::comment, "Comment of the file.")
        .def_readwrite("isExtended", &Entry::isExtended, "True: 29-bit identifier, False: 11-bit.")
        .def_readwrite("isFD", &Entry::isFD, "True: CAN FD frame.")
        .def_readwrite("receivers", &Entry::receivers, "Nodes that receive the frame.")
        .def_readwrite("senders", &Entry::senders, "Nodes that send the frame.")
        .def_readwrite("cycleTime", &Entry::cycleTime,
                       "Shortest cycle time of its PDUs in ms; 0 when none is cyclic.")
        .def_readwrite("pdus", &Entry::pdus, "PDUs that the frame carries.")
        .def("__repr__",
             [](const Entry& self) { return frameText("CanFdDBCEntry", self.id, self.name); });
    using Channel = db::CANFDPhyChannel;
    recordClass<Channel>(m, "CANFDPhyChannel", "One physical channel of a cluster.")
        .def_readwrite("name", &Channel::name, "Name of the channel.")
        .def_readwrite("entrys", &Channel::entrys, "The frames that are sent on it.")
        .def("__repr__", [](const Channel& self) { return named("CANFDPhyChannel", self.name); });
    using Cluster = db::CanFdCluster;
    recordClass<Cluster>(m, "CanFdCluster", "One CAN bus.")
        .def_readwrite("name", &Cluster::name, "Name of the cluster.")
        .def_readwrite("protocol", &Cluster::protocol, "Name of the protocol.")
        .def_readwrite("signature", &Cluster::signature, "Version of the protocol.")
        .def_readwrite("baudRate", &Cluster::baudRate, "Arbitration bit rate in bit/s.")
        .def_readwrite("fdBaudRate", &Cluster::fdBaudRate,
                       "Bit rate of the data phase in bit/s; 0: no CAN FD.")
        .def_readwrite("channels", &Cluster::channels, "Physical channels.")
        .def_readwrite("dbcEntrys", &Cluster::dbcEntrys, "All frames, in the order of the file.")
        .def("__repr__", [](const Cluster& self) { return named("CanFdCluster", self.name); });
    using Database = db::CanArxmlDatabase;
    recordClass<Database>(m, "CanArxmlDatabase",
                          "Content of an ARXML file. See loadCanArxml and findFrame.")
        .def_readwrite("clusters", &Database::clusters, "The CAN buses.")
        .def_readwrite("cluster", &Database::cluster,
                       "The first cluster; an empty one when there is none.")
        .def("__repr__", [](const Database& self) {
            return countText("CanArxmlDatabase", "clusters", self.clusters.size());
        });
}

void bindLinRecords(py::module_& m) {
    using Signal = db::LinSignal;
    recordClass<Signal>(
        m, "LinSignal",
        "One signal of a LIN frame. See decodeSignalPhysical and encodeSignalPhysical.")
        .def_readwrite("name", &Signal::name, "Name, unique within its frame.")
        .def_readwrite("bitLength", &Signal::bitLength, "Number of bits, 1 to 64.")
        .def_readwrite("isBigEndian", &Signal::isBigEndian,
                       "True: Motorola byte order, False: Intel.")
        .def_readwrite("isSigned", &Signal::isSigned, "True: the raw value is in two's complement.")
        .def_readwrite("startBit", &Signal::startBit,
                       "8 x byte + bit of the least significant bit, for both byte orders.")
        .def_readwrite("initValue", &Signal::initValue,
                       "Raw value that the signal starts with; 0 when the file gives none.")
        .def_readwrite("valMin", &Signal::valMin,
                       "Smallest raw value of the physical range; 0 without one.")
        .def_readwrite("valMax", &Signal::valMax,
                       "Largest raw value of the physical range; 0 without one.")
        .def_readwrite("factor", &Signal::factor, "Physical value = raw value x factor + offset.")
        .def_readwrite("offset", &Signal::offset, "Physical value = raw value x factor + offset.")
        .def_readwrite(
            "hasFactor", &Signal::hasFactor,
            "True: the file gives a physical range; else factor is 1 and offset and limits are 0.")
        .def_readwrite("unit", &Signal::unit, "Unit of the physical value.")
        .def_readwrite("subscribers", &Signal::subscribers, "Nodes that receive the signal.")
        .def_readwrite("mapValueTable", &Signal::mapValueTable,
                       "Texts of raw values: {raw value as a float: text}.")
        .def("__repr__", [](const Signal& self) { return named("LinSignal", self.name); });
    using Frame = db::LDFFrame;
    recordClass<Frame>(m, "LDFFrame", "One frame of an LDF database. See decodeFrame.")
        .def_readwrite("id", &Frame::id, "LIN identifier, 0 to 63, without parity bits.")
        .def_readwrite("name", &Frame::name, "Name of the frame.")
        .def_readwrite("length", &Frame::length, "Length in bytes.")
        .def_readwrite("signals", &Frame::signals, "Signals, in the order of the file.")
        .def("__repr__",
             [](const Frame& self) { return frameText("LDFFrame", self.id, self.name); });
}

void bindLinMessage(py::module_& m) {
    using Message = scripts::LinMessage;
    recordClass<Message>(m, "LinMessage",
                         "A LIN frame with the database frame that it carries. See toLinMessage.")
        .def_readwrite("timestamp", &Message::timestamp,
                       "Time of the frame in ns since the epoch, by the clock of the box.")
        .def_readwrite("id", &Message::id, "LIN identifier, 0 to 63.")
        .def_readwrite("dir", &Message::dir, "Direction: 0 received, 1 sent by the box itself.")
        .def_readwrite("channel", &Message::channel, "LIN channel of the box, counted from 0.")
        .def_readwrite("data", &Message::data, "Payload, a list of ints.")
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
    auto ldf = recordClass<Ldf>(m, "LinLdfDatabaseItem",
                                "Content of an LDF file. See loadLinLDF and findFrame.");
    bindLinMessage(m);
    bindScheduleTables(m);
    // Its members name types that are registered after it.
    ldf.def_readwrite("schedule_tables", &Ldf::schedule_tables,
                      "Schedule tables, ready to be started; their channel is 0.")
        .def_readwrite("frame", &Ldf::frame, "The frames, in the order of the file.")
        .def("__repr__", [](const Ldf& self) {
            return countText("LinLdfDatabaseItem", "frames", self.frame.size());
        });
}
