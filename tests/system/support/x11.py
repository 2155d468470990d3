"""The X desktop, seen from outside: what any client may ask the server, and what a user's hands and tools do."""
import re
import subprocess

from Xlib import X, Xutil, display, error

from .waiting import until

_EVERY_TYPE = X.AnyPropertyType
_connection = None


def connection():
    """Our own connection to the X server, opened at its first use."""
    global _connection
    if _connection is None:
        _connection = display.Display()
        # What vanishes between two requests is no news here.
        _connection.set_error_handler(lambda *_: None)
    return _connection


def root():
    return connection().screen().root


def _object(window):
    return connection().create_resource_object("window", window)


def _property(window, name):
    try:
        found = window.get_full_property(connection().intern_atom(name), _EVERY_TYPE)
    except error.XError:
        return None
    return found.value if found is not None else None


def _numbers(window, name):
    found = _property(window, name)
    return [int(number) for number in found] if found is not None else []


def _text(window, name):
    found = _property(window, name)
    if found is None:
        return ""
    return found.decode("utf-8", "replace") if isinstance(found, bytes) else str(found)


def run(*command, check=True):
    return subprocess.run(command, capture_output=True, text=True, check=check).stdout.strip()


# What the server and the window manager say.


def active_window():
    """The window that the window manager calls active, or None."""
    return next((number for number in _numbers(root(), "_NET_ACTIVE_WINDOW") if number), None)


def clients():
    """The managed windows, oldest first."""
    return _numbers(root(), "_NET_CLIENT_LIST")


def stacking():
    """The managed windows, lowest first."""
    return _numbers(root(), "_NET_CLIENT_LIST_STACKING")


def current_desktop():
    return _numbers(root(), "_NET_CURRENT_DESKTOP")[0]


def pid_of(window):
    return next(iter(_numbers(_object(window), "_NET_WM_PID")), None)


def name_of(window):
    return _text(_object(window), "_NET_WM_NAME") or _text(_object(window), "WM_NAME")


def class_of(window):
    """WM_CLASS as (instance, class); empty texts where it is not set."""
    instance, _, class_name = _text(_object(window), "WM_CLASS").partition("\0")
    return instance, class_name.rstrip("\0")


def states_of(window):
    """The names of the window's _NET_WM_STATE."""
    return {connection().get_atom_name(atom) for atom in _numbers(_object(window), "_NET_WM_STATE")}


def is_iconified(window):
    iconic = 3
    return _numbers(_object(window), "WM_STATE")[:1] == [iconic]


def has_property(window, name):
    return _property(_object(window), name) is not None


def is_viewable(window):
    try:
        return _object(window).get_attributes().map_state == X.IsViewable
    except error.XError:
        return False


def geometry_of(window):
    """(x, y, width, height) on the root, without the frame; None if there is no such window."""
    try:
        size = _object(window).get_geometry()
        place = root().translate_coords(_object(window), 0, 0)
    except error.XError:
        return None
    return place.x, place.y, size.width, size.height


def minimum_size_of(window):
    """(width, height) below which the window manager lets nobody make it; None where it asks for no minimum."""
    hints = _numbers(_object(window), "WM_NORMAL_HINTS")
    return tuple(hints[5:7]) if hints and hints[0] & Xutil.PMinSize else None


def all_windows():
    """The managed windows and those that stand unmanaged beside them."""
    managed = clients()
    unmanaged = []
    for window in root().query_tree().children:
        try:
            attributes = window.get_attributes()
        except error.XError:
            continue
        if attributes.win_class == X.InputOutput and window.id not in managed:
            unmanaged.append(window.id)
    return managed + unmanaged


def windows(pid=None, name=None, class_name=None, visible=True):
    """The windows that fit all that is given; `name` is a regular expression for the whole title."""
    found = []
    for window in all_windows():
        if (
            (pid is None or pid_of(window) == pid)
            and (name is None or re.fullmatch(name, name_of(window)))
            and (class_name is None or class_of(window)[1] == class_name)
            and (not visible or is_viewable(window))
        ):
            found.append(window)
    return found


def is_inside(window, outer):
    """Whether `window` is `outer` or stands somewhere inside it."""
    current = _object(window)
    while True:
        if current.id == outer:
            return True
        try:
            parent = current.query_tree().parent
        except error.XError:
            return False
        if not parent or parent.id == root().id:
            return False
        current = parent


def has_keyboard(window):
    """Whether what is typed now goes into the window."""
    focus = connection().get_input_focus().focus
    return not isinstance(focus, int) and is_inside(focus.id, window)


def window_at(x, y):
    """The window that a user sees at that place: the uppermost child of the root, which may be a frame; None on the bare root."""
    for window in reversed(root().query_tree().children):
        try:
            attributes = window.get_attributes()
            geometry = window.get_geometry()
        except error.XError:
            continue
        if attributes.map_state != X.IsViewable or attributes.win_class != X.InputOutput:
            continue
        width, height = geometry.width + 2 * geometry.border_width, geometry.height + 2 * geometry.border_width
        if geometry.x <= x < geometry.x + width and geometry.y <= y < geometry.y + height:
            return window.id
    return None


def is_seen_at(window, x, y):
    top = window_at(x, y)
    return top is not None and is_inside(window, top)


def picture(x, y, width, height):
    """What is on the screen there: four bytes a pixel, in the server's own order."""
    return root().get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data


def pixel(x, y):
    """The colour on the screen at that place, as (red, green, blue) of 0 to 255."""
    blue, green, red, _ = picture(x, y, 1, 1)
    return red, green, blue


# What a user does.


def activate(window):
    """Brings the window to the front as a task switcher does. Returns when the window manager has done so, whatever
    became of it since."""
    if active_window() == window:
        return
    root().change_attributes(event_mask=X.PropertyChangeMask)
    _active_window_has_changed()  # forgets what was before
    run("wmctrl", "-i", "-a", hex(window))
    until(lambda: _active_window_has_changed() or active_window() == window, lambda: f"window {window:#x} is activated; {active_window() or 0:#x} is active")


def _active_window_has_changed():
    changed = False
    while connection().pending_events():
        event = connection().next_event()
        changed |= event.type == X.PropertyNotify and event.atom == connection().intern_atom("_NET_ACTIVE_WINDOW")
    return changed


def close(window):
    """Asks for the window to be closed, as the cross in a task switcher does."""
    run("wmctrl", "-i", "-c", hex(window))


def iconify(window):
    run("xdotool", "windowminimize", str(window))


def move(window, x, y):
    run("wmctrl", "-i", "-r", hex(window), "-e", f"0,{x},{y},-1,-1")


def switch_desktop(number):
    run("wmctrl", "-s", str(number))


def key(*names):
    run("xdotool", "key", *names)


def write(text):
    run("xdotool", "type", "--delay", "5", text)


def click(x, y):
    run("xdotool", "mousemove", str(x), str(y), "click", "1")
