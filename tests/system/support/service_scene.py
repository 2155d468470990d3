"""What the scenes with a service of their own share."""
from . import accessible
from .scene import XTERM, Scene
from .scripted_service import ScriptedService

CONNECTED = "Orvanta connected"
KEY_REQUIRED = "Orvanta API key required"
BLOCKED_NAME = "The terminal"
# What the settings show beside the errors of the status line, while focus is inactive.
OTHER_TEXTS = {
    "", BLOCKED_NAME, "Orvanta Focus", "Focus inactive", "Permissions", "Blocked websites", "No websites blocked", "Blocked applications",
    "No applications blocked", "orvanta-focus", CONNECTED, "Setup required", KEY_REQUIRED, "Remove", "Add to blocked websites",
    "Add to blocked applications", "Activate website protection", XTERM[0],
}


class ServiceScene(Scene):
    def scripted(self, answer, **options):
        service = ScriptedService(answer, **options)
        self.addCleanup(service.stop)
        return service

    def transport_error(self, focus):
        """The status line's text, which is none that our own program chose."""
        return accessible.wait_for_text(focus.pid, lambda text: text not in OTHER_TEXTS, "an error")

    def assert_focused(self, focus):
        accessible.wait_for(focus.pid, name="Orvanta crown")
        self.assertFalse(accessible.find(focus.pid, name="Focus inactive"))
