#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "databaseitem/CanDbcRecords.h"
#include "databaseitem/RecordList.h"

namespace Model::database {

// One signal of a PDU.
struct CanArxmlEntrySignal {
    std::string name;
    std::string comment;
    std::string unit;
    double initValue = 0.0;  // raw value
    double offset = 0.0;
    int32_t startBit = 0;  // 8 x byte + bit of the least significant bit, for both byte orders
    int32_t bitLength = 0;
    bool isBigEndian = false;
    double valMax = 0.0;  // physical limits; both 0 when the file gives none
    double valMin = 0.0;
    double factor = 1.0;
    std::map<double, std::string> mapValueTable;  // raw value to text

    bool isSigned = false;  // base type encoding is a signed one
    bool isFloat = false;   // base type encoding is IEEE 754
    bool hasInitValue = false;
    bool isSecured = false;
    std::string transport;
    std::string dynamicLength;
    std::string compuMethod;    // name of the compu method
    std::string compuCategory;  // its category, such as LINEAR or TEXTTABLE
    std::string baseType;
    std::vector<std::string> receivers;
    MultiplexRule multiplex;
};

// One PDU. Secured PDUs carry the content of the PDU that they protect; container PDUs carry PDUs,
// each found on the bus behind a header with its id.
struct CanFdPdu {
    int32_t id = 0;  // header id of a contained PDU, else 0
    std::string name;
    std::string comment;
    std::string pdutype;        // such as "I-SIGNAL-I-PDU"
    int32_t header_type = 0;    // 0 none given, 1 no header, 2 short (4 bytes), 3 long (8 bytes)
    int32_t startPosition = 0;  // bit position in the frame
    int32_t length = 0;         // bytes
    std::vector<std::string> receivers;
    std::vector<std::string> senders;
    RecordList<CanFdPdu> pdus;  // PDUs of a container, parts of a multiplexed PDU
    RecordList<CanArxmlEntrySignal> signals;

    // Multiplexed PDUs: their parts stand in `pdus`, with the positions that they have in the
    // frame.
    bool isMultiplexed = false;
    CanArxmlEntrySignal selector;         // where the code of the part in force stands
    std::optional<int64_t> selectorCode;  // of a part; none: the part is always there

    bool hasLittleEndianHeaders = false;  // containers only
    std::string unusedBitPattern;
    std::string trigger;
    std::string rxAccept;
    int32_t cycleTime = 0;  // ms; 0 when the PDU is not cyclic
};

// One frame of an ARXML database.
struct CanFdDBCEntry {
    int32_t id = 0;
    int32_t dlc = 0;  // length in bytes
    std::string name;
    std::string comment;
    bool isExtended = false;
    bool isFD = false;
    std::vector<std::string> receivers;
    std::vector<std::string> senders;
    int32_t cycleTime = 0;  // ms: the shortest cycle of its PDUs; 0 when none is cyclic
    RecordList<CanFdPdu> pdus;

    std::string channel;  // name of its physical channel
};

// One physical channel of a cluster.
struct CANFDPhyChannel {
    std::string name;
    RecordList<CanFdDBCEntry> entrys;  // frames of the cluster that are sent on this channel
};

// One CAN bus.
struct CanFdCluster {
    std::string name;
    std::string protocol;
    std::string signature;   // version of the protocol
    int32_t baudRate = 0;    // bit/s
    int32_t fdBaudRate = 0;  // bit/s of the data phase; 0 when the bus has none
    RecordList<CANFDPhyChannel> channels;
    RecordList<CanFdDBCEntry> dbcEntrys;  // all frames, in the order of the file

    std::vector<std::string> nodes;
};

// Content of an ARXML file.
struct CanArxmlDatabase {
    RecordList<CanFdCluster> clusters;
    std::shared_ptr<CanFdCluster> cluster;  // the first of them; an empty one when there is none
};

// True for a container whose PDUs stand behind headers and so have no fixed place in the frame.
[[nodiscard]] bool hasHeaders(const CanFdPdu& pdu);

// Code of a header type text ("NO-HEADER", "SHORT-HEADER", "LONG-HEADER"); 0 for any other text.
[[nodiscard]] int32_t headerTypeCode(const std::string& text);
// Text of a header type code; empty for 0 and any other code.
[[nodiscard]] std::string headerTypeText(int32_t code);

}  // namespace Model::database
