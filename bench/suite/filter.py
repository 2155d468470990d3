"""What the website filter costs: new connections, long transfers, CPU and memory, beside no filter at all and beside other
programs that block web sites, in turn within one run. In a network of its own, whose web server stands on another machine of
it. Needs root."""
import json
import os
import subprocess
import sys
from contextlib import contextmanager
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tests" / "system"))

from support import own_network  # noqa: E402

from . import processes, scene  # noqa: E402
from .table import Row, median  # noqa: E402

ALLOWED, BLOCKED = "allowed.example", "blocked.example"
SERVER = "10.77.0.2"
PRIVOXY, SQUID = 8118, 3128
BULK_MIB = 256
AIM_TLS, AIM_HTTP, AIM_BULK, AIM_LOOKUP, AIM_BYTES = 1.1, 1.4, 0.95, 120, 32
MILLION = 1_000_000

NGINX = """daemon off; worker_processes 1; pid {folder}/nginx.pid; error_log {folder}/error.log;
events {{ worker_connections 1024; }}
http {{ access_log off; sendfile on; server_tokens off;
  server {{ listen 80 backlog=1024; listen 443 ssl backlog=1024; ssl_certificate {folder}/server.pem; ssl_certificate_key {folder}/server.pem;
    root {folder}/pages; }} }}
"""

SQUID_CONF = """http_port 127.0.0.1:{port} ssl-bump tls-cert={folder}/server.pem
pid_filename {folder}/squid.pid
cache_log {folder}/squid.log
access_log none
cache deny all
cache_mem 8 MB
netdb_filename none
pinger_enable off
shutdown_lifetime 0 seconds
cache_effective_user root
sslcrtd_program /usr/lib/squid/security_file_certgen -s {folder}/certificates -M 4MB
acl blocked dstdomain .{blocked}
acl blocked_name ssl::server_name .{blocked}
acl first at_step SslBump1
ssl_bump peek first
ssl_bump terminate blocked_name
ssl_bump splice all
http_access deny blocked
http_access allow all
"""


class Scene:
    """Both machines, with the server that all are measured against."""

    def __init__(self):
        own_network.enter()
        from support.filtered import Network  # whose clients and daemon run in this network

        class Bench(Network):
            def _serve(self):
                folder = Path(self.folder.name)
                pages = folder / "pages"
                pages.mkdir()
                (pages / "index.html").write_text("")
                with open(pages / "bulk", "wb") as bulk:
                    bulk.truncate(BULK_MIB * 1024 * 1024)
                subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2", "-subj",
                                "/CN=bench", "-keyout", folder / "key", "-out", folder / "crt"], check=True, capture_output=True)
                (folder / "server.pem").write_text((folder / "key").read_text() + (folder / "crt").read_text())
                (folder / "nginx.conf").write_text(NGINX.format(folder=folder))
                os.chmod(folder, 0o755)
                self._start(*self.elsewhere, "nginx", "-c", str(folder / "nginx.conf"), stderr=subprocess.DEVNULL)
                scene.until(lambda: ":443 " in scene.tool(*self.elsewhere, "ss", "-Hltn"), "the web server")

        self.network = Bench().__enter__()
        self.folder = Path(self.network.folder.name)
        from support.names import Names
        self.names = Names(self.folder, allowed_example=SERVER, blocked_example=SERVER)

    def probe(self, *options, port=None, host=ALLOWED, path="/", proxy=None):
        tls = "--tls" in options
        address, port = ("127.0.0.1", proxy) if proxy else (SERVER, port or (443 if tls else 80))
        return scene.run("connection_probe", address, port, host, path, *options, *(["--proxy"] if proxy else []))[0]

    @contextmanager
    def program(self, *command, port=None):
        with scene.running(*command) as process:
            if port:
                scene.until(lambda: process.check() or f":{port} " in scene.tool("ss", "-Hltn"), f"{command} listens")
            yield process.pid

    @contextmanager
    def none(self):
        yield None, None

    @contextmanager
    def ours(self):
        self.network.start()
        try:
            assert self.network.activate() == 0
            self.network.save([BLOCKED])
            yield self.network.daemon.pid, None
        finally:
            self.network.stop()

    @contextmanager
    def opensnitchd(self):
        rules = self.folder / "rules"
        rules.mkdir(exist_ok=True)
        with self.program("opensnitchd", "-rules-path", str(rules), "-process-monitor-method", "proc", "-queue-num", "7", "-error") as pid:
            scene.until(lambda: "NFQUEUE" in scene.tool("iptables-save"), "opensnitchd's rules")
            yield pid, None

    @contextmanager
    def privoxy(self):
        actions, configuration = self.folder / "blocked.action", self.folder / "privoxy.conf"
        actions.write_text(f"{{+block{{focus}}}}\n.{BLOCKED}\n")
        configuration.write_text(f"listen-address 127.0.0.1:{PRIVOXY}\nconfdir {self.folder}\nlogdir {self.folder}\nactionsfile {actions.name}\n")
        (self.folder / "templates").mkdir(exist_ok=True)
        for template in Path("/etc/privoxy/templates").iterdir():
            (self.folder / "templates" / template.name).write_bytes(template.read_bytes())
        with self.program(*self.names.known_to("privoxy", "--no-daemon", str(configuration)), port=PRIVOXY) as pid:
            yield pid, PRIVOXY

    @contextmanager
    def squid(self):
        configuration = self.folder / "squid.conf"
        configuration.write_text(SQUID_CONF.format(port=SQUID, folder=self.folder, blocked=BLOCKED))
        if not (self.folder / "certificates").exists():
            subprocess.run(["/usr/lib/squid/security_file_certgen", "-c", "-s", self.folder / "certificates", "-M", "4MB"], check=True, capture_output=True)
        with self.program(*self.names.known_to("squid", "-N", "-f", str(configuration)), port=SQUID) as pid:
            yield pid, SQUID

    def memory_with_a_million(self):
        """Resident MiB of our daemon, settled."""
        with self.ours() as (pid, _):
            self.network.save([f"name{number:08}.example" for number in range(MILLION)])
            scene.settle(pid)
            return processes.pss(pid)


def look(world, name, count):
    """One round with one of them: a dictionary of figures."""
    with getattr(world, name)() as (pid, proxy):
        world.probe("--count", "50", proxy=proxy)  # warm
        found = {"blocks": world.probe("--tls", "--count", "5", host=BLOCKED, proxy=proxy)["refused"] == 5}
        tls = world.probe("--tls", "--count", str(count), proxy=proxy)
        http = world.probe("--count", str(count), proxy=proxy)
        begin = processes.cpu(pid) if pid else 0.0
        many = world.probe("--threads", "4", "--count", str(4 * count), proxy=proxy)
        spent = processes.cpu(pid) - begin if pid else 0.0
        bulk = world.probe("--count", "4", path="/bulk", proxy=proxy)
        assert not tls["refused"] + http["refused"] + many["refused"] + bulk["refused"], f"{name}: allowed pages were refused"
        if name != "none":
            assert pid and (found["blocks"] or name == "opensnitchd"), f"{name} does not block"
        return {**found, "tls": tls["p50_us"], "http": http["p50_us"], "rate": many["per_second"], "bulk": bulk["bytes_per_second"] / 1e9,
                "cpu": spent * 1e6 / (4 * count), "pss": processes.pss(pid) if pid else 0.0}


def measure(options):
    count = options.count or 400
    world = Scene()
    names = ["none", "ours", "opensnitchd", "privoxy", "squid"]
    rounds = {name: [] for name in names}
    try:
        for _ in range(3):
            for name in list(names):
                try:
                    rounds[name].append(look(world, name, count))
                except (RuntimeError, TimeoutError, AssertionError, subprocess.CalledProcessError) as error:
                    if name in ("none", "ours"):
                        raise
                    options.note(f"filter: {name} could not be measured here: {str(error).splitlines()[0]}")
                    names.remove(name)
        memory = world.memory_with_a_million()
    finally:
        world.network.__exit__(None, None, None)
    figures = {name: {key: median([found[key] for found in rounds[name]]) for key in rounds[name][0]} for name in names}
    lookup = json.loads(scene.tool(str(scene.BIN / "filter_bench")))
    peers = names[2:]
    none, ours = figures["none"], figures["ours"]

    def row(key, work, pattern, aim, reached):
        others = ", ".join(pattern.format(figures[name][key]) for name in peers)
        return Row(f"{work} ({', '.join(peers)}; limit: no filter)", pattern.format(ours[key]), others or "-", pattern.format(none[key]),
                   f"{ours[key] / none[key]:.2f} of limit", aim, reached)

    def quicker(key):
        return all(ours[key] < figures[name][key] for name in peers)

    rows = [
        row("tls", "filter: a new TLS connection, allowed", "{:.0f} us", f"<= {AIM_TLS} x limit, ahead of all", ours["tls"] <= AIM_TLS * none["tls"] and quicker("tls")),
        row("http", "filter: a new HTTP connection, allowed", "{:.0f} us", f"<= {AIM_HTTP} x limit, ahead of all",
            ours["http"] <= AIM_HTTP * none["http"] and quicker("http")),
        row("rate", "filter: new HTTP connections a second, four threads", "{:.0f}", "-", None),
        row("bulk", "filter: bulk transfer, HTTP", "{:.2f} GB/s", f">= {AIM_BULK} x limit", ours["bulk"] >= AIM_BULK * none["bulk"]),
        Row(f"filter: CPU of the daemon a new HTTP connection ({', '.join(peers)})", f"{ours['cpu']:.0f} us",
            ", ".join(f"{figures[name]['cpu']:.0f} us" for name in peers) or "-"),
        Row(f"filter: resident (PSS), one domain ({', '.join(peers)})", f"{ours['pss']:.1f} MiB", ", ".join(f"{figures[name]['pss']:.1f} MiB" for name in peers) or "-"),
        Row("filter: resident (PSS), a million domains", f"{memory:.1f} MiB"),
        Row("filter: look-up among a million domains (unordered_set)", f"{lookup['ours_ns']:.0f} ns", f"{lookup['peer_ns']:.0f} ns", "-",
            f"{lookup['ours_ns'] / lookup['peer_ns']:.2f}", f"<= {AIM_LOOKUP} ns", lookup["ours_ns"] <= AIM_LOOKUP),
        Row("filter: bytes an entry of a million", f"{lookup['bytes_each']:.1f}", "-", "-", "-", f"<= {AIM_BYTES}", lookup["bytes_each"] <= AIM_BYTES),
    ]
    for name in peers:
        if not figures[name]["blocks"]:
            options.note(f"filter: {name} blocks nothing without somebody to ask; its cost alone is measured")
    return rows
