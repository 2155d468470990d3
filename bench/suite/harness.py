"""What a hook costs an agent, what receiving it costs us, and what reading a transcript costs."""
import json
import os
import socket
import subprocess
import tempfile
import time
from contextlib import contextmanager
from pathlib import Path

from . import processes, scene
from .table import Row, median

SIZES = {"2 KB": (2_000, 1.04), "200 KB": (200_000, 1.04), "1 MB": (1_000_000, 1.1)}
CPU_SIZES = ("2 KB", "200 KB")
BATCH = 200  # posts for one figure of CPU time


def post(port, body):
    """One post as the hook script makes it. Milliseconds."""
    begin = time.monotonic()
    subprocess.run(
        ["/usr/bin/curl", "--silent", "--max-time", "0.25", "--request", "POST", f"http://127.0.0.1:{port}/events", "--header",
         "Content-Type: application/json", "--header", "X-Orvanta-Harness: claude", "--data-binary", "@-"],
        stdin=open(body, "rb"), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
    )
    return (time.monotonic() - begin) * 1000


def post_many(port, body, count):
    """`count` posts, each on a connection of its own, without a process for each."""
    content = Path(body).read_bytes()
    head = (
        f"POST /events HTTP/1.1\r\nHost: 127.0.0.1:{port}\r\nUser-Agent: curl/7.88.1\r\nAccept: */*\r\nContent-Type: application/json\r\n"
        f"X-Orvanta-Harness: claude\r\nContent-Length: {len(content)}\r\nConnection: close\r\n\r\n"
    ).encode()
    for _ in range(count):
        with socket.create_connection(("127.0.0.1", port), 10) as peer:
            peer.sendall(head + content)
            while peer.recv(4096):
                pass


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as server:
        return server.getsockname()[1]


@contextmanager
def receiver():
    """Ours. Yields (port, CPU microseconds so far)."""
    process = subprocess.Popen([scene.BIN / "receiver_bench"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def cpu():
        process.stdin.write("\n")
        process.stdin.flush()
        return json.loads(process.stdout.readline())["cpu_us"]

    try:
        yield json.loads(process.stdout.readline())["port"], cpu
    finally:
        process.stdin.close()
        process.wait(10)


@contextmanager
def nginx():
    """The peer: it reads the whole body and answers 202 without one."""
    with tempfile.TemporaryDirectory(prefix="nginx-") as folder:
        port, upstream = free_port(), free_port()
        Path(folder, "nginx.conf").write_text(f"""
daemon off; worker_processes 1; pid {folder}/pid; error_log {folder}/error.log; user {'root' if os.geteuid() == 0 else 'nobody'};
events {{ worker_connections 1024; }}
http {{
  access_log off; client_max_body_size 2m; client_body_buffer_size 2m; client_body_temp_path {folder}/body;
  proxy_temp_path {folder}/proxy; fastcgi_temp_path {folder}/fastcgi; uwsgi_temp_path {folder}/uwsgi; scgi_temp_path {folder}/scgi;
  server {{ listen 127.0.0.1:{port}; location = /events {{ proxy_pass http://127.0.0.1:{upstream}/done; proxy_pass_request_body off;
    proxy_set_header Content-Length ""; proxy_method GET; proxy_request_buffering on; }} }}
  server {{ listen 127.0.0.1:{upstream}; location = /done {{ return 202; }} }}
}}
""")
        process = subprocess.Popen(["nginx", "-p", folder, "-c", f"{folder}/nginx.conf"], stdin=subprocess.DEVNULL)
        try:
            def answers():
                try:
                    socket.create_connection(("127.0.0.1", port), 1).close()
                    return True
                except OSError:
                    return False

            scene.until(answers, "nginx answers")
            yield port, lambda: processes.cpu(process.pid) * 1e6
        finally:
            process.terminate()
            process.wait(10)


def transcripts(folder):
    """(name, path): one whose messages come early, and one that never has any."""
    message = json.dumps({"type": "user", "message": {"role": "user", "content": "word " * 60}, "timestamp": "2026-01-31T08:00:00Z"})
    result = json.dumps({"type": "response_item", "payload": {"type": "function_call_output", "call_id": "c", "output": "line of output\\n" * 120}})
    early = Path(folder, "early.jsonl")
    early.write_text((message + "\n") * 10 + (result + "\n") * 600)
    never = Path(folder, "never.jsonl")
    never.write_text((result + "\n") * 600)
    return (("early", early), ("never", never))


def measure(options):
    rounds = options.count or 60
    rows = []
    with tempfile.TemporaryDirectory(prefix="bodies-") as folder, receiver() as (ours, our_cpu), nginx() as (theirs, their_cpu):
        refused = free_port()
        for name, (size, aim) in SIZES.items():
            body = Path(folder, "body")
            body.write_bytes(b"x" * size)
            times = {port: [] for port in (ours, theirs, refused)}
            for _ in range(rounds):
                for port, taken in times.items():
                    taken.append(post(port, body))
            own, peer, limit = (median(times[port]) for port in (ours, theirs, refused))
            rows.append(Row(f"hook to receiver, {name} (nginx; a refused port)", f"{own:.2f} ms", f"{peer:.2f} ms", f"{limit:.2f} ms",
                            f"{own / peer:.2f} / {own / limit:.2f}", f"<= {aim} x refused", own <= aim * limit))
        for name in CPU_SIZES:
            body = Path(folder, "body")
            body.write_bytes(b"x" * SIZES[name][0])
            figures = []
            for port, cpu in ((ours, our_cpu), (theirs, their_cpu)):
                batches = []
                for _ in range(5):
                    before = cpu()
                    post_many(port, body, BATCH)
                    batches.append((cpu() - before) / BATCH)
                figures.append(median(batches))
            own, peer = figures
            rows.append(Row(f"CPU a request, {name} (nginx)", f"{own:.0f} us", f"{peer:.0f} us", "-", f"{own / peer:.2f}", "< nginx", own < peer))
        for name, path in transcripts(folder):
            found = scene.run("transcript_bench", path)[0]
            if name == "early":
                rows.append(Row("transcript of 1 MiB, messages early (reading it)", f"{found['ours']:.0f} us", "-", f"{found['read']:.0f} us",
                                f"{found['ours'] / found['read']:.2f}", "<= 1.5 x reading", found["ours"] <= 1.5 * found["read"]))
            else:
                rows.append(Row("transcript of 1 MiB without messages (nlohmann)", f"{found['ours']:.0f} us", f"{found['nlohmann']:.0f} us", f"{found['read']:.0f} us",
                                f"{found['ours'] / found['nlohmann']:.2f}", "<= 1.0 x nlohmann", found["ours"] <= found["nlohmann"]))
    options.note("harness: nginx answers through a second server of its own, since by itself it answers before it has read a body")
    return rows
