"""X clients of our own making, for what no ordinary program does."""
import os
import threading
from pathlib import Path

from Xlib import X, display
from Xlib.protocol import event

from .programs import scratch
from .waiting import until
from . import x11


def install_entry(identifier, class_name):
    """A desktop entry for the user alone, so that windows of that class have an identity."""
    folder = Path(os.environ["XDG_DATA_HOME"]) / "applications"
    folder.mkdir(parents=True, exist_ok=True)
    half = scratch("entry") / identifier
    half.write_text(f"[Desktop Entry]\nType=Application\nName={class_name}\nExec={class_name.lower()}\nStartupWMClass={class_name}\n")
    half.rename(folder / identifier)


class Client:
    """One managed window on a connection of its own. Without a class nothing tells which application it belongs to."""

    def __init__(self, class_name=None, geometry=(300, 200, 500, 400)):
        self.display = display.Display()
        self.display.set_error_handler(lambda *_: None)
        self.root = self.display.screen().root
        x, y, width, height = geometry
        self.window = self.root.create_window(x, y, width, height, 0, X.CopyFromParent, background_pixel=0x00AA55)
        if class_name:
            self.window.set_wm_class(class_name.lower(), class_name)
        self.window.set_wm_normal_hints(flags=3, min_width=1, min_height=1)
        self.window.map()
        self.display.sync()
        until(lambda: x11.is_viewable(self.id), "the client's window is there")

    @property
    def id(self):
        return self.window.id

    def push_to_front(self):
        """Raises itself, takes the keyboard and asks for activation, all at once and with the authority of a pager."""
        message = event.ClientMessage(
            window=self.window, client_type=self.display.intern_atom("_NET_ACTIVE_WINDOW"), data=(32, [2, X.CurrentTime, 0, 0, 0]),
        )
        self.root.send_event(message, event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self.window.configure(stack_mode=X.Above)
        self.window.set_input_focus(X.RevertToParent, X.CurrentTime)
        self.display.sync()

    def go_full_screen(self):
        state = self.display.intern_atom("_NET_WM_STATE")
        full_screen = self.display.intern_atom("_NET_WM_STATE_FULLSCREEN")
        message = event.ClientMessage(window=self.window, client_type=state, data=(32, [1, full_screen, 0, 1, 0]))
        self.root.send_event(message, event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self.display.sync()

    def close(self):
        self.display.close()


class Fighter(Client):
    """A client that pushes itself to the front, again and again, until it is told to give up."""

    def __init__(self, class_name):
        super().__init__(class_name)
        self.pushes = 0
        self._gives_up = threading.Event()
        self._thread = threading.Thread(target=self._fight, daemon=True)

    def fight(self):
        self._thread.start()

    def _fight(self):
        pause = 0.02  # fifty times a second: more often than anything that a person would run
        while not self._gives_up.wait(pause):
            self.push_to_front()
            self.pushes += 1

    def give_up(self):
        self._gives_up.set()
        self._thread.join()
