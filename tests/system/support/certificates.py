"""A certificate authority of our own, and a server certificate from it for the loopback address."""
import subprocess
from pathlib import Path

from .programs import scratch


class Authority:
    def __init__(self):
        self.folder = scratch("authority")
        self.certificate = self.folder / "authority.pem"
        self._key = self.folder / "authority.key"
        self._openssl(
            "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=Test authority",
            "-addext", "basicConstraints=critical,CA:TRUE", "-keyout", self._key, "-out", self.certificate,
        )

    def certify(self, name="127.0.0.1") -> tuple[Path, Path]:
        """The files of a certificate for that address, and of its key."""
        key, request, certificate, extensions = (self.folder / f"server{suffix}" for suffix in (".key", ".csr", ".pem", ".ext"))
        extensions.write_text(f"subjectAltName=IP:{name}\nbasicConstraints=CA:FALSE\nextendedKeyUsage=serverAuth\n")
        self._openssl("req", "-newkey", "rsa:2048", "-nodes", "-subj", f"/CN={name}", "-keyout", key, "-out", request)
        self._openssl(
            "x509", "-req", "-in", request, "-CA", self.certificate, "-CAkey", self._key, "-CAcreateserial", "-days", "2",
            "-extfile", extensions, "-out", certificate,
        )
        return certificate, key

    @staticmethod
    def _openssl(*arguments):
        subprocess.run(["openssl", *map(str, arguments)], check=True, capture_output=True)
