"""The lab itself: a mistake in a topology is named in one line; `down`
removes exactly what `up` made, also after a failure half-way, and again;
a split LSP sends requests down the branch their IP destination picks."""

import itertools
import json
import os
import re
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

import labtest

DIAMOND = labtest.Lab("diamond.topo", "lab")

ROUTERS = """\
router a 10.255.0.1 state a.json
router b 10.255.0.2 state b.json
"""

LINK = "link a:e1 10.0.0.1/24 -- b:e1 10.0.0.2/24\n"

# (what, topology after ROUTERS, line, message)
MISTAKES = [
    ("unknown statement", "switch a\n", 3, "unknown statement 'switch'"),
    ("link to itself", LINK.replace("b:e1", "a:e2"), 3, "a link joins two routers"),
    ("subnets apart", LINK.replace("10.0.0.2", "10.0.1.2"), 3, "not in one subnet"),
    (
        "unlinked interface",
        "lsp x ldp=10.9.9.9/32\n  hop a in 100 pop out e1\n",
        4,
        "router a has no interface 'e1'",
    ),
    ("hop before its lsp", LINK + "hop a in 100 pop out e1\n", 4, "write the lsp line first"),
    (
        "a label twice without a split",
        LINK + "lsp x ldp=10.9.9.9/32\n  hop a in 100 pop out e1\n  hop a in 100 swap 200 out e1\n",
        6,
        "each needs a dst to split the LSP",
    ),
]


class TopologyMistakesTest(unittest.TestCase):
    def test_a_mistake_is_one_line_naming_the_file_and_line(self):
        with tempfile.TemporaryDirectory() as directory:
            for what, text, line, message in MISTAKES:
                with self.subTest(what):
                    path = Path(directory) / "bad.topo"
                    path.write_text(ROUTERS + text)
                    done = labtest.run_lab("show", str(path), check=False)
                    self.assertEqual(done.returncode, 2)
                    self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
                    self.assertIn(f"{path}:{line}: ", done.stderr)
                    self.assertIn(message, done.stderr)


def leftovers(run_id, run_dir):
    """What of a run still exists: namespaces, processes, its directory."""
    runs = labtest.runs
    found = [n for n in runs.namespaces() if n == f"lab-{run_id}" or n.startswith(f"lab-{run_id}-")]
    for pid in map(int, filter(str.isdigit, os.listdir("/proc"))):
        if runs.process_ours(pid, str(run_dir)) and runs.process_alive(pid):
            found.append(f"process {pid}")
    if run_dir.exists():
        found.append(str(run_dir))
    return found


def orphan_namespaces():
    """Lab namespaces of no recorded run."""
    ids = {json.loads(p.read_text())["id"] for p in labtest.runs.RUNS.glob("*/run.json")}
    pattern = re.compile(r"lab-([0-9a-f]{4})(-|$)")
    return [
        name
        for name in labtest.runs.namespaces()
        if pattern.match(name) and pattern.match(name)[1] not in ids
    ]


class LifecycleTest(unittest.TestCase):
    runs = itertools.count(1)

    def setUp(self):
        labtest.require_lab(responder=False)
        self.lab = labtest.Lab("line4.topo", f"life{next(self.runs)}")
        self.addCleanup(self.lab.down)

    def run_id(self):
        return json.loads((self.lab.dir / "run.json").read_text())["id"]

    def test_down_removes_everything_up_made_and_can_be_repeated(self):
        self.lab.up("--no-responders")
        run_id = self.run_id()
        # 5 namespaces, 2 daemons of the switch, the run's directory.
        self.assertEqual(len(leftovers(run_id, self.lab.dir)), 5 + 2 + 1)
        labtest.run_lab("down", "--name", self.lab.name)
        self.assertEqual(leftovers(run_id, self.lab.dir), [])
        labtest.run_lab("down", "--name", self.lab.name)

    def test_down_after_parts_vanished(self):
        self.lab.up("--no-responders")
        run_id = self.run_id()
        record = json.loads((self.lab.dir / "run.json").read_text())
        os.kill(record["ovs"]["ovs-vswitchd"], signal.SIGKILL)
        subprocess.run(["ip", "netns", "delete", f"lab-{run_id}-p1"], check=True)
        labtest.run_lab("down", "--name", self.lab.name)
        self.assertEqual(leftovers(run_id, self.lab.dir), [])

    def test_down_after_up_was_killed_half_way(self):
        up = subprocess.Popen(
            [labtest.LAB, "up", self.lab.topology, "--name", self.lab.name, "--no-responders"],
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        record = self.lab.dir / "run.json"

        def making_namespaces():
            return record.exists() and json.loads(record.read_text())["namespaces"]

        started = labtest.runs.wait_until(making_namespaces, 10)
        up.kill()
        up.wait()
        self.assertTrue(started)
        run_id = self.run_id()
        labtest.run_lab("down", "--name", self.lab.name)
        self.assertEqual(leftovers(run_id, self.lab.dir), [])

    def test_a_failed_up_says_what_failed_and_leaves_nothing(self):
        up = ("up", str(self.lab.topology), "--name", self.lab.name, "--lspping", "/bin/false")
        done = labtest.run_lab(*up, check=False)
        self.assertEqual(done.returncode, 2)
        self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
        self.assertIn("responder of pe1", done.stderr)
        self.assertFalse(self.lab.dir.exists())
        self.assertEqual(orphan_namespaces(), [])


class SplitTest(unittest.TestCase):
    LDP = ("--src", "10.255.0.1", "--fec", "ldp=10.255.0.4/32", "--label", "1004/ttl=2")
    SR6 = ("--src", "2001:db8:ff::1", "--fec", "sr=2001:db8:ff::4/128", "--label", "16104/ttl=2")
    # (the request, its destination, the transit of the branch it takes,
    # which replies from its interface towards pe1)
    CASES = [
        (LDP, "127.0.0.2", "10.0.23.3"),
        (LDP, "127.0.0.3", "10.0.25.5"),
        (SR6, "::ffff:127.0.0.2", "2001:db8:23::3"),
        (SR6, "::ffff:127.0.0.3", "2001:db8:25::5"),
    ]

    @classmethod
    def setUpClass(cls):
        labtest.require_lab()
        DIAMOND.up()

    def test_the_inner_destination_picks_the_branch(self):
        requests = [
            DIAMOND.craft(f"split{n}", *request, "--dst", dst, "--sequence", str(n))
            for n, (request, dst, _) in enumerate(self.CASES, 1)
        ]
        replies = {r.sequence: r.source for r in DIAMOND.send("pe1", "e1", requests)}
        self.assertEqual(replies, {n: case[-1] for n, case in enumerate(self.CASES, 1)})


if __name__ == "__main__":
    unittest.main()
