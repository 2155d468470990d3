"""The accessibility tree of a program, as a screen reader sees it."""
import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

from .waiting import until  # noqa: E402

# In milliseconds, for a call and for one to a program that has just started. By itself the library waits for less than a second,
# and what is too busy to answer would be taken for what is not there.
Atspi.set_timeout(10_000, 30_000)


def _children(node):
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child is not None:
            yield child


def application(pid):
    """The tree's root of the process, or None while it is not on the bus."""
    try:
        programs = list(_children(Atspi.get_desktop(0)))
    except Exception:  # one that went meanwhile
        return None
    for child in programs:
        try:
            if child.get_process_id() == pid:
                child.clear_cache()  # what was read before, say while the window was still empty, does not follow by itself
                return child
        except Exception:  # a program that has just gone
            continue
    return None


def walk(node):
    """Every node below, the node itself first; what vanishes meanwhile is passed over."""
    yield node
    try:
        children = list(_children(node))
    except Exception:
        return
    for child in children:
        yield from walk(child)


def is_showing(node):
    return node.get_state_set().contains(Atspi.StateType.SHOWING)


def find(pid, role=None, name=None):
    """The showing nodes of a program with that role name and that name."""
    root = application(pid)
    if root is None:
        return []
    found = []
    for node in walk(root):
        try:
            if (role is None or node.get_role_name() == role) and (name is None or node.get_name() == name) and is_showing(node):
                found.append(node)
        except Exception:
            continue
    return found


def texts(pid):
    """The names of all that a program shows."""
    names = []
    for node in find(pid):
        try:
            names.append(node.get_name())
        except Exception:
            continue
    return names


def wait_for(pid, role=None, name=None):
    return until(
        lambda: next(iter(find(pid, role, name)), None),
        lambda: f'the {role or "element"} "{name}" is in the accessibility tree, which holds {texts(pid)}',
    )


def wait_for_text(pid, fits, what):
    """The first name shown for which `fits` is true."""
    return until(lambda: next(filter(fits, texts(pid)), None), lambda: f"{what} is shown; there is {texts(pid)}")


def press(node):
    """Does the first action of the node, which for a button is to press it."""
    assert node.get_n_actions() > 0, f"{node.get_name()} has no action"
    assert node.do_action(0)


def wait_until_active(pid):
    """Waits until the program itself takes one of its windows for the active one: it has then seen everything that
    happened on the desktop before that."""
    until(
        lambda: any(node.get_state_set().contains(Atspi.StateType.ACTIVE) for node in find(pid, "frame")),
        lambda: f"a window of the program is active; there is {texts(pid)}",
    )


def centre(node):
    """Where the middle of the node is on the screen."""
    frame = node.get_extents(Atspi.CoordType.SCREEN)
    return frame.x + frame.width // 2, frame.y + frame.height // 2
