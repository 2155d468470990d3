"""An HTTP service on a free loopback port that answers as it is told and keeps what it was asked."""
import json
import ssl
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer


def state(active):
    return 200, {"Content-Type": "application/json"}, json.dumps({"active": active, "inProgressTaskCount": int(active), "policyRevision": 0}).encode()


def status(code, body=b""):
    return code, {}, body


class ScriptedService:
    """`answer` is (status, headers, body), or a function that is given the request's handler and either returns such
    an answer or sends bytes of its own and returns None. `requests` holds each request's headers, in lower case, with
    the method and the path under "method" and "path"."""

    def __init__(self, answer, tls=None):
        self.answer = answer
        self.requests = []
        owner = self

        class Handler(BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                owner.requests.append({"method": self.command, "path": self.path, **{name.lower(): value for name, value in self.headers.items()}})
                answer = owner.answer(self) if callable(owner.answer) else owner.answer
                if answer is None:
                    self.close_connection = True
                    return
                code, headers, body = answer
                self.send_response(code)
                for name, value in headers.items():
                    self.send_header(name, value)
                if code != 204:
                    self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_):
                pass

        class Server(ThreadingHTTPServer):
            daemon_threads = True

            def handle_error(self, *_):  # a client that hung up is part of the play
                pass

        self.server = Server(("127.0.0.1", 0), Handler)
        self.scheme = "http"
        if tls is not None:
            certificate, key = tls
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(certificate, key)
            self.server.socket = context.wrap_socket(self.server.socket, server_side=True, do_handshake_on_connect=False)
            self.scheme = "https"
        threading.Thread(target=self.server.serve_forever, args=(0.05,), daemon=True).start()

    @property
    def origin(self):
        return f"{self.scheme}://127.0.0.1:{self.server.server_address[1]}"

    def stop(self):
        self.server.shutdown()
        self.server.server_close()
