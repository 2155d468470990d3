"""What stands on the far side of the filtered network beside the web site itself: proxies, name services, and sites that
speak in other ways. Run as a program there:

    python3 far_side.py CERTIFICATE SITE KIND,HOST,PORT…

with a KIND of the table at the end. Prints "ready" when all of them listen. Proxies take every name for SITE."""
import fcntl
import os
import select
import socket
import ssl
import struct
import sys
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

WELCOME = b"welcome"


def listening(host, port):
    """A socket; whoever connects from now on waits until it is served."""
    family = socket.AF_INET6 if ":" in host else socket.AF_INET
    server = socket.socket(family, socket.SOCK_STREAM)
    server.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    server.bind((host, port))
    server.listen(64)
    return server


def serve(server, handle):
    def one(connection):
        with connection:
            try:
                handle(connection)
            except OSError:
                pass  # whoever was there has gone

    while True:
        connection, _ = server.accept()
        threading.Thread(target=one, args=(connection,), daemon=True).start()


def pump(left, right):
    """Carries bytes both ways until one side ends."""
    while True:
        for ready in select.select([left, right], [], [])[0]:
            part = ready.recv(65536)
            if not part:
                return
            (right if ready is left else left).sendall(part)


def read_until(connection, end):
    received = b""
    while end not in received:
        part = connection.recv(65536)
        if not part:
            raise OSError
        received += part
    return received


def exactly(connection, size):
    received = b""
    while len(received) < size:
        part = connection.recv(size - len(received))
        if not part:
            raise OSError
        received += part
    return received


class Site(BaseHTTPRequestHandler):
    """A page for every address. "/fetch" is one that shows another site's."""
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        body = WELCOME
        if self.path == "/fetch":
            with socket.create_connection((sys.argv[2], 80)) as site:
                site.sendall(b"GET / HTTP/1.0\r\n\r\n")
                body = WELCOME if WELCOME in read_until(site, WELCOME) else b""
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


def site(host, port, context=None, fast_open=False):
    class Server(ThreadingHTTPServer):
        address_family = socket.AF_INET6 if ":" in host else socket.AF_INET
        request_queue_size = 64

        def server_bind(self):
            if fast_open:
                self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_FASTOPEN, 64)
            super().server_bind()

        def handle_error(self, *_):
            pass

    server = Server((host, port), Site)
    if context:
        server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
    return server.serve_forever


def http_proxy(connection):
    head = read_until(connection, b"\r\n\r\n")
    method, target, _ = head.split(b" ", 2)
    port = int(target.rpartition(b":")[2]) if method == b"CONNECT" else 80
    with socket.create_connection((sys.argv[2], port)) as onward:
        if method == b"CONNECT":
            connection.sendall(b"HTTP/1.1 200 OK\r\n\r\n")
        else:
            onward.sendall(b"GET / HTTP/1.0\r\n" + head.partition(b"\r\n")[2])
        pump(connection, onward)


def socks_proxy(connection):
    _, methods = exactly(connection, 2)
    exactly(connection, methods)
    connection.sendall(b"\x05\x00")
    _, _, _, kind = exactly(connection, 4)
    exactly(connection, {1: 4, 4: 16}[kind] if kind != 3 else exactly(connection, 1)[0])
    port = struct.unpack("!H", exactly(connection, 2))[0]
    with socket.create_connection((sys.argv[2], port)) as onward:
        connection.sendall(b"\x05\x00\x00\x01" + bytes(6))
        pump(connection, onward)


def answer_to(question):
    """To a name's first address question: the site's address. To any other: nothing."""
    end = question.index(b"\0", 12) + 5
    kind = struct.unpack("!H", question[end - 4:end - 2])[0]
    records = b"" if kind != 1 else b"\xc0\x0c" + struct.pack("!HHIH", 1, 1, 60, 4) + socket.inet_aton(sys.argv[2])
    return question[:2] + struct.pack("!HHHHH", 0x8180, 1, 1 if records else 0, 0, 0) + question[12:end] + records


def name_service_over_tls(connection):
    while True:
        size = struct.unpack("!H", exactly(connection, 2))[0]
        answer = answer_to(exactly(connection, size))
        connection.sendall(struct.pack("!H", len(answer)) + answer)


def name_service_over_https(connection):
    while True:
        head, _, body = read_until(connection, b"\r\n\r\n").partition(b"\r\n\r\n")
        size = next(int(line.split(b":")[1]) for line in head.split(b"\r\n") if line.lower().startswith(b"content-length:"))
        answer = answer_to(body + exactly(connection, size - len(body)))
        connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Type: application/dns-message\r\nContent-Length: %d\r\n\r\n" % len(answer) + answer)


def websocket(connection):
    """Takes any handshake, and says one word."""
    read_until(connection, b"\r\n\r\n")
    connection.sendall(b"HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n\r\n\x81\x07" + WELCOME)
    connection.recv(1)


def many_sites(connection):
    """HTTP/2: every name over one connection."""
    import h2.config
    import h2.connection
    import h2.events

    server = h2.connection.H2Connection(h2.config.H2Configuration(client_side=False))
    server.initiate_connection()
    while True:
        connection.sendall(server.data_to_send())
        received = connection.recv(65536)
        if not received:
            return
        for event in server.receive_data(received):
            if isinstance(event, h2.events.RequestReceived):
                name = next(value for field, value in event.headers if field == b":authority")
                server.send_headers(event.stream_id, [(":status", "200")])
                server.send_data(event.stream_id, WELCOME + b" to " + name, end_stream=True)


def tunnel(host, port, peer=None):
    """Either end of a virtual private network: packets in datagrams, in and out of a device of this machine's own. An end
    without a peer waits to be spoken to."""
    device = os.open("/dev/net/tun", os.O_RDWR)
    set_interface, is_tun, without_header = 0x400454CA, 0x0001, 0x1000
    fcntl.ioctl(device, set_interface, struct.pack("16sH22x", b"tunnel", is_tun | without_header))
    carrier = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    carrier.bind((host, port))

    def carry():
        end = peer
        while True:
            for ready in select.select([device, carrier], [], [])[0]:
                if ready is device:
                    packet = os.read(device, 65536)
                    if end:
                        carrier.sendto(packet, end)
                    continue
                packet, end = carrier.recvfrom(65536)
                try:
                    os.write(device, packet)
                except OSError:
                    pass  # not up yet: lost, as on any network
    return carry


def service(kind, host, port, certificate):
    """A function that serves for ever; the socket listens already."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate)
    if kind == "many-sites":
        context.set_alpn_protocols(["h2"])
    if kind == "tunnel":
        return tunnel(host, port)
    if kind == "tunnel-to-site":
        return tunnel(host, port, peer=(sys.argv[2], port))
    if kind in ("site", "secure-site", "fast-site"):
        return site(host, port, context if kind == "secure-site" else None, fast_open=kind == "fast-site")
    handle, is_secure = {
        "http-proxy": (http_proxy, False),
        "secure-http-proxy": (http_proxy, True),
        "socks-proxy": (socks_proxy, False),
        "name-service-over-tls": (name_service_over_tls, True),
        "name-service-over-https": (name_service_over_https, True),
        "websocket": (websocket, False),
        "many-sites": (many_sites, True),
    }[kind]

    def handle_secured(connection):
        with context.wrap_socket(connection, server_side=True) as secured:
            handle(secured)

    server = listening(host, port)
    return lambda: serve(server, handle_secured if is_secure else handle)


def main():
    services = [kind_host_port.split(",") for kind_host_port in sys.argv[3:]]
    threads = [threading.Thread(target=service(kind, host, int(port), sys.argv[1])) for kind, host, port in services]
    for thread in threads:
        thread.start()
    print("ready", flush=True)


if __name__ == "__main__":
    main()
