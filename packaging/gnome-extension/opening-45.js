// GNOME Shell 45 and later, which load modules.
import Gio from 'gi://Gio';
import GLib from 'gi://GLib';
import Meta from 'gi://Meta';
import Shell from 'gi://Shell';

export default class Extension {
    enable() {
        this._desktop = new Desktop();
    }

    disable() {
        this._desktop?.destroy();
        this._desktop = null;
    }
}

