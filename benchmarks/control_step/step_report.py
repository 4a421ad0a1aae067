"""Turns what was measured of the control step into the Markdown that docs/performance.md holds."""

from common.markdown import table

PROFILED = ("closed loop, no log", "closed loop, both logs")
# What is called from outside the module, and what drives it.
SURROUNDINGS = ("Handler<", "CCalibrationTable_", "interpolate(", "isValid(", "void notify<", "regulate(")


def markdown(measured):
    return "\n\n".join((_machine(measured), _closed_loop(measured), _profile(measured), _states(measured),
                        _trace(measured), _logs(measured), _many(measured)))


def _machine(measured):
    settings = measured["settings"]
    facts = "; ".join(f"{label}: {text}" for label, text in measured["machine"].items())
    return (f"Measured on {settings['date']}; times are medians of {settings['repetitions']} repetitions of "
            f"{settings['seconds']:g} s each. {facts}.")


def _times(a, b):
    return f"{a / b:.2f}"


def _closed_loop(measured):
    rows = []
    times = measured["times"]
    for name, case in measured["instructions"].items():
        if "floor" not in case:
            continue
        ours, floor = times.get(name, {}).get("ns"), times.get(f"{name}, floor", {}).get("ns")
        storing = case.get("storing_floor")
        rows.append((name, f"{case['floor']:g}", f"{case['count']:g}", _times(case["count"], case["floor"]),
                     _times(case["count"], storing) if storing else "",
                     f"{floor:.1f}" if floor else "", f"{ours:.1f}" if ours else "",
                     _times(ours, floor) if ours else ""))
    head = ("a closed-loop step", "floor, instructions", "step, instructions", "× floor", "× floor that stores",
            "floor, ns", "step, ns", "× floor")
    return table(head, rows)


def _profile(measured):
    known = measured["instructions"]
    names = sorted({name for case in PROFILED for name in known[case]["functions"]},
                   key=lambda name: -known[PROFILED[-1]]["functions"].get(name, 0))
    own = [name for name in names if not name.startswith(SURROUNDINGS)]
    rows = [(f"`{name.partition('(')[0]}`", *(f"{known[case]['functions'].get(name, 0):g}" for case in PROFILED))
            for name in own]
    outside = [sum(cost for name, cost in known[case]["functions"].items() if name not in own) for case in PROFILED]
    rows.append(("what is called, and the caller's loop", *(f"{cost:g}" for cost in outside)))
    rows.append(("**in all**", *(f"{known[case]['count']:g}" for case in PROFILED)))
    return ("Where the instructions are, each function without what it calls:\n\n"
            + table(("function", *(case.removeprefix("closed loop, ") for case in PROFILED)), rows))


def _states(measured):
    times = measured["times"]
    rows = [(f"`{name}`", f"{case['count']:.0f}", f"{times[name]['ns']:.0f}")
            for name, case in measured["instructions"].items() if name.startswith("TX_")]
    return ("The states of the machine, trace off; a mean of all steps in the state from off to on and off again:\n\n"
            + table(("state", "instructions", "ns"), rows))


def _trace(measured):
    times = measured["times"]
    rows = [(name, *(f"{times[f'{line}, {name}']['ns']:.1f}" for line in ("trace line", "spdlog line")),
             _times(*(times[f"{line}, {name}"]["ns"] for line in ("trace line", "spdlog line"))))
            for name in ("disabled", "discarded")]
    return ("A line of trace with two texts and two numbers, disabled, or enabled with its output discarded:\n\n"
            + table(("line", "ours, ns", "spdlog's, ns", "× spdlog"), rows))


def _logs(measured):
    times = measured["times"]
    hows = {"module, unit's writer": "the module builds, the unit writes", "module, library's writer":
            "the module builds, the library writes", "library alone": "the library alone", "xmlrpc-c": "xmlrpc-c",
            "Python": "Python's `xmlrpc.client.dumps`"}
    rows = []
    for how, text in hows.items():
        row = [text]
        for log in ("Read of the transient log", "Read of the OPC log"):
            time = times[f"{log}, {how}"]["ns"]
            row += [f"{time / 1000:.1f}", _times(time, times[f"{log}, library alone"]["ns"])]
        rows.append(row)
    samples = [(f"`{name}`", f"{times[name]['ns']:.1f}") for name in ("addSampleToTransientLog", "writeToOpcLog")]
    return ("`Read` of both logs, 200 samples and twelve objects, from the log to the text of the response and all "
            "released again:\n\n"
            + table(("how", "transient log, µs", "× library", "OPC log, µs", "× library"), rows)
            + "\n\nWhat a step gives the logs:\n\n" + table(("operation", "ns"), samples))


def _many(measured):
    times = measured["times"]
    numbers = sorted(int(name.partition("/")[2]) for name in times if name.startswith("controllers/"))
    one = times["controllers/1"]["ns"]
    rows = []
    for number in numbers:
        ours = times[f"controllers/{number}"]
        rows.append((f"{number}", f"{ours['ns']:.1f}", _times(ours["ns"], one),
                     f"{times[f'controllers, floor/{number}']['ns']:.1f}", f"{ours['allocated_per_channel']:.0f}"))
    head = ("controllers", "a step, ns", "× one controller", "floor, ns", "memory of a channel, bytes")
    return "Controllers in one thread, each a closed-loop step in turn, without logs:\n\n" + table(head, rows)
