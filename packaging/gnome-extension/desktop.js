// What the extension is: the windows of this session, told to Orvanta Focus over the session's bus, and hidden when it asks. Both
// kinds of GNOME Shell load this text, each behind an opening of its own, which names Gio, GLib and Shell.

const BUS_NAME = 'com.orvanta.Focus.Desktop';
const OBJECT_PATH = '/com/orvanta/Focus/Desktop';
const INTERFACE = `
<node>
  <interface name="com.orvanta.Focus.Desktop">
    <method name="Frontmost"><arg type="a{sv}" direction="out"/></method>
    <method name="Applications"><arg type="aa{sv}" direction="out"/></method>
    <method name="Hide"><arg type="s" direction="in"/><arg type="u" direction="out"/></method>
    <signal name="Activated"><arg type="a{sv}"/></signal>
    <property name="Version" type="u" access="read"/>
  </interface>
</node>`;

class Desktop {
    constructor() {
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, this);
        this._object.export(Gio.DBus.session, OBJECT_PATH);
        this._name = Gio.bus_own_name(Gio.BusType.SESSION, BUS_NAME, Gio.BusNameOwnerFlags.NONE, null, null, null);
        this._focus = global.display.connect('notify::focus-window', () => this._tellActivation());
    }

    destroy() {
        global.display.disconnect(this._focus);
        Gio.bus_unown_name(this._name);
        this._object.unexport();
    }

    get Version() {
        return 1;
    }

    Frontmost() {
        // Beneath a cover of Orvanta's: what it covers.
        const window = this._windows(Meta.TabList.NORMAL_ALL).find(candidate => !isPanel(candidate) && !candidate.minimized);
        const focused = global.display.focus_window;
        if (!focused)
            return {};
        return this._describe(isPanel(focused) ? window : focused);
    }

    Applications() {
        const groups = new Map();
        const all = global.get_window_actors().map(actor => actor.meta_window);
        all.sort((one, other) => one.get_stable_sequence() - other.get_stable_sequence());
        for (const window of all) {
            if (isPanel(window) || !isOrdinary(window))
                continue;
            const known = groups.get(this._id(window));
            if (known)
                known.push(window);
            else
                groups.set(this._id(window), [window]);
        }
        return [...groups.values()].map(windows => {
            const told = this._describe(windows[0]);
            told['hidden'] = new GLib.Variant('b', windows.every(window => window.minimized));
            told['skips-taskbar'] = new GLib.Variant('b', windows.every(window => window.skip_taskbar));
            return told;
        });
    }

    Hide(id) {
        const own = global.get_window_actors().map(actor => actor.meta_window)
            .filter(window => isOrdinary(window) && !isPanel(window) && this._id(window) === id);
        own.forEach(window => window.minimize());
        return own.length;
    }

    _tellActivation() {
        const window = global.display.focus_window;
        if (window && !isPanel(window))
            this._object.emit_signal('Activated', new GLib.Variant('(a{sv})', [this._describe(window)]));
    }

    _windows(list) {
        return global.display.get_tab_list(list, null);
    }

    _id(window) {
        return Shell.WindowTracker.get_default().get_window_app(window)?.get_id() ?? `window:${window.get_stable_sequence()}`;
    }

    _describe(window) {
        if (!window)
            return {};
        const frame = window.get_frame_rect();
        return {
            'id': new GLib.Variant('s', this._id(window)),
            'class': new GLib.Variant('s', window.get_wm_class() ?? ''),
            'instance': new GLib.Variant('s', window.get_wm_class_instance() ?? ''),
            'role': new GLib.Variant('s', window.get_role() ?? ''),
            'pid': new GLib.Variant('i', window.get_pid()),
            'x': new GLib.Variant('i', frame.x),
            'y': new GLib.Variant('i', frame.y),
            'width': new GLib.Variant('i', frame.width),
            'height': new GLib.Variant('i', frame.height),
        };
    }
}

function isPanel(window) {
    return window.get_role() === 'orvanta-panel';
}

function isOrdinary(window) {
    return [Meta.WindowType.NORMAL, Meta.WindowType.DIALOG, Meta.WindowType.MODAL_DIALOG, Meta.WindowType.UTILITY]
        .includes(window.get_window_type());
}
