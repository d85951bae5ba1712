"""See and record only what matters: filter lists by identifier, range, frame name and channel.

    python filtered_recording.py

A database attached to a channel names its frames, so that a list can ask for them by name.
"""
import os
import sys
import tempfile
import threading

import QuillScriptsSDK as sdk

DBC = """VERSION ""
BU_: Body
BO_ 257 Door: 1 Body
 SG_ Open : 0|1@1+ (1,0) [0|1] "" Body
BO_ 512 Light: 1 Body
"""


def main():
    sdk.load()
    handles = sdk.getDeviceList(sdk.DeviceType.All, 3000)
    if not handles:
        print("no box on the network")
        return 1
    handle = handles[0]
    can1, can2 = sdk.getChannelNames(handle)[:2]
    print("channels:", can1, can2)

    with tempfile.TemporaryDirectory() as folder:
        dbc = os.path.join(folder, "body.dbc")
        with open(dbc, "w", encoding="utf-8") as file:
            file.write(DBC)
        sdk.attachDatabase(handle, 1, dbc)

        seen = []
        came = threading.Event()

        def on_frame(frame):
            seen.append((frame.id, frame.name))
            if frame.id == 0x7FF:
                came.set()

        wanted = sdk.CANFrameFilterList()
        wanted.add_name_pass_list("Door", 0, can2)
        wanted.add_pass_range_list(0x300, 0x3FF, 0, 0, can2)
        wanted.add_pass_list(0x7FF, 0, 0, can2)
        wanted.add_block_list(0x380, 0, 0, can2)
        print(wanted)
        sdk.subscribeCanFrame(handle, on_frame, filter=wanted)

        only_sent = sdk.CANFrameFilterList()
        only_sent.add_pass_channel(can1)
        trace = os.path.join(folder, "sent.asc")
        sdk.enableDataRecording(trace, [], 1, canFilter=only_sent)
        for identifier in (0x101, 0x200, 0x2FF, 0x300, 0x380, 0x3FF, 0x400, 0x7FF):
            sdk.sendCanFrame(handle, sdk.CANRawFrame(id=identifier, data=[1]))
        ok = came.wait(20)
        sdk.disableDataRecording()
        recorded = sdk.getRecordingStatus().written

    print("seen:", [(hex(identifier), name) for identifier, name in seen])
    print("recorded:", recorded, "frames of", can1)
    sdk.exit()
    expected = [(0x101, "Door"), (0x300, ""), (0x3FF, ""), (0x7FF, "")]
    return 0 if ok and seen == expected and recorded == 8 else 1


if __name__ == "__main__":
    sys.exit(main())
