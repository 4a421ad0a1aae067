"""What a process uses over time, and whether that grows."""

import csv
import dataclasses
import os
import pathlib
import re
import statistics
import time

WARM_UP_SHARE = 0.25  # of a run, at least
LEAST_SAMPLES = 8  # after the warm-up, to be judged at all

# What a figure may grow by after the warm-up: what the allocator and the kernel move it by when nothing leaks.
ALLOWED = {"rss_kib": 8 * 1024, "anon_kib": 8 * 1024, "descriptors": 2, "threads": 2}


@dataclasses.dataclass
class Growth:
    """How a figure moved after the warm-up."""

    name: str
    before: float  # level in the first third after the warm-up
    after: float  # level in the last third
    slope_per_hour: float
    allowed: float

    @property
    def grows(self):
        """A leak does both: the level rises, and the trend through all samples leads there."""
        return self.after - self.before > self.allowed and self.slope_per_hour > 0

    def line(self):
        return (f"{self.name:<12} {self.before:>10.0f} -> {self.after:>10.0f}   trend {self.slope_per_hour:>+12.1f} per hour"
                f"   allowed +{self.allowed:.0f}   {'GROWS' if self.grows else 'steady'}")


def usage_of(pid):
    """Returns what a process uses; raises OSError when it is gone."""
    folder = pathlib.Path(f"/proc/{pid}")
    status = (folder / "status").read_text()

    def field(name):
        found = re.search(rf"^{name}:\s+(\d+)", status, flags=re.MULTILINE)
        if not found:
            raise ProcessLookupError(f"process {pid} has ended")
        return int(found.group(1))

    return {"rss_kib": field("VmRSS"), "anon_kib": field("RssAnon"), "data_kib": field("VmData"),
            "threads": field("Threads"), "descriptors": len(os.listdir(folder / "fd"))}


def slope_of(points):
    """The median of the slopes between samples far apart (Theil and Sen): single samples do not move it."""
    half = len(points) // 2
    slopes = [(later[1] - earlier[1]) / (later[0] - earlier[0])
              for earlier, later in zip(points[:half], points[-half:]) if later[0] > earlier[0]]
    return statistics.median(slopes) if slopes else 0.0


class Watch:
    """Samples of one process."""

    def __init__(self, pid):
        self.pid = pid
        self.rows = []
        self._begin = time.monotonic()

    def sample(self, **more):
        """Takes a sample, with further figures in it. Returns False when the process has ended."""
        try:
            usage = usage_of(self.pid)
        except OSError:
            return False
        self.rows.append({"time_s": round(time.monotonic() - self._begin, 3), **usage, **more})
        return True

    def growths(self, warm_up_s=0.0, allowed=None):
        """Returns how each judged figure moved after the warm-up; nothing when there are too few samples."""
        if not self.rows:
            return []
        begin = max(warm_up_s, WARM_UP_SHARE * self.rows[-1]["time_s"])
        rows = [row for row in self.rows if row["time_s"] >= begin]
        if len(rows) < LEAST_SAMPLES:
            return []
        third = len(rows) // 3
        found = []
        for name, limit in {**ALLOWED, **(allowed or {})}.items():
            points = [(row["time_s"], row[name]) for row in rows]
            # What clients use comes and goes; what stays is the least of it.
            level = min if name in ("descriptors", "threads") else statistics.median
            found.append(Growth(name, level(value for _, value in points[:third]),
                                level(value for _, value in points[-third:]), 3600.0 * slope_of(points), limit))
        return found

    def write(self, file):
        """Writes all samples as CSV."""
        names = list(dict.fromkeys(name for row in self.rows for name in row))
        with open(file, "w", newline="", encoding="utf-8") as out:
            writer = csv.DictWriter(out, names)
            writer.writeheader()
            writer.writerows(self.rows)
