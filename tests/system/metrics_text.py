"""Reads what a unit serves to Prometheus."""

import re
import urllib.request

from unit_runner import TIMEOUT_S

VALUE = re.compile(r"(\w+)(?:\{(.*)\})? (\S+)")
LABEL = re.compile(r'(\w+)="((?:[^"\\]|\\.)*)"')


def scrape(url, headers=None):
    """Returns the text of a unit's metrics."""
    request = urllib.request.Request(url + "/metrics", headers=headers or {})
    with urllib.request.urlopen(request, timeout=TIMEOUT_S) as answer:
        return answer.read().decode()


class Metrics:
    """A scrape's values by name and labels."""

    def __init__(self, url):
        self._values = {}
        for line in scrape(url).splitlines():
            if not line.startswith("#"):
                name, labels, value = VALUE.fullmatch(line).groups()
                self._values[name, frozenset(LABEL.findall(labels or ""))] = float(value)

    def get(self, name, **labels):
        """Returns a value, or None where there is none."""
        return self._values.get((name, frozenset((label, str(value)) for label, value in labels.items())))

    def labels_of(self, name):
        """Returns the labels of each value of a name."""
        return [dict(labels) for found, labels in self._values if found == name]
