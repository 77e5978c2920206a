"""The topology model, and the reader of topology files (see README.md).

Every statement is one line; a mistake names the file and the line."""

import ipaddress
import re
from dataclasses import dataclass, field
from pathlib import Path

from labkit import LabError

NAME = re.compile(r"[a-z][a-z0-9]{0,14}\Z")
DEVICE = re.compile(r"[a-zA-Z][a-zA-Z0-9_.-]{0,14}\Z")
ACTIONS = ("swap", "pop", "explicit-null")
FRR_PROTOCOLS = ("ldp", "isis-sr")


@dataclass
class Interface:
    router: str
    name: str
    index: int  # unique in the topology: it numbers the switch's ports
    mac: str
    addresses: list  # ipaddress interfaces, at most one of each family
    mtu: int
    peer: "Interface" = None

    def address(self, version):
        return next((a for a in self.addresses if a.version == version), None)


@dataclass
class Router:
    name: str
    index: int
    loopbacks: list
    state: Path  # None: FRR's state alone
    interfaces: dict = field(default_factory=dict)
    frr: tuple = ()  # the protocols FRR runs, none without FRR


@dataclass
class Hop:
    """What a router does with an incoming label of an LSP.

    Several hops of one router and label, each with a `dst` selector (an
    address and a mask of the request's IP destination), split the LSP."""

    router: str
    label: int
    action: str  # one of ACTIONS
    out: str  # the outgoing interface
    out_label: int = None
    dst: tuple = None
    line: int = 0


@dataclass
class Lsp:
    name: str
    fec: str  # as `lspping craft --fec` takes it
    version: int
    ingress: tuple = None  # (router, label, interface), for the user
    hops: list = field(default_factory=list)
    egress: str = None


@dataclass
class Topology:
    path: Path
    routers: dict = field(default_factory=dict)
    lsps: dict = field(default_factory=dict)

    def interfaces(self):
        return [i for r in self.routers.values() for i in r.interfaces.values()]

    def links(self):
        """Each link once, by its first interface."""
        return [i for i in self.interfaces() if i.index < i.peer.index]

    def label_table(self, router):
        """The router's incoming labels: label -> [(lsp, hop)]."""
        table = {}
        for lsp in self.lsps.values():
            for hop in lsp.hops:
                if hop.router == router:
                    table.setdefault(hop.label, []).append((lsp, hop))
        return table

    def egresses(self):
        """Routers where an LSP ends: named so, or behind a pop; every FRR
        router ends LDP's LSP to its loopback."""
        ends = {lsp.egress for lsp in self.lsps.values() if lsp.egress}
        ends |= {router.name for router in self.routers.values() if router.frr}
        for lsp in self.lsps.values():
            for hop in lsp.hops:
                if hop.action != "swap":
                    ends.add(self.routers[hop.router].interfaces[hop.out].peer.router)
        return ends


def read_topology(path):
    return Reader(path).read()


class Reader:
    def __init__(self, path):
        self.topology = Topology(Path(path).resolve())
        self.line = 0
        self.lsp = None

    def fail(self, message):
        place = f"{self.topology.path}:{self.line}" if self.line else str(self.topology.path)
        raise LabError(f"{place}: {message}")

    def read(self):
        try:
            text = self.topology.path.read_text()
        except OSError as e:
            raise LabError(f"{self.topology.path}: {e.strerror}")
        for self.line, raw in enumerate(text.splitlines(), 1):
            words = raw.split("#", 1)[0].split()
            if words:
                self.statement(words)
        self.check_links()
        for router in self.topology.routers:
            self.check_label_table(router)
        return self.topology

    def statement(self, words):
        readers = {
            "router": self.router,
            "link": self.link,
            "lsp": self.lsp_line,
            "ingress": self.ingress,
            "hop": self.hop,
            "egress": self.egress,
        }
        if words[0] not in readers:
            self.fail(f"unknown statement '{words[0]}' (expected {', '.join(readers)})")
        readers[words[0]](words[1:])

    def router(self, words):
        """router NAME LOOPBACK... [frr ldp[+isis-sr]] [state FILE]"""
        usage = "expected: router NAME LOOPBACK... [frr ldp[+isis-sr]] [state FILE]"
        if len(words) < 2:
            self.fail(usage)
        name = self.name(words[0], "router")
        if name in self.topology.routers:
            self.fail(f"router '{name}' defined twice")
        cut = next((n for n, w in enumerate(words) if w in ("frr", "state")), len(words))
        loopbacks = [self.address(w) for w in words[1:cut]]
        self.one_per_family(loopbacks, "loopback")
        options = dict(zip(words[cut::2], words[cut + 1 :: 2]))
        if not loopbacks or len(words) - cut != 2 * len(options) or set(options) - {"frr", "state"}:
            self.fail(usage)
        frr = tuple(options["frr"].split("+")) if "frr" in options else ()
        if frr and (frr[0] != "ldp" or not set(frr) <= set(FRR_PROTOCOLS)):
            self.fail(f"'{options['frr']}' is not what FRR runs here (ldp or ldp+isis-sr)")
        if frr and not any(a.version == 4 for a in loopbacks):
            self.fail("a router with FRR needs an IPv4 loopback: its router id")
        if "state" not in options and not frr:
            self.fail("a router without FRR needs a state file")
        state = (self.topology.path.parent / options["state"]).resolve() if "state" in options else None
        index = len(self.topology.routers) + 1
        self.topology.routers[name] = Router(name, index, loopbacks, state, frr=frr)

    def link(self, words):
        """link ROUTER:IF ADDRESS/LEN... -- ROUTER:IF ADDRESS/LEN... [mtu N]"""
        mtu = 1500
        if len(words) > 2 and words[-2] == "mtu":
            mtu = self.number(words[-1], 1280, 9000, "an MTU")
            words = words[:-2]
        if words.count("--") != 1:
            self.fail("expected: link ROUTER:IF ADDRESS/LEN... -- ROUTER:IF ADDRESS/LEN...")
        cut = words.index("--")
        a, b = self.end(words[:cut], mtu), self.end(words[cut + 1 :], mtu)
        if a.router == b.router:
            self.fail("a link joins two routers")
        if sorted(x.version for x in a.addresses) != sorted(x.version for x in b.addresses):
            self.fail("both ends of a link need addresses of the same families")
        for x in a.addresses:
            if b.address(x.version).network != x.network:
                self.fail(f"{x} and {b.address(x.version)} are not in one subnet")
        a.peer, b.peer = b, a

    def end(self, words, mtu):
        if not words or words[0].count(":") != 1:
            self.fail("a link's end is ROUTER:INTERFACE, then its addresses")
        router_name, name = words[0].split(":")
        router = self.known_router(router_name)
        if not DEVICE.match(name) or name == "lo":
            self.fail(f"'{name}' is no interface name (a letter, then 14 letters, digits, _ . -)")
        if name in router.interfaces:
            self.fail(f"interface {router.name}:{name} used twice")
        addresses = [self.interface_address(w) for w in words[1:]]
        self.one_per_family(addresses, "address")
        index = len(self.topology.interfaces()) + 1
        mac = f"02:00:00:00:{router.index:02x}:{len(router.interfaces) + 1:02x}"
        interface = Interface(router.name, name, index, mac, addresses, mtu)
        router.interfaces[name] = interface
        return interface

    def lsp_line(self, words):
        """lsp NAME ldp=PREFIX|sr=PREFIX"""
        if len(words) != 2 or "=" not in words[1]:
            self.fail("expected: lsp NAME ldp=PREFIX|sr=PREFIX")
        name = self.name(words[0], "LSP")
        if name in self.topology.lsps:
            self.fail(f"LSP '{name}' defined twice")
        kind, prefix = words[1].split("=", 1)
        if kind not in ("ldp", "sr"):
            self.fail(f"unknown FEC kind '{kind}' (expected ldp or sr)")
        try:
            network = ipaddress.ip_network(prefix.split(",")[0])
        except ValueError:
            self.fail(f"'{prefix}' is no prefix")
        if kind == "ldp" and network.version != 4:
            self.fail("an LDP FEC is an IPv4 prefix")
        self.lsp = Lsp(name, words[1], network.version)
        self.topology.lsps[name] = self.lsp

    def ingress(self, words):
        """ingress ROUTER push LABEL out IF"""
        if len(words) != 5 or words[1] != "push" or words[3] != "out":
            self.fail("expected: ingress ROUTER push LABEL out INTERFACE")
        lsp = self.current_lsp()
        router = self.known_router(words[0])
        out = self.known_interface(router, words[4]).name
        lsp.ingress = (router.name, self.label(words[2]), out)

    def hop(self, words):
        """hop ROUTER in LABEL swap LABEL|pop|explicit-null out IF [dst A/M]"""
        usage = (
            "expected: hop ROUTER in LABEL swap LABEL|pop|explicit-null out INTERFACE"
            " [dst ADDRESS/MASK]"
        )
        lsp = self.current_lsp()
        if len(words) < 6 or words[1] != "in" or words[3] not in ACTIONS:
            self.fail(usage)
        router = self.known_router(words[0])
        hop = Hop(router.name, self.label(words[2]), words[3], "", line=self.line)
        rest = words[4:]
        if hop.action == "swap":
            hop.out_label, rest = self.label(rest[0]), rest[1:]
        if len(rest) not in (2, 4) or rest[0] != "out" or rest[2:3] not in ([], ["dst"]):
            self.fail(usage)
        hop.out = self.known_interface(router, rest[1]).name
        if len(rest) == 4:
            hop.dst = self.selector(rest[3], lsp.version)
        lsp.hops.append(hop)

    def egress(self, words):
        """egress ROUTER"""
        if len(words) != 1:
            self.fail("expected: egress ROUTER")
        self.current_lsp().egress = self.known_router(words[0]).name

    def check_links(self):
        for interface in self.topology.interfaces():
            if interface.peer is None:
                self.fail(f"interface {interface.router}:{interface.name} has no link")

    def check_label_table(self, router):
        """One hop per label, or a split whose every branch has a dst."""
        for label, hops in self.topology.label_table(router).items():
            self.line = hops[-1][1].line
            if len(hops) > 1 and any(hop.dst is None for _, hop in hops):
                self.fail(
                    f"label {label} of {router} has {len(hops)} hops:"
                    " each needs a dst to split the LSP"
                )
            if len({lsp.version for lsp, _ in hops}) > 1:
                self.fail(f"label {label} of {router} carries IPv4 and IPv6 LSPs")

    def current_lsp(self):
        if self.lsp is None:
            self.fail("ingress, hop and egress belong to an LSP: write the lsp line first")
        return self.lsp

    def known_router(self, name):
        if name not in self.topology.routers:
            self.fail(f"no router '{name}' (a router is defined before its links and LSPs)")
        return self.topology.routers[name]

    def known_interface(self, router, name):
        if name not in router.interfaces:
            self.fail(f"router {router.name} has no interface '{name}'")
        return router.interfaces[name]

    def name(self, text, what):
        if not NAME.match(text):
            self.fail(f"'{text}' is no {what} name (a-z, then up to 14 of a-z and 0-9)")
        return text

    def number(self, text, low, high, what):
        if not text.isdigit() or not low <= int(text) <= high:
            self.fail(f"'{text}' is not {what} ({low} to {high})")
        return int(text)

    def label(self, text):
        # 0 to 15 are reserved labels: explicit-null says which it sends.
        return self.number(text, 16, 1048575, "a label")

    def address(self, text):
        try:
            return ipaddress.ip_address(text)
        except ValueError:
            self.fail(f"'{text}' is no IPv4 or IPv6 address")

    def interface_address(self, text):
        try:
            return ipaddress.ip_interface(text)
        except ValueError:
            self.fail(f"'{text}' is no ADDRESS/LENGTH")

    def selector(self, text, version):
        value, _, mask = text.partition("/")
        try:
            address, mask = ipaddress.ip_address(value), ipaddress.ip_address(mask)
        except ValueError:
            address = mask = None
        if address is None or address.version != version or mask.version != version:
            self.fail(f"'{text}' is no ADDRESS/MASK of the LSP's family, e.g. 127.0.0.0/0.0.0.1")
        return address, mask

    def one_per_family(self, addresses, what):
        versions = [a.version for a in addresses]
        if len(set(versions)) != len(versions):
            self.fail(f"at most one IPv4 and one IPv6 {what}")
