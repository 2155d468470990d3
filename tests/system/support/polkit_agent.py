"""A program that speaks for the user towards polkit, as a desktop has one: asked for an administrator's consent, it gives it
or not. Gives it without a password, since it is root that says so. Usage: polkit_agent.py SESSION yes|no"""
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib

PATH = "/com/orvanta/scene/AuthenticationAgent"
AUTHORITY = ("org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority", "org.freedesktop.PolicyKit1.Authority")
INTERFACE = Gio.DBusNodeInfo.new_for_xml("""<node><interface name="org.freedesktop.PolicyKit1.AuthenticationAgent">
<method name="BeginAuthentication"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
<arg type="a{ss}" direction="in"/><arg type="s" direction="in"/><arg type="a(sa{sv})" direction="in"/></method>
<method name="CancelAuthentication"><arg type="s" direction="in"/></method></interface></node>""").interfaces[0]

session, consents = sys.argv[1], sys.argv[2] == "yes"
bus = Gio.bus_get_sync(Gio.BusType.SYSTEM)


def ask(method, arguments):
    return bus.call_sync(*AUTHORITY, method, arguments, None, Gio.DBusCallFlags.NONE, -1, None)


def take(_bus, _sender, _path, _interface, method, arguments, invocation):
    if method == "CancelAuthentication":
        invocation.return_value(None)
        return
    action, message, _icon, _details, cookie, identities = arguments.unpack()
    print(action, message, flush=True)
    if not consents:
        invocation.return_value(None)
        return
    kind, details = identities[0]
    identity = (kind, {name: GLib.Variant("u", value) for name, value in details.items()})
    bus.call(*AUTHORITY, "AuthenticationAgentResponse2", GLib.Variant("(us(sa{sv}))", (0, cookie, identity)), None, Gio.DBusCallFlags.NONE, -1, None,
             lambda connection, result: (connection.call_finish(result), invocation.return_value(None)))


bus.register_object(PATH, INTERFACE, take, None, None)
subject = ("unix-session", {"session-id": GLib.Variant("s", session)})
ask("RegisterAuthenticationAgent", GLib.Variant("((sa{sv})ss)", (subject, "C", PATH)))
print("ready", flush=True)
GLib.MainLoop().run()
