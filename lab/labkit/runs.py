"""A run of the lab: its name, short id and record, the names of what it
creates, and the processes it starts and stops."""

import json
import os
import random
import re
import signal
import subprocess
import time
from pathlib import Path

from labkit import LabError

RUNS = Path(os.environ.get("LSPPING_LAB_RUNS", "/run/lspping-lab"))
RUN_NAME = re.compile(r"[a-z0-9][a-z0-9_-]{0,23}\Z")
STOP_SECONDS = 5.0


def execute(command, what, stdin=None, env=None):
    """Runs a command to its end; its failure is a LabError naming `what`
    and ending with the command's last line of error."""
    try:
        done = subprocess.run(
            command, input=stdin, env=env, text=True, capture_output=True
        )
    except OSError as e:
        raise LabError(f"{what}: {command[0]}: {e.strerror}")
    if done.returncode != 0:
        lines = (done.stderr or done.stdout).strip().splitlines()
        raise LabError(f"{what}: {lines[-1] if lines else f'exit status {done.returncode}'}")
    return done.stdout


def in_namespace(namespace, command):
    return ["ip", "netns", "exec", namespace, *command]


def namespaces():
    return set(os.listdir("/run/netns")) if os.path.isdir("/run/netns") else set()


def wait_until(condition, seconds):
    """Polls `condition`, more and more slowly, until it holds (True) or
    `seconds` have passed (False)."""
    end = time.monotonic() + seconds
    delay = 0.005
    while not condition():
        if time.monotonic() >= end:
            return False
        time.sleep(delay)
        delay = min(delay * 2, 0.1)
    return True


def process_alive(pid):
    try:
        stat = Path(f"/proc/{pid}/stat").read_text()
    except OSError:
        return False
    return stat.rsplit(")", 1)[1].split()[0] not in ("Z", "X")


def process_ours(pid, mark):
    """Whether `pid` runs with `mark` (a path of the run) on its command
    line: a recorded pid that the system has since given to another
    program is left alone."""
    try:
        return mark in Path(f"/proc/{pid}/cmdline").read_bytes().decode(errors="replace")
    except OSError:
        return False


def stop_processes(processes):
    """Stops our processes, given as (pid, mark): SIGTERM to all of them,
    then SIGKILL to those that linger."""
    left = [pid for pid, mark in processes if pid and process_ours(pid, mark)]
    for sig in (signal.SIGTERM, signal.SIGKILL):
        for pid in left:
            try:
                os.kill(pid, sig)
            except ProcessLookupError:
                pass
        wait_until(lambda: not any(map(process_alive, left)), STOP_SECONDS)
        left = [pid for pid in left if process_alive(pid)]


class Run:
    """What one `lab up` creates, written in RUNS/NAME/run.json before it
    is created, so that `down` finds it even after a crash half-way."""

    def __init__(self, name):
        if not RUN_NAME.match(name):
            raise LabError(f"'{name}' is no run name (a-z, 0-9, - and _, 24 at most)")
        self.name = name
        self.dir = RUNS / name
        self.record_path = self.dir / "run.json"
        self.record = {}

    @staticmethod
    def names():
        if not RUNS.is_dir():
            return []
        names = (path.parent.name for path in RUNS.glob("*/run.json"))
        return sorted(name for name in names if RUN_NAME.match(name))

    def exists(self):
        return self.record_path.exists()

    def load(self):
        if not self.exists():
            raise LabError(f"no run '{self.name}' (lab/lab status lists the runs)")
        self.record = json.loads(self.record_path.read_text())
        return self

    def save(self):
        temporary = self.record_path.with_suffix(".tmp")
        temporary.write_text(json.dumps(self.record, indent=1))
        temporary.rename(self.record_path)

    def create(self, topology, lspping):
        """Makes the run's directory and record, with an id no other
        recorded run has."""
        taken = {Run(name).load().id for name in Run.names()}
        run_id = f"{random.randrange(0x10000):04x}"
        while run_id in taken:
            run_id = f"{random.randrange(0x10000):04x}"
        self.dir.mkdir(parents=True)
        for part in ("state", "ovs"):
            (self.dir / part).mkdir()
        self.record = {
            "name": self.name,
            "id": run_id,
            "topology": str(topology.path),
            "lspping": lspping,
            "namespaces": [],
            "ovs": {},
            "responders": {},
            "frr": {},
            "ldp": {},
            "breaks": {},
        }
        self.save()

    def remember(self, section, key, value):
        self.record[section][key] = value
        self.save()

    @property
    def id(self):
        return self.record["id"]

    # Names: everything that lives outside the run's own namespaces
    # carries the run's id; interfaces inside a router's namespace keep
    # the topology's names, which its state file refers to.

    def router_namespace(self, router):
        return f"lab-{self.id}-{router}"

    def switch_namespace(self):
        return f"lab-{self.id}"

    def bridge(self, router):
        name = f"{self.id}-{router.name}"
        return name if len(name) <= 15 else f"{self.id}b{router.index}"

    def own_port(self, interface):
        return f"{self.id}o{interface.index}"

    def neighbour_port(self, interface):
        return f"{self.id}n{interface.index}"

    def state_file(self, router):
        return self.dir / "state" / f"{router}.json"

    def log(self, router, stream):
        return self.dir / f"{router}.{stream}"
