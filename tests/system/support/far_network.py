"""The filtered network with more on it: a guest behind this machine, a router on the way to a third place, and on the far
side what people use to go round a filter."""
import os
import subprocess
import sys
import tempfile
from pathlib import Path

from .filtered import SERVER_4, SERVER_6, Network, run
from .names import Names
from .waiting import until

OWN_4 = "10.77.0.1"
# Behind the router.
OTHER_SITE, PROXY, NAMES, SECURE_PROXY, SOCKS, MANY, SOCKET, SWAPPED, FAST = (f"10.78.0.{host}" for host in range(2, 11))
TUNNEL_NEAR, TUNNEL_FAR = "10.79.0.1", "10.79.0.2"
QUIC_PORTS = (443, 8443)


class FarNetwork(Network):
    def __enter__(self):
        super().__enter__()
        self.certificate = Path(self.folder.name, "server.pem")
        self._place_guest()
        self._place_router()
        self._place_services()
        return self

    def _far(self, *command):
        run(*self.elsewhere, *command)

    def _machine(self):
        """Another one, and how commands are run there."""
        process = self._start("unshare", "--net", "sleep", "infinity")
        ours = os.readlink("/proc/self/ns/net")
        until(lambda: os.readlink(f"/proc/{process.pid}/ns/net") != ours, "another network")
        inside = ("nsenter", "--target", str(process.pid), "--net")
        run(*inside, "ip", "link", "set", "lo", "up")
        return process, inside

    def _place_guest(self):
        """A machine whose packets this one only forwards, as it does for containers."""
        process, self.guest = self._machine()
        run("ip", "link", "add", "guest", "type", "veth", "peer", "name", "guest", "netns", str(process.pid))
        run("ip", "address", "add", "10.76.0.1/24", "dev", "guest")
        run("ip", "link", "set", "guest", "up")
        run(*self.guest, "ip", "address", "add", "10.76.0.2/24", "dev", "guest")
        run(*self.guest, "ip", "link", "set", "guest", "up")
        run(*self.guest, "ip", "route", "add", "default", "via", "10.76.0.1")
        self._far("ip", "route", "add", "10.76.0.0/24", "via", OWN_4)
        run("sysctl", "-q", "-w", "net.ipv4.ip_forward=1")

    def _place_router(self):
        """The far machine leads on to another one, which has many addresses."""
        process, self.behind = self._machine()
        self._far("ip", "link", "add", "behind", "type", "veth", "peer", "name", "behind", "netns", str(process.pid))
        self._far("ip", "address", "add", "10.78.0.1/24", "dev", "behind")
        self._far("ip", "link", "set", "behind", "up")
        self._far("sysctl", "-q", "-w", "net.ipv4.ip_forward=1")
        for address in (OTHER_SITE, PROXY, NAMES, SECURE_PROXY, SOCKS, MANY, SOCKET, SWAPPED, FAST):
            run(*self.behind, "ip", "address", "add", f"{address}/24", "dev", "behind")
        run(*self.behind, "ip", "link", "set", "behind", "up")
        run(*self.behind, "ip", "route", "add", "default", "via", "10.78.0.1")
        run("ip", "route", "add", "10.78.0.0/24", "via", SERVER_4)
        run(*self.behind, "sysctl", "-q", "-w", "net.ipv4.tcp_fastopen=3")

    def _place_services(self):
        self._place(
            self.behind, ("secure-site", OTHER_SITE, 443), ("http-proxy", PROXY, 3128), ("http-proxy", PROXY, 80), ("secure-http-proxy", SECURE_PROXY, 443),
            ("socks-proxy", SOCKS, 1080), ("socks-proxy", SOCKS, 443), ("name-service-over-https", NAMES, 443), ("name-service-over-tls", NAMES, 853),
            ("site", NAMES, 80), ("many-sites", MANY, 443), ("websocket", SOCKET, 80), ("secure-site", SWAPPED, 80), ("site", SWAPPED, 443),
            ("fast-site", FAST, 80))
        self._place(self.elsewhere, ("secure-site", SERVER_4, 8443), ("tunnel", SERVER_4, 1194))
        # On this machine itself: a proxy, a site, and the near end of the tunnel.
        self._place((), ("http-proxy", "127.0.0.1", 3128), ("secure-site", "127.0.0.1", 443), ("tunnel-to-site", OWN_4, 1194))
        for where, address in ((self.elsewhere, TUNNEL_FAR), ((), TUNNEL_NEAR)):
            run(*where, "ip", "address", "add", f"{address}/24", "dev", "tunnel")
            run(*where, "ip", "link", "set", "tunnel", "up")
        self.names = Names(self.folder.name, blocked_example=SERVER_4, six_blocked_example=SERVER_6)
        pages = Path(self.folder.name, "pages")
        pages.mkdir()
        (pages / "index.html").write_text("welcome")
        for port in QUIC_PORTS:
            self._start(*self.elsewhere, "gtlsserver", "--quiet", f"--htdocs={pages}", "*", str(port), f"{self.certificate}.key", f"{self.certificate}.crt",
                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            until(lambda wanted=f":{port} ": wanted in run(*self.elsewhere, "ss", "-Hlun"), "the QUIC server")

    def _place(self, where, *services):
        program = Path(__file__).with_name("far_side.py")
        server = self._start(*where, sys.executable, str(program), str(self.certificate), SERVER_4, *(",".join(map(str, service)) for service in services),
                             stdout=subprocess.PIPE, text=True)
        assert server.stdout.readline() == "ready\n", services

    def quic(self, host, *options, port=443):
        """Whether a QUIC client gets the page. It would try again and again, so the first refusal ends it."""
        with tempfile.TemporaryDirectory() as folder:
            page = Path(folder, "index.html")
            refused = self.call("Statistics")[0]["refused"]
            client = subprocess.Popen(
                self.names.known_to("gtlsclient", "--quiet", "--exit-on-all-streams-close", f"--download={folder}", *options, host, str(port),
                                    f"https://{host}/index.html"), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            try:
                until(lambda: client.poll() is not None or self.call("Statistics")[0]["refused"] > refused, "the client's end, or a refusal")
            finally:
                client.kill()
                client.wait()
            return page.exists() and page.read_text() == "welcome"
