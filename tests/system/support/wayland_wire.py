"""As much of the Wayland protocol as it takes to press a key on KWin and to arrange its displays."""
import os
import socket
import struct

_KEYS = {"Return": 28, "Escape": 1, "Shift_L": 42, "x": 45}  # of linux/input-event-codes.h


def _text(value):
    data = value.encode() + b"\0"
    return struct.pack("=I", len(data)) + data + b"\0" * (-len(data) % 4)


def _read_text(body, offset=0):
    (length,) = struct.unpack_from("=I", body, offset)
    return body[offset + 4 : offset + 3 + length].decode()


class _Wire:
    """A connection to the compositor, on which every request is spelled out."""

    _DISPLAY, _REGISTRY = 1, 2

    def __init__(self):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(30)
        self.socket.connect(os.path.join(os.environ["XDG_RUNTIME_DIR"], os.environ["WAYLAND_DISPLAY"]))
        self.last_id = self._REGISTRY
        self.buffer = b""
        self.offered = []  # (number, interface)
        self.send(self._DISPLAY, 1, struct.pack("=I", self._REGISTRY))  # get_registry
        self.sync()

    def new_id(self):
        self.last_id += 1
        return self.last_id

    def send(self, receiver, opcode, body=b""):
        self.socket.sendall(struct.pack("=II", receiver, (8 + len(body)) << 16 | opcode) + body)

    def bind_all(self, interface, version):
        """The new objects, one for each of that interface that the compositor offers."""
        bound = []
        for number, offered in self.offered:
            if offered == interface:
                bound.append(self.new_id())
                self.send(self._REGISTRY, 0, struct.pack("=I", number) + _text(interface) + struct.pack("=II", version, bound[-1]))
        assert bound, f"the compositor offers no {interface}"
        return bound

    def sync(self):
        """Hears all that the compositor says until it has answered what was sent before."""
        answer = self.new_id()
        self.send(self._DISPLAY, 0, struct.pack("=I", answer))
        while True:
            sender, opcode, body = self._message()
            if sender == answer:
                return
            if sender == self._DISPLAY and opcode == 0:
                raise AssertionError(f"the compositor calls it an error: {body}")
            if sender == self._REGISTRY and opcode == 0:
                self.offered.append((struct.unpack_from("=I", body)[0], _read_text(body, 4)))
            self.heard(sender, opcode, body)

    def heard(self, sender, opcode, body):
        """What nobody here has asked for."""

    def _message(self):
        while True:
            if len(self.buffer) >= 8:
                sender, head = struct.unpack_from("=II", self.buffer)
                size = head >> 16
                if len(self.buffer) >= size:
                    body, self.buffer = self.buffer[8:size], self.buffer[size:]
                    return sender, head & 0xFFFF, body
            piece = self.socket.recv(65536)
            assert piece, "the compositor has hung up"
            self.buffer += piece


class FakeInput(_Wire):
    """Keys pressed as on a keyboard; the compositor must have its checks switched off."""

    def __init__(self):
        super().__init__()
        (self.input,) = self.bind_all("org_kde_kwin_fake_input", 4)
        self.send(self.input, 0, _text("test") + _text("test"))  # authenticate

    def press(self, name):
        for state in (1, 0):
            self.send(self.input, 10, struct.pack("=II", _KEYS[name], state))  # keyboard_key


class Outputs(_Wire):
    """KWin's displays, as its settings arrange them."""

    def __init__(self):
        self.names, self.devices = {}, []
        self.configuration = self.outcome = None
        super().__init__()
        self.devices = self.bind_all("kde_output_device_v2", 2)
        (self.manager,) = self.bind_all("kde_output_management_v2", 2)
        self.sync()
        self.devices.sort(key=self.names.get)

    def arrange(self, scales):
        """The scale of each display in the order of their names; None switches it off."""
        self.configuration, self.outcome = self.new_id(), None
        self.send(self.manager, 0, struct.pack("=I", self.configuration))  # create_configuration
        for device, scale in zip(self.devices, scales):
            self.send(self.configuration, 0, struct.pack("=Ii", device, scale is not None))  # enable
            if scale is not None:
                self.send(self.configuration, 4, struct.pack("=Ii", device, round(scale * 256)))
        self.send(self.configuration, 5)  # apply
        while self.outcome is None:
            self.sync()
        assert self.outcome == "applied", f"KWin does not take the scales {scales}"
        self.send(self.configuration, 6)  # destroy

    def heard(self, sender, opcode, body):
        if sender in self.devices and opcode == 14:
            self.names[sender] = _read_text(body)
        elif sender == self.configuration:
            self.outcome = ("applied", "failed")[opcode]
