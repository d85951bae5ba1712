#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simcore/export.h"
#include "simcore/records.h"

// Class interface of the device library for USB and general bus devices.

enum RvDeviceType : int32_t {
    RvDeviceTypeNone = 0,
    RvDeviceTypeHub4e = 1,
    RvDeviceTypeUsbCan = 2,
    RvDeviceTypeEtas = 3,
};

enum RvConnectionType : int32_t {
    RvConnectionTypeNetwork = 1,
    RvConnectionTypeUsb = 2,
    RvConnectionTypeEtas = 3,
};

// The library's descriptor of one device.
struct RvDeviceDesc {
    RvDeviceType type = RvDeviceTypeNone;
    char model[64] = {};
    char path[128] = {};  // unique while the device is plugged in
    char version[64] = {};
    char buildTime[64] = {};
    uint8_t snr[16] = {};  // raw serial number
    char serial[64] = {};
    char mac[24] = {};  // empty for USB devices
    int32_t comPort = 0;
    int32_t canCount = 0;
    int32_t linCount = 0;
    int32_t networkBox = 0;   // 0: identified by the serial number, else by the MAC address
    uint8_t status[11] = {};  // 255: not in use
};

class SIMCORE_API RvDeviceInfo {
public:
    explicit RvDeviceInfo(RvDeviceType type);
    explicit RvDeviceInfo(const RvDeviceDesc& desc);
    RvDeviceInfo(const RvDeviceInfo& other);
    RvDeviceInfo& operator=(const RvDeviceInfo& other);
    // NOLINTNEXTLINE(performance-trivially-destructible): exported by the library
    ~RvDeviceInfo();  // NOLINT(performance-trivially-destructible): part of the library

    [[nodiscard]] RvDeviceType getType() const;
    [[nodiscard]] const char* getDeviceModel() const;
    [[nodiscard]] const char* getDevicePath() const;
    [[nodiscard]] std::string getVersion() const;
    [[nodiscard]] std::string getBuildTime() const;
    bool getSNR(unsigned char* out) const;  // 16 bytes
    [[nodiscard]] std::string getSnrStr() const;
    [[nodiscard]] int getComPort() const;
    [[nodiscard]] int getCanCount() const;
    [[nodiscard]] int getLinCount() const;
    // `count` holds the length of the array on entry and the number of names on return.
    bool getChannels(char names[][64], int& count) const;

private:
    RvDeviceDesc m_desc;
};

// Time values of the founder, in milliseconds, handed to the library unchanged.
struct FounderInitParams {
    int32_t scanIntervalMs = 1500;
    int32_t answerMs = 1000;
    int32_t lostMs = 3000;
    int32_t connectMs = 8000;
    int32_t reconnectMs = 5000;
};

class SIMCORE_API RvDeviceFounderObserver {
public:
    virtual ~RvDeviceFounderObserver() = default;
    virtual void onDeviceFound(const RvDeviceDesc& desc) = 0;
    virtual void onDeviceChanged(const RvDeviceDesc& desc) = 0;
    virtual void onDeviceLost(const RvDeviceDesc& desc) = 0;
};

class SIMCORE_API RvDeviceFounder {
public:
    static RvDeviceFounder* instance();

    bool init(FounderInitParams params, RvDeviceFounderObserver* observer);
    bool start(bool networkDevices);
    // After removeObserver has returned, the observer is not called any more.
    void addObserver(RvDeviceFounderObserver* observer);
    void removeObserver(RvDeviceFounderObserver* observer);
    [[nodiscard]] std::vector<RvDeviceInfo> getDeviceInfos();

private:
    RvDeviceFounder() = default;
};

class SIMCORE_API RvDeviceConnectionObserver {
public:
    virtual ~RvDeviceConnectionObserver() = default;
    virtual void onConnectionEvent(RvConnectionEventType type, int32_t channel, int32_t value) = 0;
};

// Connection to one USB or general bus device. Calls return kRvOk or a kRvError code but for those
// that return bool. Reads never wait.
class SIMCORE_API RvDeviceConnection {
public:
    static RvDeviceConnection* create(RvConnectionType type);
    static void destroy(RvDeviceConnection* connection);

    virtual bool open(const char* devicePath, RvDeviceConnectionObserver* observer) = 0;
    virtual void close() = 0;
    virtual bool flushSriNo(unsigned char* out, int size) = 0;
    virtual int getCanConfig(int32_t channel, RvCanChannelConfig* config) = 0;
    virtual int setCanConfig(int32_t channel, const RvCanChannelConfig* config) = 0;
    virtual int startTracing() = 0;
    virtual int stopTracing() = 0;
    virtual int readCanFrames(RvCanFrame* frames, int32_t capacity, int32_t* count) = 0;
    virtual int sendCanFrame(const RvCanFrame* frame) = 0;
    virtual int addCanCycleFrame(const RvCanCycleJob* job) = 0;
    virtual int pauseCanCycleFrame(const char* uuid) = 0;
    virtual int resumeCanCycleFrame(const char* uuid) = 0;
    virtual int removeCanCycleFrame(const char* uuid) = 0;

protected:
    virtual ~RvDeviceConnection() = default;
};

// One set of bit-timing parameters that reaches a bit rate.
struct RvBitTiming {
    int32_t prescaler = 0;
    int32_t tseg1 = 0;  // propagation and phase 1 segment, time quanta
    int32_t tseg2 = 0;
    int32_t sjw = 0;
    int32_t samplePoint = 0;  // per mille
};
class SIMCORE_API RvETASCanParams {
public:
    // fd: data phase limits; clockHz: controller clock; bitrate in bit/s; samplePoint per mille, 0
    // for any; limit: most sets to return.
    static std::vector<RvBitTiming> traverseCanParamsByBitrate(bool fd, int clockHz, int bitrate,
                                                               int samplePoint, unsigned limit);
};
class SIMCORE_API RvUsbCanCanParams {
public:
    static std::vector<RvBitTiming> traverseCanParamsByBitrate(bool fd, int clockHz, int bitrate,
                                                               int samplePoint, unsigned limit);
};

// The library's log feed. Levels: 0 trace, 1 debug, 2 info, 3 warning, 4 error.
using RvLogFn = void (*)(int level, const char* text);
class SIMCORE_API RvKeyLogger {
public:
    static RvKeyLogger* instance();
    void setLogCallback(RvLogFn fn);
    void notifyLog(int level, const char* text);

private:
    RvKeyLogger() = default;
};
