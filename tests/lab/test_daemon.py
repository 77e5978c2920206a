"""The responder as a daemon in the lab: a reload changes its answers and
a bad state file changes nothing; its rate limit holds under a burst."""

import json
import time
import unittest

import labtest

LINE = labtest.Lab("line4.topo", "daemon")
STALE = ("--src", "10.255.0.1", "--label", "1014/ttl=1", "--fec", "ldp=10.255.0.4/32")
TO_P2 = ("--src", "10.255.0.1", "--label", "1004/ttl=2", "--fec", "ldp=10.255.0.4/32")
MISMATCH, SWITCHED = 10, 8


def setUpModule():
    labtest.require_lab()
    LINE.up()


class ReloadTest(unittest.TestCase):
    def answer(self, request):
        replies = LINE.send("pe1", "e1", [request])
        self.assertEqual(len(replies), 1)
        return replies[0].header["returnCode"]

    def answer_becomes(self, request, code, attempts=50):
        """The reload is asynchronous: asks until the answer is `code`."""
        for _ in range(attempts):
            if self.answer(request) == code:
                return True
        return False

    def reload(self, router, text):
        path = LINE.work / f"{router}-reload.json"
        path.write_text(text)
        labtest.run_lab("reload", LINE.name, router, str(path))

    def test_a_reload_changes_the_answer_and_a_bad_file_changes_nothing(self):
        request = LINE.craft("stale", *STALE)
        self.assertEqual(self.answer(request), MISMATCH)

        state = LINE.state("p1")
        binding = next(b for b in state["bindings"]["ldp"] if b["fec"] == "10.255.0.4/32")
        binding["labels"].append({"label": 1014})
        self.reload("p1", json.dumps(state))
        self.assertTrue(self.answer_becomes(request, SWITCHED), "the reloaded binding is not used")

        # Every reload's outcome is a line of the responder's log.
        said = len(LINE.log("p1"))
        self.reload("p1", '{"lfib": {"routes": [{"label": "1014"}]}}')
        self.assertTrue(labtest.runs.wait_until(lambda: len(LINE.log("p1")) > said, 5.0))
        self.assertEqual(self.answer(request), SWITCHED)
        self.reload("p1", json.dumps(LINE.state("p1")))
        self.assertTrue(self.answer_becomes(request, MISMATCH), "no reload after a bad one")


class RateLimitTest(unittest.TestCase):
    RATE, BURST, REQUESTS = 2, 3, 30

    def test_a_burst_gets_the_burst_and_what_the_rate_adds(self):
        limit = ("--rate", str(self.RATE), "--burst", str(self.BURST))
        labtest.run_lab("restart", LINE.name, "p2", "--", *limit)
        burst = LINE.craft("burst", *TO_P2, "--count", str(self.REQUESTS))
        dropped_before = len(LINE.events("p2", labtest.EVENT_DROP))
        start = time.monotonic()
        replies = LINE.send("pe1", "e1", [burst], timeout=1.0)
        # Tokens come back at RATE a second while the requests arrive: the
        # time they took only widens the bound, it is not what is tested.
        spent = time.monotonic() - start
        most = self.BURST + int(self.RATE * spent) + 1
        self.assertGreaterEqual(len(replies), self.BURST)
        self.assertLessEqual(len(replies), most)
        self.assertTrue(all(r.header["returnCode"] == SWITCHED for r in replies))
        unanswered = self.REQUESTS - len(replies)
        dropped = labtest.runs.wait_until(
            lambda: len(LINE.events("p2", labtest.EVENT_DROP)) - dropped_before >= unanswered, 5.0
        )
        self.assertTrue(dropped, "every request left unanswered is reported as a drop")


if __name__ == "__main__":
    unittest.main()
