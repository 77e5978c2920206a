"""Requests sent by hand: frames read from a pcap file, sent raw out of a
router's interface, and the UDP replies that come back to the router,
written as Ethernet frames that `lspping decode` reads."""

import ctypes
import os
import select
import socket
import struct
import time
from pathlib import Path

from labkit import LabError

ETH_MPLS, ETH_IPV4, ETH_IPV6 = 0x8847, 0x0800, 0x86DD
CLONE_NEWNET = 0x40000000
IP_PKTINFO = 8  # not in Python's socket module
PCAP_MAGIC = {b"\xd4\xc3\xb2\xa1": "<", b"\x4d\x3c\xb2\xa1": "<",
              b"\xa1\xb2\xc3\xd4": ">", b"\xa1\xb2\x3c\x4d": ">"}
LINKTYPE_ETHERNET = 1
RETURN_CODES = {3: "repRouterEgress", 4: "noMappingForFec", 8: "labelSwitchedAtStackDep",
                10: "labelMappingMismatch"}


def read_pcap(path):
    """The frames of a pcap file of Ethernet frames."""
    try:
        data = Path(path).read_bytes()
    except OSError as e:
        raise LabError(f"{path}: {e.strerror}")
    order = PCAP_MAGIC.get(data[:4])
    if order is None or len(data) < 24:
        raise LabError(f"{path}: not a pcap file")
    if struct.unpack_from(order + "I", data, 20)[0] != LINKTYPE_ETHERNET:
        raise LabError(f"{path}: not a capture of Ethernet frames")
    frames, offset = [], 24
    while offset + 16 <= len(data):
        length = struct.unpack_from(order + "I", data, offset + 8)[0]
        frames.append(data[offset + 16 : offset + 16 + length])
        offset += 16 + length
    return frames


def write_pcap(path, frames):
    """Writes (time, frame) pairs as a pcap file of Ethernet frames."""
    out = [struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, LINKTYPE_ETHERNET)]
    for stamp, frame in frames:
        seconds, micro = int(stamp), int(stamp % 1 * 1e6)
        out.append(struct.pack("<IIII", seconds, micro, len(frame), len(frame)) + frame)
    Path(path).write_bytes(b"".join(out))


def udp_source(frame):
    """(IP version, source address, UDP source port) of a frame of UDP in
    IP, under labels or not."""
    ethertype, offset = struct.unpack_from("!H", frame, 12)[0], 14
    if ethertype == ETH_MPLS:
        while offset + 4 <= len(frame) and not frame[offset + 2] & 1:
            offset += 4
        offset += 4
        if offset < len(frame):
            ethertype = ETH_IPV4 if frame[offset] >> 4 == 4 else ETH_IPV6
    if ethertype == ETH_IPV4 and len(frame) >= offset + 28:
        udp = offset + (frame[offset] & 0xF) * 4
        address = socket.inet_ntop(socket.AF_INET, frame[offset + 12 : offset + 16])
        return 4, address, struct.unpack_from("!H", frame, udp)[0]
    if ethertype == ETH_IPV6 and len(frame) >= offset + 48:
        address = socket.inet_ntop(socket.AF_INET6, frame[offset + 8 : offset + 24])
        return 6, address, struct.unpack_from("!H", frame, offset + 40)[0]
    raise LabError("a frame that is no UDP in IP, labelled or not")


def enter_namespace(namespace):
    """Moves this process (one thread) into a network namespace."""
    libc = ctypes.CDLL(None, use_errno=True)
    fd = os.open(f"/run/netns/{namespace}", os.O_RDONLY)
    try:
        if libc.setns(fd, CLONE_NEWNET) != 0:
            raise LabError(f"entering {namespace}: {os.strerror(ctypes.get_errno())}")
    finally:
        os.close(fd)


def reply_sockets(frames):
    """A UDP socket on each port the requests come from, of their family,
    asking for each datagram's destination address."""
    sockets = {}
    for version, _, port in {udp_source(frame) for frame in frames}:
        if version == 4:
            s = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
            s.setsockopt(socket.IPPROTO_IP, IP_PKTINFO, 1)
        else:
            s = socket.socket(socket.AF_INET6, socket.SOCK_DGRAM)
            s.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 1)
            s.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_RECVPKTINFO, 1)
        try:
            s.bind(("0.0.0.0" if version == 4 else "::", port))
        except OSError as e:
            raise LabError(f"UDP port {port} (IPv{version}): {e.strerror}")
        sockets[(version, port)] = s
    return list(sockets.values())


def send_frames(interface, frames, interval):
    """Sends the frames out of the interface with its MAC address as the
    source and its neighbour's as the destination."""
    raw = socket.socket(socket.AF_PACKET, socket.SOCK_RAW)
    raw.bind((interface.name, 0))
    addresses = mac_bytes(interface.peer.mac) + mac_bytes(interface.mac)
    for frame in frames:
        raw.send(addresses + frame[12:])
        if interval:
            time.sleep(interval)


def collect(sockets, interface, expected, timeout):
    """(time, frame, source, payload) of the replies, until `expected`
    came or none came for `timeout` seconds."""
    replies = []
    while len(replies) < expected and (ready := select.select(sockets, [], [], timeout)[0]):
        for s in ready:
            payload, ancillary, _, source = s.recvmsg(65535, 256)
            destination = pktinfo_destination(s, ancillary)
            frame = reply_frame(interface, payload, source, destination, s.getsockname()[1])
            replies.append((time.time(), frame, source, payload))
    return replies


def pktinfo_destination(s, ancillary):
    for level, kind, data in ancillary:
        if level == socket.IPPROTO_IP and kind == IP_PKTINFO:
            return socket.inet_ntop(socket.AF_INET, data[8:12])
        if level == socket.IPPROTO_IPV6 and kind == socket.IPV6_PKTINFO:
            return socket.inet_ntop(socket.AF_INET6, data[:16])
    return "0.0.0.0" if s.family == socket.AF_INET else "::"


def checksum(data):
    if len(data) % 2:
        data += b"\0"
    total = sum(struct.unpack(f"!{len(data) // 2}H", data))
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return ~total & 0xFFFF


def reply_frame(interface, payload, source, destination, port):
    """A received datagram as the Ethernet frame it came in: its IP and
    UDP headers rebuilt, checksums and all."""
    family = socket.AF_INET6 if ":" in destination else socket.AF_INET
    src, dst = socket.inet_pton(family, source[0]), socket.inet_pton(family, destination)
    udp = struct.pack("!HHHH", source[1], port, 8 + len(payload), 0) + payload
    if family == socket.AF_INET:
        pseudo = src + dst + struct.pack("!BBH", 0, socket.IPPROTO_UDP, len(udp))
        ip = struct.pack("!BBHHHBBH4s4s", 0x45, 0, 20 + len(udp), 0, 0x4000, 64,
                         socket.IPPROTO_UDP, 0, src, dst)
        ip = ip[:10] + struct.pack("!H", checksum(ip)) + ip[12:]
        ethertype = ETH_IPV4
    else:
        pseudo = src + dst + struct.pack("!I3xB", len(udp), socket.IPPROTO_UDP)
        ip = struct.pack("!IHBB16s16s", 0x60000000, len(udp), socket.IPPROTO_UDP, 64, src, dst)
        ethertype = ETH_IPV6
    udp = udp[:6] + struct.pack("!H", checksum(pseudo + udp) or 0xFFFF) + udp[8:]
    ethernet = mac_bytes(interface.mac) + mac_bytes(interface.peer.mac)
    return ethernet + struct.pack("!H", ethertype) + ip + udp


def mac_bytes(mac):
    return bytes.fromhex(mac.replace(":", ""))


def describe_reply(source, payload):
    """A line on a reply: where from, and its echo header's numbers."""
    if len(payload) < 20:
        return f"from {source[0]} port {source[1]}: {len(payload)} bytes, no echo header"
    code, subcode = payload[6], payload[7]
    sequence = struct.unpack_from("!I", payload, 12)[0]
    name = RETURN_CODES.get(code, "return code")
    answer = f"sequence {sequence}, {name} ({code}), subcode {subcode}"
    return f"from {source[0]} port {source[1]}: {answer}"
