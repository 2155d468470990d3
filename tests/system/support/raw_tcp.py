"""A TCP client that makes its own packets, for what no ordinary socket sends: segments out of order, twice with other bytes,
in fragments, or with a time to live that ends on the way. Version 4 only."""
import socket
import struct
import subprocess

from .waiting import BOUND

_IP_NODEFRAG = 22
_SYN, _RST, _ACK = 0x02, 0x04, 0x10


def _checksum(data):
    if len(data) % 2:
        data += b"\0"
    total = sum(struct.unpack(f"!{len(data) // 2}H", data))
    while total >> 16:
        total = (total & 0xffff) + (total >> 16)
    return ~total & 0xffff


class RawTcp:
    """A connection. Use as a context."""

    _ports = iter(range(20000, 30000))

    def __init__(self, source, destination, port=443, keep_fragments=False):
        self.source, self.destination, self.port = source, destination, port
        self.own_port = next(self._ports)
        self.sequence, self.acknowledged = 1_000_000, 0
        self.sender = socket.socket(socket.AF_INET, socket.SOCK_RAW, socket.IPPROTO_RAW)
        if keep_fragments:
            self.sender.setsockopt(socket.IPPROTO_IP, _IP_NODEFRAG, 1)
        self.receiver = socket.socket(socket.AF_INET, socket.SOCK_RAW, socket.IPPROTO_TCP)
        self.receiver.settimeout(BOUND)

    def __enter__(self):
        # The kernel knows nothing of this connection and would reset it.
        table = f"raw_tcp_{self.own_port}"
        for command in (f"add table ip {table}", f"add chain ip {table} output {{ type filter hook output priority -350; }}",
                        f"add rule ip {table} output ip saddr {self.source} tcp sport {self.own_port} tcp flags & rst == rst drop"):
            subprocess.run(["nft", *command.split(" ")], check=True, capture_output=True)
        self._send(_SYN, self.sequence)
        while True:
            sequence, flags, _ = self._receive()
            if flags & _SYN:
                break
        self.sequence += 1
        self.acknowledged = (sequence + 1) & 0xffffffff
        self._send(_ACK, self.sequence)
        return self

    def __exit__(self, *_):
        subprocess.run(["nft", "delete", "table", "ip", f"raw_tcp_{self.own_port}"], check=True, capture_output=True)
        self.sender.close()
        self.receiver.close()

    def send(self, offset, payload, **options):
        """Bytes for a place of the stream. `ttl`, `damaged` (a wrong checksum), `fragments` (so many bytes each)."""
        self._send(_ACK, (self.sequence + offset) & 0xffffffff, payload, **options)

    def answer(self):
        """The first bytes that come back; empty if the connection is refused."""
        while True:
            _, flags, payload = self._receive()
            if flags & _RST:
                return b""
            if payload:
                return payload

    def _send(self, flags, sequence, payload=b"", ttl=64, damaged=False, fragments=None):
        header = struct.pack("!HHIIBBHHH", self.own_port, self.port, sequence, self.acknowledged, 0x50, flags, 64240, 0, 0)
        pseudo = socket.inet_aton(self.source) + socket.inet_aton(self.destination) + struct.pack("!BBH", 0, socket.IPPROTO_TCP, len(header) + len(payload))
        checksum = _checksum(pseudo + header + payload) ^ (0x5555 if damaged else 0)
        segment = header[:16] + struct.pack("!H", checksum) + header[18:] + payload
        size = fragments or len(segment)
        for at in range(0, len(segment), size):
            part = segment[at:at + size]
            more = 0x2000 if at + size < len(segment) else 0
            ip = struct.pack("!BBHHHBBH4s4s", 0x45, 0, 20 + len(part), self.own_port, more | at // 8, ttl, socket.IPPROTO_TCP, 0,
                             socket.inet_aton(self.source), socket.inet_aton(self.destination))
            self.sender.sendto(ip[:10] + struct.pack("!H", _checksum(ip)) + ip[12:] + part, (self.destination, 0))

    def _receive(self):
        while True:
            packet = self.receiver.recv(65536)
            head = (packet[0] & 15) * 4
            source_port, own_port, sequence, _, size, flags = struct.unpack("!HHIIBB", packet[head:head + 14])
            if packet[12:16] == socket.inet_aton(self.destination) and (source_port, own_port) == (self.port, self.own_port):
                total = struct.unpack("!H", packet[2:4])[0]
                return sequence, flags, packet[head + (size >> 4) * 4:total]
