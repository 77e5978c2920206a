"""The routers' namespaces and their links: veth pairs between each
router and the switch, addresses, static routes and kernel settings."""

import ipaddress

from labkit import LabError
from labkit.runs import execute, in_namespace, namespaces

# The switch's veths carry the routers' frames, never its own: without
# IPv6 its kernel sends nothing on them (no router solicitation, no
# multicast listener report reaching a router).
SWITCH_SETTINGS = {"ipv6/conf/all/disable_ipv6": 1, "ipv6/conf/default/disable_ipv6": 1}

# Forwarding on; reverse-path filtering off (the static routes are not
# symmetric in every topology); no duplicate address detection, so that
# addresses are usable at once. "default" before the interfaces exist, so
# that they inherit it.
ROUTER_SETTINGS = {
    "ipv4/ip_forward": 1,
    "ipv6/conf/all/forwarding": 1,
    "ipv4/conf/all/rp_filter": 0,
    "ipv4/conf/default/rp_filter": 0,
    "ipv6/conf/all/accept_dad": 0,
    "ipv6/conf/default/accept_dad": 0,
}

# After penultimate-hop popping an IPv4 request reaches the egress sent to
# 127.0.0.1, which the kernel only takes from an interface with this.
EGRESS_SETTINGS = {"ipv4/conf/all/route_localnet": 1, "ipv4/conf/default/route_localnet": 1}


def build_network(run, topology):
    """Namespaces, veths, addresses and routes; every veth with its
    checksum offload off."""
    switch = run.switch_namespace()
    add_namespace(run, switch)
    for router in topology.routers.values():
        add_namespace(run, run.router_namespace(router.name))
    set_kernel(switch, SWITCH_SETTINGS)
    egresses = topology.egresses()
    for router in topology.routers.values():
        settings = dict(ROUTER_SETTINGS, **(EGRESS_SETTINGS if router.name in egresses else {}))
        set_kernel(run.router_namespace(router.name), settings)
    execute(["ip", "-batch", "-"], "veth pairs", stdin=lines(veth_commands(run, topology)))
    ports = [p(i) for p in (run.own_port, run.neighbour_port) for i in topology.interfaces()]
    execute(["ip", "-n", switch, "-batch", "-"], f"links of {switch}",
            stdin=lines(f"link set {p} up" for p in ["lo", *ports]))
    checksum_off(switch, ports)
    for router in topology.routers.values():
        namespace = run.router_namespace(router.name)
        commands = router_commands(topology, router, router.name in egresses)
        execute(["ip", "-n", namespace, "-batch", "-"], f"addresses and routes of {router.name}",
                stdin=lines(commands))
        checksum_off(namespace, list(router.interfaces))


def lines(commands):
    return "".join(f"{c}\n" for c in commands)


def add_namespace(run, name):
    """Creates a namespace, recorded first; one that exists is another's."""
    if name in namespaces():
        raise LabError(f"network namespace {name} exists already: not this run's, left alone")
    run.record["namespaces"].append(name)
    run.save()
    try:
        execute(["ip", "netns", "add", name], f"namespace {name}")
    except LabError:
        run.record["namespaces"].remove(name)
        run.save()
        raise


def set_kernel(namespace, settings):
    script = "; ".join(f"echo {value} > /proc/sys/net/{key}" for key, value in settings.items())
    execute(in_namespace(namespace, ["sh", "-ec", script]), f"settings of {namespace}")


def checksum_off(namespace, devices):
    """A kernel socket leaves the UDP checksum for the device to finish; the
    switch reads the frame before any device does, so the receiver would
    find it wrong. Every veth has the kernel compute checksums itself."""
    script = "; ".join(f"ethtool -K {d} tx off >/dev/null" for d in devices)
    execute(in_namespace(namespace, ["sh", "-ec", script]), f"ethtool in {namespace}")


def veth_commands(run, topology):
    """`ip -batch` lines: each router interface is a veth whose other end
    is its router's own port on the switch; each link is a veth between
    the two routers' neighbour ports. The switch's ends leave room for a
    label stack."""
    switch = run.switch_namespace()
    for interface in topology.interfaces():
        yield (
            f"link add {interface.name} netns {run.router_namespace(interface.router)}"
            f" address {interface.mac} mtu {interface.mtu} type veth"
            f" peer name {run.own_port(interface)} netns {switch} mtu {interface.mtu + 64}"
        )
    for interface in topology.links():
        yield (
            f"link add {run.neighbour_port(interface)} netns {switch} mtu {interface.mtu + 64}"
            f" type veth peer name {run.neighbour_port(interface.peer)} netns {switch}"
            f" mtu {interface.mtu + 64}"
        )


def router_commands(topology, router, is_egress):
    """`ip -batch` lines for a router's addresses, links and routes.

    An egress's kernel has no route to an IPv4-mapped IPv6 address: it
    would answer an IPv6 request to ::ffff:127.0.0.1 with an ICMPv6 "no
    route". A blackhole route has it drop the request quietly; the
    responder reads it from the interface. A router with FRR learns its
    routes by OSPF."""
    yield "link set lo up"
    for address in router.loopbacks:
        yield f"address add {address}/{address.max_prefixlen} dev lo"
    if is_egress:
        yield "route add blackhole ::ffff:0.0.0.0/96"
    for interface in router.interfaces.values():
        yield f"link set {interface.name} up"
        for address in interface.addresses:
            yield f"address add {address} dev {interface.name} nodad"
    if router.frr:
        return  # its routes come from OSPF
    for prefix, nexthop, interface in routes(topology, router):
        yield f"route add {prefix} via {nexthop} dev {interface}"


def first_hops(topology, router):
    """For every router, the interface of `router` that starts a shortest
    path to it (breadth first, in topology order)."""
    first = {router.name: None}
    queue = [router.name]
    for name in queue:
        for interface in topology.routers[name].interfaces.values():
            neighbour = interface.peer.router
            if neighbour not in first:
                first[neighbour] = first[name] or interface
                queue.append(neighbour)
    return first


def routes(topology, router):
    """Static routes to every other router's loopbacks and to the links
    `router` is not on: (prefix, next-hop address, interface name)."""
    attached = {a.network for i in router.interfaces.values() for a in i.addresses}
    found = {}
    for name, out in first_hops(topology, router).items():
        if out is None:
            continue
        other = topology.routers[name]
        prefixes = [ipaddress.ip_network(a) for a in other.loopbacks]
        prefixes += [a.network for i in other.interfaces.values() for a in i.addresses]
        for prefix in prefixes:
            nexthop = out.peer.address(prefix.version)
            if prefix not in attached and prefix not in found and nexthop is not None:
                found[prefix] = (prefix, nexthop.ip, out.name)
    return list(found.values())
