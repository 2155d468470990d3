"""A keyring that is locked: nobody is asked for its password, and the program goes on without a key."""
import unittest

from support import accessible, x11
from support.scene import Scene
from support.scripted_service import ScriptedService, state
from support.waiting import stays


class LockedKeyring(Scene):
    def test_a_locked_keyring_counts_as_no_key_and_prompts_nobody(self):
        service = ScriptedService(state(True))
        self.addCleanup(service.stop)
        focus = self.focus(origin=service.origin)
        window = focus.own_window()
        accessible.wait_for(focus.pid, name="Orvanta API key required")
        stays(lambda: x11.clients() == [window] and not service.requests, lambda: f"no prompt, no request: {[x11.name_of(one) for one in x11.clients()]}", 4)


if __name__ == "__main__":
    unittest.main(verbosity=2)
