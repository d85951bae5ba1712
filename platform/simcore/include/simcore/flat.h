#pragma once

#include <cstdint>

#include "simcore/export.h"
#include "simcore/records.h"

// Flat functions of the device library for the network boxes. 0 means success throughout. Callers
// serialise the calls with one process-wide mutex; no call waits for traffic. Callbacks come on
// threads of the library, never from inside a call, and never after the call that cleared them:
// that call waits for a running one, so callbacks must not call flat functions or wait for a lock
// that is held around them.
//
// A box that comes back after it was away is found under a new handle. Calls with the old one
// answer kRvErrorGone from then on, but clear callbacks all the same.
extern "C" {

SIMCORE_API int rvhub4e_init();
// Text of the last failure of this thread; empty when there was none.
SIMCORE_API const char* rvhub4e_last_error();

// Fills up to *count handles and sets *count to the number filled in. The scan returns what is
// known now; boxes that appear later are found by the next scan.
SIMCORE_API int scan_rvhub4e(int32_t* handles, int32_t* count, int32_t reserved,
                             const RvHub4eScanParams* params);
SIMCORE_API int get_device_info(int32_t handle, RvHub4eDeviceInfo* info);
SIMCORE_API int Lin_CheckPort(int32_t handle);
SIMCORE_API int get_dip_status(int32_t handle, RvDipStatus* status);
SIMCORE_API int get_can_bus_status(int32_t handle, int32_t channel, int32_t* status);

// One session at a time: opening an open box is refused. Closing it ends tracing, cyclic jobs and
// schedule tables.
SIMCORE_API int open_device(int32_t handle);
SIMCORE_API int close_device(int32_t handle);
SIMCORE_API int set_device_state_callback(int32_t handle, RvDeviceStateFn fn, void* context);
SIMCORE_API int set_event_callback(int32_t handle, RvDeviceEventFn fn, void* context);

// Settings take effect with Dev_Sync; a get after a set returns what was set.
SIMCORE_API int get_can_config(int32_t handle, int32_t channel, RvCanChannelConfig* config);
SIMCORE_API int set_can_config(int32_t handle, int32_t channel, const RvCanChannelConfig* config);
SIMCORE_API int get_lin_config(int32_t handle, int32_t channel, RvLinChannelConfig* config);
SIMCORE_API int set_lin_config(int32_t handle, int32_t channel, const RvLinChannelConfig* config);
SIMCORE_API int get_eth_config(int32_t handle, int32_t channel, RvEthChannelConfig* config);
SIMCORE_API int set_eth_config(int32_t handle, int32_t channel, const RvEthChannelConfig* config);
SIMCORE_API int Dev_Sync(int32_t handle);

// Tracing: from start to stop the box queues every frame of its channels, its own transmissions
// included (direction 1). A read takes up to capacity frames without waiting and sets *count.
SIMCORE_API int start_trace(int32_t handle);
SIMCORE_API int stop_trace(int32_t handle);
SIMCORE_API int read_can_frames(int32_t handle, RvCanFrame* frames, int32_t capacity,
                                int32_t* count);
SIMCORE_API int read_lin_frames(int32_t handle, RvLinFrame* frames, int32_t capacity,
                                int32_t* count);
SIMCORE_API int read_eth_frames(int32_t handle, RvEthFrame* frames, int32_t capacity,
                                int32_t* count);
SIMCORE_API int read_flexray_frames(int32_t handle, RvFlexRayFrame* frames, int32_t capacity,
                                    int32_t* count);
// Frames that the box queued, handed out and lost for want of room since it was opened, all kinds.
struct RvTraceCounters {
    uint64_t queued = 0;
    uint64_t read = 0;
    uint64_t dropped = 0;
    uint64_t discarded = 0;  // thrown away unread by stop_trace, close_device or a lost box
};
SIMCORE_API int get_trace_counters(int32_t handle, RvTraceCounters* counters);

SIMCORE_API int send_can_frame_once(int32_t handle, const RvCanFrame* frame);
SIMCORE_API int add_can_cycle_frame(int32_t handle, const RvCanCycleJob* job);
SIMCORE_API int pause_can_cycle_frame(int32_t handle, const char* uuid);
SIMCORE_API int resume_can_cycle_frame(int32_t handle, const char* uuid);
SIMCORE_API int remove_can_cycle_frame(int32_t handle, const char* uuid);
// Replaces identifier, flags and payload of a running job; phase, period, count and settings stay.
SIMCORE_API int update_can_cycle_frame(int32_t handle, const char* uuid, const RvCanFrame* frame);
// Changes the period of a running job; the next transmission is one new period after the last.
SIMCORE_API int set_can_cycle_period(int32_t handle, const char* uuid, int32_t periodMs);
struct RvCycleCounters {
    uint64_t transmitted = 0;
    uint64_t refused = 0;  // transmissions that the channel did not take
    uint64_t missed = 0;   // periods skipped because the scheduler came late
    int32_t lastError = 0;
};
SIMCORE_API int get_can_cycle_counters(int32_t handle, const char* uuid, RvCycleCounters* counters);

SIMCORE_API int send_eth_frame_once(int32_t handle, const RvEthFrame* frame);
SIMCORE_API int add_eth_cycle_frame(int32_t handle, const RvEthCycleJob* job);
SIMCORE_API int pause_eth_cycle_frame(int32_t handle, const char* uuid);
SIMCORE_API int resume_eth_cycle_frame(int32_t handle, const char* uuid);
SIMCORE_API int remove_eth_cycle_frame(int32_t handle, const char* uuid);
SIMCORE_API int send_flexray_frame_once(int32_t handle, const RvFlexRayFrame* frame);

SIMCORE_API int send_lin_frame_once(int32_t handle, const RvLinFrame* frame);
SIMCORE_API int start_lin_schedule(int32_t handle, int32_t channel, const RvLinSlot* slots,
                                   int32_t count);
SIMCORE_API int stop_lin_schedule(int32_t handle, int32_t channel);
}
