"""LIN schedule tables."""
from operations import Group

GROUP = Group("lin", pause=0.08)


def random_table(run, rng):
    table = run.sdk.LinScheduleTable(channel_id=rng.randrange(2), name="soak")
    for _ in range(rng.randrange(1, 8)):
        table.add_slot(run.sdk.ScheduleTableSlot(
            id=rng.choice([0x10, 0x11, 49, 0x3C]), time_interval=rng.choice([5, 10, 20]),
            msg_type=rng.choice([3, 4]), check_type=rng.randrange(2), data=rng.randbytes(8)))
    return table


@GROUP.operation(weight=5)
def start_table(run, rng):
    handle, table = run.some_handle(rng), random_table(run, rng)
    return run.sdk.startLinScheduleTable(handle, table)


@GROUP.operation(weight=3)
def stop_table(run, rng):
    handle, channel = run.some_handle(rng), rng.randrange(2)
    run.sdk.stopLinScheduleTable(handle, channel)


@GROUP.operation()
def start_impossible_table(run, rng):
    """Slots and channels that no box runs."""
    sdk = run.sdk
    table = sdk.LinScheduleTable(channel_id=rng.choice([-1, 0, 200]))
    if rng.random() < 0.7:
        table.add_slot(sdk.ScheduleTableSlot(id=rng.choice([-1, 64, 1000]), time_interval=0))
    result = sdk.startLinScheduleTable(run.some_handle(rng), table)
    assert result != 0, f"{table} was started"
    return result
