"""The ways round a website blocker that are known, each really tried: with the filter off it leads to the site, and with the
filter on it is stopped or it is not, as docs/website-protection.md says. Needs root, and a network namespace of its own."""
import os
import re
import socket
import ssl
import struct
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from support import far_network as far
from support.far_side import read_until
from support.filtered import SERVER_4, SERVER_6, asks
from support.raw_tcp import RawTcp
from support.waiting import BOUND

DOCUMENT = Path(__file__).resolve().parents[2] / "docs" / "website-protection.md"
HEADING = "## Ways round it"
BLOCKED = ["blocked.example", "Ported.Example:8443", "bücher.example", SERVER_4]
STOPPED, PASSES = "stopped", "not stopped"
WELCOME = b"welcome"

WAYS = []


def way(name, outcome, before=None):
    """Registers a function that tries it and returns whether the site was reached. What `before` returns, called with the
    filter off, is handed to it."""
    def register(attempt):
        WAYS.append((name, outcome, before, attempt))
        return attempt
    return register


# What clients send

def hello_for(host, extra=b""):
    """A ClientHello as OpenSSL makes it, with an extension of ours at its end."""
    context = ssl.create_default_context()
    context.check_hostname, context.verify_mode = False, ssl.CERT_NONE
    incoming, outgoing = ssl.MemoryBIO(), ssl.MemoryBIO()
    try:
        context.wrap_bio(incoming, outgoing, server_hostname=host).do_handshake()
    except ssl.SSLWantReadError:
        pass
    body = bytearray(outgoing.read()[9:])
    at = 2 + 32
    at += 1 + body[at]
    at += 2 + struct.unpack("!H", body[at:at + 2])[0]
    at += 1 + body[at]
    body[at:at + 2] = struct.pack("!H", struct.unpack("!H", body[at:at + 2])[0] + len(extra))
    message = b"\x01" + struct.pack("!I", len(body) + len(extra))[1:] + body + extra
    return b"\x16\x03\x01" + struct.pack("!H", len(message)) + message


def answered(connection):
    """Whether a TLS server answers with its own hello. Not if the connection is refused."""
    try:
        first = connection.recv(1)
    except ConnectionResetError:
        return False
    assert first in (b"", b"\x16"), first
    return first == b"\x16"


def says(connection, request):
    """Whether the request is answered with the page."""
    try:
        connection.sendall(request)
        return WELCOME in read_until(connection, WELCOME)
    except OSError as error:
        assert not isinstance(error, TimeoutError)
        return False


def plain(address=SERVER_4, port=80):
    return socket.create_connection((address, port), timeout=BOUND)


def request_for(host, *lines):
    return "\r\n".join(["GET / HTTP/1.1", f"Host: {host}", *lines, "", ""]).encode()


def fetch(network, url, *options, addresses=(SERVER_4, f"[{SERVER_6}]"), inside=()):
    """Whether curl gets the page."""
    host, _, port = url.split("/")[2].partition(":")
    port = port or {"http": "80", "https": "443"}[url.split(":")[0]]
    done = subprocess.run([*inside, "curl", "--silent", "--insecure", "--noproxy", "*", "--max-time", "60", "--resolve", f"{host}:{port}:{','.join(addresses)}",
                           *options, url], capture_output=True)
    assert done.returncode != 28, f"{url} ran into the time-out"
    return done.returncode == 0 and WELCOME in done.stdout


# Names

@way("HTTP", STOPPED)
def _(network):
    return fetch(network, "http://blocked.example/")


@way("HTTPS", STOPPED)
def _(network):
    return fetch(network, "https://blocked.example/")


@way("a sub-domain", STOPPED)
def _(network):
    return fetch(network, "https://a.b.blocked.example/")


@way("upper case", STOPPED)
def _(network):
    with plain() as connection:
        return says(connection, request_for("BLOCKED.Example"))


@way("a trailing dot", STOPPED)
def _(network):
    with plain() as connection:
        return says(connection, request_for("blocked.example."))


@way("a port behind the name", STOPPED)
def _(network):
    with plain() as connection:
        return says(connection, request_for("blocked.example:80"))


@way("a site whose entry names another port", STOPPED)
def _(network):
    return fetch(network, "https://ported.example/")


@way("a name in another script, as it travels", STOPPED)
def _(network):
    return fetch(network, "https://xn--bcher-kva.example/")


@way("another name of the same site, not on the list", PASSES)
def _(network):
    return fetch(network, "https://alias.example/")


@way("the site's address in place of its name, over HTTP, with the address on the list", STOPPED)
def _(network):
    return fetch(network, f"http://{SERVER_4}/")


@way("the site's address in place of its name, over HTTPS, even with the address on the list", PASSES)
def _(network):
    return fetch(network, f"https://{SERVER_4}/")


@way("the site by a name that only this machine knows, served by itself", PASSES)
def _(network):
    return fetch(network, "https://blocked.example/", addresses=["127.0.0.1"])


# Ways to the same address

@way("IPv6 alone", STOPPED)
def _(network):
    return fetch(network, "https://blocked.example/", "-6")


@way("an IPv4 address inside an IPv6 socket", STOPPED)
def _(network):
    with socket.socket(socket.AF_INET6) as connection:
        connection.settimeout(BOUND)
        connection.connect((f"::ffff:{SERVER_4}", 443))
        connection.sendall(hello_for("blocked.example"))
        return answered(connection)


@way("another port, HTTP", PASSES)
def _(network):
    return fetch(network, "http://blocked.example:8080/")


@way("another port, HTTPS", PASSES)
def _(network):
    return fetch(network, "https://blocked.example:8443/")


@way("HTTP on port 443", STOPPED)
def _(network):
    return fetch(network, "http://blocked.example:443/", addresses=[far.SWAPPED])


@way("HTTPS on port 80", STOPPED)
def _(network):
    return fetch(network, "https://blocked.example:80/", addresses=[far.SWAPPED])


@way("WebSocket", STOPPED)
def _(network):
    with plain(far.SOCKET) as connection:
        return says(connection, request_for("blocked.example", "Connection: Upgrade", "Upgrade: websocket", "Sec-WebSocket-Version: 13",
                                            "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ=="))


@way("a container or virtual machine whose packets this machine forwards", STOPPED)
def _(network):
    return fetch(network, "https://blocked.example/", addresses=[SERVER_4], inside=network.guest)


# QUIC

@way("QUIC", STOPPED)
def _(network):
    return network.quic("blocked.example")


@way("QUIC over IPv6", STOPPED)
def _(network):
    return network.quic("six.blocked.example")


@way("QUIC in a version that nobody uses any more (a draft of version 2)", PASSES)
def _(network):
    return network.quic("blocked.example", "--version=v2draft")


@way("QUIC on another port", PASSES)
def _(network):
    return network.quic("blocked.example", port=8443)


# What a client may leave out, or say otherwise

@way("a hello that names no server", PASSES)
def _(network):
    with plain(port=443) as connection:
        connection.sendall(hello_for(None))
        return answered(connection)


@way("encrypted ClientHello, the outer name another site's", PASSES)
def _(network):
    inner = b"\x00\x00\x01\x00\x01\x07\x00\x20" + os.urandom(32) + struct.pack("!H", 208) + os.urandom(208)
    with plain(port=443) as connection:
        connection.sendall(hello_for("cover.example", struct.pack("!HH", 0xfe0d, len(inner)) + inner))
        return answered(connection)


@way("another site's server name, the Host line inside", PASSES)
def _(network):
    return fetch(network, "https://allowed.example/", "--header", "Host: blocked.example")


@way("another site's Host line, the site in the target", STOPPED)
def _(network):
    with plain() as connection:
        return says(connection, b"GET http://blocked.example/ HTTP/1.1\r\nHost: allowed.example\r\n\r\n")


@way("no Host line", PASSES)
def _(network):
    with plain() as connection:
        return says(connection, b"GET / HTTP/1.0\r\n\r\n")


@way("the Host line broken in two", STOPPED)
def _(network):
    with plain() as connection:
        return says(connection, b"GET / HTTP/1.1\r\nHost:\r\n blocked.example\r\n\r\n")


@way("the Host line behind 16 KiB of others", PASSES)
def _(network):
    with plain() as connection:
        return says(connection, b"GET / HTTP/1.1\r\nX: " + b"x" * 17000 + b"\r\nHost: blocked.example\r\n\r\n")


@way("another site first, then this one, over one HTTP connection", PASSES)
def _(network):
    with plain() as connection:
        return says(connection, request_for("allowed.example")) and says(connection, request_for("blocked.example"))


@way("another site first, then this one, over one HTTP/2 connection", PASSES)
def _(network):
    import h2.connection
    context = ssl.create_default_context()
    context.check_hostname, context.verify_mode = False, ssl.CERT_NONE
    context.set_alpn_protocols(["h2"])
    with context.wrap_socket(plain(far.MANY, 443), server_hostname="allowed.example") as connection:
        client = h2.connection.H2Connection()
        client.initiate_connection()
        for host in ("allowed.example", "blocked.example"):
            client.send_headers(client.get_next_available_stream_id(), [(":method", "GET"), (":path", "/"), (":scheme", "https"), (":authority", host)],
                                end_stream=True)
        connection.sendall(client.data_to_send())
        return WELCOME in read_until(connection, b" to blocked.example")


# Pieces

@way("the hello in segments of one byte", STOPPED)
def _(network):
    return in_segments(1)


@way("the hello in segments of a hundred bytes", STOPPED)
def _(network):
    return in_segments(100)


def in_segments(size):
    hello = hello_for("blocked.example")
    with plain(port=443) as connection:
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        try:
            for at in range(0, len(hello), size):
                connection.sendall(hello[at:at + size])
        except (BrokenPipeError, ConnectionResetError):
            return False
        return answered(connection)


@way("the hello in records of sixteen bytes", STOPPED)
def _(network):
    message = hello_for("blocked.example")[5:]
    parts = [message[at:at + 16] for at in range(0, len(message), 16)]
    with plain(port=443) as connection:
        connection.sendall(b"".join(b"\x16\x03\x01" + struct.pack("!H", len(part)) + part for part in parts))
        return answered(connection)


@way("the request in single bytes", STOPPED)
def _(network):
    with plain() as connection:
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        request = request_for("blocked.example")
        try:
            for at in range(len(request) - 1):
                connection.sendall(request[at:at + 1])
        except (BrokenPipeError, ConnectionResetError):
            return False
        return says(connection, request[-1:])


@way("segments out of order", STOPPED)
def _(network):
    hello = hello_for("blocked.example")
    third = len(hello) // 3
    with RawTcp(far.OWN_4, SERVER_4) as connection:
        connection.send(third, hello[third:2 * third])
        connection.send(2 * third, hello[2 * third:])
        connection.send(0, hello[:third])
        return bool(connection.answer())


@way("segments that overlap, with other bytes in the place of the name", STOPPED)
def _(network):
    hello = hello_for("blocked.example")
    name = hello.index(b"blocked.example")
    with RawTcp(far.OWN_4, SERVER_4) as connection:
        connection.send(name, b"allowed.example")
        connection.send(0, hello)
        return bool(connection.answer())


@way("a decoy that the server drops for its checksum, before the hello", PASSES)
def _(network):
    with RawTcp(far.OWN_4, SERVER_4) as connection:
        connection.send(0, hello_for("allowed.example"), damaged=True)
        connection.send(0, hello_for("blocked.example"))
        return bool(connection.answer())


@way("a decoy whose time to live ends on the way, before the hello", PASSES)
def _(network):
    with RawTcp(far.OWN_4, far.OTHER_SITE) as connection:
        connection.send(0, hello_for("allowed.example"), ttl=1)
        connection.send(0, hello_for("blocked.example"))
        return bool(connection.answer())


@way("packets in fragments", STOPPED)
def _(network):
    with RawTcp(far.OWN_4, SERVER_4) as connection:
        connection.send(0, hello_for("blocked.example"), fragments=64)
        return bool(connection.answer())


@way("packets in fragments that the kernel is told not to put together (root alone can)", PASSES)
def _(network):
    with RawTcp(far.OWN_4, SERVER_4, keep_fragments=True) as connection:
        connection.send(0, hello_for("blocked.example"), fragments=64)
        return bool(connection.answer())


@way("the request inside the first packet of a connection (TCP Fast Open)", STOPPED)
def _(network):
    def ask(host):
        with socket.socket() as connection:  # without a time-out until it is sent, since else the packet goes without it
            connection.sendto(request_for(host), 0x20000000, (far.FAST, 80))
            connection.settimeout(BOUND)
            return WELCOME in read_until(connection, WELCOME)

    assert ask("allowed.example")  # gets the cookie that the second one needs
    try:
        return ask("blocked.example")
    except (ConnectionResetError, ConnectionRefusedError):
        return False


# Connections from before

@way("an HTTPS connection from before", STOPPED, before=lambda network: opened(network.connect("blocked.example")))
def _(network, connection):
    with connection:
        return asks(connection)


@way("an HTTP connection from before", STOPPED, before=lambda network: opened(plain()))
def _(network, connection):
    with connection:
        return says(connection, request_for("blocked.example"))


def opened(connection):
    assert asks(connection)
    return connection


# Names that are looked up in secret

@way("names over HTTPS (DoH)", STOPPED)
def _(network):
    done = subprocess.run(["curl", "--silent", "--insecure", "--doh-insecure", "--noproxy", "*", "--max-time", "60", "--ipv4", "--doh-url",
                           "https://names.example/dns-query", "--resolve", f"names.example:443:{far.NAMES}", "https://blocked.example/"], capture_output=True)
    assert done.returncode != 28
    return WELCOME in done.stdout


@way("names over TLS (DoT)", STOPPED)
def _(network):
    context = ssl.create_default_context()
    context.check_hostname, context.verify_mode = False, ssl.CERT_NONE
    question = struct.pack("!HHHHHH", 7, 0x100, 1, 0, 0, 0) + b"\x07blocked\x07example\0" + struct.pack("!HH", 1, 1)
    with context.wrap_socket(plain(far.NAMES, 853), server_hostname="names.example") as names:
        names.sendall(struct.pack("!H", len(question)) + question)
        address = socket.inet_ntoa(read_until(names, socket.inet_aton(SERVER_4))[-4:])
    return fetch(network, "https://blocked.example/", addresses=[address])


# By way of others

@way("an HTTP proxy elsewhere", PASSES)
def _(network):
    return proxied(f"http://{far.PROXY}:3128")


@way("an HTTP proxy elsewhere on port 80", STOPPED)
def _(network):
    return proxied(f"http://{far.PROXY}:80")


@way("an HTTP proxy elsewhere on port 80, for a page over HTTP", STOPPED)
def _(network):
    return proxied(f"http://{far.PROXY}:80", "http://blocked.example/")


@way("an HTTPS proxy elsewhere", PASSES)
def _(network):
    return proxied(f"https://{far.SECURE_PROXY}:443")


@way("an HTTP proxy on this machine that asks the site itself", STOPPED)
def _(network):
    return proxied("http://127.0.0.1:3128")


@way("a SOCKS proxy elsewhere", PASSES)
def _(network):
    return proxied(f"socks5h://{far.SOCKS}:1080")


@way("a SOCKS proxy elsewhere on port 443", STOPPED)
def _(network):
    return proxied(f"socks5h://{far.SOCKS}:443")


def proxied(proxy, url="https://blocked.example/"):
    done = subprocess.run(["curl", "--silent", "--insecure", "--proxy-insecure", "--noproxy", "", "--max-time", "60", "--proxy", proxy, url], capture_output=True)
    assert done.returncode != 28, f"{proxy} ran into the time-out"
    return WELCOME in done.stdout


@way("a VPN that ends on this machine: its packets go through the filter first", STOPPED)
def _(network):
    return fetch(network, "https://blocked.example/", addresses=[far.TUNNEL_FAR])


@way("a site that shows other sites' pages (a web proxy, a translator, a cache)", PASSES)
def _(network):
    return fetch(network, "http://translator.example/fetch", addresses=[far.NAMES])


def table(found):
    lines = ["| way | with the filter on |", "|---|---|", *(f"| {name} | {outcome} |" for name, outcome in found)]
    return "\n".join(lines)


class WaysRound(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.network = far.FarNetwork()
        cls.network.__enter__()
        cls.addClassCleanup(cls.network.__exit__)
        cls.network.start()
        assert cls.network.activate() == 0

    def try_all(self, enabled):
        """Each way's name, and whether it led to the site."""
        self.network.save(BLOCKED, enabled=False)
        prepared = [before(self.network) if before else None for _, _, before, _ in WAYS]
        self.network.save(BLOCKED, enabled=enabled)
        reached = []
        for (name, _, before, attempt), context in zip(WAYS, prepared):
            with self.subTest(way=name):
                reached.append((name, attempt(self.network, context) if before else attempt(self.network)))
        self.assertEqual(len(reached), len(WAYS), "every way could be tried")
        return reached

    def test_without_the_filter_every_way_leads_to_the_site(self):
        self.assertGreaterEqual(len(WAYS), 20)
        self.assertEqual([name for name, reached in self.try_all(enabled=False) if not reached], [])

    def test_with_the_filter_each_way_ends_as_expected_and_as_documented(self):
        found = [(name, PASSES if reached else STOPPED) for name, reached in self.try_all(enabled=True)]
        print(table(found))
        print(f"{sum(outcome == STOPPED for _, outcome in found)} of {len(found)} ways are stopped")
        self.assertEqual(found, [(name, outcome) for name, outcome, _, _ in WAYS])
        section = DOCUMENT.read_text(encoding="utf-8").partition(HEADING)[2].partition("\n## ")[0]
        documented = re.findall(r"^\| (?!way \|)(.+?) \| (.+?) \|$", section, re.MULTILINE)
        self.assertEqual(found, documented)


if __name__ == "__main__":
    unittest.main(verbosity=2)
