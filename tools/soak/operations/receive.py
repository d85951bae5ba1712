"""Subscriptions of every kind, with every kind of callable."""
from callables import Counting, random_callable
from operations import Group

GROUP = Group("receive", pause=0.04)
SOME_IDS = list(range(0x10)) + [0x100, 0x101, 0x18DAF110]


@GROUP.operation(weight=8)
def subscribe_can(run, rng):
    handle, call = run.some_handle(rng), random_callable(run, rng)
    return run.sdk.subscribeCanFrame(handle, call)


@GROUP.operation(weight=4)
def subscribe_can_filtered(run, rng):
    handle, call = run.some_flaky_handle(rng), random_callable(run, rng)
    return run.sdk.subscribeCanFrame(handle, call, filter=rng.choice(run.can_lists))


@GROUP.operation(weight=4)
def subscribe_lin(run, rng):
    handle, call = run.some_handle(rng), random_callable(run, rng)
    chosen = rng.choice(run.lin_lists + [None])
    return run.sdk.subscribeLinFrame(handle, call, filter=chosen)


@GROUP.operation(weight=5)
def subscribe_lists(run, rng):
    handle, call = run.some_handle(rng), random_callable(run, rng) or Counting(run)
    limits = {"maxFrames": rng.choice([1, 10, 1000, 100000]),
              "maxDelayMs": rng.choice([0, 5, 50, 500])}
    if rng.random() < 0.5:
        return run.sdk.subscribeCanFrames(handle, call, filter=rng.choice(run.can_lists), **limits)
    return run.sdk.subscribeLinFrames(handle, call, **limits)


@GROUP.operation(weight=2)
def unsubscribe_lists(run, rng):
    handle = run.some_handle(rng)
    stop = rng.choice([run.sdk.unsubscribeCanFrames, run.sdk.unsubscribeLinFrames])
    return stop(handle)


@GROUP.operation(weight=3)
def subscribe_ethernet(run, rng):
    handle, call = run.some_flaky_handle(rng), random_callable(run, rng)
    return run.sdk.subscribeEthFrame(handle, call)


@GROUP.operation(weight=5)
def subscribe_by_id(run, rng):
    identifier, call = rng.choice(SOME_IDS), random_callable(run, rng)
    run.sdk.subscribeCanFrameById(identifier, call)


@GROUP.operation(weight=4)
def unsubscribe_by_id(run, rng):
    identifier = rng.choice(SOME_IDS)
    run.sdk.unsubscribeCanFrameById(identifier)


@GROUP.operation(weight=2)
def count_by_id(run, rng):
    assert run.sdk.getCanFrameCountById(rng.choice(SOME_IDS)) >= 0


@GROUP.operation(weight=3)
def unsubscribe(run, rng):
    handle = run.some_flaky_handle(rng)
    stop = rng.choice([run.sdk.unsubscribeCanFrame, run.sdk.unsubscribeLinFrame,
                       run.sdk.unsubscribeEthFrame])
    return stop(handle)


@GROUP.operation(weight=2)
def subscribe_absent(run, rng):
    subscribe = rng.choice([run.sdk.subscribeCanFrame, run.sdk.subscribeLinFrame,
                            run.sdk.subscribeEthFrame])
    assert not subscribe(run.absent, random_callable(run, rng)), "a box that is not there is traced"
    return False
