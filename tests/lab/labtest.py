"""What the lab tests share: bringing a lab up and down around a test
module, crafting requests, sending them from a router and reading the
replies.

The lab needs root, network namespaces and Open vSwitch; without them a
test module skips with the reason, unless LSPPING_REQUIRE_LAB=1 (set by
continuous integration) makes that a failure. The FRR lab needs FRR too;
LSPPING_REQUIRE_FRR=1 makes its absence a failure."""

import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(os.environ.get("LSPPING_SOURCE_DIR", Path(__file__).resolve().parents[2]))
LAB = SOURCE / "lab" / "lab"
TOPOLOGIES = SOURCE / "lab" / "topologies"
LSPPING = os.environ.get("LSPPING", str(SOURCE / "build" / "tools" / "lspping"))
REQUIRED = os.environ.get("LSPPING_REQUIRE_LAB") == "1"
FRR_REQUIRED = os.environ.get("LSPPING_REQUIRE_FRR") == "1"

sys.path.insert(0, str(SOURCE / "lab"))
from labkit import frames, runs  # noqa: E402

# The field names of the responder's --json events, in one place.
EVENT = "event"
EVENT_DROP = "drop"


def missing(responder):
    """Why the lab cannot run here, or None."""
    if os.geteuid() != 0:
        return "the lab needs root"
    for program in ("ip", "ovs-vswitchd", "ovsdb-server", "ethtool"):
        if shutil.which(program) is None:
            return f"{program} is not installed (iproute2, openvswitch-switch, ethtool)"
    if subprocess.run(["ip", "netns", "list"], capture_output=True).returncode != 0:
        return "ip netns is unavailable"
    if not os.access(LSPPING, os.X_OK):
        return f"no lspping program at {LSPPING}"
    if responder and "\n  responder " not in run_lspping("--help"):
        return f"{LSPPING} has no responder subcommand"
    return None


def require_lab(responder=True):
    """Skips the test (fails it under LSPPING_REQUIRE_LAB=1) when the lab,
    or the lspping responder it starts, cannot run here."""
    reason = missing(responder)
    if reason is None:
        return
    if REQUIRED:
        raise AssertionError(f"LSPPING_REQUIRE_LAB=1 but {reason}")
    raise unittest.SkipTest(reason)


def require_frr():
    """Skips the test (fails it under LSPPING_REQUIRE_FRR=1) when the lab
    or FRR cannot run here."""
    require_lab()
    for program in ("vtysh", "/usr/lib/frr/zebra", "/usr/lib/frr/ospfd", "/usr/lib/frr/ldpd"):
        if shutil.which(program) is None:
            reason = f"{program} is not installed (frr)"
            if FRR_REQUIRED:
                raise AssertionError(f"LSPPING_REQUIRE_FRR=1 but {reason}")
            raise unittest.SkipTest(reason)


def run_lab(*arguments, check=True):
    done = subprocess.run([str(LAB), *arguments], capture_output=True, text=True)
    if check and done.returncode != 0:
        command = " ".join(arguments)
        raise AssertionError(f"lab/lab {command}: status {done.returncode}: {done.stderr.strip()}")
    return done


def run_lspping(*arguments):
    done = subprocess.run([LSPPING, *arguments], capture_output=True, text=True)
    if done.returncode not in (0, 1):
        raise AssertionError(f"lspping {' '.join(arguments)}: {done.stderr.strip()}")
    return done.stdout


class Daemon:
    """A process started in a router by the test, its output in files,
    stopped by its pid."""

    def __init__(self, lab, name, router, *command):
        self.out = lab.work / f"{name}.out"
        self.err = lab.work / f"{name}.err"
        with open(self.out, "w") as out, open(self.err, "w") as err:
            # lab/lab exec becomes the program (exec), so the pid is its.
            self.process = subprocess.Popen(
                [str(LAB), "exec", lab.name, router, "--", *command],
                stdout=out, stderr=err)

    def lines(self, which="err"):
        return (self.err if which == "err" else self.out).read_text().splitlines()

    def events(self):
        return [json.loads(line) for line in self.lines("out")]

    def stop(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.process.wait(timeout=20)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        return self.process.returncode


class Lab:
    """One run of the lab, under a name no other run of these tests has."""

    def __init__(self, topology, purpose):
        self.topology = TOPOLOGIES / topology
        self.name = f"{purpose}-{os.getpid()}"
        self.dir = runs.RUNS / self.name
        self.work = Path(tempfile.mkdtemp(prefix=f"lspping-{self.name}-"))

    def up(self, *options):
        """Brings the lab up; tears it down at the module's end, even when
        bringing it up fails half-way."""
        unittest.addModuleCleanup(self.down)
        run_lab("up", str(self.topology), "--name", self.name, "--lspping", LSPPING, *options)
        return self

    def down(self):
        run_lab("down", "--name", self.name)
        shutil.rmtree(self.work, ignore_errors=True)

    def craft(self, name, *options):
        path = self.work / f"{name}.pcap"
        run_lspping("craft", *options, str(path))
        return path

    def send(self, router, interface, requests, replies=None, timeout=2.0):
        """Sends the requests' frames; returns the replies, each the reply's
        source address and its `lspping decode --json` object."""
        out = self.work / "replies.pcap"
        out.unlink(missing_ok=True)
        options = ["--out", str(out), "--timeout", str(timeout)]
        if replies is not None:
            options += ["--replies", str(replies)]
        run_lab("send", self.name, router, interface, *map(str, requests), *options, check=False)
        if not out.exists():
            return []
        sources = [frames.udp_source(frame)[1] for frame in frames.read_pcap(out)]
        decoded = map(json.loads, run_lspping("decode", "--json", str(out)).splitlines())
        return [Reply(source, d) for source, d in zip(sources, decoded)]

    def command(self, router, *arguments):
        """The command line that runs lspping with `arguments` in a router."""
        return [str(LAB), "exec", self.name, router, "--", LSPPING, *map(str, arguments)]

    def lspping(self, router, *arguments):
        """Runs lspping in a router to its end: its status, output and errors."""
        return subprocess.run(self.command(router, *arguments), capture_output=True, text=True)

    def events(self, router, kind):
        """The responder's --json events of one kind, so far."""
        path = self.dir / f"{router}.out"
        lines = path.read_text().splitlines() if path.exists() else []
        return [e for e in map(json.loads, lines) if e.get(EVENT) == kind]

    def log(self, router):
        """The lines the responder wrote to its standard error, so far."""
        return (self.dir / f"{router}.err").read_text().splitlines()

    def record(self):
        return json.loads((self.dir / "run.json").read_text())

    def exec(self, router, *command):
        """A command's standard output in a router's namespace."""
        return run_lab("exec", self.name, router, "--", *command).stdout

    def vtysh(self, router, command):
        """A `show ... json` command's document, from the router's FRR."""
        space = self.record()["frr"][router]["pathspace"]
        return json.loads(self.exec(router, "vtysh", "-N", space, "-c", command))

    def state(self, router):
        """The router's state file as the topology gives it."""
        path = self.topology.parent / self.topology.stem / f"{router}.json"
        return json.loads(path.read_text())


class Reply:
    def __init__(self, source, decoded):
        self.source = source
        self.header = decoded["header"]
        self.tlvs = decoded["tlvs"]

    @property
    def sequence(self):
        return self.header["sequenceNumber"]

    @property
    def code(self):
        return self.header["returnCode"], self.header["returnSubcode"]

    def downstream_mappings(self):
        return [t["decoded"] for t in self.tlvs if t["typeName"] == "DownstreamMapping"]
