"""A notification service of the session bus, as far as its Do Not Disturb goes.

    python3 do_not_disturb.py KIND

KIND is one of those below. It owns the names of that kind, prints "ready", and obeys one word a line on standard input:

    on, off   the user turns Do Not Disturb, of which the service tells as the real one does
    forget    the setting is as if it had never been touched
    leave     gives its names up
    return    takes them again

Each is answered by "done" once it has reached the bus. It ends with its standard input.
"""
import os
import subprocess
import sys
import threading

NOTIFICATIONS = "org.freedesktop.Notifications"
NOTIFICATIONS_PATH = "/org/freedesktop/Notifications"
DUNST = "org.dunstproject.cmd0"
XFCONF = "org.xfce.Xfconf"
XFCONF_PATH = "/org/xfce/Xfconf"
SWAYNC = "org.erikreider.swaync.cc"
SWAYNC_PATH = "/org/erikreider/swaync/cc"

# What each kind owns.
NAMES = {
    "kde": [NOTIFICATIONS],
    "dunst": [NOTIFICATIONS],
    "plain": [NOTIFICATIONS],  # one without any Do Not Disturb
    "xfce": [XFCONF, "org.xfce.Notifyd", NOTIFICATIONS],
    "xfconf": [XFCONF],  # the settings of XFCE without its notifications
    "swaync": [SWAYNC, NOTIFICATIONS],
    "gnome": ["org.gnome.Shell"],  # keeps its Do Not Disturb in GSettings
}


def interface(name, content):
    return f'<node><interface name="{name}">{content}</interface></node>'


class Service:
    def __init__(self, kind):
        from gi.repository import Gio, GLib

        self.Gio, self.GLib, self.kind = Gio, GLib, kind
        self.value = None
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        if kind in ("kde", "dunst"):
            name, self.property = (NOTIFICATIONS, "Inhibited") if kind == "kde" else (DUNST, "paused")
            self.register(NOTIFICATIONS_PATH, interface(name, f'<property name="{self.property}" type="b" access="read"/>'))
        elif kind in ("xfce", "xfconf"):
            self.register(XFCONF_PATH, interface(
                XFCONF, '<method name="GetProperty"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>'))
        elif kind == "swaync":
            self.register(SWAYNC_PATH, interface(SWAYNC, '<method name="GetDnd"><arg type="b" direction="out"/></method>'))
        self.names("RequestName", "(su)", lambda name: (name, 4))

    def register(self, path, xml):
        self.interface = self.Gio.DBusNodeInfo.new_for_xml(xml).interfaces[0]
        self.bus.register_object(path, self.interface, self.call, self.get, None)

    def names(self, method, signature, arguments):
        for name in NAMES[self.kind]:
            answer = self.bus.call_sync(
                "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
                self.GLib.Variant(signature, arguments(name)), None, self.Gio.DBusCallFlags.NONE, -1, None,
            ).unpack()[0]
            assert answer == 1, f"{method} {name}: {answer}"

    def get(self, bus, sender, path, interface_name, name):
        return self.GLib.Variant("b", bool(self.value))

    def call(self, bus, sender, path, interface_name, method, parameters, invocation):
        Variant = self.GLib.Variant
        if method == "GetDnd":
            invocation.return_value(Variant("(b)", (bool(self.value),)))
        elif parameters.unpack() != ("xfce4-notifyd", "/do-not-disturb"):
            invocation.return_dbus_error(f"{XFCONF}.Error.ChannelNotFound", "no such channel")
        elif self.value is None:
            invocation.return_dbus_error(f"{XFCONF}.Error.PropertyNotFound", "no such property")
        else:
            invocation.return_value(Variant("(v)", (Variant("b", self.value),)))

    def tell(self, path, interface_name, member, signature, *arguments):
        self.bus.emit_signal(None, path, interface_name, member, self.GLib.Variant(signature, arguments))

    def turn(self, value):
        self.value = value
        Variant = self.GLib.Variant
        if self.kind in ("kde", "dunst"):
            changed = {self.property: Variant("b", bool(value))}
            self.tell(NOTIFICATIONS_PATH, "org.freedesktop.DBus.Properties", "PropertiesChanged", "(sa{sv}as)", self.interface.name, changed, [])
        elif self.kind == "swaync":
            self.tell(SWAYNC_PATH, SWAYNC, "SubscribeV2", "(ubbb)", 0, bool(value), False, False)
        elif self.kind in ("xfce", "xfconf"):
            if value is None:
                self.tell(XFCONF_PATH, XFCONF, "PropertyRemoved", "(ss)", "xfce4-notifyd", "/do-not-disturb")
            else:
                self.tell(XFCONF_PATH, XFCONF, "PropertyChanged", "(ssv)", "xfce4-notifyd", "/do-not-disturb", Variant("b", value))
        elif self.kind == "gnome":
            subprocess.run(["gsettings", "set", "org.gnome.desktop.notifications", "show-banners", "false" if value else "true"], check=True)

    def obey(self, word):
        if word in ("on", "off", "forget"):
            self.turn({"on": True, "off": False, "forget": None}[word])
        elif word == "leave":
            self.names("ReleaseName", "(s)", lambda name: (name,))
        elif word == "return":
            self.names("RequestName", "(su)", lambda name: (name, 4))
        self.bus.flush_sync()
        print("done", flush=True)

    def run(self):
        def listen():
            for line in sys.stdin:
                self.GLib.idle_add(self.obey, line.strip())
            os._exit(0)

        print("ready", flush=True)
        threading.Thread(target=listen, daemon=True).start()
        self.GLib.MainLoop().run()


class DoNotDisturb:
    """Such a service, driven by a test."""

    def __init__(self, kind):
        self.process = subprocess.Popen(
            [sys.executable, __file__, kind], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
            env={**os.environ, "GSETTINGS_BACKEND": "keyfile"},
        )
        assert self.process.stdout.readline() == "ready\n"

    def __call__(self, word):
        self.process.stdin.write(f"{word}\n")
        self.process.stdin.flush()
        assert self.process.stdout.readline() == "done\n"

    def stop(self):
        self.process.stdin.close()
        self.process.wait(30)
        self.process.stdout.close()


if __name__ == "__main__":
    Service(sys.argv[1]).run()
