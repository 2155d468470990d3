"""The least service that a client can poll over TLS; counts what reaches it.

    focus_service.py CERTIFICATE KEY [--close]

Says {"port": N} on standard output, then {"handshakes": N, "requests": N} for each line that it reads. With --close it
ends the connection after each answer. Listens on loopback only; ends with its standard input.
"""
import json
import ssl
import sys
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

ANSWER = json.dumps({"active": False, "inProgressTaskCount": 0, "policyRevision": 1}).encode()
CLOSES = "--close" in sys.argv[3:]

requests = 0


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    wbufsize = -1  # the whole answer in one piece

    def do_GET(self):
        global requests
        requests += 1
        self.answer(200)

    def do_POST(self):
        """A period of activity, which is not counted among the polls."""
        self.rfile.read(int(self.headers["Content-Length"]))
        self.answer(201)

    def answer(self, status):
        self.send_response(status)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(ANSWER)))
        if CLOSES:
            self.send_header("Connection", "close")
        self.end_headers()
        self.wfile.write(ANSWER)
        self.wfile.flush()

    def log_message(self, *_):
        pass


context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(sys.argv[1], sys.argv[2])
server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
server.daemon_threads = True
server.socket = context.wrap_socket(server.socket, server_side=True)
threading.Thread(target=server.serve_forever, daemon=True).start()
print(json.dumps({"port": server.server_address[1]}), flush=True)
for _ in sys.stdin:
    print(json.dumps({"handshakes": context.session_stats()["accept_good"], "requests": requests}), flush=True)
