"""Show what a bus database holds, and decode payloads with it.

    python database_explorer.py FILE.dbc|FILE.arxml|FILE.ldf [FRAME [HEXBYTES]]
"""
import sys

import QuillScriptsSDK as sdk


def load(path):
    """(code, database, frames)"""
    if path.lower().endswith(".ldf"):
        code, lin = sdk.loadLinLDF(path)
        return code, lin, list(lin.frame)
    if path.lower().endswith(".arxml"):
        code, system = sdk.loadCanArxml(path)
        return code, system, [f for c in system.clusters for f in c.dbcEntrys]
    code, can = sdk.loadCanDBC(path)
    return code, can, list(can.dbcEntrys)


def show_signals(signals, indent="    "):
    for signal in signals:
        order = "Motorola" if signal.isBigEndian else "Intel"
        texts = f" {len(signal.mapValueTable)} texts" if signal.mapValueTable else ""
        print(f"{indent}{signal.name}: bit {signal.startBit}, {signal.bitLength} bits {order}, "
              f"x {signal.factor:g} + {signal.offset:g} {signal.unit}{texts}")


def show_pdus(pdus, indent="    "):
    for pdu in pdus:
        print(f"{indent}{pdu.pdutype} {pdu.name}, {pdu.length} bytes")
        show_signals(pdu.signals, indent + "  ")
        show_pdus(pdu.pdus, indent + "  ")


def main():
    if len(sys.argv) < 2:
        print(__doc__)
        return 2
    code, database, frames = load(sys.argv[1])
    if code != 0:
        print(f"{sys.argv[1]} cannot be loaded; the log says why")
        return 1
    print(database)
    if len(sys.argv) == 2:
        for frame in frames:
            print(f"  0x{frame.id:X} {frame.name}")
        return 0
    frame = sdk.findFrame(database, sys.argv[2])
    if frame is None:
        print(f"no frame {sys.argv[2]}")
        return 1
    print(frame)
    if hasattr(frame, "pdus"):
        show_pdus(frame.pdus)
    else:
        show_signals(frame.signals)
    if len(sys.argv) > 3:
        for name, value in sdk.decodeFrame(frame, bytes.fromhex(sys.argv[3])).items():
            print(f"  {name} = {value}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
