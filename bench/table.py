"""Prints the output of the benches as it comes and their rows as one table at the end.

    some_bench | python3 table.py

A row is a line "@|what|unit|ours|floor|peer|peer's name|wanted"; "nan" stands for a side that is
not there.
"""
import math
import sys


def number(value):
    if math.isnan(value):
        return "–"
    if value >= 1e6:
        return f"{value / 1e6:.3g} M"
    if value >= 1e4:
        return f"{value / 1e3:.4g} k"
    return f"{value:.3g}" if value < 1000 else f"{value:.0f}"


def ratio(ours, other):
    return "–" if math.isnan(other) or other == 0 else f"{ours / other:.2f}"


def table(rows):
    yield "| what | unit | ours | floor | ours / floor | peer | ours / peer | wanted |"
    yield "|---|---|---|---|---|---|---|---|"
    for what, unit, ours, floor, peer, name, wanted in rows:
        ours, floor, peer = float(ours), float(floor), float(peer)
        side = "–" if math.isnan(peer) else f"{number(peer)} ({name})"
        yield (f"| {what} | {unit} | {number(ours)} | {number(floor)} | {ratio(ours, floor)} "
               f"| {side} | {ratio(ours, peer)} | {wanted} |")


def main():
    rows = []
    for line in sys.stdin:
        if line.startswith("@|"):
            rows.append(line.rstrip("\n").split("|")[1:])
        else:
            sys.stdout.write(line)
            sys.stdout.flush()
    if rows:
        print("\n== medians\n")
        print("\n".join(table(rows)))


if __name__ == "__main__":
    main()
