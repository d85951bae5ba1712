"""Boxes, their handles and their configuration."""
import copy

import counters
from operations import Group

GROUP = Group("devices", pause=0.03)


@GROUP.operation(weight=4)
def list_boxes(run, rng):
    handles = run.sdk.getDeviceList(run.sdk.DeviceType.All, rng.choice([0, 100, 3000]))
    macs = [handle.deviceInfo.mac for handle in handles]
    assert len(set(macs)) == len(macs), f"a box is listed twice: {macs}"
    assert run.steady.deviceInfo.mac in macs, f"the steady box is not listed: {macs}"


@GROUP.operation(weight=4)
def read_config(run, rng):
    handle = run.some_handle(rng)
    return run.sdk.getDeviceConfig(handle)


@GROUP.operation(weight=4)
def write_config(run, rng):
    handle = run.some_flaky_handle(rng)
    changes = [(rng.randrange(4), rng.choice([125_000, 250_000, 500_000, 1_000_000]),
                rng.random() < 0.8, rng.random() < 0.1) for _ in range(2)]
    baudrate = rng.choice([9600, 10400, 19200])
    if not run.sdk.getDeviceConfig(handle):
        return False
    for channel, bitrate, enabled, listen_only in changes:
        settings = handle.config.can[channel]
        settings.bitrate = bitrate
        settings.enabled = enabled
        settings.listenOnly = listen_only
    handle.config.lin[0].baudrate = baudrate
    if not run.sdk.setDeviceConfig(handle):
        return False
    kept = handle.config.can[changes[-1][0]].bitrate
    assert kept == changes[-1][1], f"bit rate {changes[-1][1]} was written, {kept} is kept"
    return True


@GROUP.operation()
def restore_config(run, rng):
    """All channels take part again, so that the traffic does not die out."""
    handle = run.some_flaky_handle(rng)
    if not run.sdk.getDeviceConfig(handle):
        return False
    for settings in handle.config.can:
        settings.enabled = True
        settings.fd = True
        settings.listenOnly = False
    for settings in handle.config.lin:
        settings.enabled = True
        settings.master = True
    return run.sdk.setDeviceConfig(handle)


@GROUP.operation()
def write_refused_config(run, rng):
    """A configuration with channels that the box does not have."""
    handle = run.some_handle(rng)
    extra = run.sdk.CanChannelConfig(channel=rng.randrange(64, 256))
    config = run.sdk.BoxConfig(can=[extra])
    assert not run.sdk.setDeviceConfig(handle, config), "a channel that is not there was written"
    return False


@GROUP.operation(weight=4)
def read_counters(run, rng):
    """In the midst of traffic they need not add up, but they only grow, and nothing is negative."""
    now = run.sdk.getCounters()
    faults = counters.impossible(now) + counters.went_backwards(run.seen_counters, now)
    run.seen_counters = now  # one actor reads them here
    assert not faults, faults
    assert len(repr(now)) > 100


@GROUP.operation(weight=3)
def names_and_texts(run, rng):
    handle = run.some_handle(rng)
    names = run.sdk.getChannelNames(handle)
    assert all(isinstance(name, str) and "." in name for name in names), names
    twin = copy.deepcopy(handle)
    assert twin == handle
    assert "DeviceHandle(mac=" in repr(twin)
    return bool(names)
