"""Whether a display is really covered, read back from the X server."""
from . import x11
from .waiting import until

SCREEN = (0, 0, 1920, 1080)
MIDNIGHT = (19, 26, 41)


def corners(frame):
    x, y, width, height = frame
    return [(x, y), (x + width - 1, y), (x, y + height - 1), (x + width - 1, y + height - 1)]


def faults(cover, frame=SCREEN):
    """What keeps `cover` from covering the display `frame` and from having the keyboard; nothing if all is well."""
    found = []
    if x11.geometry_of(cover) != frame:
        found.append(f"its frame is {x11.geometry_of(cover)} instead of {frame}")
    x, y, width, height = frame
    for place in [*corners(frame), (x + width // 2, y + height // 2)]:
        if not x11.is_seen_at(cover, *place):
            found.append(f"another window is seen at {place}")
    for place in corners(frame):
        if x11.pixel(*place) != MIDNIGHT:
            found.append(f"the colour at {place} is {x11.pixel(*place)}")
    if not x11.has_keyboard(cover):
        found.append("the keyboard is elsewhere")
    # The window manager says so only after it has moved the keyboard. Of a cover that it does not manage it says nothing.
    elif cover in x11.clients() and x11.active_window() != cover:
        found.append(f"window {x11.active_window() or 0:#x} is the active one")
    return found


def wait_until_covers(cover, frame=SCREEN):
    until(lambda: not faults(cover, frame), lambda: f"the cover is right: {faults(cover, frame)}")
