"""Runs a random script of all operations against a faulty virtual network, and checks it.

    ./quill soak [SECONDS] [--seed N]

Two processes do what test scripts do, and more: one with boxes that vanish, refuse and answer late,
and one that queries the same databases. This one watches them: a hang, a crash, a wrong answer, a
counter that does not add up, a file that cannot be read, memory that grows and anything left behind
end the run with status 1. The printed seed repeats every actor's sequence of operations.
"""
import argparse
import pathlib
import random
import signal
import sys
import tempfile

from supervisor import Supervisor


def parse():
    parser = argparse.ArgumentParser(
        prog="quill soak", description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("seconds", nargs="?", type=float, default=60, help="default 60")
    parser.add_argument("--seed", type=int, help="default: a random one, which is printed")
    parser.add_argument("--quilltrace", required=True, help="program that reads recorded files")
    parser.add_argument("--only", default="",
                        help="groups of operations with commas between them, to narrow a fault down")
    parser.add_argument("--memory-bound", type=float, default=24,
                        help="MiB by which memory may grow after the warm-up; 0: not looked at")
    parser.add_argument("--warm-up", type=float,
                        help="seconds until memory counts; default a quarter, at most 60")
    parser.add_argument("--hang-after", type=float, default=60,
                        help="seconds that one operation may take; default 60")
    options = parser.parse_args()
    if options.seconds <= 0:
        parser.error("SECONDS must be above 0")
    if options.seed is None:
        options.seed = random.SystemRandom().randrange(1_000_000)
    if options.warm_up is None:
        options.warm_up = min(options.seconds / 4, 60)
    return options


def main():
    options = parse()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    with tempfile.TemporaryDirectory(prefix="quill-soak-") as folder:
        return Supervisor(options, pathlib.Path(folder)).run()


if __name__ == "__main__":
    sys.exit(main())
