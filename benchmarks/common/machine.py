"""What a measurement ran on."""

import os
import pathlib
import platform
import re
import subprocess
import time


def facts(build):
    """Returns what belongs to figures, as label and text; read before the load begins."""
    memory = re.search(r"MemTotal:\s+(\d+)", pathlib.Path("/proc/meminfo").read_text(encoding="ascii"))
    return {
        "processor": f"{_processor()}, {os.cpu_count()} cores",
        "memory": f"{int(memory.group(1)) / 1024 / 1024:.0f} GiB",
        "kernel": f"{platform.system()} {platform.release()}",
        "load before": ", ".join(f"{load:.2f}" for load in os.getloadavg()) + " (1, 5, 15 minutes)",
        "compiler": _first_line("c++", "--version"),
        "flags": _flags(build),
        "libraries": ", ".join(f"{package} {_version(package)}" for package in (
            "libxmlrpc-epi0", "libmicrohttpd12", "libxmlrpc-core-c3", "libexpat1")),
        "Python": platform.python_version(),
    }


def processor_seconds_per_second(pid, seconds):
    """Watches how much of a core a process takes."""
    before = _processor_seconds(pid)
    time.sleep(seconds)
    return (_processor_seconds(pid) - before) / seconds


def _processor_seconds(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text(encoding="utf-8").rpartition(")")[2].split()
    return sum(map(int, fields[11:13])) / os.sysconf("SC_CLK_TCK")


def _processor():
    lines = dict(re.findall(r"(?m)^([^:\n]+):\s*(.*)$", _output("lscpu")))
    maker = lines.get("Hypervisor vendor")
    return lines.get("Model name", platform.machine()) + (f" under {maker}" if maker else "")


def _flags(build):
    cache = dict(re.findall(r"(?m)^([A-Z_]+):\w+=(.*)$", (build / "CMakeCache.txt").read_text(encoding="utf-8")))
    kind = cache.get("CMAKE_BUILD_TYPE", "")
    return f"{kind}: {cache.get('CMAKE_CXX_FLAGS_' + kind.upper(), '')}".strip()


def _version(package):
    return _output("dpkg-query", "-W", "-f", "${Version}", package) or "(not from Debian)"


def _first_line(*command):
    return _output(*command).partition("\n")[0]


def _output(*command):
    try:
        return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False).stdout
    except FileNotFoundError:
        return ""
