// Runs inside KWin and tells one program, by its own name on the bus, which windows there are and which comes to the front.
// KWin 5.27 calls windows clients; Plasma 6 does not.
var service = "@SERVICE@";
var path = "@PATH@";
var face = "@INTERFACE@";
var isPlasma6 = workspace.windowList !== undefined;

function describe(window) {
    var frame = window.frameGeometry;
    return {
        handle: String(window.internalId),
        desktopFile: String(window.desktopFileName || ""),
        className: String(window.resourceClass || ""),
        instance: String(window.resourceName || ""),
        role: String(window.windowRole || ""),
        pid: window.pid || 0,
        isHidden: window.minimized === true,
        skipsTaskbar: window.skipTaskbar === true || window.specialWindow === true,
        isUntitled: !window.caption,
        x: Math.round(frame.x), y: Math.round(frame.y), width: Math.round(frame.width), height: Math.round(frame.height)
    };
}

function all() {
    return isPlasma6 ? workspace.windowList() : workspace.clientList();
}

function front() {
    return isPlasma6 ? workspace.activeWindow : workspace.activeClient;
}

function tellAll() {
    var windows = [];
    var known = all();
    for (var i = 0; i < known.length; ++i)
        windows.push(describe(known[i]));
    var active = front();
    callDBus(service, path, face, "Windows", JSON.stringify({ windows: windows, front: active ? describe(active) : null }));
}

function tellActivation(window) {
    callDBus(service, path, face, "Activated", JSON.stringify({ front: window ? describe(window) : null }));
}

function follow(window) {
    (window.minimizedChanged || window.clientMinimized).connect(tellAll);
    (window.outputChanged || window.screenChanged).connect(tellAll);
}

var known = all();
for (var i = 0; i < known.length; ++i)
    follow(known[i]);
(workspace.windowAdded || workspace.clientAdded).connect(function (window) {
    follow(window);
    tellAll();
});
(workspace.windowRemoved || workspace.clientRemoved).connect(tellAll);
tellAll();
(workspace.windowActivated || workspace.clientActivated).connect(tellActivation);
