"""Scripts that end in other ways than by exit() as their last call."""
import re

import pytest

START = """
import sys, threading, time
import QuillScriptsSDK as q
handle = q.getDeviceList(q.DeviceType.All, 20000)[0]
frame = q.CANRawFrame(id=1, data=b"12345678")
inside = threading.Event()
told = threading.Event()

def pump():
    try:
        while True:
            q.sendCanFrame(handle, frame)
    except RuntimeError:
        pass  # exit() was called

def subscribe(callback):
    def call(frame):
        inside.set()
        callback(frame)
    q.subscribeCanFrame(handle, call)
    q.sendCanFrame(handle, frame)
    assert inside.wait(30)
    print("ends", flush=True)
"""

ENDS = {
    "with status 3": ("subscribe(lambda f: None); sys.exit(3)", 3),
    "by an exception": ("subscribe(lambda f: None); raise ValueError('end')", 1),
    "by Ctrl-C": ("subscribe(lambda f: None); raise KeyboardInterrupt", -2),
    "while a callable sleeps": ("subscribe(lambda f: time.sleep(100)); sys.exit(4)", 4),
    "while a callable computes without end":
        ("def spin(f):\n    while True: pass\nsubscribe(spin); sys.exit(5)", 5),
    "while a callable sends without end":
        ("def flood(f):\n    while True: q.sendCanFrame(handle, frame)\n"
         "subscribe(flood); sys.exit(6)", 6),
    "while frames flow":
        ("threading.Thread(target=pump, daemon=True).start()\nsubscribe(lambda f: None)\n"
         "sys.exit(7)", 7),
    "after exit() while frames flow":
        ("threading.Thread(target=pump, daemon=True).start()\nsubscribe(lambda f: None)\n"
         "q.exit(); sys.exit(8)", 8),
    "after exit() while a callable sleeps":
        ("subscribe(lambda f: time.sleep(100)); q.exit(); sys.exit(9)", 9),
    "while another thread waits for boxes":
        ("threading.Thread(target=q.getDeviceList, args=(q.DeviceType.All, 60000), daemon=True)"
         ".start()\nsubscribe(lambda f: None)\nsys.exit(10)", 10),
    "while cyclic jobs run":
        ("jobs = [q.startCyclicCanFrame(handle, frame, 1, 0) for _ in range(20)]\n"
         "subscribe(lambda f: None); sys.exit(11)", 11),
}


@pytest.mark.parametrize("end, status", ENDS.values(), ids=ENDS.keys())
def test_a_script_ends_with_its_own_status(run_script, end, status):
    # A callable that blocks would hold the process longer than the time-out of run_script.
    script = run_script(START + end)
    assert "ends" in script.out, script.err
    assert script.status == status, script.err


def test_exit_in_a_callable_is_refused(run_script):
    script = run_script(START + """
def leave(f):
    try:
        q.exit()
    except RuntimeError as error:
        print(f"refused: {error}", flush=True)
        told.set()
subscribe(leave)
assert told.wait(30)
q.exit()
""")
    assert script.status == 0, script.err
    assert "refused: exit() cannot be called from a frame callable" in script.out


def test_no_callable_runs_after_exit(run_script):
    script = run_script(START + """
calls = []
threading.Thread(target=pump, daemon=True).start()
subscribe(calls.append)
q.exit()
count = len(calls)
time.sleep(0.3)
print("later:", len(calls) - count)
""")
    assert script.out.splitlines()[-1] == "later: 0"


def test_what_callables_hold_is_freed_by_exit(run_script):
    script = run_script(START + """
import gc, weakref
class Holder:
    def __call__(self, frame): pass
holder = Holder()
gone = weakref.ref(holder)
subscribe(holder)
q.subscribeCanFrame(handle, holder)
q.subscribeLinFrame(handle, holder)
q.subscribeCanFrameById(5, holder)
q.exit()
del holder
gc.collect()
print("freed:", gone() is None)
""")
    assert script.out.splitlines()[-1] == "freed: True"


def test_many_short_lives(run_script):
    for _ in range(15):
        script = run_script(START + "threading.Thread(target=pump, daemon=True).start()\n"
                            "subscribe(lambda f: None)")
        assert script.status == 0, script.err


def test_every_frame_is_accounted_for(run_script, tmp_path):
    script = run_script(START + """
def fail(f):
    if f.dir == 1:
        raise ValueError
subscribe(fail)
senders = [threading.Thread(target=lambda: [q.sendCanFrame(handle, frame) for _ in range(200)])
           for _ in range(3)]
for sender in senders: sender.start()
for sender in senders: sender.join()
last = threading.Event()
q.subscribeCanFrameById(2, lambda f: last.set())
q.sendCanFrame(handle, q.CANRawFrame(id=2))
last.wait(30)
q.exit()
""", LocalAPPDATA=str(tmp_path))
    assert script.status == 0, script.err
    log = (tmp_path / "RV" / "Quill" / "log" / "QuillScriptsSDK.log").read_text()
    line = re.search(r"delivery: (\d+) frames in, (\d+) out, (\d+) dropped, (\d+) held, "
                     r"(\d+) calls, (\d+) raised", log)
    came, out, dropped, held, calls, raised = map(int, line.groups())
    assert came == out + dropped and held == 0
    assert out >= 2 * 601 and calls >= out and raised >= 601
