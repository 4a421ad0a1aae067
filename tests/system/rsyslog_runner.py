"""Starts Debian's rsyslogd beside the program, at a /dev/log that only the two of them see."""

import collections
import os
import pathlib
import shutil
import subprocess
import time
import unittest

from unit_runner import TIMEOUT_S, UnitTestCase

LOGGER = shutil.which("rsyslogd", path=os.environ.get("PATH", "") + ":/usr/sbin:/sbin")

# Puts a folder in the place of /dev, with the devices that programs want and without a system logger's socket.
OWN_DEV = """
mkdir "$1" && mount -t tmpfs -o mode=755 tmpfs "$1" || exit
for device in null zero full urandom random tty ptmx; do
  test -e /dev/$device || continue
  : > "$1/$device" && mount --bind /dev/$device "$1/$device" || exit
done
for folder in shm pts; do
  test -d /dev/$folder || continue
  mkdir "$1/$folder" && mount --rbind /dev/$folder "$1/$folder" || exit
done
mount --rbind "$1" /dev && echo ready && exec sleep infinity
"""

CONFIGURATION = """
global(workDirectory="{folder}" maxMessageSize="8k")
main_queue(queue.workerThreads="1")
module(load="imuxsock" SysSock.Name="/dev/log" SysSock.RateLimit.Interval="0")
template(name="line" type="string"
         string="%syslogfacility-text%.%syslogseverity-text% %app-name% %procid%%msg%\\n")
action(type="omfile" file="{log}" template="line")
"""

LogLine = collections.namedtuple("LogLine", "priority identity pid text")


class RsyslogCase(UnitTestCase):
    """Runs the program where there is no system logger until a test starts one."""

    def setUp(self):
        super().setUp()
        if LOGGER is None:
            raise unittest.SkipTest("there is no rsyslogd; install the package rsyslog")
        self._log = self.folder.parent / "system.log"
        self._logger = None
        self._entry = self._enter_own_dev()
        self.addCleanup(self.kill_logger)

    def _enter_own_dev(self):
        """Returns what to put before a command for it to run where /dev is the test's own."""
        troubles = []
        for number, (unshare, nsenter) in enumerate(((["unshare", "-m"], ["nsenter", "-m"]),
                                                     (["unshare", "-r", "-m"],
                                                      ["nsenter", "-U", "--preserve-credentials", "-m"]))):
            holder = subprocess.Popen([*unshare, "sh", "-c", OWN_DEV, "sh", str(self.folder.parent / f"dev{number}")],
                                      stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
            self.addCleanup(holder.communicate)
            self.addCleanup(holder.kill)
            if holder.stdout.readline() == "ready\n":
                return [*nsenter, "-t", str(holder.pid)]
            troubles.append(holder.stderr.readline().strip())
        if os.path.lexists("/dev/log") or not os.access("/dev", os.W_OK):
            raise unittest.SkipTest(f"no place for a /dev/log of the test's own: {'; '.join(troubles)}; and the "
                                    "machine's /dev has one or cannot be written")
        self.addCleanup(pathlib.Path("/dev/log").unlink, missing_ok=True)
        return []

    def command(self, *arguments):
        return [*self._entry, *super().command(*arguments)]

    def start_unit(self, *arguments):
        """Starts `opc run` and returns the process; its number is the one in the log."""
        process = subprocess.Popen(self.command("run", self.unit_file, *arguments), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.kill)
        return process

    def finish_unit(self, process):
        """Waits for a unit's end and returns it as run_unit() does."""
        output, errors = process.communicate(timeout=TIMEOUT_S)
        result = subprocess.CompletedProcess(process.args, process.returncode, output, errors)
        self.assert_well(result)
        return result

    def start_logger(self):
        configuration = self.folder.parent / "rsyslog.conf"
        configuration.write_text(CONFIGURATION.format(folder=self.folder.parent, log=self._log))
        pid_file = self.folder.parent / "rsyslogd.pid"
        pid_file.unlink(missing_ok=True)
        trouble = self.folder.parent / "rsyslogd.txt"
        with trouble.open("w") as output:
            self._logger = subprocess.Popen([*self._entry, LOGGER, "-n", "-f", str(configuration), "-i", str(pid_file)],
                                            stdin=subprocess.DEVNULL, stdout=output, stderr=output)
        probe = "import socket; socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM).connect('/dev/log')"
        self.wait_for(lambda: subprocess.run([*self._entry, "python3", "-c", probe], check=False,
                                             stderr=subprocess.DEVNULL).returncode == 0,
                      lambda: "rsyslogd does not listen: " + trouble.read_text())

    def signal_logger(self, number):
        self._logger.send_signal(number)

    def kill_logger(self):
        """Ends the logger at once, as a crash does; what it has written stays."""
        if self._logger is not None:
            self._logger.kill()
            self._logger.wait(timeout=TIMEOUT_S)
            self._logger = None

    def log_of(self, process):
        """Returns the lines that the logger has written so far for a process."""
        lines = []
        for line in self._log.read_text().splitlines() if self._log.exists() else []:
            priority, identity, pid, text = line.split(" ", 3)
            if pid == str(process.pid):
                lines.append(LogLine(priority, identity, process.pid, text))
        return lines

    def wait_for_log(self, process, count):
        """Waits until a process has so many lines in the log, and returns them."""
        self.wait_for(lambda: len(self.log_of(process)) >= count, lambda: f"in the log: {self.log_of(process)}")
        return self.log_of(process)

    def wait_for(self, condition, trouble):
        end = time.monotonic() + 20
        while not condition():
            if time.monotonic() >= end:
                self.fail(trouble())
            time.sleep(0.02)
