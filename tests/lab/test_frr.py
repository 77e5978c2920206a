"""The FRR lab, r1 - r2 - r3, whose labels LDP chose: each responder
answers from what FRR reports, the switch does what LDP chose, ping and
trace find their labels in FRR, `lab break` makes a broken LSP, and the
responders and a monitor follow LDP when its labels change, without a
restart."""

import json
import time
import unittest

import labtest

LAB = labtest.Lab("frr3.topo", "frr")
R3 = "10.0.0.3/32"
LOOPBACK = {"r1": "10.0.0.1", "r2": "10.0.0.2", "r3": "10.0.0.3"}
EGRESS, SWITCHED, NO_MAPPING, MISMATCH = 3, 8, 4, 10
NULLS = {"imp-null": 3, "exp-null": 0}


def setUpModule():
    labtest.require_frr()
    LAB.up()


def label(text):
    return NULLS[text] if text in NULLS else int(text)


def bindings(router):
    return LAB.vtysh(router, "show mpls ldp binding json")["bindings"]


def local_labels(router):
    """{FEC: local label} as LDP reports them."""
    return {b["prefix"]: label(b["localLabel"]) for b in bindings(router) if b["localLabel"] != "-"}


def remote_label(router, fec, neighbour):
    """The in-use label the neighbour advertised for the FEC, or None."""
    for b in bindings(router):
        if (b["prefix"], b["neighborId"], b["inUse"]) == (fec, LOOPBACK[neighbour], 1):
            return label(b["remoteLabel"])
    return None


def eventually(condition, attempts=60):
    """Polls a condition, a second apart, a bounded number of times."""
    for _ in range(attempts):
        if condition():
            return True
        time.sleep(1)
    return False


def request(name, stack, *options):
    return LAB.craft(name, "--src", LOOPBACK["r1"], "--label", stack, "--fec", f"ldp={R3}",
                     *options)


def lspping_on_r1(command, *options):
    """`lspping ping|trace ldp 10.0.0.3/32` from r1, its labels from r1's
    FRR: (exit status, standard output, standard error)."""
    space = LAB.record()["frr"]["r1"]["pathspace"]
    done = labtest.run_lab("exec", LAB.name, "r1", "--", labtest.LSPPING, command, "ldp", R3,
                           "--state-from", f"frr:{space}", "-W", "1", *options, check=False)
    return done.returncode, done.stdout, done.stderr


def trace_hops():
    """The hops of a trace from r1: (replying address, return code, the
    first mapping's labels)."""
    _, out, _ = lspping_on_r1("trace", "--json")
    hops = [e for e in map(json.loads, out.splitlines()) if e["event"] == "hop"]
    return [(h["from"], h["returnCode"], [m["label"] for m in (h["mappings"] or [{}])[0].get(
        "labels", [])]) for h in hops]


def answer(name, stack, *options):
    """The return code of the one reply to a request from r1, or None."""
    replies = LAB.send("r1", "e1", [request(name, stack, *options)], timeout=1.0)
    return replies[0].code[0] if replies else None


def start_monitor():
    """`lspping monitor` on r1 watching r3's loopback, its path from r1's
    FRR read every second."""
    config = LAB.work / "monitor.json"
    config.write_text(json.dumps({"interval": 0.5, "timeout": 1, "window": 2, "lsps": [
        {"name": "r3", "fec": f"ldp {R3}"}]}))
    space = LAB.record()["frr"]["r1"]["pathspace"]
    return labtest.Daemon(LAB, "monitor", "r1", labtest.LSPPING, "monitor", "--config",
                          str(config), "--state-from", f"frr:{space}", "--state-refresh", "1",
                          "--json")


class FrrLabTest(unittest.TestCase):
    def test_a_state_from_frr_shows_the_bindings_ldp_reports(self):
        for router in LOOPBACK:
            with self.subTest(router):
                space = LAB.record()["frr"][router]["pathspace"]
                state = json.loads(
                    LAB.exec(router, labtest.LSPPING, "state", "--from", f"frr:{space}", "--json"))
                read = {b["fec"]: b["labels"][0]["label"] for b in state["bindings"]["ldp"]}
                self.assertEqual(read, local_labels(router))
        # r2 pops r3's label toward r3, which advertised an implicit null.
        space = LAB.record()["frr"]["r2"]["pathspace"]
        text = LAB.exec("r2", labtest.LSPPING, "state", "--from", f"frr:{space}")
        self.assertIn(f"route {local_labels('r2')[R3]} ldp: pop via e2 10.1.23.3\n", text)

    def test_b_the_lsp_ldp_chose_is_answered_hop_by_hop(self):
        chosen = remote_label("r1", R3, "r2")
        self.assertEqual(chosen, local_labels("r2")[R3])
        [reply] = LAB.send("r1", "e1", [request("transit", f"{chosen}/ttl=1", "--ds-map",
                                                "10.1.12.2", "--ds-label", str(chosen))])
        self.assertEqual(reply.code[0], SWITCHED)
        [mapping] = reply.downstream_mappings()
        self.assertEqual(mapping["dsIpAddr"], "10.1.23.3")
        self.assertEqual(answer("egress", str(chosen)), EGRESS)

    def test_b_ping_and_trace_find_the_labels_ldp_chose(self):
        chosen = remote_label("r1", R3, "r2")
        status, out, err = lspping_on_r1("ping", "-c", "2", "-i", "0.2")
        self.assertEqual(status, 0, out + err)
        self.assertIn(f"ldp={R3}: label {chosen} out e1 to 10.1.12.2, from frr:", err)
        self.assertIn(f"label {chosen},", out)
        # r2 pops: the label r3 advertised is an implicit null.
        self.assertEqual(remote_label("r2", R3, "r3"), 3)
        self.assertEqual(trace_hops(), [("10.1.12.2", SWITCHED, [3]), ("10.1.23.3", EGRESS, [])])

    def test_c_a_broken_rule_is_seen_where_it_is_and_healing_restores_it(self):
        chosen = local_labels("r2")[R3]
        # r3 switches its label for r1's loopback: it takes the frame for
        # that FEC's, and answers that the request's FEC is not its.
        wrong = local_labels("r3")["10.0.0.1/32"]
        labtest.run_lab("break", LAB.name, "r2", str(chosen), "--to", str(wrong))
        try:
            self.assertEqual(answer("after", f"{chosen}/ttl=2"), MISMATCH)
            self.assertNotEqual(answer("broken", str(chosen)), EGRESS)
            self.assertEqual(answer("before", f"{chosen}/ttl=1"), SWITCHED)
            self.assertEqual(trace_hops()[-1][:2], ("10.1.23.3", MISMATCH))
            self.assertEqual(lspping_on_r1("ping", "-c", "1")[0], 1)
            labtest.run_lab("break", LAB.name, "r2", str(chosen), "--drop")
            self.assertIsNone(answer("dropped", str(chosen)))
        finally:
            labtest.run_lab("heal", LAB.name, "r2")
        self.assertEqual(answer("healed", str(chosen)), EGRESS)

    def test_d_the_responders_and_a_monitor_follow_new_labels_without_a_restart(self):
        old = local_labels("r2")[R3]
        pids = {r: e["pid"] for r, e in LAB.record()["responders"].items()}
        monitor = start_monitor()
        self.addCleanup(monitor.stop)
        ups = lambda: [e for e in monitor.events() if e["event"] == "up"]  # noqa: E731
        self.assertTrue(eventually(lambda: len(ups()) == 1), monitor.lines())
        self.assertIn(f"lsp r3: label {old} out e1 to 10.1.12.2, from frr:", monitor.err.read_text())
        # r2 withdraws its label for r3's loopback, resets its sessions and
        # binds the FEC again: LDP gives it the next free label.
        space = LAB.record()["frr"]["r2"]["pathspace"]
        for commands in (
            ["access-list nor3 seq 5 deny 10.0.0.3/32", "access-list nor3 seq 10 permit any",
             "mpls ldp", "address-family ipv4", "label local allocate for nor3"],
            ["mpls ldp", "address-family ipv4", "no label local allocate for nor3"],
        ):
            configure = [a for c in ["configure terminal", *commands, "end"] for a in ("-c", c)]
            LAB.exec("r2", "vtysh", "-N", space, *configure)
            self.assertTrue(eventually(lambda: local_labels("r2").get(R3) != old))
            LAB.exec("r2", "vtysh", "-N", space, "-c", "clear mpls ldp neighbor")
        new = local_labels("r2")[R3]
        self.assertNotEqual(new, old)
        self.assertTrue(eventually(lambda: remote_label("r1", R3, "r2") == new))
        labtest.run_lab("heal", LAB.name)
        self.assertTrue(eventually(lambda: answer("new", f"{new}/ttl=1") == SWITCHED))
        self.assertEqual(answer("new-egress", str(new)), EGRESS)
        status, out, err = lspping_on_r1("ping", "-c", "1")
        self.assertEqual(status, 0, out + err)
        self.assertIn(f"label {new} out e1", err)
        self.assertEqual({r: e["pid"] for r, e in LAB.record()["responders"].items()}, pids)
        self.assertTrue(any("state changed" in line for line in LAB.log("r2")))
        self.assertTrue(eventually(lambda: len(ups()) == 2), monitor.lines())
        self.assertIn("lsp r3: its path changed in frr:", monitor.err.read_text())
        self.assertIn(f"lsp r3: label {new} out e1", monitor.err.read_text())
        self.assertEqual(monitor.stop(), 0)


if __name__ == "__main__":
    unittest.main()
