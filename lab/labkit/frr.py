"""FRR as the control plane of the routers that run it: zebra, ospfd and
ldpd (isisd too, with segment routing, when asked) in the router's
namespace, under a pathspace RUN-ROUTER (`vtysh -N lab-r1`),
each stopped by its pid; and the label table LDP chose, which the switch
is programmed from, since this kernel cannot install it."""

import ipaddress
import json
import shutil
from pathlib import Path

from labkit import LabError
from labkit.runs import execute, in_namespace, process_alive, stop_processes, wait_until
from labkit.topology import Hop, Lsp

DAEMON_DIR = Path("/usr/lib/frr")
CONFIG_ROOT = Path("/etc/frr")
STATE_ROOT = Path("/var/run/frr")
# ospfd keeps its graceful-restart state here, outside every pathspace:
# shared by the runs, removed by the last one down.
OSPF_SHARED = STATE_ROOT / "ospfd-gr.json"
PROGRAMS = ("vtysh", *(str(DAEMON_DIR / d) for d in ("zebra", "ospfd", "ldpd", "isisd")))
START_SECONDS = 10.0
CONVERGE_SECONDS = 120.0
# What a label of LDP's reads as, besides a number.
NULL_LABELS = {"imp-null": 3, "exp-null": 0}
SRGB = (16000, 23999)


def check_installed():
    for program in PROGRAMS:
        if shutil.which(program) is None:
            raise LabError(f"{program} is not installed (apt-get install frr)")


def pathspace(run, router):
    """Named by the run's name, which users type (`--state-from
    frr:lab-r1`), and unique as it is among the runs."""
    return f"{run.name}-{router}"


def daemons(router):
    return ["zebra", "ospfd", "ldpd", *(["isisd"] if "isis-sr" in router.frr else [])]


def configuration(topology, router):
    """frr.conf of a router: OSPF over point-to-point links and the
    loopback, LDP on every link with the IPv4 loopback as router id and
    transport address, and on request IS-IS with a prefix segment (index:
    the router's number) for the loopback. Every block ends with `exit`:
    without it vtysh reads a later line into the block before."""
    loopback = router_id(router)
    isis = "isis-sr" in router.frr
    lines = ["frr defaults traditional", f"hostname {router.name}", "!"]
    for name in router.interfaces:
        lines += [f"interface {name}", " ip ospf network point-to-point"]
        if isis:
            lines += [" ip router isis lab", " isis network point-to-point"]
        lines.append("exit")
    if isis:
        lines += ["interface lo", " ip router isis lab", " isis passive", "exit"]
    networks = [f"{loopback}/32"] + [
        str(a.network) for i in router.interfaces.values() for a in i.addresses if a.version == 4
    ]
    lines += ["router ospf", f" ospf router-id {loopback}"]
    lines += [f" network {n} area 0" for n in networks]
    lines.append("exit")
    if isis:
        lines += [
            "router isis lab",
            f" net 49.0001.0000.0000.{router.index:04d}.00",
            " is-type level-2-only",
            " metric-style wide",
            " segment-routing on",
            f" segment-routing global-block {SRGB[0]} {SRGB[1]}",
            f" segment-routing prefix {loopback}/32 index {router.index}",
            "exit",
        ]
    lines += ["mpls ldp", f" router-id {loopback}", " address-family ipv4",
              f"  discovery transport-address {loopback}"]
    lines += [f"  interface {name}" for name in router.interfaces]
    lines += [" exit-address-family", "exit"]
    return "".join(f"{line}\n" for line in lines)


def router_id(router):
    v4 = [a for a in router.loopbacks if a.version == 4]
    return v4[0]


def start(run, topology, routers):
    """Writes each router's configuration into its pathspace, starts its
    daemons and loads the configuration. Each pathspace and pid is
    recorded before it is made, so that `down` finds it after a failure."""
    for router in routers:
        space = pathspace(run, router.name)
        entry = {"pathspace": space, "pids": {}}
        run.remember("frr", router.name, entry)
        for root in (CONFIG_ROOT, STATE_ROOT):
            if (root / space).exists():
                raise LabError(f"{root / space} exists already: not this run's, left alone")
        for root in (CONFIG_ROOT, STATE_ROOT):
            (root / space).mkdir(mode=0o755)
            shutil.chown(root / space, "frr", "frr")
        write_frr_file(CONFIG_ROOT / space / "frr.conf", configuration(topology, router))
        write_frr_file(CONFIG_ROOT / space / "vtysh.conf", "service integrated-vtysh-config\n")
        for daemon in daemons(router):
            start_daemon(run, router, daemon, entry)
        vtysh(run, router.name, ["-b"], f"configuration of {router.name}")


def write_frr_file(path, text):
    path.write_text(text)
    shutil.chown(path, "frr", "frr")
    path.chmod(0o640)


def start_daemon(run, router, daemon, entry):
    space = entry["pathspace"]
    pid_file = STATE_ROOT / space / f"{daemon}.pid"
    log = run.dir / "frr" / f"{router.name}-{daemon}.log"
    log.parent.mkdir(exist_ok=True)
    log.touch()
    shutil.chown(log, "frr", "frr")
    command = [str(DAEMON_DIR / daemon), "-d", "-N", space, "-P", "0", "-i", str(pid_file),
               "--log", f"file:{log}"]
    execute(in_namespace(run.router_namespace(router.name), command),
            f"{daemon} of {router.name} (log {log})")
    if not wait_until(lambda: read_pid(pid_file), START_SECONDS):
        raise LabError(f"{daemon} of {router.name}: no pid file {pid_file} (log {log})")
    entry["pids"][daemon] = read_pid(pid_file)
    run.remember("frr", router.name, entry)
    if daemon == "zebra":
        # The others connect to zebra's socket at start.
        socket = STATE_ROOT / space / "zserv.api"
        if not wait_until(socket.exists, START_SECONDS):
            raise LabError(f"zebra of {router.name}: no socket {socket} (log {log})")


def read_pid(path):
    try:
        pid = int(path.read_text())
    except (OSError, ValueError):
        return 0
    return pid if process_alive(pid) else 0


def stop(run):
    """Stops the run's daemons by their pids (recorded, else from the pid
    files), then removes the run's pathspaces, and ospfd's shared file when
    no other run has FRR up."""
    entries = run.record.get("frr", {})
    processes = []
    for entry in entries.values():
        space = entry["pathspace"]
        pids = set(entry.get("pids", {}).values())
        # A daemon restarted by hand has a new pid in its file.
        pids |= {read_pid(pid_file) for pid_file in (STATE_ROOT / space).glob("*.pid")}
        processes += [(pid, f"-N\0{space}\0") for pid in pids if pid]
    stop_processes(processes)
    for entry in entries.values():
        for root in (CONFIG_ROOT, STATE_ROOT):
            shutil.rmtree(root / entry["pathspace"], ignore_errors=True)
    if entries and not others_with_frr(run):
        OSPF_SHARED.unlink(missing_ok=True)


def others_with_frr(run):
    from labkit.runs import Run

    return any(Run(name).load().record.get("frr") for name in Run.names() if name != run.name)


def vtysh(run, router, arguments, what):
    space = run.record["frr"][router]["pathspace"]
    command = ["vtysh", "-N", space, *arguments]
    return execute(in_namespace(run.router_namespace(router), command), what)


def show(run, router, command):
    """A `show ... json` command's document."""
    text = vtysh(run, router, ["-c", command], f"{command} on {router}")
    try:
        return json.loads(text) if text.strip() else {}
    except ValueError:
        raise LabError(f"{command} on {router}: no JSON: {text.strip()[:80]}")


def ldp_label(text):
    if text in NULL_LABELS:
        return NULL_LABELS[text]
    return int(text) if text.isdigit() else None


def ldp_table(run, topology, router):
    """The labels LDP chose for the router's bridge, as the topology's
    hops: each FEC's local label, switched to the in-use remote label of
    the neighbour behind the IGP's (first) next hop, popped for an
    implicit null. {label: (lsp, hop)}, labels as text (JSON keys)."""
    bindings = show(run, router.name, "show mpls ldp binding json").get("bindings", [])
    routes = show(run, router.name, "show ip route json")
    # In the lab, a neighbour's LDP identifier is its IPv4 loopback.
    neighbours = {
        i.name: str(router_id(topology.routers[i.peer.router])) for i in router.interfaces.values()
    }
    remote = {}
    for binding in bindings:
        label = ldp_label(binding.get("remoteLabel", "-"))
        if binding.get("inUse") and label is not None:
            remote[(binding["prefix"], binding["neighborId"])] = label
    table = {}
    for binding in bindings:
        prefix = binding["prefix"]
        local = ldp_label(binding.get("localLabel", "-"))
        if local is None or local < 16 or str(local) in table:
            continue
        hop = next_hop(routes.get(prefix, []), router)
        if hop is None:
            continue
        out_label = remote.get((prefix, neighbours[hop]))
        if out_label is None:
            continue
        action = {3: "pop", 0: "explicit-null"}.get(out_label, "swap")
        table[str(local)] = {"fec": prefix, "action": action, "out": hop,
                             "outLabel": out_label if action == "swap" else None}
    return table


def next_hop(entries, router):
    """The interface of the selected route's first active next hop."""
    for entry in entries:
        if entry.get("selected"):
            for hop in entry.get("nexthops", []):
                if hop.get("active") and hop.get("interfaceName") in router.interfaces:
                    return hop["interfaceName"]
    return None


def converged(run, topology, routers):
    """Whether every router has, for every other router's loopback, a
    label LDP switches to the next hop's in-use remote label: the whole
    mesh of LSPs is up."""
    loopbacks = {r.name: f"{router_id(r)}/32" for r in routers}
    for router in routers:
        fecs = {entry["fec"] for entry in ldp_table(run, topology, router).values()}
        # A neighbour's own loopback is popped: that is in the table too.
        if not all(p in fecs for name, p in loopbacks.items() if name != router.name):
            return False
    return True


def wait_converged(run, topology, routers, seconds=CONVERGE_SECONDS):
    def ready():
        try:
            return converged(run, topology, routers)
        except LabError:
            return False

    if not wait_until(ready, seconds):
        raise LabError(f"LDP has not converged after {seconds:.0f} s"
                       f" (logs in {run.dir / 'frr'}; lab/lab exec {run.name} ROUTER --"
                       " vtysh -N PATHSPACE -c 'show mpls ldp binding')")


def label_hops(run, router):
    """The router's label table for the switch: what LDP chose (recorded
    by `sync`), with the faults `break` injected on top."""
    chosen = run.record.get("ldp", {}).get(router.name, {})
    broken = run.record.get("breaks", {}).get(router.name, {})
    table = {}
    for label, entry in {**chosen, **broken}.items():
        lsp = Lsp(f"ldp {entry['fec']}", f"ldp={entry['fec']}",
                  ipaddress.ip_network(entry["fec"]).version)
        hop = Hop(router.name, int(label), entry["action"], entry["out"], entry["outLabel"])
        table[int(label)] = [(lsp, hop)]
    return table


def frr_routers(topology):
    return [r for r in topology.routers.values() if r.frr]
