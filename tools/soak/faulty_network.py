"""The virtual network of a soak run: one box that never fails, and boxes that fail all the time.

The steady box carries the witness, whose frames must arrive complete whatever happens to the others.
Everything else is drawn from the seed: when boxes go and come back, which calls of the device
library fail or take long, when a channel leaves its bus and when the clock of a box is off.
"""
import random

STEADY = "steady"
STEADY_MAC = "02:50:AA:00:00:01"
FLAKY = {"flaky-1": "02:50:AA:00:00:11", "flaky-2": "02:50:AA:00:00:12",
         "flaky-3": "02:50:AA:00:00:13"}
ABSENT_MAC = "02:50:AA:00:00:FF"  # no box has it
WITNESS_BUS = "witness"

# Calls that are made to fail, with the chance that one entry of the timetable takes place.
FAILING = ["get_can_config", "set_can_config", "set_lin_config", "set_eth_config", "Dev_Sync",
           "start_trace", "stop_trace", "open_device", "get_dip_status", "get_device_info",
           "send_can_frame_once", "add_can_cycle_frame", "pause_can_cycle_frame",
           "resume_can_cycle_frame", "remove_can_cycle_frame", "update_can_cycle_frame",
           "set_can_cycle_period", "start_lin_schedule", "stop_lin_schedule", "read_can_frames",
           "read_lin_frames", "read_eth_frames", "read_flexray_frames", "get_trace_counters"]
SLOW = ["read_can_frames", "set_can_config", "Dev_Sync", "start_trace", "stop_trace",
        "get_device_info", "add_can_cycle_frame", "start_lin_schedule", "send_can_frame_once"]


def buses():
    return {
        WITNESS_BUS: {"kind": "can"},
        "powertrain": {"kind": "can"},
        "body": {"kind": "can", "bitrate": 500000, "dataBitrate": 2000000},
        "doors": {"kind": "lin", "bitrate": 19200},
        "seats": {"kind": "lin"},
        "backbone": {"kind": "ethernet"},
        "chassis": {"kind": "flexray"},
    }


def boxes():
    flaky = {"can": ["powertrain", "powertrain", "body", "body"], "lin": ["doors", "seats"],
             "eth": ["backbone", "backbone"], "flexray": ["chassis", "chassis"]}
    entries = [{"name": STEADY, "mac": STEADY_MAC,
                "channels": {"can": [WITNESS_BUS, WITNESS_BUS], "lin": [{}, {}], "eth": [],
                             "flexray": []}}]
    for name, mac in FLAKY.items():
        entries.append({"name": name, "mac": mac, "channels": flaky})
    entries[-1]["traceCapacity"] = 300  # so small that frames are lost in the box, and counted
    return entries


def sources():
    return [
        {"bus": "powertrain", "periodic": {"id": 0x100, "data": [0] * 8, "period_ms": 2,
                                           "counter": {"byte": 0, "bytes": 4}}},
        {"bus": "powertrain", "periodic": {"id": 0x101, "data": [7] * 32, "fd": True,
                                           "period_ms": 5}},
        {"bus": "body", "periodic": {"id": "18DAF110", "extended": True, "data": [1, 2, 3],
                                     "period_ms": 10}},
        {"bus": "seats", "periodic": {"id": 18, "data": [1, 2, 3], "period_ms": 5}},
        {"bus": "backbone", "periodic": {"data": [1, 2, 3, 4, 5, 6, 17, 18, 19, 20, 21, 22, 0x88,
                                                  0xB5] + [9] * 50, "period_ms": 4}},
        {"bus": "chassis", "periodic": {"slot": 7, "cycle": 1, "data": [1] * 16, "period_ms": 5}},
    ]


def comings_and_goings(rng):
    """Each flaky box goes and comes back on a period of its own."""
    faults = []
    for name in FLAKY:
        period = rng.randrange(6000, 14000)
        start = rng.randrange(2000, period)
        away = rng.randrange(200, 2500)
        jitter = rng.randrange(1, 150)
        faults.append({"at_ms": start, "every_ms": period, "jitter_ms": jitter, "do": "unplug",
                       "box": name})
        faults.append({"at_ms": start + away, "every_ms": period, "jitter_ms": jitter, "do": "plug",
                       "box": name})
    return faults


def channel_faults(rng):
    faults = []
    for name in FLAKY:
        channel = rng.randrange(4)
        at = rng.randrange(500, 4000)
        faults.append({"at_ms": at, "every_ms": 5000, "do": "busOff", "box": name,
                       "channel": channel, "chance": 0.5})
        faults.append({"at_ms": at + 700, "every_ms": 5000, "do": "busStatus", "status": "active",
                       "box": name, "channel": channel})
        faults.append({"at_ms": at, "every_ms": 3000, "do": "refuse", "box": name,
                       "channel": rng.randrange(4), "times": rng.randrange(1, 40), "chance": 0.7})
        faults.append({"at_ms": at, "every_ms": 4100, "do": "busTimeout", "box": name,
                       "channel": rng.randrange(4)})
        faults.append({"at_ms": at, "every_ms": 6700, "do": "dip", "box": name,
                       "dip": {"program": rng.randrange(2), "sel0": rng.randrange(2)}})
        faults.append({"at_ms": at, "every_ms": 9000, "do": "clock", "box": name,
                       "offset_ns": rng.randrange(-5_000_000, 5_000_000),
                       "drift_ppm": rng.uniform(-50, 50)})
    return faults


def call_faults(rng):
    faults = []
    for function in FAILING:
        faults.append({"at_ms": rng.randrange(500, 9000), "every_ms": rng.randrange(3000, 11000),
                       "do": "fail", "function": function, "box": rng.choice(list(FLAKY)),
                       "times": rng.randrange(1, 4), "chance": 0.6})
    for function in SLOW:
        faults.append({"at_ms": rng.randrange(500, 9000), "every_ms": rng.randrange(5000, 15000),
                       "do": "slow", "function": function, "box": rng.choice(list(FLAKY)),
                       "delay_ms": rng.randrange(5, 120), "times": rng.randrange(1, 6),
                       "chance": 0.6})
    return faults


def document(seed):
    """The network document of a seed, ready for json.dumps."""
    rng = random.Random(f"network {seed}")
    return {"seed": seed, "buses": buses(), "boxes": boxes(), "sources": sources(),
            "usb": [{"name": "stick", "model": "RV-CANFD2", "serial": "C2-7",
                     "channels": {"can": ["powertrain", {}]}}],
            "responders": [{"bus": "doors", "id": 49, "data": "01 02"}],
            "faults": comings_and_goings(rng) + channel_faults(rng) + call_faults(rng)}
