"""Filter lists that are changed while frames flow, and databases that name frames."""
from faulty_network import FLAKY
from operations import Group

GROUP = Group("filters", pause=0.04)
CHANNELS = ["CAN1", "CAN2", "flaky-1.CAN3", "flaky-2.CAN1", "steady.CAN1", "nowhere.CAN9"]
LIN_CHANNELS = ["LIN1", "LIN2", "flaky-1.LIN1", "nowhere.LIN9"]
MOST_ENTRIES = 200


@GROUP.operation(weight=6)
def change_can_list(run, rng):
    chosen, channel = rng.choice(run.can_lists), rng.choice(CHANNELS)
    extended, direction = rng.randrange(2), rng.randrange(2)
    first, width = rng.randrange(0x700), rng.randrange(0x100)
    additions = [
        lambda: chosen.add_pass_list(first, extended, direction, channel),
        lambda: chosen.add_block_list(first, extended, direction, channel),
        lambda: chosen.add_pass_range_list(first, first + width, extended, direction, channel),
        lambda: chosen.add_block_range_list(first, first + width, extended, direction, channel),
        lambda: chosen.add_name_pass_list("Status", direction, channel),
        lambda: chosen.add_name_block_list("Nobody", direction, channel),
        lambda: chosen.add_pass_channel(channel), lambda: chosen.add_block_channel(channel)]
    return rng.choice(additions)()


@GROUP.operation(weight=3)
def change_lin_list(run, rng):
    chosen, channel = rng.choice(run.lin_lists), rng.choice(LIN_CHANNELS)
    identifier, direction = rng.randrange(64), rng.randrange(2)
    additions = [
        lambda: chosen.add_pass_list(identifier, direction, channel),
        lambda: chosen.add_block_list(identifier, direction, channel),
        lambda: chosen.add_pass_range_list(identifier, 63, direction, channel),
        lambda: chosen.add_name_block_list("Nobody", direction, channel),
        lambda: chosen.add_pass_channel(channel)]
    return rng.choice(additions)()


@GROUP.operation(weight=2)
def clear_list(run, rng):
    rng.choice(run.can_lists + run.lin_lists).clear()


@GROUP.operation(weight=2)
def read_list(run, rng):
    chosen = rng.choice(run.can_lists + run.lin_lists)
    items = chosen.pass_items + chosen.block_items
    assert "FrameFilterList(pass=" in repr(chosen)
    if len(items) > MOST_ENTRIES:
        chosen.clear()


@GROUP.operation(weight=3)
def attach_database(run, rng):
    handle, channel = run.some_flaky_handle(rng), rng.randrange(4)
    return run.sdk.attachDatabase(handle, channel, rng.choice(run.databases.names("dbc")))


@GROUP.operation()
def attach_missing_database(run, rng):
    result = run.sdk.attachDatabase(run.some_handle(rng), rng.randrange(4), "missing.dbc")
    assert result == 1, result
    return result


@GROUP.operation(weight=2)
def detach_database(run, rng):
    run.sdk.detachDatabase(run.some_flaky_handle(rng), rng.randrange(4))


@GROUP.operation()
def resolve_names(run, rng):
    """A name stands for a channel only while a box of that name is there."""
    fresh = run.sdk.CANFrameFilterList()
    box = rng.choice(list(FLAKY))
    fresh.add_pass_channel(f"{box}.CAN1")
    assert not fresh.add_pass_channel(f"{box}.CAN99")
    assert fresh.add_pass_channel("steady.CAN1")
