"""Turns what was measured into the Markdown that docs/performance.md holds."""

from common.markdown import table

MS = 1000.0  # microseconds

SERVERS = {
    "unit": "`opc run`, two channels regulating",
    "abyss": "xmlrpc-c's Abyss",
    "python": "Python's `xmlrpc.server`",
}


def markdown(measured):
    return "\n\n".join((_machine(measured), _comparison(measured), _regulation(measured), _parts(measured),
                        _small_calls(measured)))


def _load(measured, server, connections, call=None):
    return next(load for load in measured["loads"] if load["server"] == server and load["connections"] == connections
                and (load["call"] == call or call is None))


def _machine(measured):
    settings = measured["settings"]
    facts = "; ".join(f"{label}: {text}" for label, text in measured["machine"].items())
    return (f"Measured on {settings['date']}, medians of {settings['rounds']} rounds of {settings['seconds']:g} s "
            f"after {settings['warm_up']:g} s of warm-up. {facts}.")


def _comparison(measured):
    rows = []
    starving = set()
    for server, name in SERVERS.items():
        for connections in (1, 4):
            load = _load(measured, server, connections)
            if load["starved"]:
                starving.add(f"{name} answers {load['starved']:g} of {connections} connections only when another one "
                             "closes; its latencies are those of the others.")
            rows.append((name, connections, f"{load['requests_per_s']:.0f}", f"{load['server_cpu_us']:.0f}",
                         f"{load['p50_us'] / MS:.2f}", f"{load['p99_us'] / MS:.2f}", f"{load['max_us'] / MS:.1f}",
                         f"{load['client_cpu_us']:.0f}", f"{load['body_bytes']:.0f}"))
    head = ("server", "connections", "requests/s", "server's CPU per request, µs", "p50, ms", "p99, ms", "max, ms",
            "client's CPU per request, µs", "bytes of an answer")
    idle = measured["unit_idle_cpu_per_s"]
    notes = [f"Without load the unit takes {100 * idle:.1f} % of a core for its two channels; that is in its CPU per "
             "request.", *sorted(starving)]
    return table(head, rows) + "\n\n" + " ".join(notes)


def _regulation(measured):
    rows = []
    for moment, name in (("idle", "without load"), ("1", "after 1 connection"), ("4", "after 4 connections")):
        states = [states[moment] for states in measured["unit_status"]]
        rows.append((name, *(f"{max(state[member] for state in states):.0f}" for member in (
            "Commands", "Overruns", "LatenessMaxUs", "LongestCommandUs"))))
    head = ("the unit since its start", "commands", "overruns", "greatest lateness, µs", "longest command, µs")
    return "The regulation meanwhile, the worst of the rounds:\n\n" + table(head, rows)


def _parts(measured):
    parts = measured["parts_us"]
    load = _load(measured, "unit", 1)
    regulation = measured["unit_idle_cpu_per_s"] / load["requests_per_s"] * 1e6
    in_service = ("guardAndParse", "buildValue", "write", "freeValue")
    total = load["server_cpu_us"]
    costs = (
        ("checking the call", parts["guard"]),
        ("parsing it", parts["guardAndParse"] - parts["guard"]),
        ("the module's handler builds the value", parts["buildValue"]),
        ("writing the response", parts["write"]),
        ("releasing the value", parts["freeValue"]),
        ("what the parts cost only together (the allocator's merging), and the rest",
         parts["wholeCall"] - sum(parts[part] for part in in_service)),
        ("**the call without HTTP**", parts["wholeCall"]),
        ("regulation of the two channels meanwhile", regulation),
        ("HTTP, hand-over to the regulation thread and back", total - parts["wholeCall"] - regulation),
        ("**a request in all**", total),
    )
    rows = [(name, f"{cost:.1f}", f"{100 * cost / total:.0f} %") for name, cost in costs]
    return ("Where the unit's CPU time goes, one connection:\n\n" + table(("part", "µs", "share"), rows)
            + f"\n\nThe library's own serialiser would take {parts['writeByLibrary']:.0f} µs in the place of the "
              f"{parts['write']:.0f} µs of writing ({parts['bytes']:.0f} bytes).")


def _small_calls(measured):
    names = {"system.listMethods": "answered by the connection's thread",
             "Unit.Faults": "answered between two steps of the regulation"}
    rows = []
    for call, name in names.items():
        load = _load(measured, "unit", 1, call)
        rows.append((f"`{call}`", name, f"{load['requests_per_s']:.0f}", f"{load['server_cpu_us']:.0f}",
                     f"{load['p50_us']:.0f}", f"{load['p99_us']:.0f}", f"{load['body_bytes']:.0f}"))
    head = ("call", "", "requests/s", "unit's CPU per request, µs", "p50, µs", "p99, µs", "bytes of an answer")
    return "Calls with small answers, one connection, which tell HTTP and hand-over apart:\n\n" + table(head, rows, 2)
