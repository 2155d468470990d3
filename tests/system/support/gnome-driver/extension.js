// Plays a user for the tests: opens the shell to screenshots and brings windows to the front. Never to be installed.
const {Gio, GLib, Meta} = imports.gi;
const Main = imports.ui.main;

const INTERFACE = `
<node>
  <interface name="com.orvanta.Test.Driver">
    <method name="Ready"><arg type="b" direction="out"/></method>
    <method name="Windows"><arg type="s" direction="out"/></method>
    <method name="Activate"><arg type="i" direction="in"/></method>
    <method name="FullScreen"><arg type="i" direction="in"/></method>
    <method name="MinimiseAll"/>
    <method name="ToDisplay"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
    <method name="Switch"><arg type="s" direction="in"/><arg type="b" direction="in"/></method>
  </interface>
</node>`;

// A new window is known before it is shown, and takes the focus when it is.
function windows() {
    return global.get_window_actors().filter(actor => actor.visible || actor.meta_window.minimized).map(actor => actor.meta_window);
}

class Driver {
    enable() {
        global.context.unsafe_mode = true;
        Main.overview.hide();
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, this);
        this._object.export(Gio.DBus.session, '/com/orvanta/Test/Driver');
        this._name = Gio.bus_own_name(Gio.BusType.SESSION, 'com.orvanta.Test.Driver', Gio.BusNameOwnerFlags.NONE, null, null, null);
    }

    disable() {
        Gio.bus_unown_name(this._name);
        this._object.unexport();
    }

    Ready() {
        Main.overview.hide();
        return !Main.layoutManager._startingUp && !Main.overview.visible;
    }

    Windows() {
        return JSON.stringify(windows().map(window => {
            const frame = window.get_frame_rect();
            return {
                pid: window.get_pid(), title: window.get_title(), role: window.get_role(), isHidden: window.minimized,
                isActive: window === global.display.focus_window, frame: [frame.x, frame.y, frame.width, frame.height],
            };
        }));
    }

    Activate(pid) {
        windows().filter(window => window.get_pid() === pid).forEach(window => window.activate(global.get_current_time()));
    }

    FullScreen(pid) {
        windows().filter(window => window.get_pid() === pid).forEach(window => window.make_fullscreen());
    }

    MinimiseAll() {
        windows().filter(window => window.can_minimize()).forEach(window => window.minimize());
    }

    ToDisplay(pid, number) {
        windows().filter(window => window.get_pid() === pid).forEach(window => window.move_to_monitor(number));
    }

    Switch(uuid, isOn) {
        if (isOn)
            Main.extensionManager.enableExtension(uuid);
        else
            Main.extensionManager.disableExtension(uuid);
    }
}

function init() {
    return new Driver();
}
