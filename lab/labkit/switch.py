"""The label switch: an Open vSwitch of the run's own (database, sockets,
pid files and logs in the run's directory, daemons in the run's switch
namespace), a bridge per router, and the OpenFlow rules computed from
the topology."""

import os
from pathlib import Path

from labkit import LabError, frr
from labkit.runs import execute, in_namespace, process_alive, stop_processes

OVS_SCHEMA = Path("/usr/share/openvswitch/vswitch.ovsschema")
DAEMONS = ("ovsdb-server", "ovs-vswitchd")
ETH_MPLS, ETH_IPV4, ETH_IPV6 = 0x8847, 0x0800, 0x86DD
EXPLICIT_NULL = {4: 0, 6: 2}
ETHERTYPE = {4: ETH_IPV4, 6: ETH_IPV6}


class Switch:
    def __init__(self, run):
        self.run = run
        self.dir = run.dir / "ovs"
        self.db = f"unix:{self.dir / 'db.sock'}"
        self.env = dict(os.environ, OVS_RUNDIR=str(self.dir), OVS_LOGDIR=str(self.dir),
                        OVS_DBDIR=str(self.dir))

    def command(self, command, what, stdin=None):
        return execute(command, what, stdin=stdin, env=self.env)

    def vsctl(self, arguments, what):
        return self.command(["ovs-vsctl", f"--db={self.db}", "--timeout=10", *arguments], what)

    def start(self):
        """Starts the database server, then the switch daemon; each one's
        --detach returns once it is ready."""
        self.command(["ovsdb-tool", "create", str(self.dir / "conf.db"), str(OVS_SCHEMA)],
                     "ovsdb-tool create")
        arguments = {
            "ovsdb-server": [str(self.dir / "conf.db"), f"--remote=punix:{self.dir / 'db.sock'}"],
            "ovs-vswitchd": [self.db],
        }
        for daemon in DAEMONS:
            files = self.dir / daemon
            command = [daemon, *arguments[daemon], f"--pidfile={files}.pid",
                       f"--log-file={files}.log", f"--unixctl={files}.ctl",
                       "-vconsole:off", "--detach", "--no-chdir"]
            self.command(in_namespace(self.run.switch_namespace(), command),
                         f"{daemon} (log {files}.log)")
            self.run.remember("ovs", daemon, pid_from_file(Path(f"{files}.pid")))
            if daemon == "ovsdb-server":
                self.command(["ovs-vsctl", f"--db={self.db}", "--no-wait", "init"],
                             "ovs-vsctl init")

    def stop(self):
        """Removes the bridges while the switch runs, then stops both
        daemons by their pid (from the record, else their pid files)."""
        pids = {d: self.run.record["ovs"].get(d) or pid_from_file(self.dir / f"{d}.pid")
                for d in DAEMONS}
        if process_alive(pids["ovs-vswitchd"]):
            try:
                bridges = self.vsctl(["list-br"], "listing bridges").split()
                if bridges:
                    self.vsctl([a for b in bridges for a in ("--", "--if-exists", "del-br", b)],
                               "removing bridges")
            except LabError:
                pass  # they go with the switch's process and namespace
        for daemon in reversed(DAEMONS):
            stop_processes([(pids[daemon], str(self.run.dir))])

    def add_bridges(self, topology):
        """A bridge per router, with an own port and a neighbour port for
        each of its interfaces. fail_mode=secure: no rule, no passing."""
        arguments = []
        for router in topology.routers.values():
            bridge = self.run.bridge(router)
            arguments += ["--", "add-br", bridge, "--", "set", "bridge", bridge,
                          "datapath_type=netdev", "fail_mode=secure", "protocols=OpenFlow13"]
            for interface in router.interfaces.values():
                arguments += ["--", "add-port", bridge, self.run.own_port(interface)]
                arguments += ["--", "add-port", bridge, self.run.neighbour_port(interface)]
        self.vsctl(arguments, "bridges")

    def program(self, topology, router):
        """Replaces the rules of the router's bridge, in one bundle."""
        bridge = self.run.bridge(router)
        rules = "".join(f"{rule}\n" for rule in bridge_rules(self.run, topology, router))
        self.command(["ovs-ofctl", "-O", "OpenFlow13", "--bundle", "replace-flows", bridge, "-"],
                     f"rules of {router.name} ({bridge})", stdin=rules)

    def dump(self, router):
        return self.command(["ovs-ofctl", "-O", "OpenFlow13", "--names", "dump-flows",
                             self.run.bridge(router)], "dump-flows")


def pid_from_file(path):
    try:
        return int(path.read_text())
    except (OSError, ValueError):
        return 0


def bridge_rules(run, topology, router):
    """The OpenFlow rules of a router's bridge.

    From the router's own port: out to the link's neighbour, unchanged
    (the router's kernel, or a request sent by hand, chose the frame).
    From a neighbour: a label the router switches arriving with TTL 1 goes
    to the router's own port of that link, where its responder reads it;
    with a larger TTL it is swapped or popped and sent on; an explicit
    null is popped and handed to the router as IP; any other MPLS frame is
    dropped, as a router drops a label it does not know (its responder
    must not take it for an expired one); everything else (ARP, IP, IPv6
    neighbour discovery) goes to the router's own port. A router with FRR
    switches the labels LDP chose, and those `lab break` changed."""
    table = topology.label_table(router.name)
    if router.frr:
        table.update(frr.label_hops(run, router))
    rules = ["table=0,priority=0,actions=drop"]
    for interface in router.interfaces.values():
        rules += port_rules(run, interface, table)
    for label, hops in table.items():
        if hops[0][1].dst is None:
            rules += switched_label_rules(run, router, label, *hops[0])
        else:
            rules += split_label_rules(run, router, label, hops)
    return rules


def port_rules(run, interface, table):
    own, neighbour = run.own_port(interface), run.neighbour_port(interface)
    rules = [
        f"table=0,priority=100,in_port={own},actions=output:{neighbour}",
        f"table=0,priority=5,in_port={neighbour},actions=output:{own}",
        f"table=0,priority=10,in_port={neighbour},mpls,actions=drop",
    ]
    for version, label in EXPLICIT_NULL.items():
        rules.append(
            f"table=0,priority=55,in_port={neighbour},mpls,mpls_label={label},mpls_bos=1,"
            f"actions=pop_mpls:0x{ETHERTYPE[version]:04x},output:{own}"
        )
    for label in table:
        rules.append(
            f"table=0,priority=60,in_port={neighbour},mpls,mpls_label={label},mpls_ttl=1,"
            f"actions=output:{own}"
        )
    return rules


def to_neighbour(run, interface):
    """Actions that send a frame to the other end of the interface's link."""
    return (
        f"set_field:{interface.mac}->eth_src,set_field:{interface.peer.mac}->eth_dst,"
        f"output:{run.neighbour_port(interface)}"
    )


def switched_label_rules(run, router, label, lsp, hop):
    """Swap, or pop (to IP of the LSP's family at the bottom of the
    stack, else to the next label), with the TTL decremented."""
    match = f"table=0,priority=50,mpls,mpls_label={label}"
    if hop.action == "drop":
        return [f"{match},actions=drop"]
    out = to_neighbour(run, router.interfaces[hop.out])
    if hop.action != "pop":
        new = hop.out_label if hop.action == "swap" else EXPLICIT_NULL[lsp.version]
        return [f"{match},actions=dec_mpls_ttl,set_field:{new}->mpls_label,{out}"]
    return [
        f"{match},mpls_bos=1,actions=dec_mpls_ttl,pop_mpls:0x{ETHERTYPE[lsp.version]:04x},{out}",
        f"{match},mpls_bos=0,actions=dec_mpls_ttl,pop_mpls:0x{ETH_MPLS:04x},{out}",
    ]


def split_label_rules(run, router, label, hops):
    """A split LSP. The switch does not look past a label, so table 0
    keeps the label's TTL in reg0 and the label in reg1, pops the (bottom)
    label and goes on in table 1, where the IP destination picks the
    branch; a branch pushes its label again with the kept TTL, minus one
    (or sends the IP packet on, for a pop)."""
    version = hops[0][0].version
    rules = [
        f"table=0,priority=50,mpls,mpls_label={label},mpls_bos=1,actions="
        f"move:NXM_NX_MPLS_TTL[]->NXM_NX_REG0[0..7],load:{label}->NXM_NX_REG1[],"
        f"pop_mpls:0x{ETHERTYPE[version]:04x},resubmit(,1)"
    ]
    field = "ip,nw_dst" if version == 4 else "ipv6,ipv6_dst"
    for lsp, hop in hops:
        out = to_neighbour(run, router.interfaces[hop.out])
        if hop.action != "pop":
            new = hop.out_label if hop.action == "swap" else EXPLICIT_NULL[version]
            out = (
                f"push_mpls:0x{ETH_MPLS:04x},set_field:{new}->mpls_label,"
                f"move:NXM_NX_REG0[0..7]->NXM_NX_MPLS_TTL[],dec_mpls_ttl,{out}"
            )
        address, mask = hop.dst
        rules.append(f"table=1,priority=50,reg1={label},{field}={address}/{mask},actions={out}")
    return rules
