"""`lspping monitor` in a router of the lab, scraped by a real Prometheus
server in the same namespace: the healthy LSP shows up and the broken one
down with the code of the hop that breaks it; a responder stopped turns an
LSP down with an event; a reload adds an LSP that the next scrape shows and
a bad one is refused; the responder serves its counters too. The
exposition passes `promtool check metrics`, and the examples' Prometheus
configuration and alert rules pass `promtool check config` and `check
rules`."""

import json
import os
import shutil
import signal
import subprocess
import time
import unittest
import urllib.parse

import labtest

LINE = labtest.Lab("line4.topo", "monitor")
MONITOR_PORT, RESPONDER_PORT, PROMETHEUS_PORT = 9101, 9102, 9190
MISMATCH = 10
EXAMPLES = labtest.SOURCE / "examples" / "monitoring"

HEALTHY = {"name": "pe2-ldp", "fec": "ldp 10.255.0.4/32 --label 1004"}
# p1 bound the FEC to 1004: with TTL 1 it answers for the stale label.
BROKEN = {"name": "pe2-stale", "fec": "ldp 10.255.0.4/32 --label 1014/ttl=1"}
ADDED = {"name": "pe2-sr6", "fec": "sr 2001:db8:ff::4/128 --label 16104"}


def setUpModule():
    labtest.require_lab()
    for program in ("prometheus", "promtool"):
        if shutil.which(program) is None:
            reason = f"{program} is not installed (Debian prometheus)"
            if labtest.REQUIRED:
                raise AssertionError(f"LSPPING_REQUIRE_LAB=1 but {reason}")
            raise unittest.SkipTest(reason)
    LINE.up()


def eventually(what, probe, tries=240, every=0.25):
    """Polls `probe` until it returns something true, a bounded number of
    times; fails naming `what`."""
    for _ in range(tries):
        found = probe()
        if found:
            return found
        time.sleep(every)
    raise AssertionError(f"never: {what}")


def in_router(router, *command, **options):
    return subprocess.run([str(labtest.LAB), "exec", LINE.name, router, "--", *command],
                          capture_output=True, text=True, **options)


def http_get(router, url):
    """The body at `url`, fetched from inside the router's namespace."""
    done = in_router(router, "python3", "-c",
                     "import sys, urllib.request\n"
                     "sys.stdout.write(urllib.request.urlopen(sys.argv[1], timeout=5)"
                     ".read().decode())", url)
    return done.stdout if done.returncode == 0 else None


def promtool_check_metrics(text):
    done = subprocess.run(["promtool", "check", "metrics"], input=text,
                          capture_output=True, text=True)
    return done.returncode, done.stdout + done.stderr


class PromtoolTest(unittest.TestCase):
    def test_the_examples_configuration_and_rules_are_valid(self):
        for check, name in (("config", "prometheus.yml"), ("config", "federation.yml"),
                            ("rules", "lspping-alerts.yml")):
            with self.subTest(name):
                done = subprocess.run(["promtool", "check", check, str(EXAMPLES / name)],
                                      capture_output=True, text=True)
                self.assertEqual(done.returncode, 0, done.stdout + done.stderr)


class MonitorTest(unittest.TestCase):
    def setUp(self):
        self.config = LINE.work / "monitor.json"
        self.write_config([HEALTHY, BROKEN])
        self.monitor = labtest.Daemon(LINE, "monitor", "pe1", labtest.LSPPING, "monitor", "--config",
                              self.config, "--metrics", f"127.0.0.1:{MONITOR_PORT}",
                              "--json")
        self.addCleanup(self.monitor.stop)
        eventually("the monitor's ready line",
                   lambda: any("watching 2 LSPs" in l for l in self.monitor.lines()))
        self.prometheus = self.start_prometheus()

    def write_config(self, lsps):
        self.config.write_text(json.dumps({
            "interval": 0.2, "timeout": 0.5, "window": 3, "loss-threshold": 0,
            "lsps": lsps}))

    def start_prometheus(self):
        directory = LINE.work / "prometheus"
        directory.mkdir(exist_ok=True)
        (directory / "prometheus.yml").write_text(
            "global: {scrape_interval: 1s}\n"
            "scrape_configs:\n"
            "  - job_name: lspping\n"
            f"    static_configs: [{{targets: ['127.0.0.1:{MONITOR_PORT}']}}]\n")
        prometheus = labtest.Daemon(LINE, "prometheus", "pe1", "prometheus",
                            f"--config.file={directory / 'prometheus.yml'}",
                            f"--storage.tsdb.path={directory / 'data'}",
                            f"--web.listen-address=127.0.0.1:{PROMETHEUS_PORT}")
        self.addCleanup(shutil.rmtree, directory, ignore_errors=True)
        self.addCleanup(prometheus.stop)
        return prometheus

    def query(self, expression):
        """The instant vector of a PromQL expression, by its lsp label."""
        url = (f"http://127.0.0.1:{PROMETHEUS_PORT}/api/v1/query?"
               + urllib.parse.urlencode({"query": expression}))
        body = http_get("pe1", url)
        if not body:
            return {}
        result = json.loads(body)["data"]["result"]
        return {r["metric"].get("lsp"): r["value"][1] for r in result}

    def wait_for_event(self, kind, lsp):
        return eventually(f"a {kind} event of {lsp}", lambda: next(
            (e for e in self.monitor.events() if e["event"] == kind and e["lsp"] == lsp),
            None))

    def test_prometheus_sees_what_the_monitor_judged(self):
        up = eventually("both LSPs judged in Prometheus",
                        lambda: (lambda v: v if len(v) == 2 else None)(
                            self.query("lspping_lsp_up")))
        self.assertEqual(up, {"pe2-ldp": "1", "pe2-stale": "0"})
        self.assertEqual(self.query("lspping_lsp_last_return_code"),
                         {"pe2-ldp": "3", "pe2-stale": str(MISMATCH)})
        down = self.wait_for_event("down", "pe2-stale")
        self.assertEqual((down["returnCode"], down["returnCodeName"], down["from"]),
                         (MISMATCH, "labelMappingMismatch", "10.255.0.2"))
        self.assertIn("lsp pe2-stale down: labelMappingMismatch (code 10, subcode 1) "
                      "from 10.255.0.2", "\n".join(self.monitor.lines()))

        status, problems = promtool_check_metrics(
            http_get("pe1", f"http://127.0.0.1:{MONITOR_PORT}/metrics"))
        self.assertEqual(status, 0, problems)

    def test_a_responder_stopped_turns_the_lsp_down_and_back_up(self):
        self.wait_for_event("up", "pe2-ldp")
        labtest.run_lab("stop", LINE.name, "pe2")
        self.addCleanup(labtest.run_lab, "restart", LINE.name, "pe2", check=False)
        down = self.wait_for_event("down", "pe2-ldp")
        self.assertEqual((down["was"], down["returnCode"]), ("up", None))
        self.assertIn("lsp pe2-ldp down: no reply", "\n".join(self.monitor.lines()))
        labtest.run_lab("restart", LINE.name, "pe2")
        eventually("pe2-ldp up again", lambda: any(
            e["event"] == "up" and e["lsp"] == "pe2-ldp" and e["was"] == "down"
            for e in self.monitor.events()))

    def test_a_reload_adds_an_lsp_and_refuses_a_mistake(self):
        eventually("the first scrape", lambda: self.query("lspping_lsp_info"))
        self.config.write_text('{"lsps": [{"name": "x", "fec": "ldp 10.0.0.9/32", "colour": 1}]}')
        self.monitor.process.send_signal(signal.SIGHUP)
        refused = eventually("the refusal", lambda: [
            l for l in self.monitor.lines() if "reload refused" in l])
        self.assertIn("monitor.json: /lsps/0/colour: unknown key", refused[0])

        self.write_config([HEALTHY, BROKEN, ADDED])
        self.monitor.process.send_signal(signal.SIGHUP)
        eventually("the reload", lambda: any(
            "reloaded" in l and "(1 added, 0 removed, 0 changed)" in l
            for l in self.monitor.lines()))
        info = eventually("the added LSP in Prometheus", lambda: (
            lambda v: v if "pe2-sr6" in v else None)(self.query("lspping_lsp_info")))
        self.assertEqual(set(info), {"pe2-ldp", "pe2-stale", "pe2-sr6"})
        # The LSPs that stayed kept their counters: no second first judgement.
        self.assertEqual([e["lsp"] for e in self.monitor.events() if e.get("was", "") is None
                          and e["lsp"] == "pe2-ldp"], ["pe2-ldp"])
        self.assertEqual(self.monitor.stop(), 0)


class ResponderMetricsTest(unittest.TestCase):
    def test_the_responder_serves_its_counters(self):
        labtest.run_lab("restart", LINE.name, "pe2", "--", "--metrics",
                        f"127.0.0.1:{RESPONDER_PORT}")
        self.addCleanup(labtest.run_lab, "restart", LINE.name, "pe2", check=False)
        done = LINE.lspping("pe1", "ping", "ldp", "10.255.0.4/32", "--label", "1004",
                            "-c", "2", "-i", "0.2")
        self.assertEqual(done.returncode, 0, done.stderr)
        text = http_get("pe2", f"http://127.0.0.1:{RESPONDER_PORT}/metrics")
        self.assertIn('lspping_responder_replies_total{code="repRouterEgress"} 2\n', text)
        self.assertRegex(text, r"\nlspping_responder_frames_total [2-9]\d*\n")
        self.assertIn("lspping_responder_rate_limited_total 0\n", text)
        status, problems = promtool_check_metrics(text)
        self.assertEqual(status, 0, problems)


if __name__ == "__main__":
    unittest.main()
