// Runs once inside KWin: minimises some windows and says when that is done.
var handles = @HANDLES@;
var windows = workspace.windowList !== undefined ? workspace.windowList() : workspace.clientList();
for (var i = 0; i < windows.length; ++i) {
    if (handles.indexOf(String(windows[i].internalId)) >= 0)
        windows[i].minimized = true;
}
callDBus("@SERVICE@", "@PATH@", "@INTERFACE@", "Hidden");
