#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "core/hardware/boxdev/TransmitTypes.h"

namespace RV::BoxDev {

// The document of "StartSendCANFrame" and "SendUdsCANFrame". The box manager writes it and the
// device's handler reads it through this one pair of functions, so that the two cannot differ.
//
//   {"cmd", "id", "type": "can" or "canfd", "port_id": channel, "dlc",
//    "can_frame": {"can_id", "can_data": [bytes], "can_bFd", "can_brs", "can_extended",
//                  "can_esi", "can_remote", "data_length"},
//    "rolling_count": {"is_rc", "rc_start_bit", "rc_data_length", "is_rc_bigEndian", "is_reset"},
//    "crc_type", "crc_start_bit", "crc_data_length", "is_crc_bigEndian", "crc_key": [bytes],
//    "signal_type": "raw",
//    "cycle_option": "once", or "cycle" with "cycle_uuid", "cycle_ms" and "limit_count"}
struct CanSendRequest {
    rv::CanSendFrame frame;
    rv::FrameUpdate update;
    bool cyclic = false;
    std::string uuid;
    int32_t cycleMs = 0;
    int32_t limitCount = 0;
};

[[nodiscard]] std::string buildCanSendDocument(const std::string& cmd, const std::string& deviceId,
                                               const CanSendRequest& request);
// Empty with a reason that names the key when one is missing, of the wrong kind or out of range.
[[nodiscard]] std::optional<CanSendRequest> parseCanSendDocument(const nlohmann::json& document,
                                                                 std::string& reason);

// Documents that address a cyclic job: "cycle_uuid" beside "cmd" and "id".
[[nodiscard]] std::string buildJobDocument(const std::string& cmd, const std::string& deviceId,
                                           const std::string& uuid);

// "StartLinScheduleTable": {"port_id", "lin_schedule_table": {"name", "slot_array": [{"id",
// "time_interval" in ms, "msg_type", "check_type", "data": [bytes]}]}}.
struct LinScheduleRequest {
    int32_t channel = 0;
    std::string name;
    std::vector<rv::LinSlot> slots;
};
[[nodiscard]] std::string buildLinScheduleDocument(const std::string& deviceId,
                                                   const LinScheduleRequest& request);
[[nodiscard]] std::optional<LinScheduleRequest> parseLinScheduleDocument(
    const nlohmann::json& document, std::string& reason);

// "StartSendETHFrame": {"port_id", "eth_frame": [bytes from the destination address on]} or the
// parts "dst_mac", "src_mac" (MAC texts), "eth_type", optional "vlan_id" and "pdu_id", "src_ip",
// "dst_ip" (kept for the log) with "eth_frame" as payload; "cycle_option" as for CAN.
struct EthSendRequest {
    int32_t channel = 0;
    std::vector<uint8_t> bytes;  // whole frame from the destination address, without checksum
    bool cyclic = false;
    std::string uuid;
    int32_t cycleMs = 0;
    int32_t limitCount = 0;
};
[[nodiscard]] std::optional<EthSendRequest> parseEthSendDocument(const nlohmann::json& document,
                                                                 std::string& reason);

}  // namespace RV::BoxDev
