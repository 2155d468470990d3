"""The hands of a test that is written in C++: does on this Wayland desktop what it is told, a line each, and answers with a line.

  front PID    brings the application to the front, and waits until it is there
  shown N PID  waits until the application has N windows
  hidden PID   "yes" if none of its windows is on screen, otherwise "no"
  none         leaves nothing in front
  key NAME     presses the key
  second PID   moves the application to the second display
  displays N   leaves the first N displays connected
  colours X Y… the colours at these places of the whole desktop, as "red,green,blue"
"""
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
from support.wayland import desktop  # noqa: E402
from support.waiting import until  # noqa: E402


def obey(hands, verb, *words):
    if verb == "none":
        hands.leave_nothing_in_front()
        until(lambda: not any(window.is_active for window in hands.windows()), lambda: f"nothing is in front: {hands.windows()}")
    elif verb == "key":
        hands.key(words[0])
    elif verb == "hidden":
        return "yes" if hands.is_hidden(int(words[0])) else "no"
    elif verb == "second":
        hands.put_on_second_display(int(words[0]))
    elif verb == "displays":
        hands.arrange(*(1.0 if place < int(words[0]) else None for place in range(2)))
    elif verb == "colours":
        numbers = list(map(int, words))
        return " ".join(",".join(map(str, colour)) for colour in hands.spots(list(zip(numbers[::2], numbers[1::2]))))
    elif verb == "shown":
        count, pid = map(int, words)
        until(lambda: sum(window.pid == pid for window in hands.windows()) == count, lambda: f"{count} windows: {hands.windows()}")
    elif verb == "front":
        pid = int(words[0])
        hands.activate(pid)
        until(lambda: hands.is_in_front(pid), lambda: f"{pid} is in front: {hands.windows()}")
    else:
        raise ValueError(verb)
    return "done"


def main():
    hands = desktop()
    for line in sys.stdin:
        print(obey(hands, *line.split()), flush=True)


main()
