// What a network description holds, freed of its XML: read from AUTOSAR and FIBEX files, written
// as JSON. Texts point into the parsed document or into Database::madeTexts and live as long as
// these two.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quill::arxml {

enum class ByteOrder : uint8_t { kIntel, kMotorola, kOpaque };

// Indices into Database::ecus, in file order and without repetition.
using EcuSet = std::vector<uint32_t>;

struct Parties {
    EcuSet senders;
    EcuSet receivers;
};

// Bounds may be infinite; a missing bound is not set.
struct Limits {
    std::optional<double> physicalLower, physicalUpper;
    std::optional<double> internalLower, internalUpper;
};

struct CompuScale {
    std::optional<double> lower, upper;  // raw values
    std::optional<uint64_t> mask;        // bit field tables only
    bool hasText = false;
    std::string_view text;
    std::vector<double> numerators, denominators;
};

struct ValueText {
    double value = 0;
    std::string_view text;
};

// physical = offset + raw * scale / denominator; denominator is never 0.
struct CompuMethod {
    std::string_view name, category, unit;
    double offset = 0, scale = 1, denominator = 1;
    bool hasRational = false;
    std::optional<double> linearLower, linearUpper;  // raw bounds of the first rational scale
    std::vector<ValueText> valueTable;
    std::vector<CompuScale> scales;
};

struct BaseType {
    std::string_view name, encoding;
    uint32_t sizeBits = 0;
};

struct Signal {
    std::string_view name, comment, unit, initValue, dynamicLength;
    uint32_t lengthBits = 0;
    std::optional<uint32_t> compuMethod;  // index into Database::compuMethods
    std::optional<BaseType> baseType;
    Limits limits;
    bool isSigned = false;
    bool isFloat = false;
    bool isSecured = false;        // freshness value or authenticator of a secured PDU
    const void* source = nullptr;  // identity of the element it was read from
};

// A signal at its place: lsb is the position of its least significant bit, counted from the first
// bit of the PDU, 8 * byte + bit within the byte, for both byte orders.
struct MappedSignal {
    uint32_t signal = 0;
    int64_t lsb = 0;
    ByteOrder order = ByteOrder::kIntel;
    std::string_view transport;
    std::optional<uint32_t> updateBit;
};

struct Timing {
    std::optional<double> cycleMs, offsetMs, falseCycleMs, minimumDelayMs, repetitionMs;
    std::optional<uint32_t> repetitions;
};

struct ContainedProps {
    std::optional<uint64_t> shortHeaderId, longHeaderId;
    std::optional<uint32_t> offsetBytes;
    std::optional<double> timeoutMs;
    std::string_view collection, trigger;
};

enum class PartRole : uint8_t { kPayload, kContained, kStatic, kDynamic };

struct PduPart {
    uint32_t pdu = 0;
    PartRole role = PartRole::kContained;
    std::optional<int64_t> selectorCode;
    bool isInitial = false;
};

struct Selector {
    int64_t lsb = 0;
    uint32_t lengthBits = 0;
    ByteOrder order = ByteOrder::kIntel;
};

struct SecureProps {
    uint32_t payloadBytes = 0;
    uint32_t freshnessBits = 0, freshnessTxBits = 0, authTxBits = 0;
    std::optional<uint64_t> dataId;
};

struct Pdu {
    std::string_view type, name, comment, unusedBitPattern, trigger, headerType, rxAccept;
    uint32_t lengthBytes = 0;
    Timing timing;
    std::optional<ContainedProps> contained;
    std::optional<Selector> selector;
    std::optional<SecureProps> secure;
    std::vector<MappedSignal> signals;
    std::vector<PduPart> parts;
    const void* source = nullptr;
};

struct PduMapping {
    uint32_t pdu = 0;
    uint32_t startBit = 0;  // of the PDU in the frame
    std::optional<uint32_t> updateBit;
};

// One place of a FlexRay frame in the communication cycle: cycles base, base + repetition, ...
struct FlexRaySlot {
    uint32_t slotId = 0, baseCycle = 0, repetition = 1;
};

struct Frame {
    std::string_view name, triggering, comment, rxBehavior, txBehavior;
    uint32_t id = 0, lengthBytes = 0, channel = 0;
    bool isExtended = false, isCanFd = false;
    Parties ports;
    std::vector<PduMapping> pdus;
    std::vector<FlexRaySlot> slots;
};

struct Channel {
    std::string_view name, kind;                           // kind: A or B on FlexRay
    std::unordered_map<uint32_t, Parties> pduParties;      // by PDU index
    std::unordered_map<uint32_t, EcuSet> signalReceivers;  // by signal index, where told
};

// CAN and FlexRay clusters. Zero stands for what the file does not tell.
struct Cluster {
    std::string_view name, comment, protocol, protocolVersion;
    uint64_t baudRate = 0, fdBaudRate = 0;
    double cycleUs = 0, macrotickUs = 0;
    uint32_t macroticksPerCycle = 0, staticSlots = 0, staticSlotMacroticks = 0, minislots = 0,
             minislotMacroticks = 0, staticPayloadBytes = 0;
    EcuSet nodes;
    std::vector<Channel> channels;
    std::vector<Frame> frames;
};

struct EthEndpoint {
    std::string_view name, ipv4, netmask, ipv6;
};

struct EthService {
    std::string_view name;
    bool isProvided = false;
    std::optional<uint64_t> serviceId, instanceId, majorVersion;
};

struct EthSocket {
    std::string_view name, protocol;  // UDP or TCP
    std::optional<uint32_t> port, endpoint;
    EcuSet ecus;
    std::vector<EthService> services;
};

struct EthPdu {
    uint32_t pdu = 0;
    std::optional<uint64_t> headerId;
    std::string_view connection, server, client;
};

struct EthChannel {
    std::string_view name, vlanName;
    std::optional<uint32_t> vlanId;
    Channel parties;
    std::vector<EthEndpoint> endpoints;
    std::vector<EthSocket> sockets;
    std::vector<EthPdu> pdus;
};

struct EthCluster {
    std::string_view name, comment;
    uint64_t baudRate = 0;
    EcuSet nodes;
    std::vector<EthChannel> channels;
};

struct Ecu {
    std::string_view name, comment;
};

struct Warning {
    std::ptrdiff_t offset = 0;
    std::string text;
};

struct Database {
    std::string_view version;  // the release as the namespace tells it
    std::string_view containerHeaderByteOrder;
    std::vector<Ecu> ecus;
    std::vector<CompuMethod> compuMethods;
    std::vector<Signal> signals;
    std::vector<Pdu> pdus;
    std::vector<Cluster> canClusters, flexRayClusters;
    std::vector<EthCluster> ethClusters;
    std::vector<Warning> warnings;
    std::deque<std::string> madeTexts;

    std::string_view keep(std::string text) { return madeTexts.emplace_back(std::move(text)); }
};

// Why a file was refused; offset is the byte in the UTF-8 text, -1 where there is none.
struct ReadError {
    std::ptrdiff_t offset = -1;
    std::string text;
};

}  // namespace quill::arxml
