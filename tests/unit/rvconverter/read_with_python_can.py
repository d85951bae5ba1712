"""Prints every message that python-can reads from a BLF or ASC file, one a line."""

import sys

import can


def main():
    path = sys.argv[1]
    reader = can.BLFReader(path) if path.endswith(".blf") else can.ASCReader(path)
    out = []
    if path.endswith(".blf"):
        out.append(f"start {reader.start_timestamp:.9f}")
    try:
        for m in reader:
            flags = (m.is_extended_id, m.is_rx, m.is_fd, m.is_remote_frame, m.is_error_frame,
                     m.bitrate_switch, m.error_state_indicator)
            text = " ".join(str(int(flag)) for flag in flags)
            channel = -1 if m.channel is None else m.channel
            out.append(f"m {m.timestamp:.9f} {channel} {m.arbitration_id} {text} {m.dlc} "
                       f"{bytes(m.data).hex() or '-'}")
    except Exception as error:  # a torn end of the file
        out.append(f"stopped {type(error).__name__} {error}")
    out.append("end")
    print("\n".join(out))


main()
