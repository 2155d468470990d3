"""A network of two machines with orvanta-filterd on the first: this process's own network namespace, in which the clients
and the filter are, and another one with web servers, joined by a cable. The bus is a private one."""
import contextlib
import os
import signal
import socket
import ssl
import subprocess
import sys
import tempfile
from pathlib import Path

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib

from support.waiting import until

NAME = "com.orvanta.focus.OrvantaFocusDNSProxy"
PATH = "/com/orvanta/focus/OrvantaFocusDNSProxy"
INTERFACE = "com.orvanta.focus.Filter1"
SERVER_4, SERVER_6 = "10.77.0.2", "fd77::2"

BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN" "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>system</type><listen>unix:path={path}</listen><auth>EXTERNAL</auth>
<limit name="max_message_size">134217728</limit>
<policy context="default"><allow user="*"/><allow own="*"/><allow send_destination="*"/><allow receive_sender="*"/><allow send_type="method_call"/></policy>
</busconfig>"""

SERVERS = """
import socket, ssl, sys, threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    def do_GET(self):
        body = b"welcome"
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)
    def log_message(self, *arguments):
        pass

class Server(ThreadingHTTPServer):
    address_family = socket.AF_INET6
    request_queue_size = 256
    def handle_error(self, *arguments):
        pass

plain, secure, other = Server(("::", 80), Handler), Server(("::", 443), Handler), Server(("::", 8080), Handler)
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(sys.argv[1])
secure.socket = context.wrap_socket(secure.socket, server_side=True, do_handshake_on_connect=False)
for server in (plain, other):
    threading.Thread(target=server.serve_forever, daemon=True).start()
print("ready", flush=True)
secure.serve_forever()
"""


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


def tables():
    return run("nft", "list", "tables").split("\n")


def has_rules():
    return "table inet orvanta_focus" in tables()


def takes_connections(path):
    """Whether somebody listens at a socket, which is in its place before it is listened at."""
    with socket.socket(socket.AF_UNIX) as connection:
        return connection.connect_ex(str(path)) == 0


class Network:
    """Both machines, the bus, and the daemon. Use as a context."""

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory(prefix="orvanta-filter-")
        self.state = Path(self.folder.name, "state")
        self.state.mkdir()
        self.daemon = None
        self.processes = []
        self._join()
        self._serve()
        self._open_bus()
        return self

    def __exit__(self, *_):
        self.stop()
        for process in reversed(self.processes):
            process.kill()
            process.wait()
            if process.stdout:
                process.stdout.close()
        until(self._is_cut, "the cable is gone")
        self.folder.cleanup()

    @staticmethod
    def _is_cut():
        """The cable goes with the other machine, but only some time after it. /sys shows another network than ours, so ip is asked."""
        subprocess.run(["ip", "link", "delete", "cable"], capture_output=True)
        return subprocess.run(["ip", "link", "show", "cable"], capture_output=True).returncode != 0

    def _start(self, *command, **options):
        process = subprocess.Popen(command, **options)
        self.processes.append(process)
        return process

    def _join(self):
        run("ip", "link", "set", "lo", "up")
        other = self._start("unshare", "--net", "sleep", "infinity")
        ours = os.readlink("/proc/self/ns/net")
        until(lambda: os.readlink(f"/proc/{other.pid}/ns/net") != ours, "a second network")
        self.elsewhere = ("nsenter", "--target", str(other.pid), "--net")
        run("ip", "link", "add", "cable", "type", "veth", "peer", "name", "cable", "netns", str(other.pid))
        for there, address_4, address_6 in (((), "10.77.0.1/24", "fd77::1/64"), (self.elsewhere, f"{SERVER_4}/24", f"{SERVER_6}/64")):
            run(*there, "ip", "address", "add", address_4, "dev", "cable")
            run(*there, "ip", "address", "add", address_6, "dev", "cable", "nodad")
            run(*there, "ip", "link", "set", "cable", "up")

    def _serve(self):
        certificate = Path(self.folder.name, "server.pem")
        run("openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2", "-subj", "/CN=server",
            "-keyout", f"{certificate}.key", "-out", f"{certificate}.crt")
        certificate.write_text(Path(f"{certificate}.key").read_text() + Path(f"{certificate}.crt").read_text())
        server = self._start(*self.elsewhere, sys.executable, "-c", SERVERS, str(certificate), stdout=subprocess.PIPE, text=True)
        assert server.stdout.readline() == "ready\n"

    def _open_bus(self):
        path = Path(self.folder.name, "bus")
        configuration = Path(self.folder.name, "bus.conf")
        configuration.write_text(BUS.format(path=path))
        os.chmod(self.folder.name, 0o755)
        self._start("dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile")
        until(lambda: takes_connections(path), "the bus")
        self._connect(f"unix:path={path}")

    def _connect(self, address):
        self.address = os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = address
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.bus = Gio.DBusConnection.new_for_address_sync(self.address, flags, None, None)

    # The daemon

    def start(self, program=Path(os.environ["ORVANTA_BIN"], "orvanta-filterd")):
        self.daemon = subprocess.Popen([program], env={**os.environ, "STATE_DIRECTORY": str(self.state)})
        until(self._is_on_the_bus, "the daemon on the bus")

    def _is_on_the_bus(self):
        assert self.daemon.poll() is None, "the daemon ended"
        return self._has_owner()

    def _has_owner(self):
        return self.bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
                                  GLib.Variant("(s)", (NAME,)), None, 0, -1, None).unpack()[0]

    def stop(self, how=signal.SIGTERM):
        if self.daemon:
            self.daemon.send_signal(how)
            self.daemon.wait(30)
            self.daemon = None

    def kill(self):
        self.stop(signal.SIGKILL)

    @contextlib.contextmanager
    def machine_behind(self):
        """A third machine, whose way to the servers leads through the first one. Gives the words that run a command on it."""
        third = subprocess.Popen(["unshare", "--net", "sleep", "infinity"])
        ours = os.readlink("/proc/self/ns/net")
        try:
            until(lambda: os.readlink(f"/proc/{third.pid}/ns/net") != ours, "a third network")
            there = ("nsenter", "--target", str(third.pid), "--net")
            run("ip", "link", "add", "wire", "type", "veth", "peer", "name", "wire", "netns", str(third.pid))
            for where, last in (((), 1), (there, 2)):
                run(*where, "ip", "link", "set", "lo", "up")
                run(*where, "ip", "address", "add", f"10.78.0.{last}/24", "dev", "wire")
                run(*where, "ip", "address", "add", f"fd78::{last}/64", "dev", "wire", "nodad")
                run(*where, "ip", "link", "set", "wire", "up")
            for family, gateway in (("-4", "10.78.0.1"), ("-6", "fd78::1")):
                run(*there, "ip", family, "route", "add", "default", "via", gateway)
            for family, net, gateway in (("-4", "10.78.0.0/24", "10.77.0.1"), ("-6", "fd78::/64", "fd77::1")):
                run(*self.elsewhere, "ip", family, "route", "replace", net, "via", gateway)
            for setting in ("net.ipv4.ip_forward=1", "net.ipv6.conf.all.forwarding=1"):
                run("sysctl", "--quiet", "--write", setting)
            yield there
        finally:
            run("ip", "link", "delete", "wire")  # at once: the kernel takes its time over a network that nobody is in
            third.kill()
            third.wait()

    def call(self, method, arguments=None):
        try:
            return self.bus.call_sync(NAME, PATH, INTERFACE, method, arguments, None, 0, 60000, None).unpack()
        except GLib.Error:
            assert self.daemon is None or self.daemon.poll() is None, f"the daemon ended with {self.daemon.returncode}"
            raise

    def activate(self):
        return self.call("Activate", GLib.Variant("(s)", (NAME,)))[0]

    def save(self, domains, enabled=True, extra=None):
        provider = {
            "filterSockets": GLib.Variant("b", True),
            "filterDataProviderBundleIdentifier": GLib.Variant("s", NAME),
            "vendorConfiguration": GLib.Variant("a{sv}", {"blockedDomains": GLib.Variant("as", domains)}),
        }
        record = {
            "enabled": GLib.Variant("b", enabled),
            "grade": GLib.Variant("i", 1),
            "localizedDescription": GLib.Variant("s", "Orvanta Focus website protection"),
            "providerConfiguration": GLib.Variant("a{sv}", provider),
            **(extra or {}),
        }
        self.call("SavePreferences", GLib.Variant("(a{sv})", (record,)))

    # Clients

    def loads(self, url, *options):
        """Whether curl gets the page; a refusal must come at once and not by a time-out."""
        host = url.split("/")[2].split(":")[0]
        resolved = [part for port in (80, 443, 8080) for part in ("--resolve", f"{host}:{port}:{SERVER_4},[{SERVER_6}]")]
        done = subprocess.run(["curl", "--silent", "--insecure", "--noproxy", "*", "--max-time", "60", *resolved, *options, url],
                              capture_output=True, text=True)
        assert done.returncode != 28, f"{url} ran into the time-out"
        return done.returncode == 0 and done.stdout == "welcome"

    def connect(self, host=None, port=443):
        connection = socket.create_connection((SERVER_4, port), timeout=60)
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        if host is None:
            return connection
        context = ssl.create_default_context()
        context.check_hostname, context.verify_mode = False, ssl.CERT_NONE
        return context.wrap_socket(connection, server_hostname=host)


def asks(connection):
    """Whether a request over an open connection is answered, in full."""
    received = b""
    try:
        connection.sendall(b"GET / HTTP/1.1\r\nHost: whatever.example\r\n\r\n")
        while not received.endswith(b"welcome"):
            part = connection.recv(4096)
            if not part:
                return False
            received += part
    except (ConnectionResetError, ssl.SSLError, BrokenPipeError):
        return False
    return received.startswith(b"HTTP/1.1 200 ")
