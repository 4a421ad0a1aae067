"""A Slurm of its own for a test: an authentication daemon, a controller and a node, all in one folder."""

import getpass
import os
import pathlib
import secrets
import shutil
import signal
import socket
import subprocess
import tempfile
import time
import unittest

PACKAGES = "munge, slurmctld, slurmd and slurm-client"
START_S = 30
COMMAND_S = 20
REASONS = 3  # last lines of a log that say why something did not start
CPUS = 4  # that the node says it has, whatever the machine has
SEARCH = os.environ.get("PATH", "") + ":/usr/sbin:/sbin"

CONFIGURATION = """
ClusterName=test
SlurmctldHost={host}(127.0.0.1)
SlurmUser={user}
SlurmdUser={user}
AuthInfo=socket={folder}/munge.socket
SlurmctldPort={controller_port}
SlurmdPort={node_port}
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
SwitchType=switch/none
MpiDefault=none
SchedulerType=sched/builtin
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SlurmdParameters=config_overrides
ReturnToService=2
NodeName=node NodeHostname={host} NodeAddr=127.0.0.1 Port={node_port} CPUs={cpus}
PartitionName=all Nodes=node Default=YES
"""


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


class LocalSlurm:
    """Runs until stop(), or until the process that made it ends."""

    def __init__(self):
        """Starts all daemons; skips the test with the reason where that does not go."""
        missing = [name for name in ("munged", "slurmctld", "slurmd", "sbatch", "setpriv")
                   if shutil.which(name, path=SEARCH) is None]
        if missing:
            raise unittest.SkipTest(f"there is no {', '.join(missing)}; install the packages {PACKAGES}")
        self._temporary = tempfile.TemporaryDirectory(prefix="opc-slurm-")
        self._folder = pathlib.Path(self._temporary.name)
        self._daemons = {}
        self.environment = {**os.environ, "PATH": SEARCH, "SLURM_CONF": str(self._folder / "slurm.conf")}
        try:
            self._configure()
            self._start("munged", ["munged", "--foreground", "--force", f"--socket={self._folder}/munge.socket",
                                   f"--key-file={self._folder}/munge.key", f"--seed-file={self._folder}/munge.seed",
                                   f"--log-file={self._folder}/munged.log", f"--pid-file={self._folder}/munged.pid"],
                        lambda: (self._folder / "munge.socket").exists())
            self._start("slurmctld", ["slurmctld", "-D"], lambda: " UP" in self.ask("scontrol", "ping"))
            self._start("slurmd", ["slurmd", "-D", "-N", "node"],
                        lambda: self.ask("sinfo", "--noheader", "--format=%t").strip() == "idle")
        except BaseException:
            self.stop()
            raise

    def _configure(self):
        key = self._folder / "munge.key"
        key.touch(mode=0o600)
        key.write_bytes(secrets.token_bytes(64))
        for name in ("state", "spool"):
            (self._folder / name).mkdir()
        # Control groups are not used; the plugin for version 1 is the one that does not look for them all the same.
        (self._folder / "cgroup.conf").write_text("CgroupPlugin=cgroup/v1\n")
        controller_port, node_port = free_ports(2)
        (self._folder / "slurm.conf").write_text(CONFIGURATION.format(
            host=socket.gethostname().split(".")[0], user=getpass.getuser(), folder=self._folder, cpus=CPUS,
            controller_port=controller_port, node_port=node_port))

    def _start(self, name, command, is_up):
        """Starts a daemon that ends with this process, and waits until it works."""
        log = self._folder / f"{name}.txt"
        with log.open("wb") as output:
            process = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *command], env=self.environment,
                                       cwd=self._folder, stdin=subprocess.DEVNULL, stdout=output, stderr=output)
        self._daemons[name] = process
        deadline = time.monotonic() + START_S
        while process.poll() is None and time.monotonic() < deadline:
            if is_up():
                return
            time.sleep(0.1)
        lines = list(filter(None, log.read_text(errors="replace").splitlines()))[-REASONS:] or ["nothing in its log"]
        raise unittest.SkipTest(f"{name} did not start here: {' | '.join(lines)}")

    def ask(self, *command):
        """Returns what one of Slurm's commands prints; nothing when it fails."""
        try:
            return subprocess.run(command, env=self.environment, timeout=COMMAND_S, stdin=subprocess.DEVNULL,
                                  capture_output=True, text=True, check=False).stdout
        except subprocess.TimeoutExpired:
            return ""

    def logs(self):
        """Returns the ends of all daemons' logs, for messages."""
        return "\n".join(f"{path.name}: {line}" for path in sorted(self._folder.glob("*.txt"))
                         for line in path.read_text(errors="replace").splitlines()[-15:])

    def stop(self):
        """Ends the jobs, the daemons and whatever has come of them."""
        if "slurmd" in self._daemons:
            self.ask("scancel", "--full", "--signal=KILL", f"--user={getpass.getuser()}")
        for process in reversed(self._daemons.values()):
            process.kill()
            process.wait(timeout=COMMAND_S)
        for process in self._descendants():
            try:
                os.kill(process, signal.SIGKILL)
            except ProcessLookupError:
                pass
        self._temporary.cleanup()

    def _descendants(self):
        """Returns the processes that have this cluster's folder in their command line or environment."""
        found = []
        for entry in pathlib.Path("/proc").iterdir():
            if entry.name.isdigit() and int(entry.name) != os.getpid():
                try:
                    text = (entry / "cmdline").read_bytes() + (entry / "environ").read_bytes()
                except OSError:
                    continue
                if str(self._folder).encode() in text:
                    found.append(int(entry.name))
        return found
