"""`lspping ping` and `lspping trace` from a router of the lab, over its
real sockets, against the responders of the routers down the LSP: the
egress answers a healthy LSP, the router that sees a broken one says so,
a trace reports every hop, a tree trace every branch of an ECMP split, and
a request nobody answers is reported as such."""

import json
import re
import signal
import subprocess
import unittest

import labtest

LINE = labtest.Lab("line4.topo", "ping")
DIAMOND = labtest.Lab("diamond.topo", "pingtree")

EGRESS, SWITCHED, MISMATCH = 3, 8, 10
LDP = ("ldp", "10.255.0.4/32", "--label", "1004")
SR = ("sr", "10.255.0.4/32", "--label", "16004")
SR6 = ("sr", "2001:db8:ff::4/128", "--label", "16104")
REPLY_LINE = re.compile(
    r"seq=(\d+) reply from (\S+): (\w+) \(code (\d+), subcode (\d+)\) time=\d+\.\d{3} ms"
)


def setUpModule():
    labtest.require_lab()
    LINE.up()
    DIAMOND.up()


def events(done, kind=None):
    """The --json objects of a run, those of one event when `kind` is given."""
    objects = [json.loads(line) for line in done.stdout.splitlines()]
    return [o for o in objects if kind is None or o["event"] == kind]


class PingTest(unittest.TestCase):
    def test_the_egress_answers_ldp_and_sr_lsps(self):
        for what, lsp in (("LDP", LDP), ("SR", SR), ("SR IPv6", SR6)):
            with self.subTest(what):
                done = LINE.lspping("pe1", "ping", *lsp, "-c", "3", "-i", "0.2")
                self.assertEqual(done.returncode, 0, done.stderr)
                replies = [REPLY_LINE.fullmatch(l) for l in done.stdout.splitlines()]
                replies = [m.groups() for m in replies if m]
                egress = "2001:db8:ff::4" if ":" in lsp[1] else "10.255.0.4"
                self.assertEqual(
                    replies,
                    [(str(n), egress, "repRouterEgress", "3", "1") for n in (1, 2, 3)],
                )
                self.assertIn("3 requests sent, 3 replies received, 0% loss", done.stdout)

    def test_the_hop_that_sees_a_broken_lsp_says_so(self):
        # Label 1014 still switches, but p1 bound the FEC to 1004: with TTL 1
        # the request is p1's to answer.
        done = LINE.lspping("pe1", "ping", "--json", "-c", "2", "-i", "0.2",
                            "ldp", "10.255.0.4/32", "--label", "1014/ttl=1")
        self.assertEqual(done.returncode, 1)
        replies = events(done, "reply")
        self.assertEqual([(r["from"], r["returnCode"]) for r in replies],
                         [("10.255.0.2", MISMATCH)] * 2)
        self.assertEqual(replies[0]["returnCodeName"], "labelMappingMismatch")

    def test_a_request_nobody_answers_is_no_reply(self):
        labtest.run_lab("stop", LINE.name, "pe2")
        self.addCleanup(labtest.run_lab, "restart", LINE.name, "pe2")
        done = LINE.lspping("pe1", "ping", *LDP, "-c", "2", "-i", "0.2", "-W", "0.5")
        self.assertEqual(done.returncode, 1)
        self.assertIn("seq=1 no reply\nseq=2 no reply\n", done.stdout)
        self.assertIn("2 requests sent, 0 replies received, 100% loss", done.stdout)

    def test_an_interrupt_prints_the_summary_it_earned(self):
        command = LINE.command("pe1", "ping", "--json", "-c", "0", "-i", "0.2", *LDP)
        with subprocess.Popen(command, stdout=subprocess.PIPE, text=True) as ping:
            try:
                # A loaded machine may lose or delay the first few: wait for a
                # reply among the first events rather than insist on the first.
                seen = []
                while "reply" not in seen and len(seen) < 20:
                    seen.append(json.loads(ping.stdout.readline())["event"])
                self.assertIn("reply", seen)
                ping.send_signal(signal.SIGINT)
                rest = [json.loads(line) for line in ping.stdout]
                self.assertEqual(ping.wait(timeout=30), 0)
            finally:
                if ping.poll() is None:
                    ping.kill()
        self.assertEqual(seen[0], "start")
        summary = rest[-1]
        self.assertEqual(summary["event"], "summary")
        self.assertTrue(summary["interrupted"])
        self.assertGreaterEqual(summary["received"], 1)

    def test_many_lsps_from_a_fec_file(self):
        path = LINE.work / "lsps.txt"
        path.write_text("# the healthy ones, then a stale label\n"
                        "ldp 10.255.0.4/32 --label 1004\n"
                        "sr 2001:db8:ff::4/128 --label 16104\n"
                        "ldp 10.255.0.4/32 --label 1014/ttl=1  # p1 bound 1004\n")
        done = LINE.lspping("pe1", "ping", "--fec-file", path, "-c", "1", "--json", "-q")
        self.assertEqual(done.returncode, 1, "one LSP is broken")
        summaries = {s["line"]: (s["fec"], s["received"]) for s in events(done, "summary")}
        self.assertEqual(summaries, {2: ("ldp=10.255.0.4/32", 1),
                                     3: ("sr=2001:db8:ff::4/128", 1),
                                     4: ("ldp=10.255.0.4/32", 1)})
        text = LINE.lspping("pe1", "ping", "--fec-file", path, "-c", "1")
        prefixes = {line.split(": ")[0] for line in text.stdout.splitlines()}
        self.assertEqual(prefixes, {"ldp=10.255.0.4/32 (line 2)", "sr=2001:db8:ff::4/128",
                                    "ldp=10.255.0.4/32 (line 4)"})


class TraceTest(unittest.TestCase):
    def hops(self, done):
        return [(h["ttl"], h["from"], h["returnCode"],
                 [(m["address"], [e["label"] for e in m["labels"]]) for m in h["mappings"]])
                for h in events(done, "hop")]

    def test_every_hop_with_its_downstream_mapping_then_the_egress(self):
        done = LINE.lspping("pe1", "trace", "--json", *LDP)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(self.hops(done), [
            (1, "10.255.0.2", SWITCHED, [("10.0.23.3", [2004])]),
            (2, "10.255.0.3", SWITCHED, [("10.0.34.4", [3])]),
            (3, "10.255.0.4", EGRESS, []),
        ])
        self.assertTrue(events(done, "summary")[0]["reachedEgress"])

    def test_an_ipv6_trace_reaches_the_egress(self):
        done = LINE.lspping("pe1", "trace", *SR6)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(done.stdout.endswith(
            "--- sr=2001:db8:ff::4/128 LSP trace: egress 2001:db8:ff::4 reached at TTL 3\n"))

    def test_a_broken_lsp_ends_the_trace_where_it_breaks(self):
        done = LINE.lspping("pe1", "trace", "--json", "ldp", "10.255.0.4/32", "--label", "1014")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(self.hops(done), [(1, "10.255.0.2", MISMATCH, [])])

    def test_the_tree_follows_both_branches_of_the_split(self):
        for what, lsp in (("LDP", LDP), ("SR IPv6", SR6)):
            with self.subTest(what):
                done = DIAMOND.lspping("pe1", "trace", "--multipath", "--json", *lsp)
                self.assertEqual(done.returncode, 0, done.stderr)
                paths = events(done, "path")
                # p1 sends even destinations to p2, odd ones to p3.
                by_branch = {p["hops"][1]["from"]: p for p in paths}
                v6 = ":" in lsp[1]
                p2, p3 = ("2001:db8:23::3", "2001:db8:25::5") if v6 else ("10.0.23.3", "10.0.25.5")
                self.assertEqual(set(by_branch), {p2, p3})
                last_bytes = {r: {int(d.split(".")[-1]) % 2 for d in p["destinations"]}
                              for r, p in by_branch.items()}
                self.assertEqual(last_bytes, {p2: {0}, p3: {1}})
                for path in paths:
                    self.assertEqual(path["end"], "egress")
                    self.assertEqual([h["ttl"] for h in path["hops"]], [1, 2, 3])
                summary = events(done, "summary")[0]
                self.assertEqual((summary["paths"], summary["pathsReachingEgress"]), (2, 2))


class RefusedTest(unittest.TestCase):
    def test_what_cannot_be_sent_is_one_line_and_status_2(self):
        cases = [
            ("a next hop that never answers",
             ("ping", *LDP, "--nexthop", "10.0.12.9"),
             "next hop 10.0.12.9 on e1: no MAC address"),
            ("an unknown interface", ("ping", *LDP, "-I", "e9"), "-I e9: no such interface"),
            ("no route", ("trace", "ldp", "10.99.0.4/32"), "10.99.0.4: no route"),
        ]
        for what, arguments, message in cases:
            with self.subTest(what):
                done = LINE.lspping("pe1", *arguments)
                self.assertEqual(done.returncode, 2)
                self.assertEqual(done.stderr.count("\n"), 1, done.stderr)
                self.assertIn(message, done.stderr)
                self.assertEqual(done.stdout, "")

    def test_without_the_privilege_it_says_raw_sockets_need_it(self):
        drop = ["setpriv", "--inh-caps=-net_raw", "--bounding-set=-net_raw"]
        done = subprocess.run([*drop, labtest.LSPPING, "ping", *LDP],
                              capture_output=True, text=True)
        self.assertEqual(done.returncode, 2)
        self.assertEqual(
            done.stderr,
            "lspping ping: cannot open raw sockets: Operation not permitted"
            " (raw sockets need root or CAP_NET_RAW)\n")


if __name__ == "__main__":
    unittest.main()
