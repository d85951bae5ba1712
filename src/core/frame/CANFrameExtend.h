#pragma once

#include <cstdint>

namespace scripts {

// Flag word of a CAN frame: four bytes whose bit layout boxes, traces and scripts share. The layout
// is written out byte by byte because C++ leaves the order of bit fields to the compiler.
struct CANFrameExtend {
    uint8_t flags = 0;     // bit 0 EDL, 1 BRS, 2 ESI, 4-7 COD
    uint8_t format = 0;    // bit 0 UU2, 1 SRR, 2 IDE, 3 RTR, 4-7 DLC
    uint8_t errorLow = 0;  // errorFlag, least significant byte first
    uint8_t errorHigh = 0;

    [[nodiscard]] uint8_t EDL() const { return flags & 1U; }
    [[nodiscard]] uint8_t BRS() const { return (flags >> 1U) & 1U; }
    [[nodiscard]] uint8_t ESI() const { return (flags >> 2U) & 1U; }
    [[nodiscard]] uint8_t COD() const { return flags >> 4U; }
    [[nodiscard]] uint8_t UU2() const { return format & 1U; }
    [[nodiscard]] uint8_t SRR() const { return (format >> 1U) & 1U; }
    [[nodiscard]] uint8_t IDE() const { return (format >> 2U) & 1U; }
    [[nodiscard]] uint8_t RTR() const { return (format >> 3U) & 1U; }
    [[nodiscard]] uint8_t DLC() const { return format >> 4U; }
    [[nodiscard]] uint16_t errorFlag() const {
        return static_cast<uint16_t>(errorLow | (errorHigh << 8U));
    }

    void setEDL(bool on) { setBit(flags, 0, on); }
    void setBRS(bool on) { setBit(flags, 1, on); }
    void setESI(bool on) { setBit(flags, 2, on); }
    void setCOD(uint8_t value) { setHigh(flags, value); }
    void setUU2(bool on) { setBit(format, 0, on); }
    void setSRR(bool on) { setBit(format, 1, on); }
    void setIDE(bool on) { setBit(format, 2, on); }
    void setRTR(bool on) { setBit(format, 3, on); }
    void setDLC(uint8_t value) { setHigh(format, value); }
    void setErrorFlag(uint16_t value) {
        errorLow = static_cast<uint8_t>(value);
        errorHigh = static_cast<uint8_t>(value >> 8U);
    }

    bool operator==(const CANFrameExtend&) const = default;

private:
    static void setBit(uint8_t& byte, unsigned bit, bool on) {
        byte = static_cast<uint8_t>((byte & ~(1U << bit)) | (static_cast<unsigned>(on) << bit));
    }
    static void setHigh(uint8_t& byte, uint8_t value) {
        byte = static_cast<uint8_t>((byte & 0x0FU) | ((value & 0x0FU) << 4U));
    }
};
static_assert(sizeof(CANFrameExtend) == 4);

}  // namespace scripts
