"""Requests from the library's generator, sent from pe1 through the line
of four routers, are answered by the responder of the router where they
leave the LSP, with the return code that router's state file implies."""

import unittest

import labtest

LINE = labtest.Lab("line4.topo", "answers")
PE1 = "10.255.0.1"
PE1_V6 = "2001:db8:ff::1"

# (what, label stack entry, FEC, replying router's address, return code)
CASES = [
    ("egress after penultimate-hop popping", "1004", "ldp=10.255.0.4/32", "10.255.0.4", 3),
    ("egress after an explicit null", "1044", "ldp=10.255.0.44/32", "10.255.0.4", 3),
    ("egress of a segment-routing LSP", "16004", "sr=10.255.0.4/32", "10.255.0.4", 3),
    ("first transit, TTL expiry", "1004/ttl=1", "ldp=10.255.0.4/32", "10.255.0.2", 8),
    ("second transit, TTL expiry", "1004/ttl=2", "ldp=10.255.0.4/32", "10.255.0.3", 8),
    ("stale label at the first transit", "1014/ttl=1", "ldp=10.255.0.4/32", "10.255.0.2", 10),
    ("unbound FEC at the second transit", "1044/ttl=2", "ldp=10.255.0.44/32", "10.255.0.3", 4),
    ("IPv6 egress", "16104", "sr=2001:db8:ff::4/128", "2001:db8:ff::4", 3),
    ("IPv6 transit", "16104/ttl=1", "sr=2001:db8:ff::4/128", "2001:db8:ff::2", 8),
]


def request(name, label, fec, *options):
    """A request from pe1's loopback, of the FEC's family."""
    source = PE1_V6 if ":" in fec else PE1
    return LINE.craft(name, "--src", source, "--label", label, "--fec", fec, *options)


def setUpModule():
    labtest.require_lab()
    LINE.up()


class AnswersTest(unittest.TestCase):
    def test_each_request_gets_one_reply_from_where_it_leaves_the_lsp(self):
        requests = [
            request(f"case{n}", label, fec, "--sequence", str(n))
            for n, (_, label, fec, _, _) in enumerate(CASES, 1)
        ]
        # One more than expected: a second answer to a request would show.
        replies = LINE.send("pe1", "e1", requests, replies=len(CASES) + 1, timeout=1.0)
        by_sequence = {}
        for reply in replies:
            by_sequence.setdefault(reply.sequence, []).append(reply)
        for n, (what, _, _, source, code) in enumerate(CASES, 1):
            with self.subTest(what):
                self.assertEqual(len(by_sequence.get(n, [])), 1, "replies")
                reply = by_sequence[n][0]
                self.assertEqual(reply.source, source)
                # A single label: the stack depth is 1, and so is an
                # egress's subcode.
                self.assertEqual(reply.code, (code, 1))

    def test_a_transit_maps_the_downstream_it_switches_to(self):
        mapping = ("--ds-map", "10.0.12.2", "--ds-label", "1004")
        mapped = request("mapped", "1004/ttl=1", "ldp=10.255.0.4/32", *mapping)
        [reply] = LINE.send("pe1", "e1", [mapped])
        [mapping] = reply.downstream_mappings()
        self.assertEqual(mapping["dsIpAddr"], "10.0.23.3")
        self.assertEqual([e["label"] for e in mapping["labelStack"]], [2004])


if __name__ == "__main__":
    unittest.main()
