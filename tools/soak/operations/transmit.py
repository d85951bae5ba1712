"""Single and cyclic frames, accepted and refused ones."""
from operations import Group

GROUP = Group("transmit", pause=0.006)
JOB_SLOTS = 24
FD_LENGTHS = [0, 1, 7, 8, 12, 16, 20, 24, 32, 48, 64]


def random_frame(run, rng):
    fd = rng.random() < 0.4
    length = rng.choice(FD_LENGTHS) if fd else rng.randrange(9)
    extended = rng.random() < 0.3
    identifier = rng.randrange(0x20000000) if extended else rng.randrange(0x600)
    return run.sdk.CANRawFrame(id=identifier, channelId=rng.randrange(4), IDE=int(extended),
                               EDL=int(fd), BRS=int(fd), data=rng.randbytes(length))


def random_update(run, rng):
    """Counter and CRC in a payload of 8 bytes; none half of the time."""
    kind = rng.randrange(1, 41)
    if rng.random() < 0.5:
        return None
    key = bytes(8) if kind == int(run.sdk.CrcType.CRC8_VARIANT) else b""
    return run.sdk.FrameUpdate(counterEnabled=True, counterStartBit=0, counterLength=8,
                               crcType=kind, crcStartBit=32, crcLength=32, crcKey=key)


@GROUP.operation(weight=10)
def send(run, rng):
    handle, frame = run.some_handle(rng), random_frame(run, rng)
    run.sdk.sendCanFrame(handle, frame)


@GROUP.operation(weight=4)
def send_fd(run, rng):
    handle, frame = run.some_handle(rng), random_frame(run, rng)
    run.sdk.sendCanFDFrame(handle, frame)


@GROUP.operation(weight=4)
def send_with_update(run, rng):
    handle, update = run.some_handle(rng), random_update(run, rng)
    frame = run.sdk.CANRawFrame(id=rng.randrange(16), data=[0] * 8)
    run.sdk.sendCanFrame(handle, frame, update=update)


@GROUP.operation()
def send_burst(run, rng):
    handle, frame = run.some_handle(rng), random_frame(run, rng)
    for _ in range(rng.randrange(100, 400)):
        run.sdk.sendCanFrame(handle, frame)


@GROUP.operation(weight=2)
def send_impossible(run, rng):
    """Frames that no bus carries and boxes that are not there: no error, nothing is sent."""
    sdk = run.sdk
    frame = rng.choice([
        sdk.CANRawFrame(id=0x800), sdk.CANRawFrame(id=0x20000000, IDE=1),
        sdk.CANRawFrame(id=1, channelId=200), sdk.CANRawFrame(id=1, data=bytes(9)),
        sdk.CANRawFrame(id=1, EDL=1, data=bytes(13)), sdk.CANRawFrame(id=1, DLC=3, data=[1]),
        sdk.CANRawFrame(id=1, EDL=1, RTR=1)])
    handle = rng.choice([run.steady, run.absent])
    sdk.sendCanFrame(handle, frame)
    return False


@GROUP.operation(weight=6)
def start_job(run, rng):
    handle, frame, update = run.some_handle(rng), random_frame(run, rng), random_update(run, rng)
    slot, cycle = rng.randrange(JOB_SLOTS), rng.choice([1, 2, 5, 10, 20, 50])
    count, fd = rng.choice([0, 0, 0, 1, 20]), rng.random() < 0.3
    start = run.sdk.startCyclicCANFDFrame if fd else run.sdk.startCyclicCanFrame
    earlier = run.jobs[slot]
    if earlier is not None:
        run.sdk.stopCyclicCanFrame(earlier)
    job = start(handle, frame, cycle, count, update=update)
    run.keep_job(slot, job)
    assert job.gid and "CANCyclicFrameHandle" in repr(job)
    return job.result


def on_job(rng, run, call):
    job = run.jobs[rng.randrange(JOB_SLOTS)]
    return call(job) if job is not None else False


@GROUP.operation(weight=3)
def pause_job(run, rng):
    return on_job(rng, run, run.sdk.pauseCyclicCanFrame)


@GROUP.operation(weight=4)
def resume_job(run, rng):
    return on_job(rng, run, run.sdk.resumeCyclicCanFrame)


@GROUP.operation(weight=4)
def update_job(run, rng):
    frame, cycle = random_frame(run, rng), rng.choice([1, 3, 10, 40])

    def update(job):
        job.ms = cycle
        return run.sdk.updateCyclicCanFrame(job, frame)
    return on_job(rng, run, update)


@GROUP.operation(weight=4)
def stop_job(run, rng):
    return on_job(rng, run, run.sdk.stopCyclicCanFrame)


@GROUP.operation()
def stop_job_twice(run, rng):
    def stop(job):
        first = run.sdk.stopCyclicCanFDFrame(job)  # a faulty box may refuse it
        again = run.sdk.stopCyclicCanFrame(job)
        assert first != 0 or again != 0, "a job that was stopped is stopped once more"
        return again
    return on_job(rng, run, stop)
