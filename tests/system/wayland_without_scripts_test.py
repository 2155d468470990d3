"""KWin that takes no script from us: the user is told, the rest goes on, and it is taken up when it does."""
import os
import unittest
from pathlib import Path

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio  # noqa: E402

from support import accessible  # noqa: E402
from support.programs import Application, store_key  # noqa: E402
from support.quiet import wait_until_quiet  # noqa: E402
from support.scene import EDITOR, Scene  # noqa: E402
from support.waiting import stays, until  # noqa: E402
from support.wayland_scene import BUTTON  # noqa: E402

TEXT = "Orvanta Focus cannot see which application is in front: KWin takes no script from it. Start it from within Plasma, or log out and in."
BUS = Path(os.environ["XDG_RUNTIME_DIR"]) / "bus.conf"


def carry_scripts(are_carried):
    """Has the bus carry scripts to KWin, or refuse to."""
    refusal = '<policy context="mandatory"><deny send_destination="org.kde.KWin" send_interface="org.kde.kwin.Scripting"/></policy>'
    BUS.write_text(f"<busconfig><include>/usr/share/dbus-1/session.conf</include>{'' if are_carried else refusal}</busconfig>")
    Gio.bus_get_sync(Gio.BusType.SESSION).call_sync(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReloadConfig", None, None, Gio.DBusCallFlags.NONE, 20000, None)


class WithoutScripts(Scene):
    def editor(self):
        """Opens a window, which KWin brings to the front."""
        return self.process("mousepad", environment={"GDK_BACKEND": "wayland", "GSETTINGS_BACKEND": "memory"})

    def is_uncovered(self, focus):
        return not accessible.find(focus.pid, *BUTTON)

    def test_the_diagnosis_says_so(self):
        diagnosis = self.keep(Application("--diagnose"))
        self.assertEqual(diagnosis.wait(), 1)
        self.assertEqual(
            diagnosis.output.splitlines()[-5:],
            [
                "Windows are shown by: a Wayland compositor",
                "Applications are seen and hidden by: nothing",
                "The cover is: a layer surface",
                "The time without input is known by: ext-idle-notify",
                f"Missing: {TEXT}",
            ],
        )

    def test_outside_plasmas_bus_the_diagnosis_says_the_same(self):
        diagnosis = self.keep(Application("--diagnose", environment={"DBUS_SESSION_BUS_ADDRESS": "disabled:"}))
        self.assertEqual(diagnosis.wait(), 1)
        self.assertIn(f"Missing: {TEXT}", diagnosis.output.splitlines())

    def test_the_settings_say_so_and_the_rest_goes_on_without_toil(self):
        service = self.service()
        store_key(service.key)
        focus = self.focus(applications=[EDITOR], origin=service.origin)
        accessible.wait_for(focus.pid, name=TEXT)
        wait_until_quiet(focus.pid)

        service.start_task()
        accessible.wait_for(focus.pid, name="Orvanta crown")
        accessible.wait_until_active(self.editor().pid)
        stays(lambda: self.is_uncovered(focus), "no cover")
        focus.write_lists([EDITOR], ["blocked.example"])
        focus.wait_for_stored([EDITOR[0]], ["blocked.example"])

    def test_scripts_taken_later_are_enough(self):
        service = self.service()
        store_key(service.key)
        focus = self.focus(applications=[EDITOR], origin=service.origin)
        accessible.wait_for(focus.pid, name=TEXT)
        self.addCleanup(carry_scripts, False)
        carry_scripts(True)
        until(lambda: not accessible.find(focus.pid, name=TEXT), lambda: f"the text is gone: {accessible.texts(focus.pid)}", 90)
        self.assertLessEqual(focus.output.count("KWin takes no script"), 2, focus.output)  # what covers, and what samples
        service.start_task()
        accessible.wait_for(focus.pid, name="Orvanta crown")
        self.editor()
        until(lambda: not self.is_uncovered(focus), lambda: f"the editor is covered\n{focus.output}")


if __name__ == "__main__":
    unittest.main(verbosity=2)
