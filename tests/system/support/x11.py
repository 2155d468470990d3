"""The X desktop, seen from outside with the tools that users have."""
import re
import subprocess


def run(*command, check=False):
    return subprocess.run(command, capture_output=True, text=True, check=check).stdout.strip()


def active_window():
    """The window that the window manager calls active, or None."""
    found = re.search(r"# (0x[0-9a-f]+)", run("xprop", "-root", "_NET_ACTIVE_WINDOW"))
    return int(found[1], 16) or None if found else None


def pid_of(window):
    found = re.search(r"= (\d+)", run("xprop", "-id", str(window), "_NET_WM_PID"))
    return int(found[1]) if found else None


def class_of(window):
    return run("xprop", "-id", str(window), "WM_CLASS").partition("= ")[2]


def geometry_of(window):
    """(x, y, width, height) on the root, without the frame; None if there is no such window."""
    text = run("xwininfo", "-id", str(window))
    numbers = [re.search(rf"{name}:\s+(-?\d+)", text) for name in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")]
    return tuple(int(number[1]) for number in numbers) if all(numbers) else None


def is_viewable(window):
    return "Map State: IsViewable" in run("xwininfo", "-id", str(window))


def windows(visible=True, **criteria):
    """The windows that xdotool finds: windows(pid=…), windows(name="…"), windows(class_="…")."""
    arguments = ["xdotool", "search"]
    if visible:
        arguments.append("--onlyvisible")
    for name, value in criteria.items():
        arguments += [f"--{name.rstrip('_')}", str(value)]
    if len(criteria) > 1:
        arguments.insert(2, "--all")
    return [int(line) for line in run(*arguments).splitlines()]


def activate(window):
    """Brings the window to the front as a task switcher does."""
    run("wmctrl", "-i", "-a", hex(window))


def current_desktop():
    return int(run("xprop", "-root", "_NET_CURRENT_DESKTOP").partition("= ")[2])


def stacking():
    """The managed windows, lowest first."""
    return [int(number, 16) for number in re.findall(r"0x[0-9a-f]+", run("xprop", "-root", "_NET_CLIENT_LIST_STACKING"))]


def pixel(x, y):
    """The colour on the screen at that place, as (red, green, blue) of 0 to 255."""
    found = subprocess.run(["import", "-window", "root", "-crop", f"1x1+{x}+{y}", "-depth", "8", "rgb:-"], capture_output=True).stdout
    return tuple(found[:3])
