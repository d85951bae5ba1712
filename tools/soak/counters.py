"""The counters of all hand-overs: what came in went out, is held or was dropped, and what one
hand-over gave away the next one got."""

MOST_FRAMES = 10**10
LONGEST_BACKLOG_US = 600_000_000
MOST_LOAD = 100_000  # percent; virtual buses without a bit rate carry more than real ones

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


def impossible(counters):
    """Figures that no traffic explains, such as a difference that went below 0."""
    steps = [getattr(counters, name) for name in ROAD]
    steps += [getattr(device, name) for device in counters.devices for name in ROAD[:2]]
    faults = [f"{step}" for step in steps
              if max(step.received, step.delivered, step.held, step.dropped) > MOST_FRAMES]
    if not 0 <= counters.backlogAgeUs < LONGEST_BACKLOG_US:
        faults.append(f"backlogAgeUs={counters.backlogAgeUs}")
    faults += [f"{channel}" for device in counters.devices for channel in device.channels
               if not 0 <= channel.busLoad < MOST_LOAD]
    return faults


def went_backwards(before, now):
    """Counters that only grow, and did not."""
    if before is None:
        return []
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
