#pragma once

#include <cstdint>

// Records that cross the boundary of the device library. All are plain data of fixed layout; every
// text is UTF-8 with a terminating zero; channel numbers count from 0 per bus kind.

inline constexpr int kRvOk = 0;
inline constexpr int kRvErrorHandle = 1;      // no device has this handle
inline constexpr int kRvErrorGone = 2;        // the device is known but not reachable
inline constexpr int kRvErrorParam = 3;       // an argument is out of range
inline constexpr int kRvErrorChannel = 4;     // the device has no such channel, or it is disabled
inline constexpr int kRvErrorNotOpen = 5;     // the device is not open
inline constexpr int kRvErrorBusOff = 6;      // the channel is bus-off and transmits nothing
inline constexpr int kRvErrorRefused = 7;     // the device refused the call
inline constexpr int kRvErrorUnknownJob = 8;  // no cyclic job or schedule has this identifier
inline constexpr int kRvErrorQueueFull = 9;   // the transmit queue is full
inline constexpr int kRvErrorDuplicateJob = 10;  // a cyclic job with this identifier runs already
inline constexpr int kRvErrorNotInit = 11;       // the library is not initialised

// Scan parameters of the network boxes, handed to the library unchanged.
struct RvHub4eScanParams {
    int32_t rounds = 5;
    int32_t waitMs = 5000;
    float backoff = 1.3F;
};
static_assert(sizeof(RvHub4eScanParams) == 12);

// Identity of a network box.
struct RvHub4eDeviceInfo {
    char name[64];
    uint8_t mac[6];
    uint8_t reserved1[2];
    char serial[64];
    char version[64];
    char model[64];
    char networkCard[64];  // host network interface through which the box was found
    int32_t com;           // carried as the box reports it
    int32_t canCount;
    int32_t linCount;
    int32_t ethCount;
    int32_t flexrayCount;
    uint8_t reserved2[192];
};
static_assert(sizeof(RvHub4eDeviceInfo) == 540);

struct RvDipStatus {
    uint8_t program = 0;  // each 0 or 1
    uint8_t sel2 = 0;
    uint8_t sel1 = 0;
    uint8_t sel0 = 0;
};

// State of a network box as its state callback reports it.
enum RvDeviceState : int32_t {
    RvDeviceStateIdle = 0,
    RvDeviceStateConnecting = 1,
    RvDeviceStateConnected = 2,
    RvDeviceStateBusy = 3,
    RvDeviceStateDisconnected = 4,
};

enum RvConnectionEventType : int32_t {
    RvConnectionEventTypeSetConfig = 0,
    RvConnectionEventTypeGetConfig = 1,
    RvConnectionEventTypeStartTracing = 2,
    RvConnectionEventTypeStopTracing = 3,
    RvConnectionEventTypeBusStatus = 4,
    RvConnectionEventTypeSilent = 5,
    RvConnectionEventTypeBusTimeout = 6,
};

enum RvCanBusStatusType : int32_t {
    RvCanBusStatusTypeBusActive = 0,
    RvCanBusStatusTypeBusHeavy = 1,
    RvCanBusStatusTypeBusWarning = 2,
    RvCanBusStatusTypeBusPassive = 3,
    RvCanBusStatusTypeBusOff = 4,
};

// What a box tells through its event callback.
enum RvEventKind : int32_t {
    RvEventConnection = 0,  // type, channel and value of a connection event
    RvEventDipStatus = 1,   // dip holds the new switch state
};
struct RvDeviceEvent {
    RvEventKind kind = RvEventConnection;
    RvConnectionEventType type = RvConnectionEventTypeSilent;
    int32_t channel = 0;
    int32_t value = 0;  // bus status: RvCanBusStatusType
    RvDipStatus dip;
};

// Frames. Times are the box's clock: seconds and nanoseconds since 1970.
inline constexpr uint8_t kRvDirReceived = 0;
inline constexpr uint8_t kRvDirTransmitted = 1;

struct RvCanFrame {
    uint32_t seconds = 0;
    uint32_t nanoseconds = 0;
    uint32_t id = 0;
    // Flag word: byte 0 bit 0 EDL, 1 BRS, 2 ESI, 4-7 COD; byte 1 bit 0 UU2, 1 SRR, 2 IDE, 3 RTR,
    // 4-7 DLC; bytes 2-3 error flags, least significant byte first.
    uint8_t extend[4] = {};
    uint8_t channel = 0;
    uint8_t direction = kRvDirReceived;
    uint8_t length = 0;  // 0 to 64 payload bytes
    uint8_t reserved = 0;
    uint8_t data[64] = {};
};

struct RvLinFrame {
    uint32_t seconds = 0;
    uint32_t nanoseconds = 0;
    uint8_t channel = 0;
    uint8_t direction = kRvDirReceived;
    uint8_t id = 0;         // 0 to 63
    uint8_t checkMode = 0;  // 0 classic, 1 enhanced
    uint16_t checksum = 0;
    uint8_t length = 0;  // 0 to 8
    uint8_t reserved = 0;
    uint8_t data[8] = {};
};

inline constexpr uint32_t kRvEthMaxLength = 1522;
struct RvEthFrame {
    uint32_t seconds = 0;
    uint32_t nanoseconds = 0;
    uint8_t channel = 0;
    uint8_t direction = kRvDirReceived;
    uint16_t length = 0;  // from the destination address, without checksum
    uint8_t data[kRvEthMaxLength + 2] = {};
};

struct RvFlexRayFrame {
    uint32_t seconds = 0;
    uint32_t nanoseconds = 0;
    uint8_t channel = 0;
    uint8_t direction = kRvDirReceived;
    uint8_t channelMask = 1;  // 1 A, 2 B, 3 both
    uint8_t cycle = 0;        // 0 to 63
    uint16_t slot = 0;        // 1 to 2047
    uint16_t headerCrc = 0;
    uint16_t flags = 0;   // bit 0 null frame, 1 valid data, 2 sync, 3 startup, 4 payload preamble
    uint16_t length = 0;  // 0 to 254
    uint8_t data[256] = {};
};

// Channel settings.
struct RvCanChannelConfig {
    int32_t enabled = 1;
    int32_t fd = 1;
    int32_t bitrate = 500000;       // bit/s, arbitration phase
    int32_t dataBitrate = 2000000;  // bit/s, data phase
    int32_t samplePoint = 800;      // per mille, 500 to 900
    int32_t dataSamplePoint = 750;  // per mille, 500 to 900
    int32_t termination = 1;        // 120 ohm resistor on
    int32_t listenOnly = 0;
};
struct RvLinChannelConfig {
    int32_t enabled = 1;
    int32_t baudrate = 19200;  // bit/s, 1000 to 20000
    int32_t master = 1;        // 1 master, 0 slave
    int32_t version = 21;      // protocol version times ten: 13, 20, 21, 22
};
struct RvEthChannelConfig {
    int32_t enabled = 1;
    int32_t speed = 100;  // Mbit/s: 100 or 1000
    int32_t master = 1;   // 1 master, 0 slave
    int32_t reserved = 0;
};

// Called before every transmission with a fresh copy of the job's payload, which it may change.
// False keeps the frame from this transmission. Runs on a thread of the library.
using RvFrameUpdateFn = bool (*)(uint8_t* data, int32_t length, void* settings);
using RvReleaseFn = void (*)(void* settings);

struct RvCanCycleJob {
    char uuid[64] = {};
    RvCanFrame frame;
    int32_t periodMs = 0;    // 1 and up
    int32_t limitCount = 0;  // number of transmissions; 0 or less: without end
    RvFrameUpdateFn update = nullptr;
    void* settings = nullptr;
    RvReleaseFn release = nullptr;  // called once, when the job is gone or was not accepted
};
struct RvEthCycleJob {
    char uuid[64] = {};
    RvEthFrame frame;
    int32_t periodMs = 0;
    int32_t limitCount = 0;
};

// One slot of a LIN schedule table. A master slot (msgType 4) sends the header and the payload, a
// slave slot (msgType 3) sends the header only and the publisher answers.
struct RvLinSlot {
    int32_t id = 0;
    uint32_t msgType = 0;
    uint64_t intervalMs = 0;
    uint32_t checkMode = 0;
    uint32_t length = 0;
    uint8_t data[8] = {};
};

using RvDeviceStateFn = void (*)(int32_t handle, int32_t state, void* context);
using RvDeviceEventFn = void (*)(int32_t handle, const RvDeviceEvent* event, void* context);
