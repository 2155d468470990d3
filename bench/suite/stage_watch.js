// Runs inside GNOME Shell: looks at the middle line of the first display just after each frame was composed. See composed.py.
(() => {
    const {GLib, Shell} = imports.gi;
    const MIDNIGHT = 0x131A29, BLOCKED = 0xE03020, OTHER = 0xC0C0C0;
    const WIDTH = 1920, HEIGHT = 1080;
    const places = [0, WIDTH / 2, WIDTH - 1];
    let handler = 0;

    // The window itself learns of it a frame later.
    global.display.connect('notify::focus-window', display => {
        const window = display.focus_window;
        if (window && window.get_title() === 'orvanta-bench-blocked' && !watch.activated)
            watch.activated = GLib.get_monotonic_time();
    });

    // What is asked for in here is painted at once, only the answer comes later.
    function pick(told) {
        const line = [];
        let missing = places.length;
        places.forEach((x, index) => new Shell.Screenshot().pick_color(x, HEIGHT / 2, (screenshot, result) => {
            const [, colour] = screenshot.pick_color_finish(result);
            line[index] = (colour.red << 16) | (colour.green << 8) | colour.blue;
            if (--missing === 0)
                told(line);
        }));
    }

    const watch = {
        line: null,
        activated: 0, // microseconds of the monotonic clock, as the next
        painted: 0,
        looks: 0,
        look() {
            watch.line = null;
            pick(line => (watch.line = line));
        },
        begin() {
            watch.end();
            watch.activated = 0;
            watch.painted = 0;
            watch.looks = 0;
            handler = global.stage.connect('after-paint', (stage, view) => {
                if (view && view.layout.x !== 0)
                    return;
                const moment = GLib.get_monotonic_time();
                watch.looks += 1;
                pick(([left, middle, right]) => {
                    const isCovered = left === MIDNIGHT && right === MIDNIGHT && ![MIDNIGHT, BLOCKED, OTHER].includes(middle);
                    if (isCovered && !watch.painted) {
                        watch.painted = moment;
                        watch.end();
                    }
                });
            });
        },
        end() {
            if (handler)
                global.stage.disconnect(handler);
            handler = 0;
        },
    };
    global.orvantaWatch = watch;
    return null;
})()
