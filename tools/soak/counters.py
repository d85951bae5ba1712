"""The counters of all hand-overs: what came in went out, is held or was dropped, and what one
hand-over gave away the next one got."""

ROAD = ["library", "readers", "resort", "dispatch", "delivery"]


def unbalanced(counters):
    """Texts about hand-overs that do not add up at a quiet moment."""
    faults = []
    steps = [(name, getattr(counters, name)) for name in ROAD]
    for device in counters.devices:
        steps += [(f"{device.name}.{name}", getattr(device, name)) for name in ROAD[:2]]
    for name, step in steps:
        if step.received != step.delivered + step.held + step.dropped:
            faults.append(f"{name}: {step}")
    for (name, step), (next_name, next_step) in zip(steps, steps[1:len(ROAD)]):
        if step.delivered != next_step.received:
            faults.append(f"{name} delivered {step.delivered}, {next_name} received "
                          f"{next_step.received}")
    return faults


def is_quiet(before, now):
    """Nothing has moved between two looks, and nothing is held."""
    same = all(getattr(before, name).received == getattr(now, name).received for name in ROAD)
    return same and all(getattr(now, name).held == 0 for name in ROAD)


def went_backwards(before, now):
    """Counters that only grow, and did not."""
    faults = []
    for name in ROAD:
        for field in ("received", "delivered", "dropped"):
            old, new = getattr(getattr(before, name), field), getattr(getattr(now, name), field)
            if new < old:
                faults.append(f"{name}.{field} fell from {old} to {new}")
    for field in ("calls", "callbackErrors"):
        if getattr(now, field) < getattr(before, field):
            faults.append(f"{field} fell")
    return faults
