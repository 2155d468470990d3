"""What one poll over HTTPS costs the client, and how often it has to shake hands."""
from . import scene
from .table import Row, median

AIM = 0.35
POLLS = 200
POLLS_IN_FIVE_MINUTES = 100  # one every three seconds


def measure(options):
    rounds = options.count or 5
    kept, closed, bare = [], [], []
    with scene.tls_service() as (origin, environment, count), scene.tls_service("--close") as (closing_origin, closing_environment, closing_count):
        for _ in range(rounds):
            kept += scene.run("poll_bench", origin, "--polls", POLLS, environment=environment)
            closed += scene.run("poll_bench", closing_origin, "--polls", POLLS, environment=closing_environment)
            bare += scene.run("poll_bench", origin, "--polls", POLLS, "--bare", environment=environment)
        ends = closing_count()
        assert ends["handshakes"] == ends["requests"], "the connections were to be closed after each answer"
        before = count()
        scene.run("poll_bench", origin, "--polls", POLLS_IN_FIVE_MINUTES, environment=environment)
        handshakes = count()["handshakes"] - before["handshakes"]

    ours, peer, limit = (median([line["cpu_us"] for line in lines]) / 1000 for lines in (kept, closed, bare))
    return [
        Row(f"one poll over HTTPS, CPU (reconnecting each time, QNetworkAccessManager alone; median of {rounds})", f"{ours:.2f} ms", f"{peer:.2f} ms",
            f"{limit:.2f} ms", f"{ours / peer:.2f} / {ours / limit:.2f}", f"<= {AIM} x reconnecting", ours <= AIM * peer),
        Row("TLS handshakes in five minutes' worth of polls, with shorter pauses", str(handshakes), aim="1", reached=handshakes == 1),
    ]
