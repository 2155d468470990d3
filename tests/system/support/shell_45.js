// Loads the extension as GNOME Shell 45 and later do, as a module, and plays as much of the shell as it uses: two windows. Meta and Shell
// are the real libraries, save for who asks the running shell. Obeys a line each, and answers with "done":
//
//   enable, disable    as the shell does
//   activate NAME      brings the window to the front; none leaves nothing there
import Gio from 'gi://Gio';
import GLib from 'gi://GLib';
import Meta from 'gi://Meta';
import Shell from 'gi://Shell';

const windows = {};
let sequence = 0;

function open(name, id, properties = {}) {
    windows[name] = {
        id, minimized: false, skip_taskbar: false,
        minimize() { this.minimized = true; },
        get_stable_sequence: (number => () => number)(++sequence),
        get_role: () => null, get_wm_class: () => name, get_wm_class_instance: () => `${name}-instance`, get_pid: () => 7,
        get_frame_rect: () => ({x: 10, y: 20, width: 300, height: 200}),
        get_window_type: () => Meta.WindowType.NORMAL,
        ...properties,
    };
}

const listeners = new Map();
globalThis.global = {
    display: {
        focus_window: null,
        connect(signal, listener) {
            listeners.set(listeners.size + 1, [signal, listener]);
            return listeners.size;
        },
        disconnect: number => listeners.delete(number),
        get_tab_list: () => Object.values(windows).reverse(),
    },
    get_window_actors: () => Object.values(windows).map(meta_window => ({meta_window})),
};
Shell.WindowTracker.get_default = () => ({get_window_app: window => window.id ? {get_id: () => window.id} : null});

function activate(name) {
    global.display.focus_window = windows[name] ?? null;
    for (const [signal, listener] of listeners.values()) {
        if (signal === 'notify::focus-window')
            listener();
    }
}

open('editor', 'org.example.Editor.desktop');
open('terminal', null);
open('cover', null, {get_role: () => 'orvanta-panel'});
global.display.focus_window = windows.editor;

const {default: Extension} = await import(`file://${ARGV[0]}/extension.js`);
const extension = new Extension({uuid: 'focus@orvanta.com'});
const orders = {enable: () => extension.enable(), disable: () => extension.disable(), activate};

const input = new Gio.DataInputStream({base_stream: new Gio.UnixInputStream({fd: 0})});
const loop = new GLib.MainLoop(null, false);
function next() {
    input.read_line_async(GLib.PRIORITY_DEFAULT, null, (_, result) => {
        const [line] = input.read_line_finish_utf8(result);
        if (line === null) {
            loop.quit();
            return;
        }
        const [order, ...rest] = line.split(' ');
        orders[order](...rest);
        print(`done, ${listeners.size} listening`);
        next();
    });
}
print('ready');
next();
loop.run();
