// GNOME Shell 43 and 44.
const {Gio, GLib, Meta, Shell} = imports.gi;

class Extension {
    enable() {
        this._desktop = new Desktop();
    }

    disable() {
        this._desktop?.destroy();
        this._desktop = null;
    }
}

// The shell calls it.
// eslint-disable-next-line no-unused-vars
function init() {
    return new Extension();
}

