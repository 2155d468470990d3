"""As much of the Wayland protocol as pressing a key through KWin's fake input takes."""
import os
import socket
import struct

_KEYS = {"Return": 28, "Escape": 1, "Shift_L": 42}  # of linux/input-event-codes.h


def _text(value):
    data = value.encode() + b"\0"
    return struct.pack("=I", len(data)) + data + b"\0" * (-len(data) % 4)


class FakeInput:
    """Keys pressed as on a keyboard; the compositor must have its checks switched off."""

    _REGISTRY, _DONE, _INPUT = 2, 3, 4

    def __init__(self):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(30)
        self.socket.connect(os.path.join(os.environ["XDG_RUNTIME_DIR"], os.environ["WAYLAND_DISPLAY"]))
        self._send(1, 1, struct.pack("=I", self._REGISTRY))  # get_registry
        self._send(1, 0, struct.pack("=I", self._DONE))  # sync
        offered = None
        for sender, opcode, body in self._messages():
            if sender == self._REGISTRY and opcode == 0:
                number, length = struct.unpack_from("=II", body)
                if body[8 : 8 + length - 1] == b"org_kde_kwin_fake_input":
                    offered = number
            elif sender == self._DONE:
                break
        assert offered is not None, "KWin offers no fake input"
        self._send(self._REGISTRY, 0, struct.pack("=I", offered) + _text("org_kde_kwin_fake_input") + struct.pack("=II", 4, self._INPUT))
        self._send(self._INPUT, 0, _text("test") + _text("test"))  # authenticate

    def press(self, name):
        for state in (1, 0):
            self._send(self._INPUT, 10, struct.pack("=II", _KEYS[name], state))  # keyboard_key

    def _send(self, receiver, opcode, body):
        self.socket.sendall(struct.pack("=II", receiver, (8 + len(body)) << 16 | opcode) + body)

    def _messages(self):
        buffer = b""
        while True:
            while len(buffer) >= 8:
                sender, head = struct.unpack_from("=II", buffer)
                size = head >> 16
                if len(buffer) < size:
                    break
                yield sender, head & 0xFFFF, buffer[8:size]
                buffer = buffer[size:]
            buffer += self.socket.recv(65536)
